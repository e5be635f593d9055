// fuzz: feeds damaged input to everything that reads it, and tells what goes wrong.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

#include "resident/core/windows_api.h"
#include "tests/fuzz/watch.h"

namespace {

constexpr unsigned int kSlice = 100; // milliseconds that a format runs at a time
constexpr unsigned int kTableEvery = 30000;
// The exit code when inputs failed and none ended the process; nothing else ends with it.
constexpr int kFailed = 10;

struct Tally {
    const Format* format = nullptr;
    std::uint64_t next = 0; // the next index
    std::uint64_t inputs = 0;
    std::uint64_t failures = 0;
    std::uint64_t limit = 0; // of inputs, 0 without one
    unsigned long long time = 0;

    bool Done() const { return limit && inputs >= limit; }
};

struct Arguments {
    std::vector<std::string> formats;
    unsigned int seed = 1;
    std::uint64_t first = 0;
    std::uint64_t inputs = 0;
    std::uint64_t seconds = 0;
    unsigned int worker = 0;
    unsigned int workers = 1;
    std::string failures = ".";
    std::string state;
    std::string stop;
    std::string report;
    bool brief = false;
    bool list = false;
};

Arguments arguments;
std::vector<Tally> tallies;
volatile LONG stopped;

void Read(int argc, char** argv) {
    CLI::App app{"Feeds damaged input to everything that reads it."};
    app.name("fuzz");
    app.allow_windows_style_options(false);
    app.add_option("--format", arguments.formats, "These formats alone")->delimiter(',');
    app.add_option("--seed", arguments.seed, "Other inputs for another seed; 1");
    app.add_option("--first", arguments.first, "The first index; 0");
    app.add_option("--inputs", arguments.inputs, "Stop after that many inputs altogether");
    app.add_option("--seconds", arguments.seconds, "Stop after that time");
    app.add_option("--worker", arguments.worker, "The number of this process, from 0");
    app.add_option("--workers", arguments.workers, "How many share the indexes")
        ->check(CLI::PositiveNumber);
    app.add_option("--failures", arguments.failures, "The folder for inputs that fail");
    app.add_option("--state", arguments.state, "The file to go on from, kept up to date");
    app.add_option("--stop", arguments.stop, "Stop when there is a file of this name");
    app.add_option("--report", arguments.report, "Write a report as the test programs do");
    app.add_flag("--brief", arguments.brief, "A fixed number of inputs of each format");
    app.add_flag("--list", arguments.list, "List the formats");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error) == 0 ? 0 : 2);
    }
}

// This process's share of so many inputs.
std::uint64_t Share(std::uint64_t inputs) {
    return (inputs + arguments.workers - 1 - arguments.worker) / arguments.workers;
}

// The state: a line for each format. Written by a process that may be out of memory, too.
void WriteState() {
    if (arguments.state.empty())
        return;
    static char text[8192];
    int length = 0;
    for (const Tally& tally : tallies)
        length += std::snprintf(text + length, sizeof text - length, "%s %llu %llu %llu %llu\n",
                                tally.format->name.c_str(), tally.next, tally.inputs,
                                tally.failures, tally.time);
    // Its readers find it whole: it is put in the place of the old one.
    const std::string fresh = arguments.state + ".new";
    const HANDLE file = CreateFileA(fresh.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_ALWAYS, 0, nullptr);
    DWORD written;
    WriteFile(file, text, length, &written, nullptr);
    CloseHandle(file);
    MoveFileExA(fresh.c_str(), arguments.state.c_str(), MOVEFILE_REPLACE_EXISTING);
}

void ReadState() {
    std::FILE* const file = std::fopen(arguments.state.c_str(), "r");
    char name[64];
    Tally read;
    while (file && std::fscanf(file, "%63s %llu %llu %llu %llu", name, &read.next, &read.inputs,
                               &read.failures, &read.time) == 5)
        for (Tally& tally : tallies)
            if (tally.format->name == name) {
                tally.next = read.next;
                tally.inputs = read.inputs;
                tally.failures = read.failures;
                tally.time = read.time;
            }
    if (file)
        std::fclose(file);
}

// The input being run, kept in a file beside the state.
Running* MapRunning() {
    static Running unmapped;
    if (arguments.state.empty())
        return &unmapped;
    const HANDLE file =
        CreateFileA((arguments.state + ".now").c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    const HANDLE mapping =
        CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, sizeof(Running), nullptr);
    void* const view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(Running));
    return view ? static_cast<Running*>(view) : &unmapped;
}

// The input that ended the last process counts as a failure, and is not run again.
void PassOver(Running& last) {
    for (Tally& tally : tallies)
        if (last.state != Running::keNothing && tally.format->name == last.format) {
            ++tally.inputs;
            ++tally.failures;
            tally.next = last.index + arguments.workers;
            if (last.state == Running::keInput) {
                Random random(arguments.seed, tally.format->name, last.index);
                TellFailure(*tally.format, last.index,
                            MakeInput(tally.format->shape, last.index, random), "ends the process");
            }
        }
    last.state = Running::keNothing;
}

