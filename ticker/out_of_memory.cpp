#include "ticker/out_of_memory.h"

#include <new>

#include "resident/core/windows_api.h"

enum { keTextId = 1, keCaptionId = 10001, keCompactBytes = 32000 };

static std::new_handler previousHandler;

static void OutOfMemory() {
    char caption[255] = "";
    char text[255] = "";
    LoadStringA(nullptr, keCaptionId, caption, sizeof caption);
    LoadStringA(nullptr, keTextId, text, sizeof text);
    if (MessageBoxA(nullptr, text, caption, MB_SYSTEMMODAL | MB_ICONSTOP | MB_RETRYCANCEL) ==
        IDRETRY) {
        GlobalCompact(keCompactBytes);
        LocalCompact(keCompactBytes);
        return;
    }
    PostQuitMessage(1);
    RestoreOutOfMemoryHandler();
    ExitProcess(1);
}

void InstallOutOfMemoryHandler() { previousHandler = std::set_new_handler(OutOfMemory); }

void RestoreOutOfMemoryHandler() { std::set_new_handler(previousHandler); }
