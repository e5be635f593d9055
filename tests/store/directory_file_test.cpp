#include <algorithm>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include "tests/store/mail_folder.h"

static void Idle() {}

class DirectoryFileTest : public MailFolder {
protected:
    static std::string TextOf(RB_Container<DirectoryRecord>& list) {
        std::string records;
        for (auto* record = list.GetFirstObject(); record; record = list.GetNextObject())
            records += Written(*record);
        return records;
    }
    std::string Taken() { return TextOf(mTaken); }
    // The records taken, or the result when there are none.
    std::string Take(DirectoryFile& file, int option) {
        const auto options = static_cast<enumGetDDROptions>(option);
        mTaken.ClearContainer();
        const int result = file.GetUnprocessedDDRs(&mTaken, Idle, options);
        const std::string taken = Taken();
        EXPECT_EQ(result == 2, !taken.empty());
        return taken.empty() ? std::to_string(result) : taken;
    }
};

// Calls its own AddObject for each record.
struct CountingContainer : RB_Container<DirectoryRecord> {
    CountingContainer() : RB_Container(keOwnsObjects) {}
    int AddObject(DirectoryRecord& record) override {
        ++added;
        return RB_Container::AddObject(record);
    }
    int added = 0;
};

TEST_F(DirectoryFileTest, TakesTheSameWithAndWithoutOthersToWaitFor) {
    const std::string a = Message("A");
    const std::string kinds[] = {a,
                                 Free(a),
                                 Status(a, 1),
                                 Status(a, 0x40),
                                 Attributes(a, 0x0400),
                                 Attributes(a, 0x1000),
                                 Kind(a, 9),
                                 Kind(a, 0)};
    std::mt19937 random(1);
    std::string bytes(kHeader);
    // More than are read at once, and one that is cut.
    for (int record = 0; record < 500; ++record)
        bytes += kinds[random() % std::size(kinds)];
    bytes += Cut(a);
    for (const auto option : {keGetProcessable, keGetInstallable, keGetInstallRequests}) {
        Write(bytes);
        const std::string taken = Take(mFile, option), left = Read();
        RB_Container<DirectoryRecord> plain(RB_Container<DirectoryRecord>::keOwnsObjects);
        CountingContainer counting;
        for (RB_Container<DirectoryRecord>* list :
             {&plain, static_cast<decltype(&plain)>(&counting)}) {
            Write(bytes);
            EXPECT_EQ(mFile.GetUnprocessedDDRs(list, nullptr, option), keGetSome);
            EXPECT_TRUE(TextOf(*list) == taken && Read() == left) << option;
        }
        EXPECT_EQ(counting.added * 316u, taken.size());
    }
}

// The list as the calls of ChangeList have left it; the library may have appended one since.
static RB_Container<DirectoryRecord>* changedList;
static std::vector<DirectoryRecord*> expectedList;
static std::vector<std::unique_ptr<DirectoryRecord>> takenRecords;
static std::mt19937 listChanges;

static void ChangeList() {
    std::vector<DirectoryRecord*> now;
    for (auto* record = changedList->GetFirstObject(); record;
         record = changedList->GetNextObject())
        now.push_back(record);
    if (now.size() == expectedList.size() + 1) {
        expectedList.push_back(now.back());
        takenRecords.emplace_back(now.back());
    }
    ASSERT_EQ(now, expectedList);
    static DirectoryRecord own;
    const unsigned int change = listChanges() % 8;
    if (change == 0) {
        changedList->AddObject(own);
        expectedList.push_back(&own);
    } else if (change == 1) {
        changedList->ClearContainer();
        expectedList.clear();
    } else if (change < 4 && !now.empty()) {
        const auto removed = change == 2 ? expectedList.begin() : expectedList.end() - 1;
        // The first of several that are the same object.
        changedList->RemoveObject(**removed);
        expectedList.erase(std::find(expectedList.begin(), expectedList.end(), *removed));
    }
}

TEST_F(DirectoryFileTest, AppendsToAListThatIdleChanges) {
    std::string bytes(kHeader);
    for (int record = 0; record < 100; ++record)
        bytes += Message("A");
    Write(bytes);
    RB_Container<DirectoryRecord> list(0);
    changedList = &list;
    EXPECT_EQ(mFile.GetUnprocessedDDRs(&list, ChangeList, keGetProcessable), keGetSome);
    ChangeList();
    takenRecords.clear();
}

class OldMail : public MailFolder {
protected:
    OldMail() { CreateDirectoryA("OLD", nullptr) && mOld.CreateDFile(); }
    // Moves what is older than a message of 2000, and younger ones by less than `more` seconds.
    void Age(DirectoryFile& file, int onlyProcessed = 0, long more = 100) {
        file.DeleteOldMail(std::time(nullptr) - 946684800 - more, onlyProcessed, &mOld);
    }
    DFile mOld{keDirFolder, "OLD\\OLD.DAT"};
    const std::string mA = Date(Message("A", "A.EML"), 3029529600u);
};

