#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>

#include "postrider.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

using testing::ElementsAre;

// Opens NAME, writes "X\n" where that goes, and closes; false when the open fails.
static bool WriteLine(const char* name, int mode) {
    RbFile file(name);
    const bool opened = file.Open(mode);
    EXPECT_EQ(opened, file.good() && file.isOpen());
    EXPECT_EQ(opened, !file.bad());
    file.write("X\n", 2);
    file.close();
    return opened;
}

TEST(RbFileOpen, ModesCreateKeepCutOrFail) {
    ScratchFolder folder;
    const char* const kFails = nullptr;
    const struct {
        int mode;
        const char* fromMissing;
        const char* fromOld; // a file of "old!"
    } modes[] = {
        {0x02, "X\r\n", "X\r\n"}, {0x03, "X\r\n", "X\r\n!"}, {0x0A, "X\r\n", "old!X\r\n"},
        {0x21, kFails, "old!"},   {0x81, kFails, "old!"},    {0x82, "X\n", "X\n"},
        {0x83, "X\n", "X\nd!"},   {0x92, "X\n", "X\n"},      {0x93, "X\n", "X\n"},
        {0xA1, kFails, "old!"},   {0xA3, kFails, "X\nd!"},   {0xA7, kFails, "old!X\n"},
    };
    for (const auto& [mode, fromMissing, fromOld] : modes) {
        SCOPED_TRACE(testing::Message() << "mode 0x" << std::hex << mode);
        DeleteFileA("NEW.DAT");
        EXPECT_EQ(WriteLine("NEW.DAT", mode), fromMissing != kFails);
        ASSERT_EQ(FileThere("NEW.DAT"), fromMissing != kFails);
        EXPECT_EQ(fromMissing ? ReadFileBytes("NEW.DAT") : "", fromMissing ? fromMissing : "");

        WriteFileBytes("OLD.DAT", "old!");
        EXPECT_TRUE(WriteLine("OLD.DAT", mode));
        EXPECT_EQ(ReadFileBytes("OLD.DAT"), fromOld);

        WriteFileBytes("HELD.DAT", "old!");
        {
            HeldFile held(folder.Path("HELD.DAT"));
            EXPECT_FALSE(WriteLine("HELD.DAT", mode));
        }
        EXPECT_EQ(ReadFileBytes("HELD.DAT"), "old!");
    }
}

// A program may have so many streams open.
TEST(RbFileOpen, FailsInAProgramWithTooManyStreams) {
    ScratchFolder folder;
    WriteFileBytes("A.DAT", "a");
    std::vector<std::FILE*> streams;
    while (std::FILE* const stream = std::fopen("NUL", "r"))
        streams.push_back(stream);
    for (const int mode : {keOpenRead, keOpenUpdate}) {
        RbFile file("A.DAT");
        EXPECT_FALSE(file.Open(mode) || file.isOpen() || file.good());
    }
    const HANDLE alone = CreateFileA("A.DAT", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(alone != INVALID_HANDLE_VALUE && CloseHandle(alone));
    for (std::FILE* const stream : streams)
        std::fclose(stream);
}

TEST(RbFileOpen, RefusesNamesThatAreNoneAndReportsAFileDestroyedOpen) {
    ScratchFolder folder;
    MessageBoxes boxes;
    std::vector<std::string> names = {"", std::string(10000, 'x')};
    for (unsigned int size = 260; size < 270; ++size)
        names.push_back(std::string(size, 'x'));
    EXPECT_FALSE(RbFile().DoOpen(nullptr, 0x82, 0));
    RbFile unnamed;
    unnamed.open(static_cast<const char*>(nullptr), 0x82);
    EXPECT_FALSE(unnamed.isOpen());
    for (const std::string& longName : names) {
        const char* const name = longName.c_str();
        RbFile file;
        EXPECT_TRUE(file.DoOpen("B", 0x82, 0)); // nothing of it stays in the common buffer
        file.close();
        EXPECT_FALSE(file.DoOpen(name, 0x82, 0));
        EXPECT_TRUE(file.bad());
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1);
    std::make_unique<RbFile>("A.DAT")->Open(0x82);
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Assert Failed!\n!isOpen()\nDestructor of RbFile is called when file "
                            "is still OPEN\n35\nJXRESIDT\\RBFILE1.CPP\n"));
}
