#pragma once

#include "resident/core/jx_api.h"

// Reports of broken contracts (assertions) and of run-time errors.
//
// Each of the two dispatchers has its own count, its own choice of outputs and its own log file.
// A report is the header "Assert Failed!" and then, a line each, the expression, the message, the
// line number and the source file; a null text or a line of 0 leaves its line out. Nothing here
// throws or fails towards the caller, who goes on after the report. There are no locks.

class RBString;

// Outputs of a report; a dispatcher starts with the dialog alone.
enum {
    RB_OUTPUT_DEBUGGER = 1, // OutputDebugStringA
    RB_OUTPUT_DIALOG = 2,   // the modal dialog "AIDDialog"
    RB_OUTPUT_FILE = 4      // appended to the log file, "RBERROR.LOG" unless one was chosen
};

// A set bit disables one of the dialog's buttons.
enum { RB_AID_NO_ABORT = 0x10, RB_AID_NO_IGNORE = 0x20, RB_AID_NO_DEBUG = 0x40 };

extern "C" {

// Reports when `condition` is zero. Outputs run in the order debugger, dialog, file: a report that
// the user answers with Abort never reaches the file.
JX_API void RbAssertDispatch(int condition, const char* expression, const char* message, int line,
                             const char* file, int buttonMask);

// Reports when `error` is not zero; returns `error`.
JX_API int RbErrorDispatch(int error, const char* expression, const char* message, int line,
                           const char* file, int buttonMask);

// Chooses the outputs (a sum of RB_OUTPUT_ values; 0 for none) and, when `logFileName` is not null,
// the log file; a relative name is the current folder's at each report. Arguments that do not go
// together are told on the debugger output, counted as a report, and used all the same. A name
// keeps its first 255 characters.
JX_API void RbAssertSelectOutput(int outputs, const char* logFileName);
JX_API void RbErrorSelectOutput(int outputs, const char* logFileName);

// The reports so far.
JX_API unsigned int RbAssertGetCount(void);
JX_API unsigned int RbErrorGetCount(void);

// A negative count is told on the debugger output and stored.
JX_API void RbAssertSetCount(int count);
JX_API void RbErrorSetCount(int count);

// Ends the process at once with exit code 65535.
JX_API void RbExitApp(void);

// The outputs themselves, for one report each. A log file that cannot be opened is told on the
// debugger output, and the report is lost.
JX_API void RbLogErrorOutputString(const char* expression, const char* message, int line,
                                   const char* file);
JX_API void RbLogErrorAIDDialog(const char* expression, const char* message, int line,
                                const char* file, int buttonMask);
JX_API void RbLogErrorFile(const char* expression, const char* message, int line, const char* file,
                           const char* logFileName);

// Runs the dialog: Ignore returns, Abort ends the process (RbExitApp), Debug is a breakpoint.
JX_API void DoAIDDialog(RBString& text, int disableAbort, int disableIgnore, int disableDebug);

} // extern "C"

// The dialog procedure of "AIDDialog": controls 1 Ignore, 2 Abort, 3 Debug, 4 the report's text.
JX_API int __stdcall AIDDialog(void* window, unsigned int message, unsigned int wParam,
                               long lParam);
