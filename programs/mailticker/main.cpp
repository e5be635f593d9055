// The ticker window of Postrider: starts it, or brings the one that runs to the front.

#include <cwchar>
#include <string>

#include "programs/mailticker/owners.h"
#include "programs/mailticker/resource.h"
#include "programs/mailticker/ticker_window.h"

static const wchar_t kUsage[] =
    L"mailticker [DFILE] [/tray]\r\n\r\n"
    L"Shows the inbox of Postrider\u2019s current user, and tells of new messages.\r\n\r\n"
    L"DFILE\tanother folder\u2019s D file, or that folder\r\n"
    L"/tray\tstart as an icon beside the clock\r\n"
    L"/exit\tend the ticker that runs\r\n"
    L"/?\tthis text\r\n\r\n"
    L"A second start brings the first one to the front.\r\n";

namespace {

struct CommandLine {
    std::wstring path;
    bool inTray = false;
    bool exit = false;
    bool usage = false;
};

} // namespace

static CommandLine Parsed(int count, wchar_t** arguments) {
    CommandLine line;
    for (int i = 1; i < count; ++i) {
        const std::wstring argument = arguments[i];
        if (_wcsicmp(argument.c_str(), L"/tray") == 0)
            line.inTray = true;
        else if (_wcsicmp(argument.c_str(), L"/exit") == 0)
            line.exit = true;
        else if (argument[0] == L'/' || !line.path.empty())
            line.usage = true;
        else
            line.path = argument;
    }
    return line;
}

// On the console that it was asked from, or into its pipe; in a box where there is none.
static void PrintUsage() {
    AttachConsole(ATTACH_PARENT_PROCESS);
    const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD written = 0;
    if (WriteConsoleW(out, kUsage, ARRAYSIZE(kUsage) - 1, &written, nullptr))
        return;
    char bytes[2 * ARRAYSIZE(kUsage)];
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, kUsage, -1, bytes, sizeof bytes, nullptr, nullptr);
    if (!WriteFile(out, bytes, size - 1, &written, nullptr))
        MessageBoxW(nullptr, kUsage, L"Postrider Ticker", MB_ICONINFORMATION);
}

// Gives the window that runs already what this start was asked for.
static void HandOver(HWND running, const CommandLine& line) {
    if (line.exit) {
        DWORD process = 0;
        GetWindowThreadProcessId(running, &process);
        const Owned<HANDLE> ended(OpenProcess(SYNCHRONIZE, FALSE, process));
        PostMessageW(running, WM_COMMAND, ID_EXIT, 0);
        WaitForSingleObject(ended.get(), 10000);
        return;
    }
    std::wstring path = line.path;
    if (!path.empty()) {
        path.resize(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr));
        path.resize(GetFullPathNameW(line.path.c_str(), static_cast<DWORD>(path.size()),
                                     path.data(), nullptr));
    }
    AllowSetForegroundWindow(ASFW_ANY);
    COPYDATASTRUCT data = {TickerWindow::kShowFile,
                           static_cast<DWORD>(path.size() * sizeof(wchar_t)), path.data()};
    DWORD_PTR result;
    SendMessageTimeoutW(running, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_ABORTIFHUNG,
                        10000, &result);
}

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    const CommandLine line = Parsed(__argc, __wargv);
    if (line.usage) {
        PrintUsage();
        return 0;
    }
    const Owned<HANDLE> one(CreateMutexW(nullptr, FALSE, L"Local\\PostriderTicker"));
    // The first of two that start at once may not have its window yet.
    WaitForSingleObject(one.get(), 10000);
    if (const HWND running = FindWindowW(TickerWindow::kClassName, nullptr)) {
        ReleaseMutex(one.get());
        HandOver(running, line);
        return 0;
    }
    if (line.exit)
        return 0;
    const INITCOMMONCONTROLSEX controls = {sizeof controls,
                                           ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    TickerWindow window(line.path, line.inTray);
    ReleaseMutex(one.get());
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (window.TakesKey(message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}
