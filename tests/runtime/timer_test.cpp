#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "postrider.h"
#include "tests/support/hooked_import.h"
#include "tests/support/message_boxes.h"

using testing::ElementsAre;

static std::string TimerReport(const char* expression, int line) {
    return ReportText(expression, "", line, "JXRESIDT\\JXTIMER.CPP");
}

static std::string journal;

static void Write(void* letter) { journal += *static_cast<char*>(letter); }
static void WriteToo(void* letter) { Write(letter); }

class Timer : public testing::Test {
protected:
    Timer() { ForgetTimers(); }
    ~Timer() override { ForgetTimers(); }

    static void ForgetTimers() {
        journal.clear();
        JxTimer::mhPostriderTask = JxTimer::mhBackgrounderTask = nullptr;
        JxTimer::poPostriderTimer = JxTimer::poBackgrounderTimer = nullptr;
    }
    static std::unique_ptr<JxTimer> Make(int option) {
        return std::unique_ptr<JxTimer>(new JxTimer(
            GetModuleHandleA(nullptr), static_cast<JxTimer::enumCreateOptions>(option)));
    }
    // What the callbacks wrote in each of `count` ticks, which end with a dot.
    static std::string Ticks(const JxTimer& timer, int count, unsigned int identifier = 100) {
        journal.clear();
        for (; count; --count) {
            EXPECT_EQ(SendMessageA(static_cast<HWND>(timer.Window()), WM_TIMER, identifier, 0), 0);
            journal += '.';
        }
        return journal;
    }

    char mA = 'a', mB = 'b', mC = 'c', mD = 'd';
    MessageBoxes mBoxes;
};

TEST_F(Timer, ServesIntervalsAtTheFirstTickAtOrAfterThem) {
    const DWORD start = GetTickCount();
    const auto timer = Make(0);
    EXPECT_EQ(timer->RegisterCallback(Write, 1200, &mA), 1);
    while (journal.empty() && GetTickCount() - start < 10000)
        RbYield();
    EXPECT_EQ(journal, "a");
    EXPECT_GE(GetTickCount() - start, 1200u);
    timer->RegisterCallback(Write, 0, &mB);
    timer->RegisterCallback(Write, 501, &mC);
    timer->RegisterCallback(Write, 500, &mD);
    EXPECT_EQ(Ticks(*timer, 6), "bd.bcd.abd.bcd.bd.abcd.");
}

TEST_F(Timer, ResetAndUnRegisterWorkOnTheFirstItemOfTheCallback) {
    const auto timer = Make(0);
    timer->RegisterCallback(Write, 1000, &mA);
    timer->RegisterCallback(Write, 500, &mB);
    Ticks(*timer, 1);
    timer->Reset(Write, 1500);
    EXPECT_EQ(Ticks(*timer, 3), "b.b.ab.");
    std::unique_ptr<JxTimerItem> first(timer->FindItem(Write));
    timer->UnRegisterCallback(Write);
    EXPECT_EQ(Ticks(*timer, 3), "b.b.b.");
    EXPECT_EQ(timer->FindItem(WriteToo), nullptr);
    timer->UnRegisterCallback(WriteToo);
    timer->Reset(WriteToo, 1);
    EXPECT_THAT(mBoxes.Texts(), ElementsAre(TimerReport("poPostriderTimerItem", 137),
                                            TimerReport("poPostriderTimerItem", 160)));
}

TEST_F(Timer, TheClientIsFoundFirstAndForgottenWithTheBackgroundTimer) {
    EXPECT_EQ(JxTimer::GetInstance(), nullptr);
    auto background = Make(1);
    EXPECT_EQ(JxTimer::GetInstance(), background.get());
    background->RegisterCallback(Write, 0, &mB);
    const auto client = Make(0);
    EXPECT_EQ(JxTimer::GetInstance(), client.get());
    EXPECT_EQ(FindWindowA("JxBgTimerWindow", "JxBgTimerWindow"), background->Window());
    client->RegisterCallback(Write, 0, &mC);
    EXPECT_EQ(Ticks(*client, 1), "c.");
    EXPECT_EQ(Ticks(*client, 1, 200), "b.");
    EXPECT_EQ(Ticks(*client, 1, 300), ".");
    background.reset();
    EXPECT_EQ(FindWindowA("JxBgTimerWindow", nullptr), nullptr);
    EXPECT_EQ(JxTimer::GetInstance(), nullptr);
    EXPECT_EQ(Ticks(*client, 1), ".");
    EXPECT_THAT(mBoxes.Texts(), ElementsAre(TimerReport("0", 182), TimerReport("0", 208),
                                            TimerReport("poPostriderTimer", 174)));
}

static JxTimer* timerInTest;

// Takes itself off the timer and frees its item.
static void Leave(void*) {
    const std::unique_ptr<JxTimerItem> item(timerInTest->FindItem(Leave));
    timerInTest->UnRegisterCallback(Leave);
}

TEST_F(Timer, ACallbackMayTakeItselfOffAndTheNextOneHasItsTurn) {
    for (const int first : {0, 1}) {
        const auto timer = Make(0);
        timerInTest = timer.get();
        if (first)
            timer->RegisterCallback(Write, 0, &mA);
        timer->RegisterCallback(Leave, 0, nullptr);
        timer->RegisterCallback(Write, 0, &mC);
        EXPECT_EQ(Ticks(*timer, 2), first ? "ac.ac." : "c.c.");
    }
}

static BOOL WINAPI Kill(HWND window, UINT_PTR identifier) {
    journal += IsWindow(window) ? std::to_string(identifier) : "late";
    return TRUE;
}

TEST_F(Timer, IsKilledBeforeItsWindow) {
    const HookedImport kill("JXTICDLL.DLL", "user32.dll", "KillTimer",
                            reinterpret_cast<void*>(Kill));
    Make(0).reset();
    EXPECT_EQ(journal, "100");
}
