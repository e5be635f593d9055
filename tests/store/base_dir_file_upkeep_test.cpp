#include <memory>

#include "tests/store/watched_file.h"
#include "tests/support/helper_process.h"
#include "tests/support/unrenamed_file.h"

static const std::string kNoProbe =
    Base("0|Error BaseDirFile: AlterDirectoryBlock(), Record not found") +
    Base("0|Error BaseDirFile: DeleteOldMail(), File error");

class BaseDirFileUpkeep : public MailFolder {
protected:
    int Delete(BaseDirFile& file, const std::string& message) {
        DirectoryRecord probe = Record(message);
        return file.DeleteMail(probe);
    }
    std::string Identifiers(BaseDirFile& file, int result) {
        std::string texts;
        EXPECT_EQ(file.GetUIDList(&mItems), result);
        for (auto* item = mItems.GetFirstObject(); item; item = mItems.GetNextObject())
            texts += item->Text().Text() + std::string(" ");
        return texts;
    }
};

TEST_F(BaseDirFileUpkeep, MarksTheStoredRecordAndNothingElse) {
    const std::string before = kHeader + Message("A"), behind = Message("C") + "tail";
    const auto stored = [](int used, int status, int attributes) {
        return With(Attributes(Status(Message("B"), status), attributes), 2, {char(used)});
    };
    // Used byte, status and attributes after each action on all bits; the last two also on none.
    const int cases[][5] = {{0xFF, 0xFD, 0xFFFF, 1, 0},      {0xFF, 0xFE, 0xFFFF, 0, 0},
                            {0x00, 0xFF, 0xFFFF, 0, 0},      {0xFF, 0xFF, 0xFFFF, 0, 0x0400},
                            {0xFF, 0xFF, 0xFBFF, 0, 0},      {0xFF, 0xFF, 0xFBFF, 0, 0x0100},
                            {0xFF, 0xFF, 0xFAFF, 0, 0x0200}, {0xFF, 0xFD, 0xFFFF, 0, 0},
                            {0xFF, 0xFF, 0xF8FF, 0, 0},      {0xFF, 0xFF, 0xFFFF, 0, 0}};
    DirectoryRecord probe = Record(stored(1, 0x12, 0x2000));
    for (int number = 0; number < 10; number++) {
        const auto action = static_cast<enumMarkMailAction>(number);
        const auto& [used, status, attributes, cleared, clearedAttributes] = cases[number];
        Write(before + stored(0xFF, 0xFF, 0xFFFF) + behind);
        EXPECT_EQ(Left(mFile.MarkRecord(probe, action)),
                  "1" + before + stored(used, status, attributes) + behind);
        Write(stored(1, 0, 0) + behind);
        EXPECT_EQ(Left(mMessages.MarkRecord(probe, action)),
                  "1" + stored(used != 0, cleared, clearedAttributes) + behind);
    }
    EXPECT_EQ(Written(probe), stored(1, 0x12, 0x2000));

    Write(stored(1, 0x03, 0));
    EXPECT_EQ(Left(mMessages.ClearReturnReceipt(probe)), "1" + stored(1, 0x01, 0));
    mMessages.MarkMail(probe, -1);
    EXPECT_EQ(Read(), stored(1, 0x00, 0));
    mMessages.MarkMail(probe, 0);
    EXPECT_EQ(Read(), stored(1, 0x01, 0));
    mMessages.MarkUnUsed(probe, 0);
    EXPECT_EQ(Read(), stored(0, 0x01, 0));
    EXPECT_EQ(mMissing.ClearReturnReceipt(probe), 0);
    EXPECT_EQ(Reports(), Base("0|Error BaseDirFile: MarkRecord(), can't open file"));
    probe.Record().status = 0xFD;
    EXPECT_EQ(mMissing.ClearReturnReceipt(probe), 1);
}

TEST_F(BaseDirFileUpkeep, ReportsTwiceForAProbeThatIsNotThere) {
    const std::string message = Message("A", "A.EML");
    DirectoryRecord probe = Record(message);
    Write(kHeader + Free(message));
    WriteFileBytes("A.EML", "text");
    EXPECT_EQ(Left(mFile.MarkRecord(probe, keMarkUnused)), "0" + kHeader + Free(message));
    EXPECT_EQ(Reports(), kNoProbe);
    EXPECT_EQ(Left(mFile.DeleteMail(probe)), "0" + kHeader + Free(message));
    EXPECT_EQ(Reports(), kNoProbe);
    EXPECT_EQ(Names(), "A.EML INBOX.DAT ");
}

