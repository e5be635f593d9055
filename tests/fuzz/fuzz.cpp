// fuzz: feeds damaged input to everything that reads it, and tells what goes wrong.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <list>

#include "resident/core/windows_api.h"
#include "tests/fuzz/edges.h"
#include "tests/fuzz/guided.h"
#include "tests/support/scratch.h"

namespace {

constexpr unsigned int kSlice = 200; // milliseconds that a format runs at a time
// The exit code when inputs failed and none ended the process; nothing else ends with it.
constexpr int kFailed = 10;

struct Tally {
    const Format& format;
    Guided guided;
    std::uint64_t inputs = 0;
    std::uint64_t failures = 0;
    unsigned long long time = 0; // milliseconds

    void Count(bool well) {
        ++inputs;
        failures += !well;
    }
};

struct Arguments {
    std::vector<std::string> inputs;
    std::vector<std::string> formats;
    std::vector<std::string> corpus;
    unsigned int seed = 1;
    std::uint64_t limit = 0;
    std::uint64_t seconds = 0;
    std::string folder = ".";
    std::string state;
    std::string report;
    std::string edges;
    bool replay = false;
    bool list = false;
};

Arguments arguments;
std::list<Tally> tallies;
volatile LONG stopped;

void Read(int argc, char** argv) {
    CLI::App app{"Feeds damaged input to everything that reads it."};
    app.name("fuzz");
    app.allow_windows_style_options(false);
    app.add_option("INPUT", arguments.inputs, "Run these files, and nothing else");
    app.add_option("--format", arguments.formats, "These formats alone")->delimiter(',');
    app.add_option("--seed", arguments.seed, "Other damage for another seed; 1");
    app.add_option("--inputs", arguments.limit, "Stop after that many inputs of each format");
    app.add_option("--seconds", arguments.seconds, "Stop after that time");
    app.add_flag("--list", arguments.list, "List the formats");
    // What ./fuzz and ./test say.
    app.add_option("--corpus", arguments.corpus, "Folders of inputs to start from")->group("");
    app.add_flag("--replay", arguments.replay, "Run them, and nothing else")->group("");
    app.add_option("--folder", arguments.folder, "For what is kept, and what fails")->group("");
    app.add_option("--state", arguments.state, "Go on from it, and keep it")->group("");
    app.add_option("--report", arguments.report, "Report as the test programs do")->group("");
    app.add_option("--edges", arguments.edges, "A file for the edges of each input")->group("");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error) == 0 ? 0 : 2);
    }
}

// The state: a line for each format. Written by a process that may be out of memory, too.
void WriteState() {
    if (arguments.state.empty())
        return;
    static char text[8192];
    int length = 0;
    for (const Tally& tally : tallies)
        length += std::snprintf(text + length, sizeof text - length, "%s %llu %llu %llu %u\n",
                                tally.format.name.c_str(), tally.inputs, tally.failures, tally.time,
                                tally.guided.Kept());
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
    unsigned long long inputs, failures, time;
    unsigned int kept;
    while (file &&
           std::fscanf(file, "%63s %llu %llu %llu %u", name, &inputs, &failures, &time, &kept) == 5)
        for (Tally& tally : tallies)
            if (tally.format.name == name)
                tally.inputs = inputs, tally.failures = failures, tally.time = time;
    if (file)
        std::fclose(file);
}

// The input being run, kept in a file beside the state.
Running& MapRunning() {
    static Running unmapped;
    if (arguments.state.empty())
        return unmapped;
    const HANDLE file =
        CreateFileA((arguments.state + ".now").c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
    const HANDLE mapping =
        CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, sizeof(Running), nullptr);
    void* const view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(Running));
    return view ? *static_cast<Running*>(view) : unmapped;
}

// The input that ended the last process counts as a failure.
void CountLast(Running& last) {
    for (Tally& tally : tallies)
        if (last.state != Running::keNothing && tally.format.name == last.format)
            tally.Count(false);
    if (last.state == Running::keInput)
        TellFailure("ends the process");
    last.state = Running::keNothing;
}

std::uint64_t Inputs() {
    std::uint64_t sum = 0;
    for (const Tally& tally : tallies)
        sum += tally.inputs;
    return sum;
}

