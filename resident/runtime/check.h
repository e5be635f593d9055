#pragma once

#include "resident/core/windows_api.h"
#include "resident/runtime/reporting.h"

// How the library's own sources report: each has one of these, with the name and extension that its
// reports have always carried. Line numbers that other programs know are passed as numbers;
// elsewhere the line is the caller's.
class Reporter {
public:
    explicit constexpr Reporter(const char* source) : mSource(source) {}

    // A contract, told by its `expression` where it is broken. One that holds costs no call.
    void Check(bool holds, const char* expression, const char* message = nullptr,
               int line = __builtin_LINE()) const {
        if (!holds)
            RbAssertDispatch(0, expression, message, line, mSource, 0);
    }
    void CheckAt(int line, bool holds, const char* expression,
                 const char* message = nullptr) const {
        Check(holds, expression, message, line);
    }
    // A failure without a condition.
    void Fail(const char* message, int line = __builtin_LINE()) const {
        Check(false, "0", message, line);
    }
    void FailAt(int line, const char* message = nullptr) const { Fail(message, line); }

private:
    const char* mSource;
};

// The lighter check: one fixed text on the debugger output and nothing else.
inline void SafeCheck(bool holds) {
    if (!holds)
        OutputDebugStringA("Safe assertion failed");
}
