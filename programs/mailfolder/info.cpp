// A D file's counts.

#include <algorithm>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/recursion.h"

namespace {

// What readers count, and how the slots are used.
struct Counts {
    unsigned long long messages = 0;
    unsigned long long unprocessed = 0;
    unsigned long long freeSlots = 0;
    unsigned long long brokenSlots = 0;
    unsigned long newest = 0;
    bool unprocessedKind1 = false;
};

} // namespace

static Counts CountSlots(const Folder& folder) {
    Counts counts;
    ForEachSlot(folder, [&](Slot& slot) {
        ClampRecord(slot.stored);
        if (slot.stored.used == 0) {
            ++counts.freeSlots;
        } else if (!IsUsed(slot.stored)) {
            ++counts.brokenSlots;
        } else {
            ++counts.messages;
            counts.newest = std::max(counts.newest, FlipLong(slot.stored.date));
            if (!(slot.stored.status & keStatusProcessed)) {
                ++counts.unprocessed;
                counts.unprocessedKind1 |= slot.stored.kind == 1;
            }
        }
    });
    return counts;
}

static Json AsJson(const Folder& folder, const Counts& counts) {
    return {{"file", folder.path.Given()},
            {"type", static_cast<int>(folder.type)},
            {"typeBecause", folder.why},
            {"size", folder.size},
            {"slots", folder.Slots()},
            {"messages", counts.messages},
            {"unprocessed", counts.unprocessed},
            {"unprocessedKind1", counts.unprocessedKind1},
            {"freeSlots", counts.freeSlots},
            {"brokenSlots", counts.brokenSlots},
            {"bytesBehindLastRecord", folder.size % BaseDirFile::keRecordSize},
            {"newest", DateJson(counts.newest)}};
}

static std::string Words(const Counts& counts) {
    return fmt::format("{}, {} unprocessed", Count(counts.messages, "message"), counts.unprocessed);
}

static int Info(const LookOptions& options) {
    const Folder folder = FindFolder(options.folder.path, options.folder.type);
    const Counts counts = CountSlots(folder);
    if (options.json) {
        PrintJson(AsJson(folder, counts));
        return keFine;
    }
    const auto line = [](const char* name, const std::string& value) {
        Print("  {:<14}{}\n", name, value);
    };
    const std::string newest = DateText(counts.newest);
    Print("{}\n\n", folder.path.Shown());
    line("Type", fmt::format("{} ({})", static_cast<int>(folder.type), folder.why));
    line("Size", Count(folder.size, "byte"));
    line("Messages", fmt::format("{}, {} unprocessed", counts.messages, counts.unprocessed));
    line("Newest", newest.empty() ? "-" : newest);
    line("Slots", fmt::format("{}, {} free, {} broken", folder.Slots(), counts.freeSlots,
                              counts.brokenSlots));
    if (const unsigned long long rest = folder.size % BaseDirFile::keRecordSize)
        line("Rest", Count(rest, "byte") + " of a record that is not whole");
    return keFine;
}

static int InfoOfAll(const LookOptions& options) {
    Counts all;
    return ForEachFolder(
        Path(options.folder.path), Which::WithDFile, options.json,
        [&](const Path& path) -> FolderLine {
            const Folder folder = FindFolder(path, options.folder.type);
            const Counts counts = CountSlots(folder);
            all.messages += counts.messages;
            all.unprocessed += counts.unprocessed;
            return {Words(counts), AsJson(folder, counts), keFine};
        },
        [&]() -> FolderLine {
            return {
                Words(all), {{"messages", all.messages}, {"unprocessed", all.unprocessed}}, keFine};
        });
}

static const Command kInfo("info", "Tell a D file's counts, newest date, type and size",
                           "  mailfolder info C:\\Mail\\InBox\n"
                           "  mailfolder info C:\\Mail --recursive\n"
                           "  mailfolder info D:\\Old\\DFile --type 2 --json",
                           [](CLI::App& app) { return AddLook(app, Info, InfoOfAll); });
