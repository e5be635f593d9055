// What a test needs another process for.
//
//   hold PATH MILLISECONDS HELD RELEASE   opens PATH without sharing, sets the event HELD, and
//                                         closes it after that time or when RELEASE is set

#include <cstdlib>
#include <cstring>
#include <string>

#include "resident/core/windows_api.h"

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

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "hold" && argc == 6)
        return Hold(argv + 2);
    return 2;
}
