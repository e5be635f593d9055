// From LoadLibrary to an inbox's first record, against a library without content that needs the
// same run-time, and a plain read. Each time in a process of its own.

#include <cstdlib>
#include <string>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/windows_api.h"

// What `first_record.exe`, which lies beside this program, prints for the library.
static std::uint64_t NanosecondsToFirstRecord(const char* library, const std::string& dFile) {
    char program[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, program, sizeof program);
    const std::string folder(program, std::string_view(program, length).rfind('\\') + 1);
    std::string command =
        "\"" + folder + "first_record.exe\" \"" + folder + library + "\" \"" + dFile + "\"";

    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE out, in;
    CreatePipe(&out, &in, &inherited, 0);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = in;
    PROCESS_INFORMATION process;
    const BOOL started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &startup, &process);
    CloseHandle(in);
    char printed[32] = "";
    DWORD read;
    ReadFile(out, printed, sizeof printed - 1, &read, nullptr);
    CloseHandle(out);
    if (started) {
        WaitForSingleObject(process.hProcess, INFINITE);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return std::strtoull(printed, nullptr, 10);
}

std::vector<Contest> LoadContests(const std::string& folder) {
    const std::string path = folder + "\\FIRST.DAT";
    WriteDFile(path, 50);
    return {{.name = "from LoadLibrary to the first record",
             .goal = 1.2,
             .reference = [path] { return NanosecondsToFirstRecord("empty.dll", path); },
             .library = [path] { return NanosecondsToFirstRecord("JXTICDLL.DLL", path); },
             .timesItself = true}};
}
