#pragma once

#include <memory>

#include "tests/fuzz/format.h"
#include "tests/support/scratch.h"

// Runs inputs and tells what went wrong with each.

// The input that is being run. It outlives the process where it stands in a file's memory: whoever
// starts the next one learns what ended this one.
struct Running {
    enum { keNothing, keInput, keTold }; // keTold: its failure has been told
    char format[32];
    std::uint64_t index;
    volatile int state;
    unsigned long long started; // when the first process was, by GetTickCount64
};

// Prints a failure with the command that shows it again, and keeps the input in the folder of
// failures.
void TellFailure(const Format& format, std::uint64_t index, const std::string& bytes,
                 const char* what);

class Watch {
public:
    // Failing inputs go to files in the folder `failures`; `crashed` is called before the process
    // ends because of an input, with kCrashExitCode.
    Watch(unsigned int seed, const std::string& failures, Running& running, void (*crashed)());
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    // Before the first input of a format in a row: makes its files stand in the current folder.
    void Enter(const Format& format);

    // Runs one input. Returns whether all was well; else has told of it.
    bool Run(const Format& format, std::uint64_t index);

private:
    struct State;
    std::unique_ptr<State> mState;
};