std::uint64_t Inputs() {
    std::uint64_t sum = 0;
    for (const Tally& tally : tallies)
        sum += tally.inputs;
    return sum;
}

void PrintTable() {
    std::uint64_t failures = 0;
    std::printf("%-20s %12s %9s\n", "format", "inputs", "failures");
    for (const Tally& tally : tallies) {
        std::printf("%-20s %12llu %9llu\n", tally.format->name.c_str(), tally.inputs,
                    tally.failures);
        failures += tally.failures;
    }
    std::printf("%-20s %12llu %9llu\n", "total", Inputs(), failures);
    std::fflush(stdout);
}

void WriteReport() {
    std::FILE* const file = std::fopen(arguments.report.c_str(), "w");
    if (!file)
        return;
    unsigned int failed = 0;
    for (const Tally& tally : tallies)
        failed += tally.failures != 0;
    std::fprintf(file, "<testsuites tests=\"%u\" failures=\"%u\" disabled=\"0\">\n",
                 static_cast<unsigned int>(tallies.size()), failed);
    for (const Tally& tally : tallies)
        std::fprintf(file, "  <testcase name=\"%s\" inputs=\"%llu\" failures=\"%llu\"/>\n",
                     tally.format->name.c_str(), tally.inputs, tally.failures);
    std::fprintf(file, "</testsuites>\n");
    std::fclose(file);
}

BOOL WINAPI OnControl(DWORD) {
    InterlockedExchange(&stopped, 1);
    return TRUE;
}

class Run {
public:
    Run(Watch& watch, unsigned long long start) : mWatch(watch), mStart(start) {
        mLimit = Share(arguments.inputs);
    }
    // Formats take turns until the end: the one that has had the least time is next.
    void All() {
        unsigned long long tabled = GetTickCount64();
        while (!Stops()) {
            Tally* const tally = Next();
            if (!tally)
                break;
            mWatch.Enter(*tally->format);
            RunSlice(*tally);
            // At each turn: what ends the process may not let it be written any more.
            WriteState();
            const unsigned long long now = GetTickCount64();
            if (arguments.state.empty() && now - tabled > kTableEvery) {
                tabled = now;
                PrintTable();
            }
        }
    }

private:
    Tally* Next() const {
        Tally* next = nullptr;
        for (Tally& tally : tallies)
            if (!tally.Done() && (!next || tally.time < next->time))
                next = &tally;
        return next;
    }
    bool Full() const { return arguments.inputs && Inputs() >= mLimit; }
    bool Stops() const {
        return stopped || Full() ||
               (arguments.seconds && GetTickCount64() - mStart >= arguments.seconds * 1000) ||
               (!arguments.stop.empty() && FileThere(arguments.stop));
    }
    void RunSlice(Tally& tally) {
        const unsigned long long start = GetTickCount64();
        const unsigned long long before = tally.time;
        while (tally.time - before < kSlice && !tally.Done() && !Full() && !stopped) {
            const bool well = mWatch.Run(*tally.format, tally.next);
            tally.failures += !well;
            ++tally.inputs;
            tally.next += arguments.workers;
            tally.time = before + GetTickCount64() - start;
        }
    }

    Watch& mWatch;
    std::uint64_t mLimit;
    const unsigned long long mStart;
};

} // namespace

int main(int argc, char** argv) {
    Read(argc, argv);
    std::vector<Format> formats;
    AddStoreFormats(formats);
    AddUserFormats(formats);
    AddPrefFormats(formats);
    AddTextFormats(formats);
    const auto& wanted = arguments.formats;
    for (const Format& format : formats) {
        if (arguments.list)
            std::printf("%s\n", format.name.c_str());
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), format.name) == wanted.end())
            continue;
        Tally tally;
        tally.format = &format;
        tally.next = arguments.first + arguments.worker;
        if (arguments.brief)
            tally.limit = Share(format.shortRun);
        tallies.push_back(tally);
    }
    if (arguments.list)
        return 0;
    if (tallies.empty() || (!wanted.empty() && tallies.size() != wanted.size())) {
        std::fprintf(stderr, "There is no such format.\n");
        return 2;
    }
    ReadState();
    SetConsoleCtrlHandler(OnControl, TRUE);
    std::printf("Seed %u, worker %u of %u\n", arguments.seed, arguments.worker, arguments.workers);
    std::fflush(stdout);
    {
        Running& running = *MapRunning();
        Watch watch(arguments.seed, arguments.failures, running, WriteState);
        PassOver(running);
        WriteState();
        if (!running.started)
            running.started = GetTickCount64();
        Run(watch, running.started).All();
    }
    WriteState();
    if (arguments.state.empty())
        PrintTable();
    if (!arguments.report.empty())
        WriteReport();
    for (const Tally& tally : tallies)
        if (tally.failures)
            return kFailed;
    return 0;
}
