#include "tests/mailfolder/tool.h"

#include <algorithm>

#include "resident/core/windows_api.h"

namespace {

// Collects what the tool writes; beside the current folder, which may be the one it looks into.
class Output {
public:
    explicit Output(const char* name)
        : mPath("C:\\" + (name + std::to_string(GetCurrentProcessId())) + ".TXT") {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        mFile = CreateFileA(mPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                            CREATE_ALWAYS, 0, nullptr);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() { DeleteFileA(mPath.c_str()); }

    HANDLE File() const { return mFile; }
    std::string Take() {
        CloseHandle(mFile);
        std::string text = ReadFileBytes(mPath);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }

private:
    std::string mPath;
    HANDLE mFile;
};

std::string ToolPath() {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string own = path;
    return own.substr(0, own.rfind('\\') + 1) + "mailfolder.exe";
}

} // namespace

Ran RunTool(const std::string& arguments) {
    Output out("OUT");
    Output err("ERR");
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = out.File();
    startup.hStdError = err.File();
    std::string command = "\"" + ToolPath() + "\" " + arguments;
    PROCESS_INFORMATION process;
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process)) {
        ADD_FAILURE() << "cannot start " << command;
        return {};
    }
    if (WaitForSingleObject(process.hProcess, 30000) != WAIT_OBJECT_0) {
        ADD_FAILURE() << "does not end: " << command;
        TerminateProcess(process.hProcess, 99);
        WaitForSingleObject(process.hProcess, INFINITE);
    }
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return {code, out.Take(), err.Take()};
}
