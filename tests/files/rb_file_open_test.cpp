#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

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

TEST(RbFileOpen, RefusesNamesThatAreNoneAndReportsAFileDestroyedOpen) {
    ScratchFolder folder;
    MessageBoxes boxes;
    const std::string longName(10000, 'x');
    for (const char* name : {static_cast<const char*>(nullptr), "", longName.c_str()}) {
        RbFile file;
        EXPECT_FALSE(file.DoOpen(name, 0x82, 0));
        EXPECT_TRUE(file.bad());
    }
    std::make_unique<RbFile>("A.DAT")->Open(0x82);
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Assert Failed!\n!isOpen()\nDestructor of RbFile is called when file "
                            "is still OPEN\n35\nJXRESIDT\\RBFILE1.CPP\n"));
}

class RetryOpen : public testing::Test {
protected:
    RetryOpen() { WriteFileBytes("A.DAT", "x"); }
    ~RetryOpen() override {
        mTimer.reset();
        JxTimer::mhPostriderTask = nullptr;
    }
    // Whether A.DAT opens, and after how many milliseconds.
    std::pair<bool, DWORD> TimedOpen(RbFileRetryOpen& file) {
        const DWORD start = GetTickCount();
        const bool opened = file.Open(0xA3);
        return {opened, GetTickCount() - start};
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    std::unique_ptr<JxTimer> mTimer =
        std::make_unique<JxTimer>(GetModuleHandleA(nullptr), JxTimer::keClient);
};

TEST_F(RetryOpen, OpensWithinATickOfTheRelease) {
    RbFileRetryOpen file("A.DAT");
    HeldFile held(mFolder.Path("A.DAT"), 1200);
    const auto [opened, milliseconds] = TimedOpen(file);
    EXPECT_TRUE(opened && file.isOpen());
    EXPECT_TRUE(milliseconds >= 500 && milliseconds < 8000) << milliseconds; // a busy machine's too
    file.close();
}

static RbFileRetryOpen* nested;

TEST_F(RetryOpen, WaitsForASecondFileOpenedMeanwhile) {
    WriteFileBytes("B.DAT", "x");
    RbFileRetryOpen outer("A.DAT"), inner("B.DAT");
    nested = &inner;
    // While the outer open waits, a message opens the other file, and late ticks come in pairs.
    mTimer->RegisterCallback(
        [](void* timer) {
            if (RbFileRetryOpen* file = std::exchange(nested, nullptr))
                EXPECT_TRUE(file->Open(0xA3));
            else
                PostMessageA(static_cast<HWND>(timer), WM_TIMER, 100, 0);
        },
        600, mTimer->Window());
    HeldFile heldOuter(mFolder.Path("A.DAT"), 3000);
    HeldFile heldInner(mFolder.Path("B.DAT"), 1600);
    const auto [opened, milliseconds] = TimedOpen(outer);
    EXPECT_TRUE(opened && outer.isOpen() && inner.isOpen());
    EXPECT_LT(milliseconds, 12000u);
    outer.close();
    inner.close();
}

TEST_F(RetryOpen, DoesNotWaitForAMissingFileOrWithoutATimer) {
    RbFileRetryOpen missing("MISSING.DAT"), file("A.DAT");
    EXPECT_FALSE(missing.Open(0x01));
    HeldFile held(mFolder.Path("A.DAT"));
    mTimer.reset();
    JxTimer::mhPostriderTask = nullptr;
    const auto [opened, milliseconds] = TimedOpen(file);
    EXPECT_FALSE(opened);
    EXPECT_LT(milliseconds, 10000u); // not thirty seconds
    EXPECT_THAT(mBoxes.Texts(), ElementsAre("Assert Failed!\n0\n182\nJXRESIDT\\JXTIMER.CPP\n"));
}
