#include "tests/fuzz/watch.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <utility>

#include "postrider.h"
#include "resident/core/windows_api.h"

#include <shlwapi.h>

#include "tests/support/crash.h"
#include "tests/support/debug_output.h"
#include "tests/support/taken_boxes.h"

static constexpr unsigned long long kLongest = 20000; // milliseconds
static constexpr unsigned int kHandlesEvery = 300;
// Of formats that have no file of their own, the files are looked at now and then.
static constexpr unsigned int kOthersEvery = 50;
// Handles that the run-time and Windows keep for good, beside those of the run.
static constexpr unsigned int kSomeHandles = 40;

static Running* running;
static const Format* runningFormat;
static std::string runningBytes;
static volatile unsigned long long runningSince; // 0 between inputs
static unsigned int seedOfRun;
static std::string failuresFolder;
static void (*crashedCallback)();
static std::vector<std::unique_ptr<KeptFile>> kept; // of the Windows directory
static std::string complaint;                       // of the current input

void Expect(bool holds, const char* what) {
    if (!holds && complaint.empty())
        complaint = what;
}

void ReadText(const char* text) {
    static volatile unsigned int sum;
    while (*text)
        sum = sum + static_cast<unsigned char>(*text++);
}

// Takes no memory of the heap, which may be damaged.
void TellFailure(const Format& format, std::uint64_t index, const std::string& bytes,
                 const char* what) {
    char line[1024];
    const char* const name = format.name.c_str();
    std::snprintf(line, sizeof line, "%s\\failed-%s-%u-%llu.bin", failuresFolder.c_str(), name,
                  seedOfRun, index);
    const HANDLE file =
        CreateFileA(line, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written;
    if (file != INVALID_HANDLE_VALUE) {
        WriteFile(file, bytes.data(), bytes.size(), &written, nullptr);
        CloseHandle(file);
    }
    char guard[16] = "behind";
    GetEnvironmentVariableA("POSTRIDER_GUARD", guard, sizeof guard);
    std::snprintf(line, sizeof line,
                  "FAILED %s %llu: %.600s\n"
                  "    POSTRIDER_GUARD=%s ./fuzz --format %s --seed %u --first %llu --inputs 1\n",
                  name, index, what, guard, name, seedOfRun, index);
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line, std::strlen(line), &written, nullptr);
}

static void TellCrash(const char* what) {
    if (runningSince && running->state == Running::keInput) {
        running->state = Running::keTold;
        TellFailure(*runningFormat, running->index, runningBytes, what);
        crashedCallback();
    }
    kept.clear();
}

static DWORD WINAPI WatchTime(void*) {
    for (;;) {
        Sleep(500);
        const unsigned long long since = runningSince;
        if (since && GetTickCount64() - since > kLongest)
            Crash("takes longer than 20 seconds");
    }
}

namespace {

bool MatchesAny(const std::vector<std::string>& patterns, const std::string& name) {
    for (const std::string& pattern : patterns)
        if (PathMatchSpecA(name.c_str(), pattern.c_str()))
            return true;
    return false;
}

struct Entry {
    bool folder;
    unsigned long size;
    unsigned long long written;
    bool operator==(const Entry&) const = default;
};

// The entries of a folder and, unless `flat`, of those in it.
void List(const std::string& folder, bool flat, std::map<std::string, Entry>& entries,
          const std::string& prefix = "") {
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::string name = found.cFileName;
        if (name == "." || name == "..")
            continue;
        const bool isFolder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        const unsigned long long written =
            static_cast<unsigned long long>(found.ftLastWriteTime.dwHighDateTime) << 32 |
            found.ftLastWriteTime.dwLowDateTime;
        entries[prefix + name] = {isFolder, found.nFileSizeLow, isFolder ? 0 : written};
        if (isFolder && !flat)
            List(folder + "\\" + name, flat, entries, prefix + name + "\\");
    } while (FindNextFileA(search, &found));
    FindClose(search);
}

std::map<std::string, Entry> Listed(const std::string& folder, bool flat) {
    std::map<std::string, Entry> entries;
    List(folder, flat, entries);
    return entries;
}

} // namespace

