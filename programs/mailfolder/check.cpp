// Reads every record of a D file and tells what is damaged, where, and what would be lost.

#include <algorithm>
#include <climits>
#include <optional>
#include <set>

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"

namespace {

struct Problem {
    const char* what; // a word that scripts can go by
    std::optional<unsigned long> slot;
    std::optional<unsigned long> position;
    std::string file; // the message file concerned, if any; ANSI
    std::string text;
    std::string lost;
};

class Checker {
public:
    explicit Checker(const Folder& folder)
        : mFolder(folder), mLibrary(folder), mFiles(FilesOf(folder.Directory())) {}

    void Run() {
        CheckEnds();
        ForEachSlot(mFolder, [this](Slot& slot) { CheckSlot(slot); });
        CheckMessageFiles();
        // In the file's order, what has no place in it at the end.
        std::stable_sort(mProblems.begin(), mProblems.end(), [](const auto& a, const auto& b) {
            return a.position.value_or(ULONG_MAX) < b.position.value_or(ULONG_MAX);
        });
    }

    const std::vector<Problem>& Problems() const { return mProblems; }
    unsigned long Messages() const { return mMessages; }
    unsigned long FreeSlots() const { return mFree; }

private:
    void Add(const char* what, const Slot& slot, const std::string& file, const std::string& text,
             const std::string& lost) {
        mProblems.push_back({what, slot.number, slot.position, file, text, lost});
    }

    void CheckEnds();
    void CheckSlot(Slot& slot);
    void CheckFields(const Slot& slot, const DirectoryRecord& record);
    void CheckName(const Slot& slot, const DirectoryRecord& record, bool used);
    void CheckMessageFiles();

    const Folder& mFolder;
    LibraryFile mLibrary;
    FileEntries mFiles;
    std::vector<Problem> mProblems;
    std::map<std::string, unsigned long> mNamedBy; // the slot of a readable record
    std::set<std::string> mNamedByBroken;
    unsigned long mMessages = 0;
    unsigned long mFree = 0;
};

void Checker::CheckEnds() {
    constexpr unsigned long kSlot = BaseDirFile::keRecordSize;
    if (mFolder.HasHeader() && mFolder.size < kSlot) {
        mProblems.push_back(
            {"no-header", 0, 0, "",
             fmt::format("The file has {} where its header takes {}.", Count(mFolder.size, "byte"),
                         kSlot),
             "Nothing by itself; but a message that is added now stands where no program looks for "
             "it."});
        return;
    }
    if (const unsigned long rest = mFolder.size % kSlot) {
        const unsigned long position = mFolder.size - rest;
        mProblems.push_back(
            {"cut-record", position / kSlot, position, "",
             fmt::format("The file ends inside a record: {} of {} bytes are there.", rest, kSlot),
             "That record; its message file, if it is there, still has the message. Records that "
             "are added behind it cannot be read."});
    }
    if (mFolder.HasHeader()) {
        RbFile file(SpecOf(mFolder.path));
        DirectoryRecord header;
        if (file.Open(keOpenRead) && file >> header && header.isUsed())
            mProblems.push_back(
                {"used-header", 0, 0, header.FileName().Text(),
                 "The header's place holds a record.",
                 "That record for all programs that pass over the header; notifiers "
                 "list it. (With --type 2 it counts as the first record.)"});
        if (file.isOpen())
            file.close();
    }
}

void Checker::CheckSlot(Slot& slot) {
    if (slot.stored.used == 0) {
        ++mFree;
        return;
    }
    const DirectoryRecord stored(&slot.stored);
    CheckFields(slot, stored);
    const bool used = stored.isUsed();
    if (static_cast<unsigned short>(slot.stored.index) == DiskDirRec::keBrokenIndex)
        Add("broken-index", slot, stored.FileName().Text(),
            "The record is marked as broken (its index is 65535).",
            "The message is not listed, and compressing drops its record.");
    if (!used && slot.stored.topic[1] != 0 && slot.stored.topic[1] < 0x20)
        Add("control-topic", slot, stored.FileName().Text(),
            fmt::format("The topic begins with the control character {}.", slot.stored.topic[1]),
            "The message is not listed, and compressing drops its record.");
    mMessages += used;
    CheckName(slot, stored, used);
}

void Checker::CheckFields(const Slot& slot, const DirectoryRecord& record) {
    const DiskDirRec& stored = record.Record();
    const std::string file = record.FileName().Text();
    const auto length = [&](const char* field, unsigned int claimed, unsigned int most,
                            const char* lost) {
        if (claimed > most)
            Add("field-length", slot, file,
                fmt::format("The {} claims {} characters; its field holds {}.", field, claimed,
                            most),
                lost);
    };
    length("topic", stored.topic[0], DiskDirRec::keTopicSize - 1,
           "What the length was: readers show all that the field has.");
    length("file name", stored.fileName[0], DiskDirRec::keFileNameSize - 1,
           "The name's length: readers take the whole field for the name, and may miss the file.");
    length("sender's name", stored.sender.name[0], UserLRec::keNameSize - 1,
           "What the length was: readers show all that the field has.");
    length("second user's name", stored.secondUser.name[0], UserLRec::keNameSize - 1,
           "What the length was: readers show all that the field has.");
    const auto number = [&](const char* field, unsigned short value, unsigned int most,
                            const std::string& lost) {
        if (value > most)
            Add("field-range", slot, file,
                fmt::format("The {} is {}; it goes from 0 to {}.", field, value, most), lost);
    };
    number("count", static_cast<unsigned short>(stored.count), 16, "Readers take 16 for it.");
    number("kind", static_cast<unsigned short>(stored.kind), 5,
           "The message's kind: readers take 6 for it, which stays known as damaged.");
}

void Checker::CheckName(const Slot& slot, const DirectoryRecord& record, bool used) {
    const std::string name = record.FileName().Text();
    FileSpec spec;
    if (name.empty()) {
        Add("no-file-name", slot, "", "The record names no message file.",
            "The message cannot be opened by this record.");
        return;
    }
    if (!mLibrary.MessageFile(record, spec)) {
        Add("name-leaves-folder", slot, name,
            fmt::format("The message file's name \"{}\" is none of a file of this folder.",
                        Printable(name)),
            "The message cannot be opened by this record; no program follows the name.");
        return;
    }
    const std::string key = InCapitals(name);
    if (!used) {
        mNamedByBroken.insert(key);
        return;
    }
    if (!mFiles.count(key))
        Add("missing-file", slot, name,
            fmt::format("The message file {} is not in the folder.", Printable(name)),
            "The message itself, unless the file is found elsewhere; rebuilding drops the record.");
    const auto [first, fresh] = mNamedBy.emplace(key, slot.number);
    if (!fresh)
        Add("second-record", slot, name,
            fmt::format("The message file {} has a record in slot {} already.", Printable(name),
                        first->second),
            "Nothing; deleting either of the two messages deletes the file of both.");
}

void Checker::CheckMessageFiles() {
    for (const auto& [key, entry] : mFiles) {
        if (!IsMessageFile(entry.name))
            continue;
        const std::string shown = Printable(entry.name);
        const auto add = [&, &name = entry.name](const char* what, const std::string& text,
                                                 const char* lost) {
            mProblems.push_back({what, {}, {}, name, text, lost});
        };
        constexpr unsigned long kRecord = BaseDirFile::keRecordSize;
        if (entry.size < kRecord)
            add("short-message-file",
                fmt::format("The message file {} has {}; its own record alone takes {}.", shown,
                            Count(entry.size, "byte"), kRecord),
                "What is not there of the message; rebuilding makes no record for the file.");
        if (mNamedBy.count(key))
            continue;
        if (mNamedByBroken.count(key))
            add("file-of-broken-record",
                fmt::format("The message file {} has only a record that cannot be read.", shown),
                "Nothing yet: the message is not listed until the folder is rebuilt.");
        else
            add("file-without-record", fmt::format("The message file {} has no record.", shown),
                "Nothing yet: the message is not listed until the folder is rebuilt.");
    }
}

std::string Where(const Problem& problem) {
    return problem.slot ? fmt::format("Slot {}, byte {}: ", *problem.slot, *problem.position) : "";
}

Json AsJson(const Problem& problem) {
    return {{"what", problem.what},
            {"slot", problem.slot ? Json(*problem.slot) : Json()},
            {"position", problem.position ? Json(*problem.position) : Json()},
            {"messageFile", problem.file.empty() ? Json() : Json(Utf8(problem.file))},
            {"text", problem.text},
            {"lost", problem.lost}};
}

} // namespace

