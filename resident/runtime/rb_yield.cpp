#include "resident/runtime/rb_yield.h"

#include "resident/core/windows_api.h"
#include "resources/jxsysres.h"

int RbYield() {
    MSG message;
    int result;
    while ((result = PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE)) != 0 &&
           message.message != WM_QUIT) {
        result = GetMessageA(&message, nullptr, 0, 0);
        // A WM_QUIT that took the peeked message's place goes back where it was.
        if (result == 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return TRUE;
        }
        if (result < 0)
            return result;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return result;
}

void* GetTaskInstance() { return GetJxSystemResHandle(); }
