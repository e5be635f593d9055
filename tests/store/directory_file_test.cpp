#include <algorithm>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include "tests/store/watched_file.h"
#include "tests/support/hooked_open.h"

class DirectoryFileTest : public MailFolder {};

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
    const std::string mA = Date(Message("A", "A.EML"), 3029529600u);
};

TEST_F(OldMail, MessagesExactlyAsOldStay) {
    WriteFileBytes("A.EML", Message("from A"));
    Write(kHeader + mA);
    const std::time_t start = std::time(nullptr);
    while (std::time(nullptr) == start)
        Sleep(1);
    mFile.DeleteOldMail(start + 1 - 946684800, 0, &mOld);
    if (std::time(nullptr) != start + 1)
        GTEST_SKIP() << "took a second";
    EXPECT_EQ(Read(), kHeader + mA);
    mFile.DeleteOldMail(start - 946684800, 0, &mOld);
    EXPECT_EQ(Read(), kHeader + Free(mA));
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

TEST_F(DirectoryFileTest, IsNotRewrittenWithoutACopy) {
    const HookedOpen<char> open([](const std::string& path, DWORD) {
        return path.find("JPW") == path.npos ? 0 : ERROR_ACCESS_DENIED;
    });
    const std::string bytes = Message("A") + Free(Message("B"));
    Write(bytes);
    mMessages.UpdateDFile();
    EXPECT_EQ(Reports(), Inbox("0|Error DirectoryFile copy: OPEN destination file"));
    EXPECT_EQ(Read(), bytes);
}

// What is on the disk in one piece when the rewriting breaks off is the copy.
TEST_F(DirectoryFileTest, ACopyThatAloneIsWholeStays) {
    const std::string bytes = Free(Message("A")) + Message("B") + Message("C");
    const std::string copy = WindowsDirectory() + "\\JPW00000.TMP";
    Watched<DFile> messages(keDirMessages);
    for (const bool fails : {true, false}) {
        Write(bytes);
        messages.FailWritesAt(fails ? 400 : 10000);
        messages.UpdateDFile();
        EXPECT_EQ(Reports(), fails ? Inbox("0|Error copy file: DirectoryFile") : "");
        EXPECT_EQ(Read(), bytes.substr(316, fails ? 316 : 632));
        EXPECT_EQ(FileThere(copy), fails);
        EXPECT_EQ(fails ? ReadFileBytes(copy) : bytes, bytes);
        DeleteFileA(copy.c_str());
    }
}

TEST_F(DirectoryFileTest, ACopyThatCannotBeMadeIsTold) {
    RbFile nowhere(mFolder.Path("NO\\COPY").c_str());
    Write(kHeader + Message("A"));
    EXPECT_EQ(mFile.GetDFile(nowhere), 0);
    EXPECT_EQ(Reports(), Inbox("fGood") + Inbox("fGood|Error DirectoryFile: GetDFile()"));
    EXPECT_TRUE(mFile.UsedCount() == 0 && !mFile.IsGood());
}