static int Check(const std::string& argument, int type, bool json) {
    const Folder folder = FindFolder(argument, type);
    Checker checker(folder);
    checker.Run();
    const std::vector<Problem>& problems = checker.Problems();
    const ExitCode code = problems.empty() ? keFine : keDamage;
    if (json) {
        Json list = Json::array();
        for (const Problem& problem : problems)
            list.push_back(AsJson(problem));
        PrintJson({{"file", Utf8(folder.path)},
                   {"type", static_cast<int>(folder.type)},
                   {"slots", folder.Slots()},
                   {"messages", checker.Messages()},
                   {"freeSlots", checker.FreeSlots()},
                   {"problems", list}});
        return code;
    }
    fmt::print("{}: type {}, {}, {}, {} free\n", Printable(folder.path),
               static_cast<int>(folder.type), Count(folder.Slots(), "slot"),
               Count(checker.Messages(), "message"), checker.FreeSlots());
    for (const Problem& problem : problems)
        fmt::print("\n  {}{}\n    Lost: {}\n", Where(problem), problem.text, problem.lost);
    if (problems.empty())
        fmt::print("No damage found.\n");
    else
        fmt::print("\n{} found.\n", Count(problems.size(), "problem"));
    return code;
}

static const Command kCheck(
    "check",
    "Read every record; tell what is damaged, where, and what would be lost. Changes nothing",
    "  mailfolder check C:\\Mail\\InBox\n"
    "  mailfolder check C:\\Mail\\InBox --json",
    [](CLI::App& app) -> Command::Run {
        struct Options {
            FolderArgument folder;
            bool json = false;
        };
        const auto given = std::make_shared<Options>();
        AddFolder(app, given->folder);
        AddJson(app, given->json);
        return [given] { return Check(given->folder.path, given->folder.type, given->json); };
    });
