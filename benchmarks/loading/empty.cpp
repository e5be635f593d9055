// A library without content that needs the run-time and the parts of Windows that ours needs.

#include <new>

#include "resident/core/windows_api.h"

extern "C" __declspec(dllexport) std::new_handler NeedRunTime() {
    MessageBeep(MB_OK);
    return std::get_new_handler();
}
