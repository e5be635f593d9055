// Files and folders that may be read and not written: what fails leaves all as it was.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"
#include "tests/support/resource_text.h"

static const std::string kNotRenamed = "0|DiskDriver::Rename() failed.|JXRESIDT\\DISKDRVR.CPP|";
static const std::string kNotRemoved = "eResult == keDELETE_OK|JXRESIDT\\RBFILE1.CPP|";
static const std::string kNotStripped = Base("0|Error BaseDirFile: RemoveAllMessageIDs()");
static const std::string kNotAged = Inbox("0|Error DirectoryFile: DeleteOldMail()");
static const std::string kAlter = "Error BaseDirFile: AlterDirectoryBlock(), ";

static bool IsReadOnly(Text path) {
    return GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY;
}

class ReadOnly : public MailFolder {
protected:
    ReadOnly() {
        CreateDirectoryA("OLD", nullptr);
        WriteFileBytes("A.EML", Message("A") + "text");
        WriteFileBytes("NEW.EML", Message("new") + "text");
        Write(mBytes);
    }
    // Makes the folder's D file read-only, or skips the test where that is none.
    void Protect(Text name) {
        if (!MakeReadOnly(name))
            GTEST_SKIP() << "permissions do not count here";
    }

    DirectoryRecord mProbe = Record(Message("A", "A.EML")), mRecord;
    RbFile mMessage{mFolder.Path("NEW.EML").c_str()}, mCopy{mFolder.Path("COPY").c_str()};
    DFile mOld{keDirFolder, "OLD\\OLD.DAT"};
    const std::unique_ptr<RB_Container<DirectoryRecord>> mList{
        new RB_Container<DirectoryRecord>(1)};
    const std::unique_ptr<RB_Container<JxDownloadItem>> mItems{new RB_Container<JxDownloadItem>(1)};
    const std::string mBytes = kHeader + MessageID(Status(Message("A", "A.EML"), 0x42), "id") +
                               Free(Message("B")) + Message("C", "A.EML") + Free(Message("D"));
};

TEST_F(ReadOnly, DFileIsReadAndNeverChangedInPlace) {
    ASSERT_NO_FATAL_FAILURE(Protect("INBOX.DAT"));
    const std::string names = Names();
    const auto fails = [&](bool failed, Text reports) {
        EXPECT_TRUE(failed);
        EXPECT_EQ(Reports(), reports);
        EXPECT_EQ(Read(), mBytes);
        EXPECT_TRUE(IsReadOnly("INBOX.DAT") && Names() == names);
    };
    for (DFile* file : {&mFile, &mForeign, &mMessages}) {
        fails(file->GetInfo(keInfoAll) == 1 && file->UsedCount() == 2, "");
        fails(file->FindRecord(mProbe, keFindPosition) == 316, "");
        fails(!file->AddMessage(&mMessage), "");
        fails(file->CreateDFile() == (file != &mForeign), "");
        fails(file->AlterDirectoryBlock(mRecord, 1u, 0) == -1,
              Base("0|" + kAlter + "can't OPEN file"));
        fails(!file->MarkRecord(mProbe, keMarkProcessed),
              Base("0|Error BaseDirFile: MarkRecord(), can't open file"));
        fails(!file->DeleteMail(mProbe), Base("isOpen()|" + kAlter + "file not OPEN"));
        fails(!file->GetUIDList(mItems.get()), Base("0|Can't open Inbox D File"));
        fails(file->CheckUnprocessedDDRs(keCheckProcessable, nullptr) == keCheckCannotOpen, "");
        fails(file->GetUnprocessedDDRs(mList.get(), nullptr, keGetProcessable) == keGetNone,
              Inbox("fGood"));
        file->DeleteOldMail(0, 0, &mOld);
        fails(true, file == &mFile ? kNotAged : "");
        file->UpdateDFile();
        fails(file->GetDFile(mCopy) == 0, "");
    }
    char *topic, *name, *sender;
    unsigned short kind, flag;
    EXPECT_EQ(GetFirstRecord("INBOX.DAT", &topic, &name, &sender, &kind, &flag), 1);
    Done();
    fails(FileThere("A.EML"), "");
}

// A rewritten file is a new one: the old one's name may be changed, and its removal is the
// rewrite's.
TEST_F(ReadOnly, DFileIsRewrittenAsAnother) {
    ASSERT_NO_FATAL_FAILURE(Protect("INBOX.DAT"));
    EXPECT_EQ(mFile.CompressDFile(), 1);
    EXPECT_EQ(Read(), kHeader + mBytes.substr(316, 316) + mBytes.substr(3 * 316, 316));
    EXPECT_FALSE(IsReadOnly("INBOX.DAT"));
    EXPECT_EQ(Names(), "A.EML INBOX.DAT NEW.EML OLD ");
}

