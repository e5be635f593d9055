#include "resident/runtime/jx_timer.h"

#include "resident/core/windows_api.h"
#include "resident/runtime/check.h"
#include "resident/runtime/hidden_window.h"

static constexpr Reporter kReports("JXRESIDT\\JXTIMER.CPP");

static constexpr long kTick = 500;
static constexpr unsigned int kClientTimer = 100;
static constexpr unsigned int kBackgroundTimer = 200;

void* JxTimer::mhPostriderTask;
void* JxTimer::mhBackgrounderTask;
JxTimer* JxTimer::poPostriderTimer;
JxTimer* JxTimer::poBackgrounderTimer;

JxTimer::JxTimer(void* instance, enumCreateOptions option)
    : moItems(RB_Container<JxTimerItem>::keOwnsObjects), mhInstance(instance) {
    SetupStatics(GetCurrentProcess(), option, this);
    unsigned int identifier = 0;
    switch (option) {
    case keClient:
        mpszClassName = "JxTimerWindow";
        identifier = kClientTimer;
        break;
    case keBackground:
        mpszClassName = "JxBgTimerWindow";
        identifier = kBackgroundTimer;
        break;
    default:
        kReports.FailAt(83);
        break;
    }
    mfGood = JxCreateHiddenWindow(&mhWindow, instance, mpszClassName, mpszClassName,
                                  WindowProcedure, keRegisterClass);
    kReports.CheckAt(93, mfGood, "mfGood");
    if (!mfGood)
        return;
    mhTimer = SetTimer(static_cast<HWND>(mhWindow), identifier, kTick, nullptr);
    kReports.CheckAt(97, mhTimer, "mhTimer");
    if (!mhTimer)
        mfGood = false;
}

JxTimer::~JxTimer() {
    const HWND window = static_cast<HWND>(mhWindow);
    if (mhTimer)
        KillTimer(window, mhTimer);
    if (window) {
        DestroyWindow(window);
        UnregisterClassA(mpszClassName, static_cast<HINSTANCE>(mhInstance));
    }
    poPostriderTimer = nullptr;
}

void JxTimer::SetupStatics(void* process, enumCreateOptions option, JxTimer* timer) {
    switch (option) {
    case keClient:
        mhPostriderTask = process;
        poPostriderTimer = timer;
        break;
    case keBackground:
        mhBackgrounderTask = process;
        poBackgrounderTimer = timer;
        break;
    default:
        kReports.FailAt(48);
        break;
    }
}

JxTimer* JxTimer::GetInstance() {
    void* const process = GetCurrentProcess();
    if (mhPostriderTask == process) {
        kReports.CheckAt(174, poPostriderTimer, "poPostriderTimer");
        return poPostriderTimer;
    }
    if (mhBackgrounderTask == process) {
        kReports.CheckAt(179, poBackgrounderTimer, "poBackgrounderTimer");
        return poBackgrounderTimer;
    }
    kReports.FailAt(182);
    return nullptr;
}

int JxTimer::RegisterCallback(JxTimerCallback callback, long interval, void* data) {
    return moItems.AddObject(*new JxTimerItem{callback, data, interval, 0});
}

void JxTimer::UnRegisterCallback(JxTimerCallback callback) {
    JxTimerItem* poPostriderTimerItem = FindItem(callback);
    kReports.CheckAt(137, poPostriderTimerItem, "poPostriderTimerItem");
    if (poPostriderTimerItem)
        moItems.RemoveObject(*poPostriderTimerItem);
}

JxTimerItem* JxTimer::FindItem(JxTimerCallback callback) {
    for (JxTimerItem* item = moItems.GetFirstObject(); item; item = moItems.GetNextObject())
        if (item->callback == callback)
            return item;
    return nullptr;
}

void JxTimer::Reset(JxTimerCallback callback, long interval) {
    JxTimerItem* poPostriderTimerItem = FindItem(callback);
    kReports.CheckAt(160, poPostriderTimerItem, "poPostriderTimerItem");
    if (poPostriderTimerItem) {
        poPostriderTimerItem->interval = interval;
        poPostriderTimerItem->elapsed = 0;
    }
}

long __stdcall JxTimer::WindowProcedure(void* window, unsigned int message, unsigned int wParam,
                                        long lParam) {
    if (message != WM_TIMER)
        return DefWindowProcA(static_cast<HWND>(window), message, wParam, lParam);
    JxTimer* timer = nullptr;
    switch (wParam) {
    case kClientTimer:
        timer = poPostriderTimer;
        break;
    case kBackgroundTimer:
        timer = poBackgrounderTimer;
        break;
    default:
        kReports.FailAt(208);
        break;
    }
    if (timer)
        timer->Tick();
    return 0;
}

// By index: callbacks look items up, take them off and pump messages, all of which move the list's
// cursor. A callback may take off, and free, its own item: then the next one stands in its place.
void JxTimer::Tick() {
    for (short i = 0; JxTimerItem* item = moItems[i]; ++i) {
        item->elapsed += kTick;
        if (item->elapsed < item->interval)
            continue;
        item->callback(item->data);
        short at = i;
        while (at >= 0 && moItems[at] != item)
            --at;
        if (at >= 0)
            item->elapsed = 0;
        i = at >= 0 ? at : static_cast<short>(i - 1);
    }
}
