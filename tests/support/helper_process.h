#pragma once

#include <string>

// The exit code of a program that ended_at_step.cpp ends.
constexpr unsigned long kEndedAtStep = 98;

// A process started by a test: one of the commands of tests/helper, or any program beside it.
class HelperProcess {
public:
    // `arguments` begin with the command; see tests/helper/helper_process.cpp.
    explicit HelperProcess(const std::string& arguments);
    // What it writes to its standard error stream goes to the file `errors`.
    HelperProcess(const std::string& program, const std::string& arguments,
                  const std::string& errors = "");
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;
    ~HelperProcess();

    // Ends it at once.
    void End();
    // Waits for it to end; the whole 32-bit exit code.
    unsigned long ExitCode();

private:
    void* mProcess;
};

// A named event: something that one process waits for and another one says.
class Signal {
public:
    Signal();
    // One that another process made.
    explicit Signal(const std::string& name);
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal();

    const std::string& Name() const { return mName; }
    void Set();
    // False when the time is over.
    bool Wait(unsigned long milliseconds);

private:
    std::string mName;
    void* mEvent;
};

// Holds `path` open without sharing, in another process, until destroyed or for `milliseconds`.
// Returns when the file is held.
class HeldFile {
public:
    explicit HeldFile(const std::string& path, unsigned long milliseconds = 120000);
    ~HeldFile();

private:
    Signal mHeld, mRelease;
    HelperProcess mProcess;
};
