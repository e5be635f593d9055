// What reads a D file's records as other programs see them.

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"

static std::string Sender(const DirectoryRecord& record) {
    RBString shown;
    RBString name = record.SenderName();
    return MailUser::OrderedUserName(shown, name, 1).Text();
}

static int List(const std::string& argument, int type, bool json) {
    const Folder folder = FindFolder(argument, type);
    Json messages = Json::array();
    std::vector<std::vector<std::string>> rows;
    unsigned long processed = 0;
    unsigned long damaged = 0;
    ForEachSlot(folder, [&](Slot& slot) {
        DirectoryRecord record(&slot.stored);
        if (slot.stored.used != 0 && (!record.Check_Fixed_Validity() || !record.isUsed()))
            ++damaged;
        if (!record.isUsed())
            return;
        const DiskDirRec& fields = record.Record();
        const bool done = fields.status & keStatusProcessed;
        const std::string date = DateText(FlipLong(fields.date));
        const int kind = fields.kind;
        processed += done;
        if (json)
            messages.push_back({{"slot", slot.number},
                                {"position", slot.position},
                                {"sender", Utf8(Sender(record))},
                                {"topic", Utf8(record.Topic().Text())},
                                {"date", date.empty() ? Json() : Json(date)},
                                {"kind", kind},
                                {"processed", done},
                                {"file", Utf8(record.FileName().Text())}});
        else
            rows.push_back({Printable(Sender(record)), Printable(record.Topic().Text()),
                            date.empty() ? "-" : date, std::to_string(kind), done ? "yes" : "-",
                            Printable(record.FileName().Text())});
    });
    if (damaged)
        fmt::print(stderr, "{} damaged: \"mailfolder check\" tells more.\n",
                   Count(damaged, "record is", "records are"));
    if (json) {
        PrintJson({{"file", Utf8(folder.path)},
                   {"type", static_cast<int>(folder.type)},
                   {"messages", messages}});
        return keFine;
    }
    fmt::print("{}\n\n", Printable(folder.path));
    if (rows.empty()) {
        fmt::print("  No messages.\n");
        return keFine;
    }
    PrintTable({{"From"}, {"Topic"}, {"Date"}, {"Kind", true}, {"Processed"}, {"File"}}, rows);
    fmt::print("\n  {}, {} processed\n", Count(rows.size(), "message"), processed);
    return keFine;
}

static int Info(const std::string& argument, int type, bool json) {
    const Folder folder = FindFolder(argument, type);
    LibraryFile file(folder);
    if (!file.GetInfo(keInfoAll))
        Fail("Cannot read {} to its end.", Printable(folder.path));
    unsigned long freeSlots = 0;
    unsigned long brokenSlots = 0;
    ForEachSlot(folder, [&](Slot& slot) {
        freeSlots += slot.stored.used == 0;
        brokenSlots += slot.stored.used != 0 && !IsUsed(slot.stored);
    });
    const std::string newest = DateText(file.NewestDate());
    const unsigned long rest = folder.size % BaseDirFile::keRecordSize;
    if (json) {
        PrintJson({{"file", Utf8(folder.path)},
                   {"type", static_cast<int>(folder.type)},
                   {"typeBecause", folder.why},
                   {"size", folder.size},
                   {"slots", folder.Slots()},
                   {"messages", file.UsedCount()},
                   {"unprocessed", file.UnprocessedCount()},
                   {"unprocessedKind1", file.HasUnprocessedKind1() != 0},
                   {"freeSlots", freeSlots},
                   {"brokenSlots", brokenSlots},
                   {"bytesBehindLastRecord", rest},
                   {"newest", newest.empty() ? Json() : Json(newest)}});
        return keFine;
    }
    const auto line = [](const char* name, const std::string& value) {
        fmt::print("  {:<14}{}\n", name, value);
    };
    fmt::print("{}\n\n", Printable(folder.path));
    line("Type", fmt::format("{} ({})", static_cast<int>(folder.type), folder.why));
    line("Size", Count(folder.size, "byte"));
    line("Messages", fmt::format("{}, {} unprocessed", file.UsedCount(), file.UnprocessedCount()));
    line("Newest", newest.empty() ? "-" : newest);
    line("Slots", fmt::format("{}, {} free, {} broken", folder.Slots(), freeSlots, brokenSlots));
    if (rest)
        line("Rest", Count(rest, "byte") + " of a record that is not whole");
    return keFine;
}

namespace {

struct Options {
    FolderArgument folder;
    bool json = false;
};

} // namespace

template <int (*Do)(const std::string&, int, bool)>
static Command::Run SetUp(CLI::App& app) {
    const auto given = std::make_shared<Options>();
    AddFolder(app, given->folder);
    AddJson(app, given->json);
    return [given] { return Do(given->folder.path, given->folder.type, given->json); };
}

static const Command kList("list", "List the messages of a folder",
                           "  mailfolder list C:\\Mail\\InBox\n"
                           "  mailfolder list C:\\Mail\\InBox\\DFile --json",
                           SetUp<List>);

static const Command kInfo("info", "Tell a D file's counts, newest date, type and size",
                           "  mailfolder info C:\\Mail\\InBox\n"
                           "  mailfolder info D:\\Old\\DFile --type 2 --json",
                           SetUp<Info>);
