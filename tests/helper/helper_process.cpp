// What a test needs another process for.
//
//   hold PATH MILLISECONDS HELD RELEASE   opens PATH without sharing, sets the event HELD, and
//                                         closes it after that time or when RELEASE is set
//   allocation-handler                    0 when the ticker library installs a handler while it is
//                                         loaded, and puts the program's own back
//   allocation-failure BUTTON             runs out of memory with the ticker library loaded, frees
//                                         some when the box shows and presses BUTTON; 20 when the
//                                         allocation comes back

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "resident/core/windows_api.h"

static int Hold(char** arguments) {
    const HANDLE file =
        CreateFileA(arguments[0], GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    const HANDLE held = OpenEventA(EVENT_MODIFY_STATE, FALSE, arguments[2]);
    const HANDLE release = OpenEventA(SYNCHRONIZE, FALSE, arguments[3]);
    SetEvent(held);
    WaitForSingleObject(release, std::strtoul(arguments[1], nullptr, 10));
    CloseHandle(file);
    return 0;
}

static void OwnHandler() { ExitProcess(11); }

static int AllocationHandler() {
    std::set_new_handler(OwnHandler);
    const HMODULE library = LoadLibraryA("JXTICDLL.DLL");
    if (!library || std::get_new_handler() == OwnHandler || !std::get_new_handler())
        return 12;
    FreeLibrary(library);
    return std::get_new_handler() == OwnHandler ? 0 : 13;
}

static std::vector<void*> reserved;
static unsigned int pressed;

static void CALLBACK PressButton(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND box = GetActiveWindow();
    char caption[64] = "", text[64] = "";
    GetWindowTextA(box, caption, sizeof caption);
    GetDlgItemTextA(box, 0xFFFF, text, sizeof text);
    if (!box)
        return;
    if (std::strcmp(caption, "Attention") || std::strcmp(text, "Can't allocate enough memory!"))
        ExitProcess(14);
    KillTimer(nullptr, timer);
    for (void* block : reserved)
        VirtualFree(block, 0, MEM_RELEASE);
    SendMessageA(GetDlgItem(box, pressed), BM_CLICK, 0, 0);
}

static int AllocationFailure(const char* button) {
    constexpr unsigned int kBlock = 64 << 20;
    pressed = std::strtoul(button, nullptr, 10);
    if (!LoadLibraryA("JXTICDLL.DLL"))
        return 12;
    SetTimer(nullptr, 0, 50, PressButton);
    while (void* block = VirtualAlloc(nullptr, kBlock, MEM_RESERVE, PAGE_NOACCESS))
        reserved.push_back(block);
    return ::operator new(kBlock) ? 20 : 15;
}

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "hold" && argc == 6)
        return Hold(argv + 2);
    if (command == "allocation-handler")
        return AllocationHandler();
    if (command == "allocation-failure" && argc == 3)
        return AllocationFailure(argv[2]);
    return 2;
}
