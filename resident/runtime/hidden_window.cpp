#include "resident/runtime/hidden_window.h"

#include "resident/core/windows_api.h"

int JxCreateHiddenWindow(void** window, void* instance, const char* windowName,
                         const char* className, JxWindowProcedure procedure,
                         enumJxCreateWin option) {
    const auto module = static_cast<HINSTANCE>(instance);
    if (option == keRegisterClass) {
        WNDCLASSA windowClass = {};
        windowClass.style = CS_GLOBALCLASS;
        windowClass.lpfnWndProc = reinterpret_cast<WNDPROC>(reinterpret_cast<void*>(procedure));
        windowClass.hInstance = module;
        windowClass.lpszClassName = className;
        if (!RegisterClassA(&windowClass))
            return false;
    }
    *window = CreateWindowExA(0, className, windowName, 0, CW_USEDEFAULT, CW_USEDEFAULT,
                              CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr, module, nullptr);
    return *window != nullptr;
}
