#pragma once

#include "resident/core/jx_api.h"
#include "resident/core/rb_container.h"

// Is given the data that it was registered with.
typedef void (*JxTimerCallback)(void* data);

// A registered callback. Times are milliseconds.
struct JxTimerItem {
    JxTimerCallback callback;
    void* data;
    long interval;
    long elapsed; // since the last call or reset
};

JX_EXPORTED_CONTAINER(JxTimerItem);

// The process's timer: a hidden window whose Windows timer ticks every 500 ms and calls the
// registered callbacks, in the order of their registration, whose interval has run out. An interval
// is so served at the first tick at or after it. Runs on the thread that made it, while that thread
// pumps messages.
class JX_API JxTimer {
public:
    // Whose timer it is.
    enum enumCreateOptions : int { keClient = 0, keBackground = 1 };

    // `instance` is the module of the window class, "JxTimerWindow" or "JxBgTimerWindow". One of
    // each option in a process.
    JxTimer(void* instance, enumCreateOptions option);
    JxTimer(const JxTimer&) = delete;
    JxTimer& operator=(const JxTimer&) = delete;
    // Clears the client instance pointer whichever timer this was, and never the background one:
    // after a background timer's end GetInstance must not be asked for it.
    virtual ~JxTimer();

    // The client's timer, else the background process's; null, after an assertion, when there is
    // neither. The process handle recorded is GetCurrentProcess's, alike in all processes.
    static JxTimer* GetInstance();
    // Records the timer of an option; the constructor does.
    static void SetupStatics(void* process, enumCreateOptions option, JxTimer* timer);

    // Adds a callback, to be called every `interval` milliseconds. Returns 1. The item is the
    // timer's, which frees it when it is destroyed.
    int RegisterCallback(JxTimerCallback callback, long interval, void* data);
    // Takes the first item of `callback` off the list, or reports that there is none. The item is
    // not freed: whoever has it from FindItem may delete it then.
    void UnRegisterCallback(JxTimerCallback callback);
    // The first item of `callback`, or null.
    JxTimerItem* FindItem(JxTimerCallback callback);
    // Gives the first item of `callback` a new interval, counted from now; reports that there is
    // none.
    void Reset(JxTimerCallback callback, long interval);

    // Whether the timer has its window and ticks.
    int IsGood() const { return mfGood; }
    void* Window() const { return mhWindow; }

    static void* mhPostriderTask;
    static void* mhBackgrounderTask;
    static JxTimer* poPostriderTimer;
    static JxTimer* poBackgrounderTimer;

private:
    static long __stdcall WindowProcedure(void* window, unsigned int message, unsigned int wParam,
                                          long lParam);
    void Tick();

    RB_Container<JxTimerItem> moItems;
    void* mhWindow = nullptr;
    int mfGood = 0;
    unsigned int mhTimer = 0;
    void* mhInstance;
    const char* mpszClassName = nullptr;
};
