#pragma once

#include <string>
#include <vector>

// Collects what is sent to the debugger output while it lives, from any thread of the process: a
// string each. (OutputDebugStringA raises an exception that a debugger sees first; so does this.)
class DebugOutput {
public:
    DebugOutput();
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;
    ~DebugOutput();

    const std::vector<std::string>& Texts() const { return mTexts; }
    // The texts sent since the last call.
    std::vector<std::string> TakeTexts();

private:
    friend struct DebugOutputHandler;

    std::vector<std::string> mTexts;
    void* mHandler;
};
