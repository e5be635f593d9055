#pragma once

#include <memory>
#include <string>

#include "tests/fuzz/format.h"

// Runs inputs and tells what went wrong with each.

// The input that is being run. It outlives the process where it stands in a file's memory: whoever
// starts the next one learns what ended this one.
struct Running {
    enum { keNothing, keInput, keTold }; // keTold: its failure has been told
    char format[32];
    volatile int state;
    unsigned long long started; // when the first process was, by GetTickCount64
    unsigned int size;
    char bytes[65536];
};

// Prints a failure with the command that shows it again, and keeps the input in the folder of
// failures.
void TellFailure(const char* what);

class Watch {
public:
    // Failing inputs go to files in the folder `failures`; `crashed` is called before the process
    // ends because of an input, with kCrashExitCode.
    Watch(const std::string& failures, Running& running, void (*crashed)());
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    // Runs one input. Returns whether all was well; else has told of it. What edges.dll then counts
    // are the input's own edges.
    bool Run(const Format& format, const std::string& input);
    // How many it has run.
    unsigned int Runs() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};
