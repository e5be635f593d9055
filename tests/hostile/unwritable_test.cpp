// Files and folders that may be read and not written, and folders that have the names of files:
// what fails leaves all as it was.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"
#include "tests/support/resource_text.h"

class Unwritable : public MailFolder {
protected:
    Unwritable() {
        CreateDirectoryA("OLD", nullptr);
        mProbe = Record(Message("A", "A.EML"));
        WriteFileBytes("A.EML", Message("A") + "text");
        WriteFileBytes("NEW.EML", Message("new") + "text");
        Write(mBytes);
    }
    static bool IsReadOnly(Text path) {
        return GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY;
    }

    RbFile mMessage{mFolder.Path("NEW.EML").c_str()}, mCopy{mFolder.Path("COPY").c_str()};
    const std::string mBytes = kHeader + MessageID(Status(Message("A", "A.EML"), 0x42), "id") +
                               Free(Message("B")) + Message("C", "A.EML") + Free(Message("D"));
};

// In the way stands a folder with a file in it, or a read-only file.
class InTheWay : public Unwritable, public testing::WithParamInterface<const char*> {
protected:
    // False where permissions do not count.
    bool Block(Text name, Text bytes) {
        mBlocked = name;
        DeleteFileA(name.c_str());
        if (mIsFolder)
            CreateDirectoryA(name.c_str(), nullptr);
        WriteFileBytes(mIsFolder ? name + "\\IN" : name, mKept = bytes);
        mNames = Names();
        return mIsFolder || MakeReadOnly(name);
    }
    void Unblock() {
        SetFileAttributesA(mBlocked.c_str(), FILE_ATTRIBUTE_NORMAL);
        std::filesystem::remove_all(mBlocked);
    }
    void Stays(bool failed, Text reports = "") {
        EXPECT_TRUE(failed);
        EXPECT_EQ(Reports(), reports);
        EXPECT_EQ(ReadFileBytes(mIsFolder ? mBlocked + "\\IN" : mBlocked), mKept);
        EXPECT_TRUE(mIsFolder || IsReadOnly(mBlocked));
        EXPECT_EQ(Names(), mNames);
    }

    const bool mIsFolder = GetParam() == std::string("Folder");
    std::string mBlocked, mKept, mNames;
};

INSTANTIATE_TEST_SUITE_P(What, InTheWay, testing::Values("Folder", "ReadOnlyFile"),
                         [](const auto& what) { return std::string(what.param); });

TEST_P(InTheWay, OfADFile) {
    if (!Block("INBOX.DAT", mBytes))
        GTEST_SKIP() << "permissions do not count here";
    const std::pair<DFile*, TypeDirFile> files[] = {
        {&mFile, keDirFolder}, {&mForeign, keDirForeign}, {&mMessages, keDirMessages}};
    for (const auto& [file, type] : files) {
        for (const Operation& each : Operations(type)) {
            SCOPED_TRACE(each.name);
            if (mIsFolder || each.kind == Operation::keChanges)
                Stays(each.run(*file) == each.fails, each.reports);
        }
        Stays(file->GetInfo(keInfoAll) == !mIsFolder && file->UsedCount() == (mIsFolder ? 0 : 2));
        Stays(file->FindRecord(mProbe, keFindPosition) == (mIsFolder ? keDirError : 316));
        Stays(file->GetDFile(mCopy) == 0);
    }
    Stays(First("INBOX.DAT") == (mIsFolder ? "" : "A/A.EML"));
}

TEST_P(InTheWay, OfABackupOrATemporaryFile) {
    if (!Block("INBOX.BAK", "older"))
        GTEST_SKIP() << "permissions do not count here";
    Stays(!mFile.CompressDFile(), kNotRenamed);
    Stays(!mFile.RenameToBak(nullptr), kNotRenamed);
    Stays(!mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), kNotRenamed + kNotStripped);
    Unblock();
    EXPECT_TRUE(Block("INBOX.TMP", "older"));
    // Without a timer there is no waiting for it.
    Stays(!mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll),
          "0|JXRESIDT\\JXTIMER.CPP|" + kNotStripped);
    EXPECT_EQ(Read(), mBytes);
}

TEST_P(InTheWay, OfASemaphore) {
    if (!Block("LOCK.SEM", "theirs"))
        GTEST_SKIP() << "permissions do not count here";
    JxMailMessageSemaphore semaphore;
    Stays(!semaphore.CreateSemaphoreA(mFolder.Path("LOCK").c_str()));
    Stays(!semaphore.RemoveSemaphore(nullptr), "fReturn|JXRESIDT\\JXMSGSEM.CPP|");
    if (mIsFolder) {
        RbFile file(mFolder.Path("LOCK.SEM").c_str());
        Stays(file.ImpRemove() == keDELETE_ACCESS_DENIED);
        Stays(!DiskDriver::RemoveFile(file));
    }
}