TEST_F(ReadOnly, MessagesAreRemovedAndMovedAllTheSame) {
    ASSERT_NO_FATAL_FAILURE(Protect("A.EML"));
    const std::string old = Date(Message("A", "A.EML"), 3029529600u);
    Write(kHeader + old);
    mOld.CreateDFile();
    mFile.DeleteOldMail(0, 0, &mOld);
    EXPECT_EQ(Read(), kHeader + Free(old));
    EXPECT_EQ(ReadFileBytes("OLD\\OLD.DAT").size(), 632u);
    EXPECT_EQ(Names(), "INBOX.DAT NEW.EML OLD ");

    ASSERT_TRUE(MakeReadOnly("NEW.EML"));
    Write(kHeader + Message("A", "NEW.EML"));
    DirectoryRecord probe = Record(Message("A", "NEW.EML"));
    EXPECT_EQ(Left(mFile.DeleteMail(probe)), "1" + kHeader + Free(Message("A", "NEW.EML")));
    EXPECT_EQ(Names(), "INBOX.DAT OLD ");
}

TEST_F(ReadOnly, FilesInTheWayOfARewriteStay) {
    WriteFileBytes("INBOX.BAK", "older");
    ASSERT_NO_FATAL_FAILURE(Protect("INBOX.BAK"));
    const auto stays = [&](bool failed, Text name, Text reports) {
        EXPECT_TRUE(failed);
        EXPECT_EQ(Reports(), reports);
        EXPECT_EQ(Read(), mBytes);
        EXPECT_EQ(ReadFileBytes(name), "older");
        EXPECT_TRUE(IsReadOnly(name));
        EXPECT_EQ(Names(), "A.EML " + name + " INBOX.DAT NEW.EML OLD ");
    };
    stays(!mFile.CompressDFile(), "INBOX.BAK", kNotRenamed);
    stays(!mFile.RenameToBak(nullptr), "INBOX.BAK", kNotRenamed);
    stays(!mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), "INBOX.BAK",
          kNotRenamed + kNotStripped);
    SetFileAttributesA("INBOX.BAK", FILE_ATTRIBUTE_NORMAL);
    DeleteFileA("INBOX.BAK");
    WriteFileBytes("INBOX.TMP", "older");
    ASSERT_TRUE(MakeReadOnly("INBOX.TMP"));
    EXPECT_FALSE(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll));
    // Without a timer there is no waiting for it.
    EXPECT_EQ(Reports(), "0|JXRESIDT\\JXTIMER.CPP|" + kNotStripped);
    EXPECT_EQ(Read() + ReadFileBytes("INBOX.TMP"), mBytes + "older");
    EXPECT_EQ(Names(), "A.EML INBOX.DAT INBOX.TMP NEW.EML OLD ");
}

TEST_F(ReadOnly, FolderKeepsItsFiles) {
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

TEST_F(ReadOnly, SemaphoresStayWithWhoeverHasThem) {
    WriteFileBytes("LOCK.SEM", "");
    ASSERT_NO_FATAL_FAILURE(Protect("LOCK.SEM"));
    JxMailMessageSemaphore semaphore;
    EXPECT_EQ(semaphore.CreateSemaphoreA(mFolder.Path("LOCK").c_str()), 0);
    EXPECT_EQ(semaphore.RemoveSemaphore(nullptr), 0);
    EXPECT_EQ(Reports(), "fReturn|JXRESIDT\\JXMSGSEM.CPP|");
    EXPECT_TRUE(IsReadOnly("LOCK.SEM"));
}

TEST_F(ReadOnly, PreferencesAreShownAsFailedAndStay) {
    MessageBoxes boxes;
    const std::string path = mFolder.Path("RB.DAT");
    char block[5] = "text", other[5] = "more";
    AppPrefTag tag{7, 1, 5, other};
    {
        UserPrefFile file(block, 1, sizeof block, 1);
        EXPECT_EQ(file.CreatePrefsFile(path.c_str()), 1);
    }
    const std::string bytes = ReadFileBytes(path);
    // The folder first: the file may be written and not be rebuilt.
    {
        const ReadOnlyFolder folder(mFolder.Path());
        if (!folder.Works())
            GTEST_SKIP() << "permissions do not count here";
        UserPrefFile file(block, 1, sizeof block, 1);
        static_cast<FileSpec&>(file).Parse(path.c_str(), 1);
        EXPECT_EQ(file.OpenPrefFile(), 1);
        EXPECT_EQ(file.WriteAppPrefs(tag), 0);
        EXPECT_THAT(boxes.TakeTexts(),
                    testing::ElementsAre(FileMessage(604, mFolder.Path("RB.BAK"))));
        file.ClosePrefFile();
        EXPECT_EQ(ReadFileBytes(path), bytes);
    }
    ASSERT_TRUE(MakeReadOnly(path));
    UserPrefFile file(block, 1, sizeof block, 1);
    static_cast<FileSpec&>(file).Parse(path.c_str(), 1);
    EXPECT_EQ(file.OpenPrefFile(), 0);
    EXPECT_EQ(file.CreatePrefsFile("RB.DAT"), 0);
    EXPECT_THAT(boxes.TakeTexts(),
                testing::ElementsAre(FileMessage(604, path), FileMessage(703, path)));
    EXPECT_TRUE(ReadFileBytes(path) == bytes && IsReadOnly(path));
}
