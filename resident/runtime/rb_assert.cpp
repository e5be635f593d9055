#include "resident/runtime/report_channel.h"
#include "resident/runtime/reporting.h"

static constinit ReportChannel channel({"JXRESIDT\\RBASSERT.CPP",
                                        "RbAssert output file name too long",
                                        "RbAssertSetCount: Invalid parameter"});

void RbAssertDispatch(int condition, const char* expression, const char* message, int line,
                      const char* file, int buttonMask) {
    channel.ChooseDefaultName();
    if (!condition)
        channel.Report(expression, message, line, file, buttonMask);
}

void RbAssertSelectOutput(int outputs, const char* logFileName) {
    channel.SelectOutput(outputs, logFileName);
}

unsigned int RbAssertGetCount() { return channel.Count(); }

void RbAssertSetCount(int count) { channel.SetCount(count); }
