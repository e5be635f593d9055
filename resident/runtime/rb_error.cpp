#include "resident/core/windows_api.h"
#include "resident/runtime/report_channel.h"
#include "resident/runtime/reporting.h"

static constinit ReportChannel channel({"JXRESIDT\\RBERROR.CPP",
                                        "RbIsError output file name too long",
                                        "RbErrorSetCount: Invalid parameter"});

int RbErrorDispatch(int error, const char* expression, const char* message, int line,
                    const char* file, int buttonMask) {
    channel.ChooseDefaultName();
    if (error)
        channel.Report(expression, message, line, file, buttonMask);
    return error;
}

void RbErrorSelectOutput(int outputs, const char* logFileName) {
    channel.SelectOutput(outputs, logFileName);
}

unsigned int RbErrorGetCount() { return channel.Count(); }

void RbErrorSetCount(int count) { channel.SetCount(count); }

void RbExitApp() { ExitProcess(0xFFFF); }
