#include <fstream>
#include <string>

#include "resident/core/rb_string.h"
#include "resident/core/windows_api.h"
#include "resident/runtime/rb_yield.h"
#include "resident/runtime/reporting.h"

static const char kSource[] = "JXRESIDT\\LOGERR.CPP";

// Control identifiers of the template "AIDDialog"; the buttons are also the dialog's results.
enum { keIgnore = 1, keAbort = 2, keDebug = 3, keReportText = 4 };

namespace {

// The dialog's initialisation value.
struct DialogParameters {
    int disableAbort;
    int disableIgnore;
    int disableDebug;
    const char* text;
};

void AppendLine(RBString& report, const char* line) {
    if (line) {
        report.concat(line);
        report.concat('\n');
    }
}

RBString ReportText(const char* expression, const char* message, int line, const char* file) {
    RBString report("Assert Failed!\n");
    AppendLine(report, expression);
    AppendLine(report, message);
    AppendLine(report, line ? std::to_string(line).c_str() : nullptr);
    AppendLine(report, file);
    return report;
}

} // namespace

void RbLogErrorOutputString(const char* expression, const char* message, int line,
                            const char* file) {
    OutputDebugStringA(ReportText(expression, message, line, file).Text());
}

void RbLogErrorFile(const char* expression, const char* message, int line, const char* file,
                    const char* logFileName) {
    std::ofstream log;
    if (logFileName)
        log.open(logFileName, std::ios::out | std::ios::app);
    if (!log.is_open()) {
        RbLogErrorOutputString(nullptr, "RbLogErrorFile couldn't open log file", 0, kSource);
        return;
    }
    const RBString report = ReportText(expression, message, line, file);
    log.write(report.Text(), report.Length());
}

void RbLogErrorAIDDialog(const char* expression, const char* message, int line, const char* file,
                         int buttonMask) {
    RBString report = ReportText(expression, message, line, file);
    const bool disableAbort = buttonMask & RB_AID_NO_ABORT;
    const bool disableIgnore = buttonMask & RB_AID_NO_IGNORE;
    const bool disableDebug = buttonMask & RB_AID_NO_DEBUG;
    // This complaint alone names its source without directory and extension.
    if (disableAbort && disableIgnore && disableDebug)
        RbLogErrorOutputString(nullptr, "All buttons cannot be disabled in RbLogErrorAIDDialog", 0,
                               "LOGERR");
    DoAIDDialog(report, disableAbort, disableIgnore, disableDebug);
}

void DoAIDDialog(RBString& text, int disableAbort, int disableIgnore, int disableDebug) {
    const DialogParameters parameters = {disableAbort, disableIgnore, disableDebug, text.Text()};
    const auto procedure = reinterpret_cast<DLGPROC>(reinterpret_cast<void*>(&AIDDialog));
    switch (DialogBoxParamA(static_cast<HINSTANCE>(GetTaskInstance()), "AIDDialog", nullptr,
                            procedure, reinterpret_cast<LPARAM>(&parameters))) {
    case keAbort:
        RbExitApp();
        break;
    case keDebug:
        DebugBreak();
        break;
    default:
        break;
    }
}

int __stdcall AIDDialog(void* window, unsigned int message, unsigned int wParam, long lParam) {
    const HWND dialog = static_cast<HWND>(window);
    if (message == WM_INITDIALOG) {
        const auto* parameters = reinterpret_cast<const DialogParameters*>(lParam);
        EnableWindow(GetDlgItem(dialog, keAbort), !parameters->disableAbort);
        EnableWindow(GetDlgItem(dialog, keIgnore), !parameters->disableIgnore);
        EnableWindow(GetDlgItem(dialog, keDebug), !parameters->disableDebug);
        SendDlgItemMessageA(dialog, keReportText, WM_SETTEXT, 0,
                            reinterpret_cast<LPARAM>(parameters->text));
        return TRUE;
    }
    // The whole wParam: a notification code in its high word makes it another command.
    if (message == WM_COMMAND && (wParam == keIgnore || wParam == keAbort || wParam == keDebug)) {
        EndDialog(dialog, static_cast<INT_PTR>(wParam));
        return TRUE;
    }
    return FALSE;
}
