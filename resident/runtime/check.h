#pragma once

#include "resident/core/windows_api.h"
#include "resident/runtime/reporting.h"

// How the library's own sources report. Each names itself once in a constant `kSource`, with the
// name and extension that its reports have always carried.

// The general form; the others fill in what they leave out. A condition that holds costs no call.
#define JX_REPORT(condition, expression, message, line)                                            \
    ((condition) ? void() : RbAssertDispatch(0, expression, message, line, kSource, 0))

// A contract that explains itself, reported with its own text as expression.
#define JX_CHECK(condition) JX_REPORT(condition, #condition, nullptr, __LINE__)

// The same where line number and text are part of the interface.
#define JX_CHECK_AT(line, condition, expression) JX_REPORT(condition, expression, nullptr, line)

// A contract with a message.
#define JX_CHECK_MESSAGE(condition, expression, message)                                           \
    JX_REPORT(condition, expression, message, __LINE__)

// A failure without a condition.
#define JX_FAIL(message) JX_REPORT(0, "0", message, __LINE__)
#define JX_FAIL_AT(line, message) JX_REPORT(0, "0", message, line)

// The lighter check: one fixed text on the debugger output and nothing else.
#define JX_SAFE_CHECK(condition)                                                                   \
    ((condition) ? void() : OutputDebugStringA("Safe assertion failed"))