TEST_F(BaseDirFileUpkeep, DeletesTheMessageFileAndThenFreesTheSlot) {
    WriteFileBytes("A.EML", "text");
    WriteFileBytes("HELD.EML", "text");
    SetFileAttributesA("A.EML", FILE_ATTRIBUTE_READONLY);
    CreateDirectoryA("DIR.EML", nullptr);
    const std::string a = Status(Message("A", "A.EML"), 0x43), gone = Message("gone", "GONE.EML");
    const std::string unnamed = Status(Message("no name", ""), 0x02);
    const std::string held = Message("held", "HELD.EML"), folder = Message("dir", "DIR.EML");
    Write(kHeader + a + gone + unnamed + held + folder);
    EXPECT_TRUE(Delete(mFile, a) == 1 && Delete(mFile, gone) == 1 && Delete(mFile, unnamed) == 1);
    const HeldFile holder(mFolder.Path("HELD.EML"));
    EXPECT_TRUE(Delete(mFile, held) == 0 && Delete(mFile, folder) == 0);
    EXPECT_EQ(Reports(), kNotRemoved + kNotRemoved);
    EXPECT_EQ(Read(), kHeader + Free(a) + Free(gone) + Free(unnamed) + held + folder);
    EXPECT_EQ(Names(), "DIR.EML HELD.EML INBOX.DAT ");
}

TEST_F(BaseDirFileUpkeep, CompressingKeepsUsedRecordsBehindANewHeader) {
    const std::string a = Status(Message("A"), 0xA1), b = MessageID(Message("B"), "id");
    const std::string records = a + Free(b) + Broken(a) + b + Cut(a);
    const auto compressed = [&](DFile& file, const std::string& content) {
        Write(content);
        EXPECT_EQ(file.CompressDFile(), 1);
        return Read();
    };
    WriteFileBytes("INBOX.BAK", "older backup");
    EXPECT_EQ(compressed(mFile, With(kHeader, 300, "dirt") + records), kHeader + a + b);
    // What stands in place of the header is a record like others.
    EXPECT_EQ(compressed(mForeign, b + records), kHeader + b + a + b);
    EXPECT_EQ(compressed(mMessages, records), a + b);
    for (const std::string& empty : {Free(a) + Free(b), Cut(kHeader), std::string()}) {
        EXPECT_EQ(compressed(mFile, empty), kHeader);
        EXPECT_EQ(compressed(mMessages, empty), "");
    }
    EXPECT_EQ(compressed(mFile, kHeader + With(Kind(a, 9), 4, "\xFF")),
              kHeader + With(Kind(a, 6), 4, "\x1B"));
    EXPECT_EQ(Names(), "INBOX.DAT ");
}

