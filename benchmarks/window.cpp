// The ticker's window on a large inbox, against the plain listing: how long until it can be used,
// from its start and when the inbox is read again, and while somebody scrolls and filters.

#include <cstring>
#include <memory>
#include <utility>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/windows_api.h"

#include <commctrl.h>

#include "programs/mailticker/resource.h"

static constexpr unsigned int kRecords = 200000;

namespace {

// A program beside this one, started without a console.
class Program {
public:
    Program(const std::string& name, const std::string& argument) {
        char own[MAX_PATH];
        GetModuleFileNameA(nullptr, own, sizeof own);
        *std::strrchr(own, '\\') = '\0';
        std::string command = "\"" + std::string(own) + "\\" + name + "\" \"" + argument + "\"";
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process = {};
        CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                       nullptr, &startup, &process);
        CloseHandle(process.hThread);
        mProcess = process.hProcess;
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() { CloseHandle(mProcess); }

    bool Ends(DWORD milliseconds) const {
        return WaitForSingleObject(mProcess, milliseconds) == WAIT_OBJECT_0;
    }

private:
    HANDLE mProcess;
};

// The ticker on an inbox, as it starts for the first time; ended with this.
class Ticker {
public:
    explicit Ticker(const std::string& path) : mProgram("mailticker.exe", Fresh(path)) {}
    ~Ticker() {
        PostMessageA(Window(), WM_COMMAND, ID_EXIT, 0);
        mProgram.Ends(10000);
        ForgetSettings();
    }

    // Waits until its list shows every message and answers; how many it shows.
    std::uint64_t Rows() const {
        LRESULT rows = 0;
        while (rows < LRESULT(kRecords) && !mProgram.Ends(1))
            rows = Ask(ID_LIST, LVM_GETITEMCOUNT);
        return rows;
    }
    // Each of these returns how many messages are shown then, when they can be seen.
    std::uint64_t Command(int command) const {
        SendMessageA(Window(), WM_COMMAND, command, 0);
        return Painted();
    }
    std::uint64_t Filter(const char* typed) const {
        Ask(ID_FILTER_BOX, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(typed));
        return Painted();
    }
    std::uint64_t PageDown() const {
        Ask(ID_LIST, WM_VSCROLL, SB_PAGEDOWN);
        return Painted();
    }

private:
    static void ForgetSettings() {
        RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Postrider\\Ticker");
    }
    static const std::string& Fresh(const std::string& path) {
        ForgetSettings();
        return path;
    }
    static HWND Window() { return FindWindowA("PostriderTicker", nullptr); }
    static LRESULT Ask(int control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(GetDlgItem(Window(), control), message, wParam, lParam);
    }
    static std::uint64_t Painted() {
        Ask(ID_LIST, WM_PAINT);
        return Ask(ID_LIST, LVM_GETITEMCOUNT);
    }

    Program mProgram;
};

} // namespace

// Gives the last record one mark in two rounds and another one in the next two, as any program may:
// each second round is a reading.
static void ChangeLastRecord(const std::string& path) {
    constexpr long kStatus = 3;
    static unsigned int rounds = 0;
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    const unsigned char status = rounds++ / 2 & 1;
    DWORD written;
    SetFilePointer(file, kStatus - static_cast<LONG>(sizeof(DiskDirRec)), nullptr, FILE_END);
    WriteFile(file, &status, 1, &written, nullptr);
    CloseHandle(file);
}

std::vector<Contest> WindowContests(const std::string& folder) {
    constexpr double kGoal = 4;
    // Alone in its folder: what else changes there would be read too.
    const std::string inbox = folder + "\\Window";
    CreateDirectoryA(inbox.c_str(), nullptr);
    const std::string path = inbox + "\\DFile";
    WriteDFile(path, kRecords);
    const auto ticker = std::make_shared<std::unique_ptr<Ticker>>();
    const auto started = [ticker, path] {
        if (!*ticker)
            *ticker = std::make_unique<Ticker>(path);
        return (*ticker)->Rows();
    };
    const auto running = [ticker, started] {
        if (!*ticker)
            started();
    };
    const auto walk = [path] { return WalkByLibrary(path) ? kRecords : 0; };
    const auto readAgain = [ticker] { return (*ticker)->Command(ID_READ_NOW); };
    const auto sorted = [ticker, running, bySender = std::make_shared<bool>()] {
        running();
        if (!std::exchange(*bySender, true))
            (*ticker)->Command(ID_SORT);
        (*ticker)->Filter("");
    };
    return {{"start the ticker on 200,000 messages, and the notifier",
             kGoal,
             [path] { return Program("notifier.exe", path).Ends(60000) ? kRecords : 0; },
             started,
             [ticker] { ticker->reset(); },
             {},
             5},
            {"show 200,000 messages again in the ticker, and walk", kGoal, walk, readAgain,
             [running, path] {
                 running();
                 ChangeLastRecord(path);
             }},
            {"a page down in 200,000 messages, and walk", kGoal, walk,
             [ticker] { return (*ticker)->PageDown(); }, running},
            {"filter 200,000 messages by two words, and walk", kGoal, walk,
             [ticker] { return (*ticker)->Filter("given 77") ? kRecords : 0; }, sorted},
            {"show them again sorted by sender, and walk", kGoal, walk, readAgain, [sorted, path] {
                 sorted();
                 ChangeLastRecord(path);
             }}};
}
