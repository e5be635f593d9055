// The ticker's window on a large inbox, against the plain listing: how long until it can be used,
// from its start and when the inbox is read again.

#include <cstring>
#include <memory>

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

// The ticker on an inbox; ended with this.
class Ticker {
public:
    explicit Ticker(const std::string& path) : mProgram("mailticker.exe", path) {}
    ~Ticker() {
        PostMessageA(Window(), WM_COMMAND, ID_EXIT, 0);
        mProgram.Ends(10000);
    }

    // Waits until its list shows every message and answers; how many it shows.
    std::uint64_t Rows() const {
        LRESULT rows = 0;
        while (rows < LRESULT(kRecords) && !mProgram.Ends(1))
            rows = SendMessageA(GetDlgItem(Window(), ID_LIST), LVM_GETITEMCOUNT, 0, 0);
        return rows;
    }
    void ReadAgain() const { SendMessageA(Window(), WM_COMMAND, ID_READ_NOW, 0); }

private:
    static HWND Window() { return FindWindowA("PostriderTicker", nullptr); }

    Program mProgram;
};

} // namespace

std::vector<Contest> WindowContests(const std::string& folder) {
    const std::string path = folder + "\\WINDOW.DAT";
    WriteDFile(path, kRecords);
    const auto ticker = std::make_shared<std::unique_ptr<Ticker>>();
    const auto started = [ticker, path] {
        if (!*ticker)
            *ticker = std::make_unique<Ticker>(path);
        return (*ticker)->Rows();
    };
    return {{"start the ticker on 200,000 messages, and the notifier",
             4.0,
             [path] { return Program("notifier.exe", path).Ends(60000) ? kRecords : 0; },
             started,
             [ticker] { ticker->reset(); },
             {},
             5},
            {"show 200,000 messages again in the ticker, and walk", 4.0,
             [path] { return WalkByLibrary(path) ? kRecords : 0; },
             [ticker, started] {
                 (*ticker)->ReadAgain();
                 return started();
             },
             [started] { started(); }}};
}