TEST_F(BaseDirFileUpkeep, ForeignAndMissingFilesAreNotRewritten) {
    const std::string content = kHeader + MessageID(Message("A"), "id") + Free(Message("A"));
    Write(content);
    EXPECT_EQ(Left(mForeign.RemoveAllMessageIDs(BaseDirFile::keRemoveAll)), "0" + content);
    EXPECT_EQ(mMissing.CompressDFile(), 0);
    EXPECT_EQ(mMissing.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
    EXPECT_EQ(Reports(), kNotStripped);
}

TEST_F(BaseDirFileUpkeep, ARewrittenFileThatCannotTakeItsPlaceIsTold) {
    const std::string record = MessageID(Message("A"), "id"), stripped = With(record, 112, {'\0'});
    const std::string content = kHeader + Free(record) + record;
    Write(content);
    WriteFileBytes("INBOX.BAK", "older backup");
    Watched<DFile> inbox(keDirFolder);
    std::string copy;
    std::unique_ptr<UnrenamedFile> kept;
    // The copy's name is known from its opening on, when the first records are read.
    inbox.onRead = [&](long) {
        for (const auto& entry : std::filesystem::directory_iterator("."))
            if (!kept && entry.path().extension() == ".TMP")
                kept.reset(new UnrenamedFile(copy = entry.path().filename().string()));
    };
    EXPECT_EQ(inbox.CompressDFile(), 0);
    EXPECT_EQ(Reports(), kNotRenamed);
    // The old file is back. What is held cannot be removed either.
    EXPECT_EQ(Read(), content);
    EXPECT_EQ(Names(), copy + " INBOX.DAT ");
    EXPECT_EQ(ReadFileBytes(copy), kHeader + record);
    kept.reset();
    DeleteFileA(copy.c_str());

    // Stripping has no way back.
    WriteFileBytes("INBOX.BAK", "older backup");
    WriteFileBytes("INBOX.TMP", "");
    kept.reset(new UnrenamedFile("INBOX.TMP"));
    EXPECT_EQ(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
    EXPECT_EQ(Reports(), kNotRenamed + kNotStripped);
    EXPECT_EQ(Names(), "INBOX.BAK INBOX.TMP ");
    EXPECT_EQ(ReadFileBytes("INBOX.BAK"), content);
    EXPECT_EQ(ReadFileBytes("INBOX.TMP"), kHeader + stripped);
    kept.reset();
}

TEST_F(BaseDirFileUpkeep, AFileWithABackupsNameIsNotItsOwnBackup) {
    const std::string bytes = kHeader + MessageID(Message("A"), "id");
    for (const char* name : {"D.BAK", "D.bak", "D.TMP"}) {
        const bool isBackup = std::string(name) != "D.TMP";
        DFile file(keDirFolder, name);
        WriteFileBytes(name, bytes);
        EXPECT_EQ(file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
        EXPECT_EQ(Reports(), kNotStripped);
        EXPECT_EQ(ReadFileBytes(name), bytes) << name;
        EXPECT_EQ(file.CompressDFile(), !isBackup);
        EXPECT_TRUE(!isBackup || !file.RenameToBak(nullptr));
        EXPECT_EQ(ReadFileBytes(name), bytes) << name;
        DeleteFileA(name);
    }
}

TEST_F(BaseDirFileUpkeep, ListsTheIdentifiersOfUsedRecords) {
    const std::string a = MessageID(Message("A"), "first"), long73(73, 'i');
    Write(a + Free(a) + Message("none") + MessageID(Message("B"), "last") + Cut(a));
    EXPECT_EQ(Identifiers(mFile, 1), "last ");
    EXPECT_EQ(Identifiers(mMessages, 1), "last first last ");
    // A length byte past its field ends with the field.
    Write(kHeader + With(a, 112, "\xFF" + long73));
    EXPECT_EQ(Identifiers(mForeign, 1), "last first last " + long73 + " ");
    Identifiers(mMissing, 0);
    EXPECT_EQ(Reports(), Base("0|Can't open Inbox D File"));
}

TEST_F(BaseDirFileUpkeep, StripsIdentifiersIntoANewFileAndKeepsTheOldOne) {
    const std::string kept = Status(MessageID(Message("A"), "kept"), 0x21);
    const std::string other = Status(MessageID(Message("B"), "other"), 0xDF);
    const std::string bareKept = With(kept, 112, {'\0'}), bare = With(other, 112, {'\0'});
    const std::string records = kept + Free(other) + other + Cut(kept);
    WriteFileBytes("INBOX.BAK", "older backup");
    WriteFileBytes("INBOX.TMP", std::string(5000, 'x'));
    Write(kHeader + records);
    EXPECT_TRUE(mFile.GetInfo(keInfoAll) && mFile.UsedCount() == 2);
    EXPECT_EQ(Left(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveUnkept)),
              "1" + kHeader + kept + bare);
    EXPECT_TRUE(mFile.UsedCount() == 0 && mFile.UnprocessedCount() == 0);
    EXPECT_EQ(ReadFileBytes("INBOX.BAK"), kHeader + records);
    Write(records);
    EXPECT_EQ(Left(mMessages.RemoveAllMessageIDs(BaseDirFile::keRemoveAll)), "1" + bareKept + bare);
    EXPECT_EQ(Names(), "INBOX.BAK INBOX.DAT ");
}
