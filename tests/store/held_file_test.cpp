// How long an open waits for a file that another process holds, in ticks of the process's timer.

#include <functional>
#include <optional>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"
#include "tests/support/hooked_import.h"

// Of the year 2000.
static const std::string kMessage = Date(Message("A", "A.EML"), 3029529600u);

class HeldFiles : public MailFolder {
protected:
    HeldFiles() {
        current = this;
        // In front of the waiting open's own callback.
        mTimer->RegisterCallback([](void*) { current->Tick(); }, 500, nullptr);
        Write();
    }
    ~HeldFiles() override {
        mTimer.reset();
        JxTimer::mhPostriderTask = nullptr;
    }
    void Tick() {
        if (++mTicks == mAt)
            std::function<void()>{mWhat}(); // it may set another one
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

    // Half seconds that are over at once.
    struct HurriedTicks {
        static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) {
            SendMessageA(static_cast<HWND>(current->mTimer->Window()), WM_TIMER, 100, 0);
        }
        ~HurriedTicks() { KillTimer(nullptr, timer); }
        const UINT_PTR timer = SetTimer(nullptr, 0, 10, Tick);
    };

    static HeldFiles* current;
    const std::string mPath = mFolder.Path("INBOX.DAT");
    std::unique_ptr<JxTimer> mTimer{new JxTimer(GetModuleHandleA(nullptr), JxTimer::keClient)};
    std::optional<HeldFile> mHeld;
    int mTicks = 0, mAt = 0;
    std::function<void()> mWhat;
};
HeldFiles* HeldFiles::current;

static int waits;

static DWORD WINAPI Wait(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds,
                         DWORD wake) {
    ++waits;
    EXPECT_TRUE(count == 0 && milliseconds == 500);
    return MsgWaitForMultipleObjects(count, handles, all, milliseconds, wake);
}

TEST_F(HeldFiles, OpenAtTheTickThatFindsThemReleased) {
    const HookedImport hook("JXTICDLL.DLL", "user32.dll", "MsgWaitForMultipleObjects",
                            reinterpret_cast<void*>(Wait));
    for (int ticks : {3, 7}) { // one second, and three
        RbFileRetryOpen file(mPath.c_str());
        const DWORD start = GetTickCount();
        HoldForTicks(ticks);
        EXPECT_TRUE(file.Open(keOpenUpdate) && file.isOpen());
        EXPECT_EQ(mTicks, ticks);
        EXPECT_GE(GetTickCount() - start, 500u * (ticks - 2) - 20);
        EXPECT_GE(std::exchange(waits, 0), ticks - 1);
        file.close();
    }
}

TEST_F(HeldFiles, EveryOperationOfAnInboxWaits) {
    CreateDirectoryA("OLD", nullptr);
    mOld.CreateDFile();
    mProbe = Record(kMessage);
    const HurriedTicks hurry;
    for (const Operation& each : Operations(keDirFolder)) {
        SCOPED_TRACE(each.name);
        Write();
        for (const char* name : {"A.EML", "NEW.EML"})
            WriteFileBytes(name, Message("A"));
        DirectoryFile file(keDirFolder);
        file.Parse(mPath.c_str(), 1);
        HoldForTicks(1);
        EXPECT_EQ(each.run(file), each.works);
        EXPECT_GE(mTicks, 1);
        EXPECT_FALSE(file.isOpen() || mHeld);
    }
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

// A message opens the second file while the first one is waited for.
TEST_F(HeldFiles, AreWaitedForTwoAtATime) {
    const std::string other = mFolder.Path("OTHER.DAT");
    WriteFileBytes(other, "");
    std::optional<HeldFile> heldOther(other);
    RbFileRetryOpen outer(mPath.c_str()), inner(other.c_str());
    const HurriedTicks hurry;
    HoldUntil(2, [&] {
        mAt = 4;
        mWhat = [&] {
            heldOther.reset();
            mAt = 6;
            mWhat = [&] { mHeld.reset(); };
        };
        EXPECT_TRUE(inner.Open(keOpenUpdate));
    });
    EXPECT_TRUE(outer.Open(keOpenUpdate) && outer.isOpen() && inner.isOpen());
    outer.close();
    inner.close();
}

TEST_F(HeldFiles, AreNotWaitedForWithoutATimer) {
    RbFileRetryOpen file(mPath.c_str());
    mHeld.emplace(mPath);
    mTimer.reset();
    JxTimer::mhPostriderTask = nullptr;
    EXPECT_FALSE(file.Open(keOpenUpdate));
    EXPECT_EQ(Reports(), "0|JXRESIDT\\JXTIMER.CPP|");
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
    const HurriedTicks hurry;
    for (int ticks : {60, 61}) {
        RbFileRetryOpen file(mPath.c_str());
        HoldForTicks(ticks);
        EXPECT_EQ(file.Open(keOpenUpdate), ticks == 60);
        if (file.isOpen())
            file.close();
        mHeld.reset();
    }
    mAt = 0;
    const auto spend = [&](std::function<void()> release) {
        RbFileRetryOpen file(mPath.c_str());
        mTicks = 0;
        EXPECT_FALSE(file.Open(keOpenUpdate));
        EXPECT_GE(mTicks, 60);
        // It does not wait again, and nobody tries behind its back.
        EXPECT_FALSE(file.Open(keOpenUpdate));
        EXPECT_LT(mTicks, 90);
        release();
        HurriedTicks::Tick(nullptr, 0, 0, 0);
        EXPECT_FALSE(file.isOpen());
        EXPECT_TRUE(file.Open(keOpenUpdate));
        file.close();
    };
    mHeld.emplace(mPath);
    spend([&] { mHeld.reset(); });
    HoldUntil(2, [&] {
        mHeld.reset();
        EXPECT_TRUE(DeleteFileA(mPath.c_str()));
    });
    spend(Write);
    DirectoryFile inbox(keDirFolder);
    inbox.Parse(mPath.c_str(), 1);
    HoldUntil(0, nullptr);
    EXPECT_EQ(inbox.CheckUnprocessedDDRs(keCheckAlways, nullptr), keCheckCannotOpen);
    EXPECT_GE(mTicks, 60);
    DirectoryFile other(keDirFolder);
    other.Parse(mPath.c_str(), 1);
    EXPECT_EQ(other.GetUnprocessedDDRs(&mTaken, nullptr, keGetProcessable), keGetNone);
    EXPECT_GE(mTicks, 120);
    EXPECT_EQ(Reports(), Inbox("fGood"));
    mHeld.reset();
    if (MakeReadOnly(mPath))
        spend([&] { SetFileAttributesA(mPath.c_str(), FILE_ATTRIBUTE_NORMAL); });
}
