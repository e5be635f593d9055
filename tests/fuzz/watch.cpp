#include "tests/fuzz/watch.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

#include "postrider.h"
#include "resident/core/windows_api.h"

#include <shlwapi.h>

#include "tests/fuzz/edges.h"
#include "tests/fuzz/touched_files.h"
#include "tests/support/crash.h"
#include "tests/support/scratch.h"
#include "tests/support/taken_boxes.h"

static constexpr unsigned long long kLongest = 20000; // milliseconds
static constexpr unsigned int kHandlesEvery = 1000;
// Handles that the run-time and Windows keep for good, beside those of the run.
static constexpr unsigned int kSomeHandles = 40;

static Running* running;
static volatile unsigned long long runningSince; // 0 between inputs
static std::string failuresFolder;
static void (*crashedCallback)();
static std::string complaint; // of the current input

static std::vector<std::string> reports;

static void WINAPI TakeReport(const char* text) { reports.push_back(text); }

static void Complain(const std::string& wrong) {
    if (complaint.empty())
        complaint = wrong;
}

void Expect(bool holds, const char* what) {
    if (!holds)
        Complain(what);
}

void ReadText(const char* text) {
    static volatile unsigned int sum;
    while (*text)
        sum = sum + static_cast<unsigned char>(*text++);
}

// Takes no memory of the heap, which may be damaged.
void TellFailure(const char* what) {
    static constexpr char kSlash[] = "\\";
    char name[128], line[1024], guard[16] = "behind";
    unsigned long hash = 5381;
    for (unsigned int i = 0; i < running->size; ++i)
        hash = hash * 33 + static_cast<unsigned char>(running->bytes[i]);
    std::snprintf(name, sizeof name, "%s-%08lx.bin", running->format, hash);
    std::snprintf(line, sizeof line, "%s%sfailed%s%s", failuresFolder.c_str(), kSlash, kSlash,
                  name);
    const HANDLE file =
        CreateFileA(line, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written;
    if (file != INVALID_HANDLE_VALUE) {
        WriteFile(file, running->bytes, running->size, &written, nullptr);
        CloseHandle(file);
    }
    GetEnvironmentVariableA("POSTRIDER_GUARD", guard, sizeof guard);
    std::snprintf(line, sizeof line,
                  "FAILED %s: %.600s\n"
                  "    POSTRIDER_GUARD=%s ./fuzz build/fuzz/failed/%s\n",
                  running->format, what, guard, name);
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line, std::strlen(line), &written, nullptr);
}

static void TellCrash(const char* what) {
    if (runningSince && running->state == Running::keInput) {
        running->state = Running::keTold;
        TellFailure(what);
        crashedCallback();
    }
}

static DWORD WINAPI WatchTime(void*) {
    for (;;) {
        Sleep(500);
        const unsigned long long since = runningSince;
        if (since && GetTickCount64() - since > kLongest)
            Crash("takes longer than 20 seconds");
    }
}

// A function of a library that may not be loaded, else null.
template <class Function>
static void Find(const char* library, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), name)));
}

struct Watch::State {
    ScratchFolder outer;
    TouchedFiles files{outer.Path("IN")};
    TakenBoxes boxes;
    // Sending them to a debugger costs more than most inputs.
    HookedImport output{"JXTICDLL.DLL", "kernel32.dll", "OutputDebugStringA",
                        reinterpret_cast<void*>(TakeReport)};
    unsigned long(__cdecl* guardedBlocks)();
    unsigned long(__cdecl* unguardedBlocks)();
    void(__cdecl* forgetEdges)();
    unsigned int runs = 0;
    unsigned long handles = 0;

    unsigned long Blocks() const { return guardedBlocks ? guardedBlocks() : 0; }
    void RunOnce(const Format& format, Input& input);
    void CheckTexts(const Format& format);
    void CheckHandles();
};

Watch::Watch(const std::string& failures, Running& mapped, void (*crashed)()) : mState(new State) {
    failuresFolder = failures;
    CreateDirectoryA((failures + "\\failed").c_str(), nullptr);
    running = &mapped;
    crashedCallback = crashed;
    Find("guarded_memory.dll", "GuardedBlocks", mState->guardedBlocks);
    Find("guarded_memory.dll", "UnguardedBlocks", mState->unguardedBlocks);
    Find("edges.dll", "ForgetEdges", mState->forgetEdges);
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    RbErrorSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    EndOnCrash(TellCrash);
    CloseHandle(CreateThread(nullptr, 0, WatchTime, nullptr, 0, nullptr));
}

Watch::~Watch() = default;

unsigned int Watch::Runs() const { return mState->runs; }

void Watch::State::CheckTexts(const Format& format) {
    std::vector<std::string> texts = boxes.TakeTexts();
    for (std::string& text : std::exchange(reports, {}))
        texts.push_back(std::move(text));
    for (const std::string& text : texts) {
        bool allowed = false;
        for (const AllowedText& one : format.texts)
            allowed = allowed || text.find(one.part) != text.npos;
        if (!allowed)
            Complain("shows: " + text);
    }
}

void Watch::State::CheckHandles() {
    if (runs++ % kHandlesEvery)
        return;
    // Wine tells no count of handles; a new one takes the lowest place that is free.
    const HANDLE probe = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(probe);
    const unsigned long count = reinterpret_cast<std::uintptr_t>(probe) / 4;
    if (handles && count > handles + kSomeHandles)
        Complain("handles are left open: " + std::to_string(count));
    if (!handles || count > handles + kSomeHandles)
        handles = count;
}

void Watch::State::RunOnce(const Format& format, Input& input) {
    // One in eight runs on a double-byte system: the country's kept answer is its only field.
    const int country = input.OneIn(8) ? 0 : 1;
    static_assert(sizeof(RbCountry) == sizeof country);
    std::memcpy(static_cast<void*>(RbCountry::Instance()), &country, sizeof country);
    if (forgetEdges)
        forgetEdges();
    runningSince = GetTickCount64();
    try {
        format.run(input);
    } catch (const std::exception& error) {
        Complain(std::string("throws: ") + error.what());
    } catch (...) {
        Complain("throws");
    }
    runningSince = 0;
}

bool Watch::Run(const Format& format, const std::string& whole) {
    State& state = *mState;
    lstrcpynA(running->format, format.name.c_str(), sizeof running->format);
    running->size = std::min<std::size_t>(whole.size(), sizeof running->bytes);
    std::memcpy(running->bytes, whole.data(), running->size);
    running->state = Running::keInput;
    complaint.clear();
    // What lasts is made by the first inputs: a difference counts when it comes again.
    for (bool again = false;; again = true) {
        Input input(whole);
        state.files.Stand(format);
        const unsigned long before = state.Blocks();
        state.RunOnce(format, input);
        state.CheckTexts(format);
        const unsigned long after = state.Blocks();
        Complain(state.files.Check(format));
        if (after == before || !complaint.empty())
            break;
        if (again) {
            Complain("leaves " + std::to_string(static_cast<long>(after - before)) + " blocks");
            break;
        }
    }
    if (state.unguardedBlocks && state.unguardedBlocks() != 0)
        Complain("takes more memory than can be guarded");
    state.CheckHandles();
    const bool told = running->state == Running::keTold;
    running->state = Running::keNothing;
    if (!complaint.empty() && !told)
        TellFailure(complaint.c_str());
    return complaint.empty() && !told;
}
