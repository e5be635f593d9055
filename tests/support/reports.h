#pragma once

#include <string>

#include "resident/runtime/reporting.h"
#include "tests/support/debug_output.h"

// What is reported while this lives, to the debugger output: "expression|message|line|source" and a
// line feed for each report, without what it leaves out. Line numbers are told where other programs
// know them; those of the store's sources are anybody's guess. The count of reports is as it was
// afterwards.
class Reports {
public:
    Reports() { RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr); }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;
    ~Reports();

    // Those since the last call.
    std::string Take();

private:
    DebugOutput mOutput;
    const unsigned int mCount = RbAssertGetCount();
};