// Beside the folder that inputs work in stand things that no input may reach.
struct Watch::State {
    ScratchFolder outer;
    std::string inner = outer.Path("IN");
    std::map<std::string, Entry> outside;
    DebugOutput output;
    TakenBoxes boxes;
    unsigned long(__cdecl* guardedBlocks)() = nullptr;
    unsigned long(__cdecl* unguardedBlocks)() = nullptr;
    unsigned int runs = 0;
    unsigned long handles = 0;

    unsigned long Blocks() const { return guardedBlocks ? guardedBlocks() : 0; }
    void RunOnce(const Format& format, std::uint64_t index, Random random);
    void StandOutside();
    std::map<std::string, Entry> Outside() const;
    std::string CheckTexts(const Format& format);
    std::string CheckFiles(const Format& format);
    std::string CheckHandles();
    void Stand(const Format& format);
};

Watch::Watch(unsigned int seed, const std::string& failures, Running& mapped, void (*crashed)())
    : mState(new State) {
    seedOfRun = seed;
    failuresFolder = failures;
    running = &mapped;
    crashedCallback = crashed;
    State& state = *mState;
    for (const char* name : {"\\JXUSER.DAT", "\\JXLGDUSR.DAT", "\\WIN.INI"})
        kept.emplace_back(new KeptFile(WindowsDirectory() + name));
    CreateDirectoryA(state.inner.c_str(), nullptr);
    SetCurrentDirectoryA(state.inner.c_str());
    const HMODULE guard = GetModuleHandleA("guarded_memory.dll");
    const auto count = [&](const char* name) {
        return reinterpret_cast<unsigned long(__cdecl*)()>(
            reinterpret_cast<void*>(GetProcAddress(guard, name)));
    };
    if (guard) {
        state.guardedBlocks = count("GuardedBlocks");
        state.unguardedBlocks = count("UnguardedBlocks");
    }
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    RbErrorSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    EndOnCrash(TellCrash);
    CloseHandle(CreateThread(nullptr, 0, WatchTime, nullptr, 0, nullptr));
    state.StandOutside();
}

Watch::~Watch() {
    kept.clear();
    for (const char* name : {"C:\\OUTSIDE.EML", "C:\\OUT\\KEEP.EML"})
        DeleteFileA(name);
    RemoveDirectoryA("C:\\OUT");
}

void Watch::Enter(const Format& format) { mState->Stand(format); }

// Makes the current folder what the format's inputs start from.
void Watch::State::Stand(const Format& format) {
    SetCurrentDirectoryA(inner.c_str());
    std::map<std::string, Entry> there = Listed(inner, false);
    // Deepest first.
    for (auto entry = there.rbegin(); entry != there.rend(); ++entry) {
        const auto& [name, what] = *entry;
        const auto wanted = format.files.find(name);
        const bool isWanted =
            wanted != format.files.end() && (what.folder || wanted->second.size() == what.size);
        if (isWanted)
            continue;
        SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (what.folder)
            RemoveDirectoryA(name.c_str());
        else
            DeleteFileA(name.c_str());
        there[name].size = ~0ul;
    }
    for (const auto& [name, bytes] : format.files) {
        const auto entry = there.find(name);
        if (entry != there.end() && entry->second.size != ~0ul)
            continue;
        if (bytes == "folder")
            CreateDirectoryA(name.c_str(), nullptr);
        else
            WriteFileBytes(name, bytes);
    }
}

void Watch::State::StandOutside() {
    // A specification's relative folder is one of the drive's root.
    for (const std::string& folder : {outer.Path(), std::string("C:")}) {
        WriteFileBytes(folder + "\\OUTSIDE.EML", "keep");
        CreateDirectoryA((folder + "\\OUT").c_str(), nullptr);
        WriteFileBytes(folder + "\\OUT\\KEEP.EML", "keep");
    }
    outside = Outside();
}

std::map<std::string, Entry> Watch::State::Outside() const {
    std::map<std::string, Entry> entries;
    List(outer.Path(), true, entries, "..\\");
    List(outer.Path("OUT"), true, entries, "..\\OUT\\");
    List("C:\\OUT", true, entries, "C:\\OUT\\");
    List("C:", true, entries, "C:\\");
    return entries;
}

std::string Watch::State::CheckTexts(const Format& format) {
    std::vector<std::string> texts = boxes.TakeTexts();
    for (std::string& text : output.TakeTexts())
        texts.push_back(std::move(text));
    for (const std::string& text : texts) {
        bool allowed = false;
        for (const AllowedText& one : format.texts)
            allowed = allowed || text.find(one.part) != text.npos;
        if (!allowed)
            return "shows: " + text;
    }
    return "";
}

