// Ends the program before a step, when POSTRIDER_END_AT has its number, from 1: a call of the
// system that changes a file. Files are then as if the program had been killed between that step
// and the one before. To be linked into a program as it is.

#include <cstdlib>

#include "resident/core/windows_api.h"
#include "tests/support/file_calls.h"
#include "tests/support/helper_process.h"

static long stepsLeft;

static void BeforeStep(const FileCall& call) {
    if (call.changes && --stepsLeft == 0)
        TerminateProcess(GetCurrentProcess(), kEndedAtStep);
}

static const bool asked = [] {
    const char* const step = std::getenv("POSTRIDER_END_AT");
    if (!step)
        return false;
    stepsLeft = std::atol(step);
    StandBetweenFiles(BeforeStep, nullptr);
    return true;
}();
