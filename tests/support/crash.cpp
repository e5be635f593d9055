#include "tests/support/crash.h"

#include "resident/core/windows_api.h"
#include "tests/guarded/guarded_memory.h"

#include <dbghelp.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr DWORD kLongest = 30000; // milliseconds for the callers: modules may take their time
constexpr unsigned int kMostCallers = 40;

void (*tellRunning)(const char* what);
HANDLE watched; // the thread that called EndOnCrash
DWORD watchedId;
CONTEXT crashed; // where the program crashed

// "MODULE.DLL+1A2B" for an address in a module.
void Place(DWORD address, char* text, unsigned int room) {
    HMODULE module = nullptr;
    char path[MAX_PATH] = "?";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const char*>(address), &module))
        GetModuleFileNameA(module, path, sizeof path);
    const char* const name = std::strrchr(path, '\\');
    std::snprintf(text, room, "%.200s+%lX", name ? name + 1 : path,
                  address - reinterpret_cast<DWORD>(module));
}

// What the debug information of modules says about addresses.
class Symbols {
public:
    Symbols() {
        const HMODULE library = LoadLibraryA("dbghelp.dll");
        Get(library, "SymInitialize", mInitialize);
        Get(library, "SymSetOptions", mOptions);
        Get(library, "SymFromAddr", mFunction);
        Get(library, "SymGetLineFromAddr64", mLine);
        if (mOptions)
            mOptions(SYMOPT_LOAD_LINES | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS);
        mThere =
            mInitialize && mFunction && mLine && mInitialize(GetCurrentProcess(), nullptr, TRUE);
    }
    // " function (source:line)", as far as it is known. A return address lies behind its call.
    void Describe(DWORD address, bool returns, char* text, unsigned int room) const {
        static char buffer[sizeof(SYMBOL_INFO) + 512];
        auto& symbol = *reinterpret_cast<SYMBOL_INFO*>(buffer);
        symbol = {};
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLen = 500;
        IMAGEHLP_LINE64 line = {};
        line.SizeOfStruct = sizeof line;
        DWORD64 from = 0;
        DWORD column = 0;
        *text = 0;
        if (!mThere || !mFunction(GetCurrentProcess(), address - returns, &from, &symbol))
            return;
        int size = std::snprintf(text, room, "  %.400s", symbol.Name);
        if (mLine(GetCurrentProcess(), address - returns, &column, &line))
            std::snprintf(text + size, room - size, " (%.300s:%lu)", line.FileName,
                          line.LineNumber);
    }

private:
    template <class Function>
    static void Get(HMODULE library, const char* name, Function& function) {
        function =
            reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }

    decltype(&SymInitialize) mInitialize;
    decltype(&SymSetOptions) mOptions;
    decltype(&SymFromAddr) mFunction;
    decltype(&SymGetLineFromAddr64) mLine;
    bool mThere = false;
};

bool Readable(DWORD address) {
    MEMORY_BASIC_INFORMATION region;
    return VirtualQuery(reinterpret_cast<void*>(address), &region, sizeof region) &&
           region.State == MEM_COMMIT && !(region.Protect & (PAGE_NOACCESS | PAGE_GUARD));
}

// Follows the frame pointers, which the checked build keeps. On a thread of its own: a stack that
// overflowed has no room.
DWORD WINAPI TellCallers(void*) {
    static char place[300], text[1100];
    const Symbols symbols;
    const auto tell = [&](DWORD address, bool returns) {
        Place(address, place, sizeof place);
        Tell("    ");
        Tell(place);
        symbols.Describe(address, returns, text, sizeof text);
        Tell(text);
        Tell("\n");
    };
    tell(crashed.Eip, false);
    DWORD frame = crashed.Ebp, below = 0;
    for (unsigned int told = 0;
         told < kMostCallers && frame > below && Readable(frame) && Readable(frame + 7); ++told) {
        const auto* const words = reinterpret_cast<const DWORD*>(frame);
        if (!words[1])
            break;
        tell(words[1], true);
        below = frame;
        frame = words[0];
    }
    return 0;
}

[[noreturn]] void End(const char* what, const CONTEXT& where, DWORD exitCode) {
    static volatile LONG crashing;
    // The second crash is one of the telling: it ends here, and with it the program.
    if (!InterlockedExchange(&crashing, 1)) {
        crashed = where;
        if (tellRunning)
            tellRunning(what);
        Tell("CRASHED: ");
        Tell(what);
        Tell("\n");
        DWORD id;
        const HANDLE teller = CreateThread(nullptr, 0, TellCallers, nullptr, 0, &id);
        WaitForSingleObject(teller, kLongest);
    }
    TerminateProcess(GetCurrentProcess(), exitCode);
    std::abort();
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    char text[400], place[300];
    Place(reinterpret_cast<DWORD>(record.ExceptionAddress), place, sizeof place);
    std::snprintf(
        text, sizeof text, "exception %08lX at %s, address %08lX", record.ExceptionCode, place,
        record.NumberParameters > 1 ? static_cast<DWORD>(record.ExceptionInformation[1]) : 0ul);
    End(text, *exception->ContextRecord, kCrashExitCode);
}

// What nobody handles, before anybody is asked: message loops pass over exceptions of their
// callbacks.
LONG CALLBACK OnFatal(EXCEPTION_POINTERS* exception) {
    switch (exception->ExceptionRecord->ExceptionCode) {
    case EXCEPTION_ILLEGAL_INSTRUCTION: // the trap of the undefined-behaviour checks
    case EXCEPTION_STACK_OVERFLOW:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_PRIV_INSTRUCTION:
        return OnException(exception);
    case kGuardComplaint:
        End("see guarded memory's complaint",
            *reinterpret_cast<CONTEXT*>(exception->ExceptionRecord->ExceptionInformation[0]),
            kGuardComplaint);
    default:
        return EXCEPTION_CONTINUE_SEARCH;
    }
}

void OnAbort(int) { Crash("abort"); }

} // namespace

void Tell(const char* text) {
    DWORD written;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, std::strlen(text), &written, nullptr);
}

void Crash(const char* what) {
    CONTEXT where = {};
    where.ContextFlags = CONTEXT_FULL;
    if (GetCurrentThreadId() == watchedId) {
        RtlCaptureContext(&where);
    } else {
        SuspendThread(watched);
        GetThreadContext(watched, &where);
    }
    End(what, where, kCrashExitCode);
}

void EndOnCrash(void (*running)(const char* what)) {
    tellRunning = running;
    watchedId = GetCurrentThreadId();
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &watched, 0,
                    FALSE, DUPLICATE_SAME_ACCESS);
    ULONG room = 65536; // of the stack, for the handlers when it overflows
    SetThreadStackGuarantee(&room);
    AddVectoredExceptionHandler(0, OnFatal);
    SetUnhandledExceptionFilter(OnException);
    std::signal(SIGABRT, OnAbort);
}
