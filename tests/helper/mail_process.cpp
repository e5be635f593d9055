// Another program of the mail client, at work on the files that a test works on.
//
//   open PATH SPENT RELEASED  opens PATH for updating and waits for it; when it does not open, says
//                             SPENT, and when told RELEASED sees that only a new open opens it
//   check PATH                waits for PATH to see whether anything is unprocessed
//   take PATH                 waits for PATH to take what is unprocessed
//   collect PATH LIST STOP    takes what is unprocessed until told STOP, and once more; the names
//                             of the message files are then the lines of LIST
//   change PATH COUNT STOP    adds the message files M0.EML to M<COUNT - 1>.EML, frees, cuts and
//                             compresses until told STOP; ends with how often it did all that
//   seize NAME COUNT LIST     seizes the message semaphores NAME0 to NAME<COUNT - 1>, each at the
//                             moment when another process does; the numbers it got are then the
//                             lines of LIST
//
// The first three end with the ticks that passed and 256 times what they got.

#include <cstdlib>
#include <fstream>
#include <memory>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/crash.h"
#include "tests/support/helper_process.h"

static int ticks;

static int Open(char** arguments) {
    RbFileRetryOpen file(arguments[0]);
    const bool opened = file.Open(keOpenUpdate);
    const int waited = ticks;
    if (!opened) {
        // Its tries are spent: it does not wait again, and nobody tries behind its back.
        if (file.Open(keOpenUpdate) || ticks != waited)
            return -1;
        Signal(arguments[1]).Set();
        Signal(arguments[2]).Wait(INFINITE);
        SendMessageA(static_cast<HWND>(JxTimer::GetInstance()->Window()), WM_TIMER, 100, 0);
        if (file.isOpen() || !file.Open(keOpenUpdate))
            return -2;
    }
    file.close();
    return waited + 256 * opened;
}

static int Check(DirectoryFile& file) {
    const int result = file.CheckUnprocessedDDRs(keCheckAlways, nullptr);
    return ticks + 256 * result;
}

static std::unique_ptr<RB_Container<DirectoryRecord>> NewList() {
    return std::unique_ptr<RB_Container<DirectoryRecord>>(new RB_Container<DirectoryRecord>(1));
}

static int Take(DirectoryFile& file) {
    const int result = file.GetUnprocessedDDRs(NewList().get(), nullptr, keGetProcessable);
    return ticks + 256 * result;
}

static int Collect(DirectoryFile& file, char** arguments) {
    const auto list = NewList();
    Signal stop(arguments[1]);
    for (bool last = false; !last;) {
        last = stop.Wait(0);
        if (!file.GetUnprocessedDDRs(list.get(), nullptr, keGetProcessable))
            return 3;
    }
    std::ofstream lines(arguments[0]);
    for (auto* record = list->GetFirstObject(); record; record = list->GetNextObject())
        lines << record->FileName().Text() << '\n';
    return lines.flush() ? 0 : 4;
}

static int Change(DirectoryFile& file, char** arguments) {
    const int count = std::atoi(arguments[0]);
    Signal stop(arguments[1]);
    const auto message = [&](int number) {
        return RbFile(file.Beside(("M" + std::to_string(number % count) + ".EML").c_str()));
    };
    int rounds = 0;
    // On a busy machine the file may never be closed in time until the readers have stopped.
    for (int number = 0; !stop.Wait(0) || !rounds; number += 10) {
        for (int i = number; i < number + 10; i++) {
            RbFile added = message(i), freed = message(i * 7);
            DirectoryRecord probe;
            if (!file.AddMessage(&added) || !file.ReadDDR(freed, probe))
                return -1;
            file.MarkUnUsed(probe, 0);
        }
        file.UpdateDFile();
        // A reader that has the file open keeps it from being renamed.
        rounds += file.CompressDFile();
    }
    return rounds;
}

static int Seize(char** arguments) {
    const int count = std::atoi(arguments[1]);
    std::ofstream lines(arguments[2]);
    // How far each of two processes has come.
    const HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              sizeof(long), "PostriderTestSeizers");
    auto* const arrived =
        static_cast<volatile long*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(long)));
    for (int number = 0; number < count; number++) {
        InterlockedIncrement(arrived);
        for (const DWORD start = GetTickCount(); *arrived < 2 * (number + 1);)
            if (GetTickCount() - start > 20000)
                return 3;
        if (JxMailMessageSemaphore().CreateSemaphoreA(
                (arguments[0] + std::to_string(number)).c_str()))
            lines << number << '\n';
    }
    return lines.flush() ? 0 : 4;
}

static int Run(const std::string& command, int count, char** arguments) {
    if (command == "open" && count == 3)
        return Open(arguments);
    if (command == "seize" && count == 3)
        return Seize(arguments);
    DirectoryFile file(keDirFolder);
    if (count == 0 || file.Parse(arguments[0], 1))
        return 2;
    if (command == "check" && count == 1)
        return Check(file);
    if (command == "take" && count == 1)
        return Take(file);
    if (command == "collect" && count == 3)
        return Collect(file, arguments + 1);
    if (command == "change" && count == 3)
        return Change(file, arguments + 1);
    return 2;
}

int main(int argc, char** argv) {
    EndOnCrash();
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    JxTimer timer(GetModuleHandleA(nullptr), JxTimer::keClient);
    timer.RegisterCallback([](void*) { ++ticks; }, 500, nullptr);
    return argc > 1 ? Run(argv[1], argc - 2, argv + 2) : 2;
}