void WriteReport() {
    std::FILE* const file = std::fopen(arguments.report.c_str(), "w");
    if (!file)
        return;
    const auto failed = std::count_if(tallies.begin(), tallies.end(),
                                      [](const Tally& tally) { return tally.failures != 0; });
    std::fprintf(file, "<testsuites tests=\"%u\" failures=\"%u\" disabled=\"0\">\n",
                 static_cast<unsigned int>(tallies.size()), static_cast<unsigned int>(failed));
    for (const Tally& tally : tallies)
        std::fprintf(file, "  <testcase name=\"%s\" inputs=\"%llu\" failures=\"%llu\"/>\n",
                     tally.format.name.c_str(), tally.inputs, tally.failures);
    std::fprintf(file, "</testsuites>\n");
    std::fclose(file);
}

// A line for each input: its file and the edges that it takes.
void TellEdges(const std::string& input) {
    const auto edges = reinterpret_cast<decltype(&Edges)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("edges.dll"), "Edges")));
    static std::FILE* const file = std::fopen(arguments.edges.c_str(), "w");
    if (!edges || !file)
        return;
    std::fprintf(file, "%s", input.substr(input.rfind('\\') + 1).c_str());
    for (unsigned int i = 0; i < edges()->count; ++i)
        std::fprintf(file, " %x", edges()->at[i]);
    std::fprintf(file, "\n");
    std::fflush(file);
}

BOOL WINAPI OnControl(DWORD) {
    InterlockedExchange(&stopped, 1);
    return TRUE;
}

// The sound inputs, and those that were kept before.
void RunCorpus(Watch& watch) {
    for (Tally& tally : tallies)
        for (const std::string& folder : arguments.corpus)
            for (const std::string& file : InputFiles(folder, tally.format.name)) {
                if (arguments.replay)
                    tally.Count(watch.Run(tally.format, ReadFileBytes(file)));
                else
                    tally.guided.RunKept(watch, ReadFileBytes(file));
                if (!arguments.edges.empty())
                    TellEdges(file);
                if (stopped)
                    return;
            }
}

// Formats take turns until the end: the one that has had the least time is next.
void RunDamaged(Watch& watch, unsigned long long start) {
    // Each worker its own, and another one each time it starts.
    Random random(arguments.seed, arguments.state, Inputs());
    const auto full = [](const Tally& tally) {
        return arguments.limit && tally.inputs >= arguments.limit;
    };
    while (!stopped && !FileThere(arguments.state + ".stop")) {
        Tally* next = nullptr;
        for (Tally& tally : tallies)
            if (!full(tally) && (!next || tally.time < next->time))
                next = &tally;
        const unsigned long long now = GetTickCount64();
        if (!next || (arguments.seconds && now - start >= arguments.seconds * 1000))
            break;
        const unsigned long long before = next->time;
        while (next->time - before < kSlice && !full(*next) && !stopped) {
            const unsigned int runs = watch.Runs();
            next->failures += !next->guided.RunDamaged(watch, random);
            next->inputs += watch.Runs() - runs;
            next->time = before + GetTickCount64() - now;
        }
        // At each turn: what ends the process may not let it be written any more.
        WriteState();
    }
}

void RunFiles(Watch& watch) {
    for (const std::string& file : arguments.inputs)
        for (Tally& tally : tallies) {
            const std::size_t slash = file.find_last_of("/\\");
            const std::string name = file.substr(slash == file.npos ? 0 : slash + 1);
            if (name.substr(0, name.rfind('-')) != tally.format.name)
                continue;
            tally.Count(watch.Run(tally.format, ReadFileBytes(file)));
            std::printf("%s: done\n", name.c_str());
        }
}

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
        else if (wanted.empty() ||
                 std::find(wanted.begin(), wanted.end(), format.name) != wanted.end())
            tallies.push_back({format, Guided(format, arguments.replay || arguments.state.empty()
                                                          ? ""
                                                          : arguments.folder + "\\kept")});
    }
    if (arguments.list)
        return 0;
    if (tallies.empty() || (!wanted.empty() && tallies.size() != wanted.size())) {
        std::fprintf(stderr, "There is no such format.\n");
        return 2;
    }
    ReadState();
    SetConsoleCtrlHandler(OnControl, TRUE);
    {
        Running& running = MapRunning();
        Watch watch(arguments.folder, running, WriteState);
        CountLast(running);
        WriteState();
        if (!running.started)
            running.started = GetTickCount64();
        if (!arguments.inputs.empty()) {
            RunFiles(watch);
        } else {
            RunCorpus(watch);
            if (!arguments.replay)
                RunDamaged(watch, running.started);
        }
    }
    WriteState();
    if (!arguments.report.empty())
        WriteReport();
    const bool failed = std::any_of(tallies.begin(), tallies.end(),
                                    [](const Tally& tally) { return tally.failures != 0; });
    std::printf("%llu inputs, %s\n", Inputs(), failed ? "failures above" : "no failure");
    return failed ? kFailed : 0;
}
