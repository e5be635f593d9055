// How long an open waits for a file that another process holds, in ticks of the process's timer.

#include <functional>
#include <list>
#include <optional>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"

// Of the year 2000.
static const std::string kMessage = Date(Message("A", "A.EML"), 3029529600u);

// Another process that waits for a file in vain, and finds it free afterwards.
struct VainWait {
    explicit VainWait(Text path)
        : process("mail_process.exe",
                  "open \"" + path + "\" " + spent.Name() + " " + released.Name()) {}

    Signal spent, released;
    HelperProcess process;
};

// What takes half a minute, all at once and beside the other tests.
struct LongWaits {
    Text New(Text name) {
        WriteFileBytes(name, kHeader + Message("A"));
        return paths.emplace_back(folder.Path(name));
    }
    Text NewHeld(Text name) {
        held.emplace_back(New(name));
        return paths.back();
    }

    ScratchFolder folder;
    const DWORD start = GetTickCount();
    std::list<std::string> paths; // of the read-only file and of the removed one last
    std::list<HeldFile> held;
    VainWait heldForGood{NewHeld("OPEN.DAT")};
    HelperProcess check{"mail_process.exe", "check \"" + NewHeld("CHECK.DAT") + "\""};
    HelperProcess take{"mail_process.exe", "take \"" + NewHeld("TAKE.DAT") + "\""};
    const bool guarded = MakeReadOnly(New("READONLY.DAT"));
    VainWait readOnly{paths.back()};
    VainWait removed{NewHeld("REMOVED.DAT")};
};

static std::unique_ptr<LongWaits> longWaits;

// They begin with the program's first test, and are over when it comes to them.
class BeginLongWaits : public testing::Environment {
    void SetUp() override {
        const testing::UnitTest& all = *testing::UnitTest::GetInstance();
        for (int i = 0; i < all.total_test_suite_count(); ++i)
            if (all.GetTestSuite(i)->name() == std::string("HeldFiles") &&
                all.GetTestSuite(i)->should_run())
                longWaits.reset(new LongWaits);
    }
    void TearDown() override { longWaits.reset(); }
};
static testing::Environment* const kBegin = testing::AddGlobalTestEnvironment(new BeginLongWaits);

class HeldFiles : public testing::Test {
protected:
    HeldFiles() {
        current = this;
        RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
        // In front of the waiting open's own callback.
        mTimer->RegisterCallback([](void*) { current->Tick(); }, 500, nullptr);
        Write();
    }
    ~HeldFiles() override {
        mTimer.reset();
        JxTimer::mhPostriderTask = nullptr;
        RbAssertSelectOutput(RB_OUTPUT_DIALOG, nullptr);
        RbAssertSetCount(static_cast<int>(mReportCount));
    }
    void Tick() {
        if (++mTicks == mAt)
            mWhat();
    }
    static void Write() { WriteFileBytes("INBOX.DAT", kHeader + kMessage); }
    // The file is held; at the tick `number` from now on something happens.
    void HoldUntil(int number, std::function<void()> what) {
        mHeld.emplace(mPath);
        mTicks = 0;
        mAt = number;
        mWhat = std::move(what);
    }
    void HoldForTicks(int number) {
        HoldUntil(number, [this] { mHeld.reset(); });
    }

    static HeldFiles* current;
    ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("INBOX.DAT");
    DebugOutput mOutput;
    unsigned int mReportCount = RbAssertGetCount();
    std::unique_ptr<JxTimer> mTimer{new JxTimer(GetModuleHandleA(nullptr), JxTimer::keClient)};
    std::optional<HeldFile> mHeld;
    int mTicks = 0, mAt = 0;
    std::function<void()> mWhat;
};
HeldFiles* HeldFiles::current;

TEST_F(HeldFiles, OpenAtTheTickThatFindsThemReleased) {
    for (int ticks : {3, 7}) { // one second, and three
        RbFileRetryOpen file(mPath.c_str());
        const DWORD start = GetTickCount();
        HoldForTicks(ticks);
        EXPECT_TRUE(file.Open(keOpenUpdate) && file.isOpen());
        EXPECT_EQ(mTicks, ticks);
        EXPECT_GE(GetTickCount() - start, 500u * (ticks - 2) - 20);
        file.close();
    }
}

