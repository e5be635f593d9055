// What a test needs another process for.
//
//   hold PATH MILLISECONDS HELD RELEASE   opens PATH without sharing, sets the event HELD, and
//                                         closes it after that time or when RELEASE is set
//   report OUTPUTS BUTTON                 reports "a != 0" to OUTPUTS (-1: those it starts with)
//                                         and answers the dialog with BUTTON; ends with the count,
//                                         16 for each dialog and 256 for each debugger text

#include <cstdlib>
#include <cstring>
#include <string>

#include "resident/core/windows_api.h"
#include "resident/runtime/reporting.h"
#include "tests/support/debug_output.h"
#include "tests/support/message_boxes.h"

static int Hold(char** arguments) {
    const HANDLE file =
        CreateFileA(arguments[0], GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    const HANDLE held = OpenEventA(EVENT_MODIFY_STATE, FALSE, arguments[2]);
    const HANDLE release = OpenEventA(SYNCHRONIZE, FALSE, arguments[3]);
    SetEvent(held);
    WaitForSingleObject(release, std::strtoul(arguments[1], nullptr, 10));
    CloseHandle(file);
    return 0;
}

static int Report(char** arguments) {
    MessageBoxes boxes;
    DebugOutput debug;
    const int outputs = std::atoi(arguments[0]);
    boxes.AnswerWith(std::atoi(arguments[1]));
    if (outputs >= 0)
        RbAssertSelectOutput(outputs, nullptr);
    RbAssertDispatch(0, "a != 0", nullptr, 0, nullptr, 0);
    return static_cast<int>(RbAssertGetCount() + 16 * boxes.Shown().size() +
                            256 * debug.Texts().size());
}

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "hold" && argc == 6)
        return Hold(argv + 2);
    if (command == "report" && argc == 4)
        return Report(argv + 2);
    return 2;
}
