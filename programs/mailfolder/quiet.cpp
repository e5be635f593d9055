#include "programs/mailfolder/quiet.h"

#include "resident/core/windows_api.h"
#include "resident/runtime/reporting.h"

// Refuses the windows of the dialog class, which message boxes have too.
static LRESULT CALLBACK RefuseDialogs(int code, WPARAM wParam, LPARAM lParam) {
    char name[16];
    if (code == HCBT_CREATEWND &&
        GetClassNameA(reinterpret_cast<HWND>(wParam), name, sizeof name) &&
        lstrcmpA(name, "#32770") == 0)
        return 1;
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

Quiet::Quiet() : mHook(SetWindowsHookExA(WH_CBT, RefuseDialogs, nullptr, GetCurrentThreadId())) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    RbErrorSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
}

Quiet::~Quiet() { UnhookWindowsHookEx(static_cast<HHOOK>(mHook)); }
