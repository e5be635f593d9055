#include "tests/mailticker/ticker_process.h"

#include <stdexcept>
#include <tlhelp32.h>
#include <winternl.h>

unsigned int Until(const std::function<bool()>& so, unsigned int most) {
    for (const DWORD start = GetTickCount(); GetTickCount() - start < most; Sleep(20))
        if (so())
            return GetTickCount() - start;
    return 60000;
}

namespace {

// Memory of another process, for messages that take structures.
class RemoteMemory {
public:
    explicit RemoteMemory(DWORD process)
        : mProcess(OpenProcess(PROCESS_ALL_ACCESS, FALSE, process)),
          mPlace(static_cast<char*>(
              VirtualAllocEx(mProcess, nullptr, 4096, MEM_COMMIT, PAGE_READWRITE))) {}
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;
    ~RemoteMemory() {
        VirtualFreeEx(mProcess, mPlace, 0, MEM_RELEASE);
        CloseHandle(mProcess);
    }

    LPARAM Place() const { return reinterpret_cast<LPARAM>(mPlace); }
    wchar_t* TextPlace() const { return reinterpret_cast<wchar_t*>(mPlace + 1024); }
    template <class T>
    void Write(const T& value) {
        WriteProcessMemory(mProcess, mPlace, &value, sizeof value, nullptr);
    }
    template <class T>
    void Read(T& value) {
        ReadProcessMemory(mProcess, mPlace, &value, sizeof value, nullptr);
    }
    std::wstring Text() {
        wchar_t text[1024] = {};
        ReadProcessMemory(mProcess, TextPlace(), text, sizeof text - sizeof *text, nullptr);
        return text;
    }

private:
    HANDLE mProcess;
    char* mPlace;
};

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

HWND TickerWindow() { return FindWindowW(L"PostriderTicker", nullptr); }

} // namespace

TickerProcess::TickerProcess(const std::string& arguments)
    : mStarted(new HelperProcess("mailticker.exe", arguments)) {
    // It reads before its status line says so.
    if (Until([&] {
            mWindow = TickerWindow();
            return mWindow && Status().find(L"read ") != std::wstring::npos;
        }) == 60000)
        throw std::runtime_error("mailticker.exe shows no inbox");
    mProcess = OpenProcess(PROCESS_ALL_ACCESS, FALSE, ProcessOf(mWindow));
    WaitForInputIdle(mProcess, 20000);
}

TickerProcess::~TickerProcess() {
    Exit();
    CloseHandle(mProcess);
}

unsigned long TickerProcess::Exit() {
    PostMessageW(mWindow, WM_COMMAND, ID_EXIT, 0);
    return WaitForSingleObject(mProcess, 20000) == WAIT_OBJECT_0 ? mStarted->ExitCode() : 99;
}

void TickerProcess::Tray(UINT event) { SendMessageW(mWindow, WM_APP + 3, 1, event); }

void TickerProcess::Filter(const std::wstring& typed) {
    SendMessageW(GetDlgItem(mWindow, ID_FILTER_BOX), WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(typed.c_str()));
}

HWND TickerProcess::Child(const wchar_t* className) const {
    return FindWindowExW(mWindow, nullptr, className, nullptr);
}

std::wstring TickerProcess::TextOf(HWND window) {
    wchar_t text[4096];
    return std::wstring(text,
                        SendMessageW(window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text)));
}

std::wstring TickerProcess::Notice() const {
    const HWND notice = Child(L"PostriderNotice");
    const std::wstring text = TextOf(notice);
    const bool shown = GetWindowLongW(notice, GWL_STYLE) & WS_VISIBLE;
    return shown ? text.substr(0, text.find(L"\r\n")) : L"";
}

std::wstring TickerProcess::RunningLine() const { return TextOf(Child(L"PostriderTickerLine")); }

std::wstring TickerProcess::PaneText() const {
    const HWND filter = GetDlgItem(mWindow, ID_FILTER_BOX);
    return TextOf(FindWindowExW(mWindow, filter, L"Edit", nullptr));
}

int TickerProcess::Rows() const {
    return SendMessageW(GetDlgItem(mWindow, ID_LIST), LVM_GETITEMCOUNT, 0, 0);
}

std::wstring TickerProcess::Cell(int row, int column) const {
    RemoteMemory memory(ProcessOf(mWindow));
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = memory.TextPlace();
    item.cchTextMax = 256;
    memory.Write(item);
    SendMessageW(GetDlgItem(mWindow, ID_LIST), LVM_GETITEMTEXTW, row, memory.Place());
    return memory.Text();
}

