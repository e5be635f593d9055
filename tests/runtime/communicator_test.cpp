#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "postrider.h"

using testing::ElementsAre;
using testing::IsEmpty;

static std::vector<std::string> journal;

// Two windows of one thread that talk to one another.
class Communicator : public testing::Test, public JxCommunicator {
protected:
    enum : unsigned int { kPlain = 1, kWantsReply = 5 };

    Communicator() {
        journal.clear();
        mhOwnWindow = Window("own", keRegisterClass);
        mhPartnerWindow = Window("partner", keClassRegistered);
        mOther = Window("other", keClassRegistered);
    }
    ~Communicator() override {
        mwNumSecsToWaitAfterPost = 30;
        for (void* window : {mhOwnWindow, mhPartnerWindow, mOther})
            DestroyWindow(static_cast<HWND>(window));
        UnregisterClassA("Communicator", GetModuleHandleA(nullptr));
    }
    void* Window(const char* name, enumJxCreateWin option) {
        void* window = nullptr;
        EXPECT_EQ(JxCreateHiddenWindow(&window, GetModuleHandleA(nullptr), name, "Communicator",
                                       Procedure, option),
                  1);
        SetWindowLongA(static_cast<HWND>(window), GWL_USERDATA, reinterpret_cast<long>(this));
        return window;
    }
    // Notes what comes. The partner replies when asked to; a reply ends the waiting.
    static long __stdcall Procedure(void* handle, unsigned int message, unsigned int wParam,
                                    long lParam) {
        const auto window = static_cast<HWND>(handle);
        if (message == WM_CHAR)
            journal.push_back(std::string("types ") + static_cast<char>(wParam));
        if (message != 1074)
            return DefWindowProcA(window, message, wParam, lParam);
        auto& self = *reinterpret_cast<Communicator*>(GetWindowLongA(window, GWL_USERDATA));
        char name[10] = "";
        GetWindowTextA(window, name, sizeof name);
        journal.push_back(name + (" " + std::to_string(wParam)) + " " + std::to_string(lParam));
        if (handle == self.mhOwnWindow)
            self.mfWaiting = 0;
        else if (wParam == kWantsReply)
            Post(self.mhOwnWindow, self.mwAwaitedMessage, 9);
        return 7;
    }
    static void Post(void* window, unsigned int wParam, long lParam) {
        EXPECT_TRUE(PostMessageA(static_cast<HWND>(window), 1074, wParam, lParam));
    }

    void* mOther;
};

static const unsigned short secondsAtFirst = JxCommunicator::mwNumSecsToWaitAfterPost;

TEST_F(Communicator, ClassIsRegisteredOnce) {
    EXPECT_EQ(secondsAtFirst, 30);
    void* window = nullptr;
    EXPECT_EQ(JxCreateHiddenWindow(&window, GetModuleHandleA(nullptr), "again", "Communicator",
                                   Procedure, keRegisterClass),
              0);
    EXPECT_EQ(window, nullptr);
}

TEST_F(Communicator, PostsAndSendsToItsPartner) {
    EXPECT_NE(PostReturnMessage(kPlain, 2), 0);
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_EQ(SendMessageA(3, -4), 7);
    RbYield();
    EXPECT_THAT(journal, ElementsAre("partner 3 -4", "partner 1 2"));
}

TEST_F(Communicator, WaitsForTheReply) {
    EXPECT_EQ(mwNumSecsToWaitAfterPost, 30);
    EXPECT_NE(PostMessageAndWait(kWantsReply, 6), 0);
    EXPECT_THAT(journal, ElementsAre("partner 5 6", "own 5 9"));
    // The partner's messages come first, and others' stay in the queue.
    journal.clear();
    Post(mOther, 3, 0);
    Post(mhOwnWindow, 8, 0);
    EXPECT_NE(PostMessageAndWait(kPlain, 0), 0);
    EXPECT_THAT(journal, ElementsAre("partner 1 0", "own 8 0"));
    RbYield();
    EXPECT_THAT(journal, ElementsAre("partner 1 0", "own 8 0", "other 3 0"));
}

TEST_F(Communicator, KeysAreTypedWhereverMessagesRun) {
    const auto key = [&] {
        journal.clear();
        PostMessageA(static_cast<HWND>(mhPartnerWindow), WM_KEYDOWN, 'A', 0x1E0001);
    };
    key();
    PostMessageAndWait(kWantsReply, 6);
    EXPECT_THAT(journal, testing::Contains("types a"));
    key();
    RbYield();
    EXPECT_THAT(journal, ElementsAre("types a"));
}

TEST_F(Communicator, WaitsNoLongerThanItsTime) {
    mwNumSecsToWaitAfterPost = 1;
    const std::time_t start = std::time(nullptr);
    EXPECT_EQ(PostMessageAndWait(kPlain, 2), 0);
    const std::time_t seconds = std::time(nullptr) - start;
    EXPECT_TRUE(seconds >= 1 && seconds < 20) << seconds;
    EXPECT_THAT(journal, ElementsAre("partner 1 2"));
    EXPECT_TRUE(mwAwaitedMessage == kPlain && mfWaiting);
}

TEST_F(Communicator, WithoutTimeItLooksOnce) {
    mwNumSecsToWaitAfterPost = 0;
    // A second has just begun.
    for (const std::time_t last = std::time(nullptr); std::time(nullptr) == last;)
        Sleep(1);
    const DWORD start = GetTickCount();
    EXPECT_EQ(PostMessageAndWait(kPlain, 2), 0);
    EXPECT_LT(GetTickCount() - start, 700u);
    EXPECT_THAT(journal, ElementsAre("partner 1 2"));
}

TEST_F(Communicator, DoesNotWaitForAPartnerThatIsNotThere) {
    DestroyWindow(static_cast<HWND>(mhPartnerWindow));
    Post(mhOwnWindow, 8, 0);
    EXPECT_EQ(SendMessageA(kPlain, 0) + PostReturnMessage(kPlain, 0), 0);
    EXPECT_EQ(PostMessageAndWait(kWantsReply, 0), 0);
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_TRUE(mwAwaitedMessage == kWantsReply && mfWaiting);
    RbYield();
    EXPECT_THAT(journal, ElementsAre("own 8 0"));
}
