#include "resident/core/windows_api.h"
#include "ticker/out_of_memory.h"

static HINSTANCE moduleInstance;

extern "C" BOOL WINAPI DllMain(HINSTANCE hinstance, DWORD reason, void*) {
    moduleInstance = hinstance;
    if (reason == DLL_PROCESS_ATTACH)
        InstallOutOfMemoryHandler();
    else if (reason == DLL_PROCESS_DETACH)
        RestoreOutOfMemoryHandler();
    return TRUE;
}
