#include <memory>

#include "tests/store/watched_file.h"
#include "tests/support/helper_process.h"
#include "tests/support/unrenamed_file.h"

class BaseDirFileUpkeep : public MailFolder {};

TEST_F(BaseDirFileUpkeep, DeletesReadOnlyMessagesAndNoneThatAreHeld) {
    WriteFileBytes("A.EML", "text");
    WriteFileBytes("HELD.EML", "text");
    SetFileAttributesA("A.EML", FILE_ATTRIBUTE_READONLY);
    DirectoryRecord a = Record(Message("A", "A.EML")), held = Record(Message("held", "HELD.EML"));
    Write(kHeader + Written(a) + Written(held));
    const HeldFile holder(mFolder.Path("HELD.EML"));
    EXPECT_TRUE(mFile.DeleteMail(a) == 1 && mFile.DeleteMail(held) == 0);
    EXPECT_EQ(Reports(), kNotRemoved);
    EXPECT_EQ(Read(), kHeader + Free(Message("A", "A.EML")) + Written(held));
    EXPECT_EQ(Names(), "HELD.EML INBOX.DAT ");
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

// Each opening converts the name once more: for a letter whose conversions are all different, each
// operation needs an object of its own, and finds the same file by it.
TEST_F(BaseDirFileUpkeep, NamesThatEachOpeningConvertsAreFoundByTheWrite) {
    const auto file = [&] {
        auto inbox = std::make_unique<DirectoryFile>(keDirFolder);
        inbox->Parse(mFolder.Path("C\xE1j").c_str(), 1);
        return inbox;
    };
    WriteFileBytes("A.EML", Message("A", "A.EML") + "text");
    RbFile message(mFolder.Path("A.EML").c_str());
    DirectoryRecord probe = Record(Message("A", "A.EML"));
    EXPECT_TRUE(file()->CreateDFile() == 1 && file()->AddMessage(&message) == 1);
    EXPECT_EQ(file()->MarkRecord(probe, keMarkProcessed), 1);
    int turns = 0;
    static int* counted;
    counted = &turns;
    EXPECT_NE(file()->GetUnprocessedDDRs(
                  &mTaken, [] { ++*counted; }, keGetProcessable),
              0);
    EXPECT_EQ(file()->DeleteMail(probe), 1);
    EXPECT_EQ(Names(), "C\xC3\xBFj ");
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