// A rewritten file is a new one: the old one's name may be changed, and its removal is the
// rewrite's.
TEST_F(Unwritable, DFileIsRewrittenAsAnother) {
    if (!MakeReadOnly("INBOX.DAT"))
        GTEST_SKIP() << "permissions do not count here";
    EXPECT_EQ(mFile.CompressDFile(), 1);
    EXPECT_EQ(Read(), kHeader + mBytes.substr(316, 316) + mBytes.substr(3 * 316, 316));
    EXPECT_FALSE(IsReadOnly("INBOX.DAT"));
    EXPECT_EQ(Names(), "A.EML INBOX.DAT NEW.EML OLD ");
    // A read-only backup would be in the way of every later one.
    for (int times = 0; times < 2; ++times) {
        EXPECT_TRUE(MakeReadOnly("INBOX.DAT"));
        EXPECT_EQ(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 1);
        EXPECT_FALSE(IsReadOnly("INBOX.BAK"));
    }
    EXPECT_EQ(mFile.CompressDFile(), 1);
}

TEST_F(Unwritable, MessageIsMovedAllTheSame) {
    if (!MakeReadOnly("A.EML"))
        GTEST_SKIP() << "permissions do not count here";
    const std::string old = Date(Message("A", "A.EML"), 3029529600u);
    Write(kHeader + old);
    mOld.CreateDFile();
    mFile.DeleteOldMail(0, 0, &mOld);
    EXPECT_EQ(Read(), kHeader + Free(old));
    EXPECT_EQ(ReadFileBytes("OLD\\OLD.DAT").size(), 632u);
    EXPECT_EQ(Names(), "INBOX.DAT NEW.EML OLD ");
}

TEST_F(Unwritable, FolderKeepsItsFiles) {
    const std::string record = Date(Message("A", "A.EML"), 3029529600u);
    mProbe = Record(record);
    Write(kHeader + record);
    mOld.CreateDFile();
    const std::string names = Names() + Names("OLD");
    JxMailMessageSemaphore semaphore;
    {
        const ReadOnlyFolder folder(mFolder.Path());
        if (!folder.Works())
            GTEST_SKIP() << "permissions do not count here";
        const auto fails = [&](bool failed, Text reports) {
            EXPECT_TRUE(failed);
            EXPECT_EQ(Reports(), reports);
            EXPECT_EQ(Read(), kHeader + record);
            EXPECT_EQ(Names() + Names("OLD"), names);
        };
        fails(!mFile.CompressDFile(), "");
        fails(!mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), kNotStripped);
        fails(!mFile.RenameToBak(nullptr), kNotRenamed);
        fails(!mFile.DeleteMail(mProbe), kNotRemoved);
        mFile.DeleteOldMail(0, 0, &mOld);
        fails(true, kNotRenamed + kNotAged);
        fails(mMissing.CreateDFile() == 1, "");
        fails(mFile.GetDFile(mCopy) == 0,
              Inbox("fGood") + Inbox("fGood|Error DirectoryFile: GetDFile()"));
        fails(!semaphore.CreateSemaphoreA(mFolder.Path("LOCK").c_str()), "");
        fails(!DiskDriver::MakeDir("SUB"), "");
        fails(!DiskDriver::Rename("A.EML", "B.EML"), kNotRenamed);
        // A file that is there may be written.
        EXPECT_EQ(Left(mFile.AddMessage(&mMessage)),
                  "1" + kHeader + record + With(Message("new"), 38, Pascal("NEW.EML")));
        EXPECT_EQ(mFile.MarkRecord(mProbe, keMarkUnused), 1);
    }
    EXPECT_EQ(Reports(), "");
}

// The file may be written and not be rebuilt.
TEST_F(Unwritable, FolderKeepsItsPreferences) {
    MessageBoxes boxes;
    const std::string path = mFolder.Path("RB.DAT");
    char block[5] = "text", other[5] = "more";
    AppPrefTag tag{7, 1, 5, other};
    UserPrefFile file(block, 1, sizeof block, 1);
    EXPECT_EQ(file.CreatePrefsFile(path.c_str()), 1);
    file.ClosePrefFile();
    const std::string bytes = ReadFileBytes(path);
    const ReadOnlyFolder folder(mFolder.Path());
    if (!folder.Works())
        GTEST_SKIP() << "permissions do not count here";
    EXPECT_EQ(file.OpenPrefFile(), 1);
    EXPECT_EQ(file.WriteAppPrefs(tag), 0);
    EXPECT_THAT(boxes.TakeTexts(), testing::ElementsAre(FileMessage(604, mFolder.Path("RB.BAK"))));
    file.ClosePrefFile();
    EXPECT_EQ(ReadFileBytes(path), bytes);
}
