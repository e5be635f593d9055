#pragma once

#include "resident/core/jx_api.h"

// Whether there is a window class of that name already.
enum enumJxCreateWin : int {
    keRegisterClass = 0, // register the window class first
    keClassRegistered = 1
};

// A window procedure, as RegisterClassA takes it.
typedef long(__stdcall* JxWindowProcedure)(void* window, unsigned int message, unsigned int wParam,
                                           long lParam);

// Makes a window that is never shown. `*window` receives its handle; the caller destroys it and,
// when `option` had the class registered (CS_GLOBALCLASS), unregisters that.
// Returns 1, or 0 when the class or the window cannot be made.
JX_API int JxCreateHiddenWindow(void** window, void* instance, const char* windowName,
                                const char* className, JxWindowProcedure procedure,
                                enumJxCreateWin option);