TEST_F(HeldFiles, EveryOperationOfAnInboxWaits) {
    DirectoryRecord probe = Record(kMessage), record;
    RbFile message(mFolder.Path("A.EML").c_str()), copy(mFolder.Path("COPY").c_str());
    const std::unique_ptr<RB_Container<DirectoryRecord>> list(new RB_Container<DirectoryRecord>(1));
    const std::unique_ptr<RB_Container<JxDownloadItem>> items(new RB_Container<JxDownloadItem>(1));
    using File = DirectoryFile;
    File target(keDirFolder);
    CreateDirectoryA("OLD", nullptr);
    target.Parse(mFolder.Path("OLD\\OLD.DAT").c_str(), 1);
    target.CreateDFile();
    const std::pair<const char*, std::function<bool(File&)>> operations[] = {
        {"add", [&](File& file) { return file.AddMessage(&message) == 1; }},
        {"create",
         [&](File& file) { return file.CreateDFile() && ReadFileBytes(mPath) == kHeader; }},
        {"find", [&](File& file) { return file.FindRecord(probe, keFindPosition) == 316; }},
        {"alter", [&](File& file) { return file.AlterDirectoryBlock(record, 1u, 0) == 316; }},
        {"count", [&](File& file) { return file.GetInfo(keInfoAll) && file.UsedCount() == 1; }},
        {"mark", [&](File& file) { return file.MarkRecord(probe, keMarkProcessed) == 1; }},
        {"delete", [&](File& file) { return file.DeleteMail(probe) && !FileThere("A.EML"); }},
        {"compress", [&](File& file) { return file.CompressDFile() == 1; }},
        {"list", [&](File& file) { return file.GetUIDList(items.get()) == 1; }},
        {"strip", [&](File& file) { return file.RemoveAllMessageIDs(File::keRemoveAll) == 1; }},
        {"check",
         [&](File& file) { return file.CheckUnprocessedDDRs(keCheckProcessable, nullptr) == 3; }},
        {"take",
         [&](File& file) {
             return file.GetUnprocessedDDRs(list.get(), nullptr, keGetProcessable) == 2;
         }},
        {"move",
         [&](File& file) { return file.DeleteOldMail(0, 0, &target), !FileThere("A.EML"); }},
        {"trim", [&](File& file) { return file.UpdateDFile(), true; }},
        {"copy", [&](File& file) { return file.GetDFile(copy) == 1; }},
    };
    for (const auto& [name, operation] : operations) {
        SCOPED_TRACE(name);
        Write();
        WriteFileBytes("A.EML", Message("A"));
        DirectoryFile file(keDirFolder);
        file.Parse(mPath.c_str(), 1);
        HoldForTicks(1);
        EXPECT_TRUE(operation(file));
        EXPECT_EQ(mTicks, 1);
        EXPECT_FALSE(file.isOpen() || mHeld);
    }
    EXPECT_TRUE(mOutput.Texts().empty());
}

TEST_F(HeldFiles, OtherOpensFailAtOnce) {
    char block[8], *text = nullptr;
    unsigned short number = 0;
    DirectoryFile inbox(keDirFolder);
    inbox.Parse(mFolder.Path("OTHER.DAT").c_str(), 1);
    inbox.CreateDFile();
    RbFile plain(mPath.c_str());
    UserPrefFile prefs(block, 1, sizeof block, 1);
    static_cast<FileSpec&>(prefs).Parse(mPath.c_str(), 1);
    HoldForTicks(1);
    EXPECT_FALSE(plain.Open(keOpenRead) || plain.OpenSilent(keOpenUpdate));
    EXPECT_EQ(GetFirstRecord(mPath.c_str(), &text, &text, &text, &number, &number), 0);
    EXPECT_EQ(inbox.AddMessage(&plain), 0);
    Done();
    EXPECT_FALSE(prefs.Open(keOpenUpdate));
    EXPECT_EQ(mTicks, 0);
}

TEST_F(HeldFiles, AMissingFileIsNotWaitedForAndOpensOnceItIsThere) {
    RbFileRetryOpen file(mFolder.Path("LATER.DAT").c_str());
    EXPECT_FALSE(file.Open(keOpenUpdate));
    EXPECT_EQ(mTicks, 0);
    WriteFileBytes("LATER.DAT", "here");
    EXPECT_TRUE(file.Open(keOpenUpdate));
    file.close();
}

// What was there when the wait began is waited for on; modes that make files make it anew.
TEST_F(HeldFiles, RemovedMeanwhileAreWaitedForUntilTheyAreBack) {
    const auto remove = [&] {
        mHeld.reset();
        EXPECT_TRUE(DeleteFileA(mPath.c_str()));
        mAt = 4;
        mWhat = Write;
    };
    RbFileRetryOpen kept(mPath.c_str()), made(mPath.c_str());
    HoldUntil(2, remove);
    EXPECT_TRUE(kept.Open(keOpenUpdate));
    EXPECT_EQ(mTicks, 4);
    kept.close();
    HoldUntil(2, remove);
    EXPECT_TRUE(made.Open(keOpenRewrite));
    EXPECT_EQ(mTicks, 2);
    made.close();
    EXPECT_EQ(ReadFileBytes(mPath), "");
    // One that does not come back: see below.
    longWaits->held.pop_back();
    EXPECT_TRUE(DeleteFileA(longWaits->paths.back().c_str()));
}

TEST_F(HeldFiles, AreNotWaitedForByAProgramThatQuits) {
    MSG message;
    RbFileRetryOpen late(mPath.c_str()), early(mPath.c_str()), freed(mPath.c_str());
    HoldUntil(2, [] { PostQuitMessage(7); });
    EXPECT_FALSE(late.Open(keOpenUpdate));
    EXPECT_EQ(mTicks, 2);
    // It is still to be seen by the program's own loop, and by the next open.
    EXPECT_FALSE(early.Open(keOpenUpdate));
    EXPECT_EQ(mTicks, 2);
    mHeld.reset();
    EXPECT_TRUE(freed.Open(keOpenUpdate));
    freed.close();
    ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_FALSE(late.isOpen() || early.isOpen());
}

TEST_F(HeldFiles, AreGivenUpAfterSixtyTicks) {
    LongWaits& waits = *longWaits;
    EXPECT_EQ(waits.check.ExitCode(), 60u + 256 * keCheckCannotOpen);
    EXPECT_EQ(waits.take.ExitCode(), 60u + 256 * keGetNone);
    EXPECT_GE(GetTickCount() - waits.start, 29000u);
    for (VainWait* wait : {&waits.heldForGood, &waits.readOnly, &waits.removed})
        EXPECT_TRUE(wait->spent.Wait(120000) || (wait == &waits.readOnly && !waits.guarded));
    waits.held.clear();
    for (Text path : waits.paths)
        SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    WriteFileBytes(waits.paths.back(), "back");
    for (VainWait* wait : {&waits.heldForGood, &waits.readOnly, &waits.removed}) {
        wait->released.Set();
        EXPECT_EQ(wait->process.ExitCode(), waits.guarded || wait != &waits.readOnly ? 60u : 256u);
    }
}
