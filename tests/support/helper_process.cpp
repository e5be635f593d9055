#include "tests/support/helper_process.h"

#include <stdexcept>

#include "resident/core/windows_api.h"

static std::string ProgramBeside(const std::string& name) {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string own = path;
    return own.substr(0, own.rfind('\\') + 1) + name;
}

HelperProcess::HelperProcess(const std::string& arguments)
    : HelperProcess("helper_process.exe", arguments) {}

HelperProcess::HelperProcess(const std::string& program, const std::string& arguments,
                             const std::string& errors) {
    std::string command = "\"" + ProgramBeside(program) + "\" " + arguments;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process;
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    if (!errors.empty()) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdError = CreateFileA(errors.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                        CREATE_ALWAYS, 0, nullptr);
    }
    const bool started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, !errors.empty(),
                                        0, nullptr, nullptr, &startup, &process);
    if (!errors.empty())
        CloseHandle(startup.hStdError);
    if (!started)
        throw std::runtime_error("cannot start " + command);
    CloseHandle(process.hThread);
    mProcess = process.hProcess;
}

void HelperProcess::End() { TerminateProcess(mProcess, 99); }

HelperProcess::~HelperProcess() {
    End();
    WaitForSingleObject(mProcess, INFINITE);
    CloseHandle(mProcess);
}

unsigned long HelperProcess::ExitCode() {
    WaitForSingleObject(mProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(mProcess, &code);
    return code;
}

static std::string NewSignalName() {
    static int number = 0;
    return "PostriderTest" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(number++);
}

Signal::Signal() : Signal(NewSignalName()) {}

Signal::Signal(const std::string& name)
    : mName(name), mEvent(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}

Signal::~Signal() { CloseHandle(mEvent); }

void Signal::Set() { SetEvent(mEvent); }

bool Signal::Wait(unsigned long milliseconds) {
    return WaitForSingleObject(mEvent, milliseconds) == WAIT_OBJECT_0;
}

HeldFile::HeldFile(const std::string& path, unsigned long milliseconds)
    : mProcess("hold \"" + path + "\" " + std::to_string(milliseconds) + " " + mHeld.Name() + " " +
               mRelease.Name()) {
    if (!mHeld.Wait(20000))
        throw std::runtime_error("cannot hold " + path);
}

HeldFile::~HeldFile() {
    mRelease.Set();
    mProcess.ExitCode();
}