std::vector<std::wstring> TickerProcess::Column(int column) const {
    std::vector<std::wstring> cells;
    for (int row = 0; row < Rows(); ++row)
        cells.push_back(Cell(row, column));
    return cells;
}

void TickerProcess::SelectRow(int row) {
    RemoteMemory memory(ProcessOf(mWindow));
    LVITEMW item = {};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    memory.Write(item);
    SendMessageW(GetDlgItem(mWindow, ID_LIST), LVM_SETITEMSTATE, row, memory.Place());
}

void TickerProcess::Press(std::initializer_list<unsigned char> keys) const {
    SetForegroundWindow(mWindow);
    for (const unsigned char key : keys)
        keybd_event(key, 0, 0, 0);
    for (auto key = keys.end(); key-- != keys.begin();)
        keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}

int TickerProcess::Focus() const {
    GUITHREADINFO information = {};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(GetWindowThreadProcessId(mWindow, nullptr), &information);
    return GetDlgCtrlID(information.hwndFocus);
}

void TickerProcess::MoveToScreen(int dpi, const RECT& place) {
    RemoteMemory memory(ProcessOf(mWindow));
    memory.Write(place);
    SendMessageW(mWindow, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), memory.Place());
}

// The tray's tooltips belong to the shell.
std::wstring TickerProcess::TrayTexts() const {
    std::wstring texts = L"\n";
    HWND tip = nullptr;
    while ((tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
        if (ProcessOf(tip) == ProcessOf(mWindow) || ProcessOf(tip) == GetCurrentProcessId())
            continue;
        RemoteMemory memory(ProcessOf(tip));
        TTTOOLINFOW tool = {};
        tool.cbSize = sizeof tool;
        memory.Write(tool);
        if (!SendMessageW(tip, TTM_ENUMTOOLSW, 0, memory.Place()))
            continue;
        memory.Read(tool);
        tool.lpszText = memory.TextPlace();
        memory.Write(tool);
        SendMessageW(tip, TTM_GETTEXTW, 512, memory.Place());
        texts += memory.Text() + L"\n";
    }
    return texts;
}

DWORD TickerProcess::KernelHandles() const {
    DWORD count = 0;
    GetProcessHandleCount(mProcess, &count);
    return count;
}

static BOOL CALLBACK Count(HWND, LPARAM counted) {
    ++*reinterpret_cast<unsigned int*>(counted);
    return TRUE;
}

unsigned int TickerProcess::Windows() const {
    unsigned int count = 0;
    EnumChildWindows(mWindow, Count, reinterpret_cast<LPARAM>(&count));
    return count;
}

// The entries of the process's table of drawing objects, to which its environment block points:
// 16 bytes each, whose type is 0 in free ones.
unsigned int TickerProcess::GdiObjects() const {
    constexpr SIZE_T kTableInBlock = 0x94;
    constexpr unsigned int kEntries = 0x4000;
    PROCESS_BASIC_INFORMATION information = {};
    NtQueryInformationProcess(mProcess, ProcessBasicInformation, &information, sizeof information,
                              nullptr);
    char* table = nullptr;
    ReadProcessMemory(mProcess, reinterpret_cast<char*>(information.PebBaseAddress) + kTableInBlock,
                      &table, sizeof table, nullptr);
    struct Entry {
        unsigned long long object;
        unsigned long owner;
        unsigned short unique;
        unsigned char type;
        unsigned char flags;
    };
    std::vector<Entry> entries(kEntries);
    ReadProcessMemory(mProcess, table, entries.data(), kEntries * sizeof(Entry), nullptr);
    unsigned int count = 0;
    for (const Entry& entry : entries)
        count += entry.type != 0;
    return count;
}

// By its threads: Wine knows a process's own time alone.
unsigned int TickerProcess::ProcessorTime() const {
    const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    unsigned int milliseconds = 0;
    for (BOOL more = Thread32First(threads, &entry); more; more = Thread32Next(threads, &entry)) {
        if (entry.th32OwnerProcessID != ProcessOf(mWindow))
            continue;
        const HANDLE thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
        FILETIME start, end, kernel = {}, user = {};
        GetThreadTimes(thread, &start, &end, &kernel, &user);
        milliseconds += (kernel.dwLowDateTime + user.dwLowDateTime) / 10000;
        CloseHandle(thread);
    }
    CloseHandle(threads);
    return milliseconds;
}