TEST_F(OldMail, MovesOlderMessagesIntoTheOtherFolder) {
    const std::string later = Date(mA, 3029529600u + 10000);
    const std::string b = Status(With(mA, 38, Pascal("B.EML")), 0x01);
    WriteFileBytes("A.EML", Message("from A") + "text");
    WriteFileBytes("B.EML", Message("from B") + "text");
    Write(kHeader + Free(mA) + mA + later + b);
    Age(mForeign);
    Age(mMessages);
    const std::time_t start = std::time(nullptr);
    while (std::time(nullptr) == start)
        Sleep(1);
    Age(mFile, 0, 0); // exactly as old stays
    if (std::time(nullptr) != start + 1)
        GTEST_SKIP() << "took a second";
    EXPECT_EQ(Read(), kHeader + Free(mA) + mA + later + b);
    Age(mFile, 1);
    EXPECT_EQ(Read(), kHeader + Free(mA) + mA + later + Free(b));
    Age(mFile);
    EXPECT_EQ(Read(), kHeader + Free(mA) + Free(mA) + later + Free(b));
    EXPECT_EQ(Names(), "INBOX.DAT OLD ");
    const std::string old = ReadFileBytes("OLD\\OLD.DAT");
    for (const auto& [at, from] : {std::pair(316u, "from B"), {632u, "from A"}}) {
        const std::string name = old.substr(at + 39, old[at + 38]);
        EXPECT_EQ(name.find_first_not_of("0123456789"), name.find(".EML"));
        EXPECT_EQ(ReadFileBytes("OLD\\" + name), Message(from) + "text");
        EXPECT_EQ(With(old.substr(at, 316), 38, Pascal("GONE.EML") + std::string(25, '\0')),
                  Message(from));
    }
}

TEST_F(OldMail, StopsAtTheFirstMessageThatCannotBeMoved) {
    for (const char* name : {"A.EML", "SHORT.EML", "OLD\\IN.EML"})
        WriteFileBytes(name, "short");
    for (const std::string name : {"GONE.EML", "OLD\\IN.EML", "OLD", "SHORT.EML"}) {
        const std::string records = kHeader + Date(Message("B", name), 3029529600u) + mA;
        Write(records);
        EXPECT_EQ(Names() + Names("OLD"), "A.EML INBOX.DAT OLD SHORT.EML IN.EML OLD.DAT ");
        Age(mFile);
        EXPECT_EQ(Read() + ReadFileBytes("OLD\\OLD.DAT"), records + kHeader) << name;
        EXPECT_EQ(Reports(), (name == "GONE.EML" ? kNotRenamed : "") + kNotAged) << name;
    }
    EXPECT_EQ(Names(), "A.EML INBOX.DAT OLD ");
}

TEST_F(OldMail, NothingIsOlderThanTheLongestAge) {
    WriteFileBytes("A.EML", Message("from A"));
    Write(kHeader + mA);
    for (unsigned long age : {0xFFFFFFFFul, 0x80000000ul}) {
        mFile.DeleteOldMail(age, 0, &mOld);
        EXPECT_EQ(Read() + ReadFileBytes("OLD\\OLD.DAT"), kHeader + mA + kHeader) << age;
    }
    EXPECT_EQ(Names(), "A.EML INBOX.DAT OLD ");
}

TEST_F(OldMail, MovedIntoItsOwnFolderIsMovedOnce) {
    WriteFileBytes("A.EML", Message("from A"));
    Write(kHeader + mA);
    DFile same(keDirFolder);
    mFile.DeleteOldMail(0, 0, &same);
    EXPECT_EQ(Read().substr(0, 632), kHeader + Free(mA));
    EXPECT_EQ(Read().size(), 948u);
    EXPECT_EQ(Reports(), "");
}

// Another program that maps the file keeps it from being cut.
TEST_F(DirectoryFileTest, LeavesAFileThatCannotBeCut) {
    for (DFile* file : {&mFile, &mMessages}) {
        const std::string bytes = kHeader + Message("A") + Free(Message("B"));
        Write(bytes);
        const HANDLE held =
            CreateFileA("INBOX.DAT", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, 0, nullptr);
        const HANDLE mapping = CreateFileMappingA(held, nullptr, PAGE_READONLY, 0, 0, nullptr);
        const void* view = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
        file->UpdateDFile();
        EXPECT_EQ(Reports(), Inbox("0|Error copy file: DirectoryFile"));
        UnmapViewOfFile(view);
        CloseHandle(mapping);
        CloseHandle(held);
        EXPECT_EQ(Read(), bytes);
    }
}

TEST_F(DirectoryFileTest, CopiesUsedRecordsNumberedByTheirSlots) {
    const std::string a = Status(Message("A"), 0x01), b = Message("B");
    const std::string content = Message("header") + a + Free(a) + Broken(a) + b + Cut(b);
    RbFile copy(mFolder.Path("COPY.DAT").c_str()), nowhere(mFolder.Path("NO\\COPY").c_str());
    Write(content);
    EXPECT_TRUE(mMessages.GetDFile(copy) == 0 && mMissing.GetDFile(copy) == 0);
    EXPECT_FALSE(copy.Exists());
    WriteFileBytes("COPY.DAT", std::string(5000, 'x'));
    EXPECT_EQ(mFile.GetDFile(copy), 2);
    EXPECT_EQ(ReadFileBytes("COPY.DAT"), With(a, 0, Bytes("\0\x01")) + With(b, 0, Bytes("\0\x04")));
    EXPECT_TRUE(mFile.UsedCount() == 2 && mFile.UnprocessedCount() == 1 && mFile.IsGood());
    EXPECT_EQ(mFile.GetDFile(nowhere), 0);
    EXPECT_EQ(Reports(), Inbox("fGood") + Inbox("fGood|Error DirectoryFile: GetDFile()"));
    EXPECT_TRUE(!copy.isOpen() && mFile.UsedCount() == 0 && !mFile.IsGood());
}
