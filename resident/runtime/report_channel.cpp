#include "resident/runtime/report_channel.h"

#include "resident/core/rb_string.h"
#include "resident/runtime/reporting.h"

void ReportChannel::ChooseDefaultName() {
    if (!mfNameChosen)
        ChooseName("RBERROR.LOG");
}

void ReportChannel::Report(const char* expression, const char* message, int line, const char* file,
                           int buttonMask) {
    miCount = static_cast<int>(Count() + 1);
    if (miOutputs & RB_OUTPUT_DEBUGGER)
        RbLogErrorOutputString(expression, message, line, file);
    if (miOutputs & RB_OUTPUT_DIALOG)
        RbLogErrorAIDDialog(expression, message, line, file, buttonMask);
    if (miOutputs & RB_OUTPUT_FILE)
        RbLogErrorFile(expression, message, line, file, mszLogFileName);
}

void ReportChannel::SelectOutput(int outputs, const char* logFileName) {
    const bool toFile = outputs & RB_OUTPUT_FILE;
    if (!logFileName && toFile)
        Complain("File name NOT given but file output selected");
    if (logFileName && !toFile)
        Complain("File name given but file output NOT selected");
    // Both selectors give this text.
    if (outputs & ~(RB_OUTPUT_DEBUGGER | RB_OUTPUT_DIALOG | RB_OUTPUT_FILE))
        Complain("RbAssertSelectOutput: undocumented flag used");
    if (logFileName)
        ChooseName(logFileName);
    miOutputs = outputs;
}

void ReportChannel::SetCount(int count) {
    if (count < 0)
        Complain(mTexts.invalidCount);
    miCount = count;
}

void ReportChannel::ChooseName(const char* logFileName) {
    // The copy itself asserts: the flag comes first, so that it does not choose a name again.
    mfNameChosen = true;
    if (!LStrNCpyAndNullTerminate(mszLogFileName, logFileName, sizeof mszLogFileName))
        RbLogErrorOutputString(mTexts.nameTooLong, nullptr, 0, mTexts.source);
}

void ReportChannel::Complain(const char* text) {
    miCount = static_cast<int>(Count() + 1);
    RbLogErrorOutputString(text, nullptr, 0, mTexts.source);
}
