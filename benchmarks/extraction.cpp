// Taking a folder's mail out by the tool, against reading its message files and writing one file.

#include <cstdio>
#include <cstring>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/windows_api.h"

static constexpr unsigned int kMessages = 10000;
static constexpr unsigned int kMessageSize = 4096;

static std::string MessagePath(const std::string& folder, unsigned int number) {
    char name[32];
    std::snprintf(name, sizeof name, "\\MSG%05u.EML", number);
    return folder + name;
}

// Message files of lines of text, and the D file that lists them.
static void MakeFolder(const std::string& folder) {
    CreateDirectoryA(folder.c_str(), nullptr);
    std::string message(kMessageSize, 'x');
    for (unsigned int at = sizeof(DiskDirRec) + 70; at + 1 < kMessageSize; at += 72)
        std::memcpy(&message[at], "\r\n", 2);
    std::vector<DiskDirRec> records;
    for (unsigned int number = 0; number < kMessages; ++number) {
        const std::string path = MessagePath(folder, number);
        const std::string name = path.substr(path.rfind('\\') + 1);
        DiskDirRec record = MadeUpRecord(number);
        record.fileName[0] = static_cast<unsigned char>(name.size());
        std::memcpy(record.fileName + 1, name.data(), name.size());
        std::memcpy(message.data(), &record, sizeof record);
        WriteWholeFile(path, message.data(), message.size());
        records.push_back(record);
    }
    WriteDFile(folder + "\\DFile", records);
}

static std::uint64_t CopyByFiles(const std::string& folder, const std::string& target) {
    const HANDLE out =
        CreateFileA(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    char bytes[kMessageSize];
    std::uint64_t copied = 0;
    for (unsigned int number = 0; number < kMessages; ++number) {
        const HANDLE file = CreateFileA(MessagePath(folder, number).c_str(), GENERIC_READ,
                                        FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        DWORD read = 0;
        DWORD written = 0;
        if (ReadFile(file, bytes, sizeof bytes, &read, nullptr) &&
            WriteFile(out, bytes, read, &written, nullptr))
            ++copied;
        CloseHandle(file);
    }
    FlushFileBuffers(out);
    CloseHandle(out);
    return copied;
}

// The tool lies beside this program.
static std::uint64_t CopyByTool(const std::string& folder, const std::string& target) {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string own = path;
    std::string command = "\"" + own.substr(0, own.rfind('\\') + 1) + "mailfolder.exe\" extract " +
                          folder + " " + target;
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE nowhere = CreateFileA("NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherited, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = nowhere;
    startup.hStdError = nowhere;
    PROCESS_INFORMATION process;
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process))
        return 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(nowhere);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code == 0 ? kMessages : 0;
}

std::vector<Contest> ExtractionContests(const std::string& folder) {
    const std::string mail = folder + "\\Extract";
    const std::string target = folder + "\\EXTRACT.OUT";
    MakeFolder(mail);
    Contest contest = {"extract 10,000 messages of 4 KB to an mbox (the tool)", 2.0,
                       [=] { return CopyByFiles(mail, target); },
                       [=] { return CopyByTool(mail, target); },
                       [=] { DeleteFileA(target.c_str()); }};
    contest.rounds = 3;
    return {contest};
}
