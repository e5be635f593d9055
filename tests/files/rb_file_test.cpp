#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "postrider.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

using testing::ElementsAre;
using testing::IsEmpty;

class RbFileTest : public testing::Test {
protected:
    ScratchFolder mFolder;
    MessageBoxes mBoxes;
};

TEST_F(RbFileTest, RemovesReadOnlyAndOpenFilesAndNamesFailures) {
    WriteFileBytes("RO.DAT", "x");
    SetFileAttributesA("RO.DAT", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(RbFile("RO.DAT").ImpRemove(), 1);
    RbFile open("OPEN.DAT");
    open.Open(0x82);
    EXPECT_EQ(open.Remove(), 1);
    EXPECT_FALSE(open.isOpen() || FileThere("OPEN.DAT"));
    EXPECT_EQ(open.ImpRemove(), -3);
    WriteFileBytes("HELD.DAT", "x");
    HeldFile held(mFolder.Path("HELD.DAT"));
    EXPECT_EQ(RbFile("HELD.DAT").ImpRemove(), -2);
    EXPECT_THAT(mBoxes.Shown(), IsEmpty());
    EXPECT_EQ(open.Remove(), -3);
    EXPECT_THAT(mBoxes.Texts(), ElementsAre("Assert Failed!\neResult == keDELETE_OK\n54\n"
                                            "JXRESIDT\\RBFILE1.CPP\n"));
}

TEST_F(RbFileTest, RenamedToBakReplacesAnOlderBackup) {
    WriteFileBytes("A.BAK", "older");
    WriteFileBytes("A.DAT", "newer");
    RbFile file(mFolder.Path("A.DAT").c_str());
    FileSpec backup("C:\\KEPT.X");
    EXPECT_NE(file.RenameToBak(&backup), 0);
    EXPECT_EQ(backup.FullFileSpec(), mFolder.Path("A.BAK"));
    EXPECT_EQ(file.FullFileSpec(), mFolder.Path("A.DAT"));
    EXPECT_TRUE(ReadFileBytes("A.BAK") == "newer" && !FileThere("A.DAT"));
    // Nobody needs to ask for the name.
    WriteFileBytes("A.DAT", "newest");
    EXPECT_NE(file.RenameToBak(nullptr), 0);
    EXPECT_EQ(ReadFileBytes("A.BAK"), "newest");
    EXPECT_THAT(mBoxes.Shown(), IsEmpty());
    backup = FileSpec("C:\\KEPT.X");
    EXPECT_EQ(file.RenameToBak(&backup), 0);
    EXPECT_STREQ(backup.FullFileSpec(), "C:\\KEPT.X");
}

TEST_F(RbFileTest, TellsTheStampAndSize) {
    WriteFileBytes("A.DAT", "12345");
    const SYSTEMTIME when = {1998, 3, 0, 15, 14, 30, 20, 0};
    FILETIME stamp;
    SystemTimeToFileTime(&when, &stamp);
    const HANDLE handle =
        CreateFileA("A.DAT", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    SetFileTime(handle, nullptr, nullptr, &stamp);
    CloseHandle(handle);

    RbFile file("A.DAT");
    long size = -1;
    std::tm parts = {};
    parts.tm_wday = 77;
    EXPECT_TRUE(file.FileInfo(&parts, &size));
    EXPECT_THAT((std::vector<int>{parts.tm_mday, parts.tm_mon, parts.tm_year, parts.tm_hour,
                                  parts.tm_min, parts.tm_sec, parts.tm_wday}),
                ElementsAre(15, 2, 98, 14, 30, 20, 77));
    EXPECT_EQ(size, 5);
}

// Positions are 32-bit, with a sign: 2 GB less a byte is the last.
TEST_F(RbFileTest, IsCutWhereverAPositionIsOne) {
    EXPECT_EQ(RbFile("A.DAT").UpdateFile(), 0);
    for (const long long size : {3ll, 0x7FFFFFFFll, 0x80000000ll}) {
        {
            std::fstream sparse("A.DAT", std::ios::out | std::ios::trunc | std::ios::binary);
            sparse.seekp(size);
            sparse.put('x');
        }
        RbFile file("A.DAT");
        ASSERT_TRUE(file.Open(keOpenUpdate));
        file.std::fstream::seekg(size);
        EXPECT_EQ(file.tellg(), size <= 0x7FFFFFFF ? size : -1);
        EXPECT_EQ(file.UpdateFile(), 0);
        file.close();
        EXPECT_EQ(std::filesystem::file_size("A.DAT"), size <= 0x7FFFFFFF ? size : size + 1);
    }
}

TEST_F(RbFileTest, KeepsAsMuchAsItsBufferHolds) {
    RbFile file("A.DAT");
    file.SetBufferSize(100000);
    ASSERT_TRUE(file.Open(keOpenRewrite));
    for (int i = 0; i < 50000; ++i)
        file.put('x');
    EXPECT_EQ(ReadFileBytes("A.DAT").size(), 0u);
    file.close();
    EXPECT_EQ(ReadFileBytes("A.DAT").size(), 50000u);
}

static std::vector<unsigned int> positions;
static size_t stopAfter;

static int Progress(unsigned int position) {
    positions.push_back(position);
    return positions.size() < stopAfter;
}

// Copies `size` bytes with progress, which ends the copy at its n-th call; the copy's result.
static int CopyBytes(size_t size, enumDupStream buffer, size_t stop = 1000) {
    positions.clear();
    stopAfter = stop;
    WriteFileBytes("FROM", std::string(size, 'f'));
    RbFile from("FROM"), to("TO");
    return to.Copy(from, 1, Progress, buffer);
}

TEST_F(RbFileTest, CopyShowsItsProgressInTheScaleOfItsBuffer) {
    EXPECT_EQ(CopyBytes(0, keDupSmallBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(20));
    EXPECT_EQ(CopyBytes(10, keDupSmallBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(20, 10));
    EXPECT_EQ(CopyBytes(25, keDupSmallBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(5, 10, 15));
    EXPECT_EQ(CopyBytes(99, keDupSmallBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
    EXPECT_EQ(CopyBytes(70000, keDupLargeBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(16000, 32000, 48000));
    EXPECT_EQ(ReadFileBytes("TO"), std::string(70000, 'f'));

    EXPECT_EQ(CopyBytes(25, keDupSmallBuffer, 2), 0);
    EXPECT_EQ(ReadFileBytes("TO"), std::string(20, 'f'));
}

TEST_F(RbFileTest, TheReadThatMeetsTheEndShowsProgressAndOneThatCannotReadFails) {
    WriteFileBytes("FROM", "12345");
    RbFile from("FROM"), to("TO"), unreadable("FROM");
    from.Open(keOpenRead);
    to.Open(keOpenRewrite);
    positions.clear();
    stopAfter = 1000;
    EXPECT_EQ(to.DupStream(from, 25, Progress, keDupSmallBuffer), 1);
    EXPECT_THAT(positions, ElementsAre(5));
    from.close();
    unreadable.Open(keOpenOut | keOpenApp | keOpenBinary);
    EXPECT_EQ(to.DupStream(unreadable, 5, nullptr, keDupSmallBuffer), -1);
    unreadable.close();
    to.close();
    EXPECT_EQ(ReadFileBytes("TO"), "12345");
}

TEST_F(RbFileTest, CopyOpensClearsAndClosesAsAsked) {
    const std::string bytes("a\r\n\x1A\0\xFF", 6);
    WriteFileBytes("FROM", bytes);
    RbFile from("FROM"), to("TO"), nowhere("C:\\NOWHERE\\TO"), missing("MISSING");
    char all[10];
    from.Open(0x81);
    from.read(all, 10);
    EXPECT_EQ(to.Copy(from, 0, nullptr, keDupSmallBuffer), 1);
    EXPECT_EQ(to.Copy(from, 1, nullptr, keDupSmallBuffer), 1);
    EXPECT_FALSE(from.isOpen() || to.isOpen());
    EXPECT_EQ(ReadFileBytes("TO"), bytes + bytes);

    EXPECT_EQ(nowhere.Copy(from, 0, nullptr, keDupSmallBuffer), -3);
    EXPECT_EQ(to.Copy(missing, 0, nullptr, keDupSmallBuffer), -4);
    EXPECT_TRUE(to.isOpen());
    to.Copy(missing, 1, nullptr, keDupSmallBuffer);
    EXPECT_FALSE(to.isOpen());
}
