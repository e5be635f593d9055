// Folders that have the names of files.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"
#include "tests/support/resource_text.h"

static const std::string kNotRenamed = "0|DiskDriver::Rename() failed.|JXRESIDT\\DISKDRVR.CPP|";
static const std::string kNotStripped = Base("0|Error BaseDirFile: RemoveAllMessageIDs()");

class FolderInTheWay : public MailFolder {
protected:
    // A folder with a file in it.
    static void Make(Text name) {
        CreateDirectoryA(name.c_str(), nullptr);
        WriteFileBytes(name + "\\IN", "kept");
    }
    void Stays(Text name, bool failed, Text reports = "") {
        EXPECT_TRUE(failed);
        EXPECT_EQ(Reports(), reports);
        EXPECT_EQ(ReadFileBytes(name + "\\IN"), "kept");
    }
};

TEST_F(FolderInTheWay, OfADFile) {
    Make("INBOX.DAT");
    WriteFileBytes("A.EML", Message("A"));
    DirectoryRecord probe = Record(Message("A", "A.EML")), record;
    RbFile message(mFolder.Path("A.EML").c_str()), copy(mFolder.Path("COPY").c_str());
    const std::unique_ptr<RB_Container<DirectoryRecord>> list(new RB_Container<DirectoryRecord>(1));
    const std::unique_ptr<RB_Container<JxDownloadItem>> items(new RB_Container<JxDownloadItem>(1));
    const auto stays = [&](bool failed, Text reports = "") { Stays("INBOX.DAT", failed, reports); };
    for (DFile* file : {&mFile, &mForeign, &mMessages}) {
        stays(!file->AddMessage(&message));
        stays(file->CreateDFile() == (file != &mForeign));
        stays(file->FindRecord(probe, keFindPosition) == keDirError);
        stays(file->AlterDirectoryBlock(record, 1u, 1) == keDirError,
              Base("0|Error BaseDirFile: AlterDirectoryBlock(), can't OPEN file"));
        stays(!file->GetInfo(keInfoAll) && file->UsedCount() == 0);
        stays(!file->MarkRecord(probe, keMarkUnused),
              Base("0|Error BaseDirFile: MarkRecord(), can't open file"));
        stays(!file->DeleteMail(probe),
              Base("isOpen()|Error BaseDirFile: AlterDirectoryBlock(), file not OPEN"));
        stays(!file->CompressDFile());
        stays(!file->GetUIDList(items.get()), Base("0|Can't open Inbox D File"));
        stays(!file->RemoveAllMessageIDs(BaseDirFile::keRemoveAll),
              file == &mForeign ? "" : kNotStripped);
        stays(file->CheckUnprocessedDDRs(keCheckProcessable, nullptr) == keCheckCannotOpen);
        stays(file->GetUnprocessedDDRs(list.get(), nullptr, keGetProcessable) == keGetNone,
              Inbox("fGood"));
        file->DeleteOldMail(0, 0, &mFile);
        stays(true, file == &mFile ? Inbox("0|Error DirectoryFile: DeleteOldMail()") : "");
        file->UpdateDFile();
        stays(file->GetDFile(copy) == 0);
    }
    char *topic, *name, *sender;
    unsigned short kind, flag;
    stays(!GetFirstRecord("INBOX.DAT", &topic, &name, &sender, &kind, &flag));
    Done();
    EXPECT_EQ(Names(), "A.EML INBOX.DAT ");
}

TEST_F(FolderInTheWay, OfABackupOrATemporaryFile) {
    const std::string bytes = kHeader + MessageID(Message("A"), "id") + Free(Message("B"));
    const auto stays = [&](Text name, bool failed, Text reports) {
        Stays(name, failed, reports);
        EXPECT_EQ(Read(), bytes);
        EXPECT_EQ(Names(), name == "INBOX.BAK" ? name + " INBOX.DAT " : "INBOX.DAT " + name + " ");
    };
    Write(bytes);
    Make("INBOX.BAK");
    stays("INBOX.BAK", !mFile.CompressDFile(), kNotRenamed);
    stays("INBOX.BAK", !mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll),
          kNotRenamed + kNotStripped);
    stays("INBOX.BAK", !mFile.RenameToBak(nullptr), kNotRenamed);
    DeleteFileA("INBOX.BAK\\IN");
    RemoveDirectoryA("INBOX.BAK");
    Make("INBOX.TMP");
    // Without a timer there is no waiting for it.
    stays("INBOX.TMP", !mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll),
          "0|JXRESIDT\\JXTIMER.CPP|" + kNotStripped);
}

TEST_F(FolderInTheWay, OfAPreferenceFile) {
    MessageBoxes boxes;
    const std::string path = mFolder.Path("RB.DAT");
    char block[5] = "text";
    UserPrefFile file(block, 1, sizeof block, 1);
    static_cast<FileSpec&>(file).Parse(path.c_str(), 1);
    Make("RB.DAT");
    Stays("RB.DAT", !file.OpenPrefFile() && !file.CreatePrefsFile("RB.DAT"));
    EXPECT_THAT(boxes.TakeTexts(),
                testing::ElementsAre(FileMessage(604, path), FileMessage(703, path)));
}

TEST_F(FolderInTheWay, OfASemaphoreOrAUniqueName) {
    JxMailMessageSemaphore semaphore;
    Make("LOCK.SEM");
    Stays("LOCK.SEM", !semaphore.CreateSemaphoreA(mFolder.Path("LOCK").c_str()));
    Stays("LOCK.SEM", !semaphore.RemoveSemaphore(nullptr), "fReturn|JXRESIDT\\JXMSGSEM.CPP|");
    RbFile file(mFolder.Path("LOCK.SEM").c_str());
    Stays("LOCK.SEM", file.ImpRemove() == keDELETE_ACCESS_DENIED);
    Stays("LOCK.SEM", !DiskDriver::RemoveFile(file));
}