std::string Watch::State::CheckFiles(const Format& format) {
    std::string wrong;
    char folder[MAX_PATH];
    GetCurrentDirectoryA(sizeof folder, folder);
    if (inner != folder)
        wrong = std::string("current folder is ") + folder;
    bool tidy = wrong.empty();
    const std::map<std::string, Entry> there = Listed(inner, false);
    bool ownThere = format.own.empty();
    for (const auto& [name, entry] : there) {
        if (name == format.own) {
            ownThere = true;
            continue;
        }
        const auto standing = format.files.find(name);
        if (standing != format.files.end()) {
            tidy = tidy && (entry.folder || entry.size == standing->second.size());
            continue;
        }
        tidy = false;
        if (!MatchesAny(format.mayAppear, name))
            wrong = "leaves " + name;
    }
    if (!ownThere && !MatchesAny(format.mayGo, format.own))
        wrong = "removes " + format.own;
    for (const auto& [name, bytes] : format.files) {
        if (there.count(name))
            continue;
        tidy = false;
        if (!MatchesAny(format.mayGo, name))
            wrong = "removes " + name;
    }
    if (Outside() != outside) {
        wrong = "changes what is outside of its folder";
        StandOutside();
    }
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((WindowsDirectory() + "\\JPW*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        wrong = std::string("leaves in the Windows directory ") + found.cFileName;
        FindClose(search);
        DeleteFileA((WindowsDirectory() + "\\" + found.cFileName).c_str());
    }
    if (!tidy)
        Stand(format);
    return wrong;
}

std::string Watch::State::CheckHandles() {
    if (runs++ % kHandlesEvery)
        return "";
    // Wine tells no count of handles; a new one takes the lowest place that is
    // free.
    const HANDLE probe = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(probe);
    const unsigned long count = reinterpret_cast<std::uintptr_t>(probe) / 4;
    if (!handles)
        handles = count;
    if (count <= handles + kSomeHandles)
        return "";
    handles = count;
    return "handles are left open: " + std::to_string(count);
}

void Watch::State::RunOnce(const Format& format, std::uint64_t index, Random random) {
    runningSince = GetTickCount64();
    try {
        Input input{runningBytes, random, IsCut(format.shape, index)};
        format.run(input);
    } catch (const std::exception& error) {
        complaint = std::string("throws: ") + error.what();
    } catch (...) {
        complaint = "throws";
    }
    runningSince = 0;
}

bool Watch::Run(const Format& format, std::uint64_t index) {
    State& state = *mState;
    Random random(seedOfRun, format.name, index);
    runningFormat = &format;
    runningBytes = MakeInput(format.shape, index, random);
    lstrcpynA(running->format, format.name.c_str(), sizeof running->format);
    running->index = index;
    running->state = Running::keInput;
    complaint.clear();
    // One in eight runs on a double-byte system: the country's kept answer is its only field.
    const int country = random.OneIn(8) ? 0 : 1;
    static_assert(sizeof(RbCountry) == sizeof country);
    std::memcpy(static_cast<void*>(RbCountry::Instance()), &country, sizeof country);

    const auto check = [](const std::string& wrong) {
        if (complaint.empty())
            complaint = wrong;
    };
    // What lasts is made by the first inputs: a difference counts when it comes again.
    for (bool again = false;; again = true) {
        const unsigned long before = state.Blocks();
        state.RunOnce(format, index, random);
        check(state.CheckTexts(format));
        const unsigned long after = state.Blocks();
        if (!format.own.empty() || state.runs % kOthersEvery == 0)
            check(state.CheckFiles(format));
        if (after == before || !complaint.empty())
            break;
        if (again) {
            check("leaves " + std::to_string(static_cast<long>(after - before)) + " blocks");
            break;
        }
    }
    if (state.unguardedBlocks && state.unguardedBlocks() != 0)
        check("takes more memory than can be guarded");
    check(state.CheckHandles());
    const bool told = running->state == Running::keTold;
    running->state = Running::keNothing;
    if (complaint.empty() || told)
        return !told;
    TellFailure(format, index, runningBytes, complaint.c_str());
    return false;
}
