// What a test needs another process for.
//
//   hold PATH MILLISECONDS HELD RELEASE   opens PATH without sharing, sets the signal HELD, and
//                                         closes it after that time or when RELEASE is set
//   allocation-handler                    0 when the ticker library installs a handler while it is
//                                         loaded, and puts the program's own back
//   allocation-failure BUTTON             runs out of memory with the ticker library loaded, frees
//                                         some when the box shows and presses BUTTON; 20 when the
//                                         allocation comes back
//   report OUTPUTS BUTTON                 reports "a != 0" to OUTPUTS (-1: those it starts with),
//   as an
//                                         error when an "e" stands before them, and answers the
//                                         dialog with BUTTON; ends with the count, 16 for each
//                                         dialog and 256 for each debugger text
//   crash HOW                             crashes
//   misuse HOW SIZE                       does with a block of SIZE bytes what no program may, with
//                                         the ticker library loaded; 0 when nothing stops it

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "resident/core/windows_api.h"
#include "resident/runtime/reporting.h"
#include "tests/support/crash.h"
#include "tests/support/debug_output.h"
#include "tests/support/helper_process.h"
#include "tests/support/hooked_import.h"
#include "tests/support/message_boxes.h"

static HANDLE OpenAlone(const char* path) {
    return CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

static int Hold(char** arguments) {
    // Who looks whether it is held already has it open for a moment.
    HANDLE file = OpenAlone(arguments[0]);
    for (int tries = 0; file == INVALID_HANDLE_VALUE && tries < 1000; ++tries) {
        if (GetLastError() != ERROR_SHARING_VIOLATION)
            return 1;
        Sleep(5);
        file = OpenAlone(arguments[0]);
    }
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    Signal(arguments[2]).Set();
    Signal(arguments[3]).Wait(std::strtoul(arguments[1], nullptr, 10));
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

// What the handler makes of memory, and of the program.
static std::string handled;

static SIZE_T WINAPI Compact(DWORD wanted) {
    handled += "global " + std::to_string(wanted) + " ";
    return wanted;
}
static SIZE_T WINAPI CompactLocal(UINT wanted) {
    handled += "local " + std::to_string(wanted) + " ";
    return wanted;
}
static void WINAPI Quit(int code) { handled += "quit " + std::to_string(code) + " "; }

[[noreturn]] static void WINAPI Exit(UINT code) {
    ExitProcess(handled == "quit 1 " && !std::get_new_handler() ? code : 16);
}

static void CALLBACK PressButton(HWND, UINT, UINT_PTR timer, DWORD) {
    // Active or not: other programs' windows take turns in that.
    const HWND box = FindWindowA("#32770", nullptr);
    if (!box)
        return;
    char caption[300] = "", text[300] = "", whole[300] = "";
    GetWindowTextA(box, caption, sizeof caption);
    GetDlgItemTextA(box, 0xFFFF, text, sizeof text);
    // Texts without an end: as much of them is shown as there is room for without memory.
    for (const auto& [shown, id] : {std::pair(caption, 10001u), std::pair(text, 1u)}) {
        LoadStringA(nullptr, id, whole, 255);
        if (std::strlen(whole) != 254 || std::strcmp(shown, whole))
            ExitProcess(14);
    }
    if (!GetDlgItem(box, static_cast<int>(pressed)))
        ExitProcess(14);
    KillTimer(nullptr, timer);
    for (void* block : reserved)
        VirtualFree(block, 0, MEM_RELEASE);
    // A click would be lost when the box loses the mouse.
    SendMessageA(box, WM_COMMAND, pressed, 0);
}

static int AllocationFailure(const char* button) {
    constexpr unsigned int kBlock = 64 << 20;
    pressed = std::strtoul(button, nullptr, 10);
    if (!LoadLibraryA("JXTICDLL.DLL"))
        return 12;
    const auto replace = [](const char* library, const char* name, auto* ours) {
        return std::make_unique<HookedImport>("JXTICDLL.DLL", library, name,
                                              reinterpret_cast<void*>(ours));
    };
    const std::unique_ptr<HookedImport> hooks[] = {
        replace("kernel32.dll", "GlobalCompact", Compact),
        replace("kernel32.dll", "LocalCompact", CompactLocal),
        replace("user32.dll", "PostQuitMessage", Quit),
        replace("kernel32.dll", "ExitProcess", Exit)};
    SetTimer(nullptr, 0, 50, PressButton);
    while (void* block = VirtualAlloc(nullptr, kBlock, MEM_RESERVE, PAGE_NOACCESS))
        reserved.push_back(block);
    return ::operator new(kBlock) && handled == "global 32000 local 32000 " ? 20 : 15;
}

template <class Function>
static Function Export(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// By address: the other commands need a process that starts without the library.
static int Report(char** arguments) {
    const HMODULE library = LoadLibraryA("JXTICDLL.DLL");
    if (!library)
        return 12;
    MessageBoxes boxes;
    DebugOutput debug;
    const bool error = *arguments[0] == 'e';
    const int outputs = std::atoi(arguments[0] + error);
    const std::string kind = error ? "RbError" : "RbAssert";
    const auto find = [&](const char* name) { return kind + name; };
    boxes.AnswerWith(std::atoi(arguments[1]));
    if (outputs >= 0)
        Export<decltype(&RbAssertSelectOutput)>(library, find("SelectOutput").c_str())(outputs,
                                                                                       nullptr);
    Export<decltype(&RbAssertDispatch)>(library, find("Dispatch").c_str())(error, "a != 0", nullptr,
                                                                           0, nullptr, 0);
    const auto count = Export<decltype(&RbAssertGetCount)>(library, find("GetCount").c_str());
    return static_cast<int>(count() + 16 * boxes.Shown().size() + 256 * debug.Texts().size());
}

// The block's address is one that the compiler knows nothing about.
static char* volatile misused;

static int Misuse(const std::string& how, unsigned int size) {
    if (!LoadLibraryA("JXTICDLL.DLL"))
        return 12;
    misused = static_cast<char*>(::operator new(size));
    misused[0] = 1;
    misused[size - 1] = 1;
    char read = 0;
    if (how == "read-behind")
        read = misused[size];
    if (how == "read-before")
        read = misused[-1];
    if (how == "write-behind")
        misused[size] = 1;
    if (how == "write-before")
        misused[-1] = 1;
    ::operator delete(misused);
    if (how == "read-freed")
        read = misused[size / 2];
    if (how == "free-twice")
        ::operator delete(misused);
    return read ? 1 : 0;
}

// Beside misuse of memory, every way in which a program crashes.
static int CrashBy(const std::string& how) {
    volatile int zero = 0;
    if (how == "exception")
        *reinterpret_cast<volatile int*>(zero + 16) = 1;
    if (how == "trap")
        return 1 / zero;
    if (how == "abort")
        std::abort();
    if (how == "throw")
        throw 1;
    if (how == "overflow")
        return CrashBy(how) + CrashBy(how);
    return 0;
}

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command != "misuse") // guarded memory stops it, often
        EndOnCrash();
    if (command == "hold" && argc == 6)
        return Hold(argv + 2);
    if (command == "allocation-handler")
        return AllocationHandler();
    if (command == "allocation-failure" && argc == 3)
        return AllocationFailure(argv[2]);
    if (command == "misuse" && argc == 4)
        return Misuse(argv[2], std::strtoul(argv[3], nullptr, 10));
    if (command == "crash" && argc == 3)
        return CrashBy(argv[2]);
    if (command == "report" && argc == 4)
        return Report(argv + 2);
    return 2;
}
