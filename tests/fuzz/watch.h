#pragma once

#include <memory>

#include "tests/fuzz/format.h"
#include "tests/support/scratch.h"

// Runs inputs and tells what went wrong with each.

// What is being run, and where a crash is told.
struct Running {
    const Format* format = nullptr;
    std::uint64_t index = 0;
    std::string bytes;
    unsigned long long since = 0; // GetTickCount64 at its start, 0 between inputs
};

// The exit code of a process that ended itself because of an input.
constexpr int kCrashed = 70;

class Watch {
public:
    // Failing inputs go to files in the folder `failures`; `crashed` is called before the process
    // ends because of an input, whose failure has then been told.
    Watch(unsigned int seed, std::string failures, void (*crashed)());
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    // Before the first input of a format in a row: its files stand in the current folder. `Leave`
    // puts back what it shares with other programs. Entering fails while those have it.
    bool Enter(const Format& format);
    void Leave();

    // Runs one input. Returns whether all was well; else has told of it.
    bool Run(const Format& format, std::uint64_t index);

private:
    struct State;
    std::unique_ptr<State> mState;
};
