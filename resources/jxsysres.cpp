#include "resident/core/windows_api.h"

static HINSTANCE moduleHandle;

extern "C" __declspec(dllexport) void* GetJxSystemResHandle(void) { return moduleHandle; }

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH)
        moduleHandle = instance;
    return TRUE;
}
