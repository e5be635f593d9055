// A D file's messages, as other programs see them.

#include <cstddef>
#include <optional>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"

static std::string Sender(const DirectoryRecord& record) {
    RBString shown;
    RBString name = record.SenderName();
    return MailUser::OrderedUserName(shown, name, 1).Text();
}

// A longer identifier stands where the address does.
static std::string SenderAddress(const DirectoryRecord& record) {
    constexpr unsigned int kRoom = offsetof(DiskDirRec, sender) + offsetof(UserLRec, zone) -
                                   DirectoryRecord::keMessageIDOffset;
    return record.MessageID().Length() < kRoom ? FieldText(record.Record().sender.zone) : "";
}

// A stored record as one of JSON's objects.
static Json AsJson(const Slot& slot, const DirectoryRecord& record) {
    const DiskDirRec& fields = record.Record();
    return {{"slot", slot.number},
            {"position", slot.position},
            {"sender", Utf8(Sender(record))},
            {"address", Utf8(SenderAddress(record))},
            {"secondUser", Utf8(FieldText(fields.secondUser.name))},
            {"topic", Utf8(record.Topic().Text())},
            {"date", DateJson(FlipLong(fields.date))},
            {"kind", static_cast<int>(fields.kind)},
            {"processed", (fields.status & keStatusProcessed) != 0},
            {"status", static_cast<int>(fields.status)},
            {"attributes", static_cast<unsigned short>(fields.attributes)},
            {"identifier", Utf8(record.MessageID().Text())},
            {"file", Utf8(record.FileName().Text())}};
}

namespace {

// The messages as a table, which is as wide as its longest cells.
class Table {
public:
    void Add(const DirectoryRecord& record) {
        const std::string date = DateText(FlipLong(record.Record().date));
        const bool done = record.Record().status & keStatusProcessed;
        mProcessed += done;
        mRows.push_back({Printable(Sender(record)), Printable(record.Topic().Text()),
                         date.empty() ? "-" : date,
                         std::to_string(static_cast<int>(record.Record().kind)), done ? "yes" : "-",
                         Printable(record.FileName().Text())});
    }
    void Show(const Folder& folder) const {
        Print("{}\n\n", folder.path.Shown());
        if (mRows.empty()) {
            Print("  No messages.\n");
            return;
        }
        PrintTable({{"From"}, {"Topic"}, {"Date"}, {"Kind", true}, {"Processed"}, {"File"}}, mRows);
        Print("\n  {}, {} processed\n", Count(mRows.size(), "message"), mProcessed);
    }

private:
    std::vector<std::vector<std::string>> mRows;
    unsigned long mProcessed = 0;
};

} // namespace

static int List(const std::string& argument, int type, bool json) {
    const Folder folder = FindFolder(argument, type);
    std::optional<JsonList> messages;
    if (json)
        messages.emplace(
            Json{{"file", folder.path.Shown()}, {"type", static_cast<int>(folder.type)}},
            "messages");
    Table table;
    unsigned long damaged = 0;
    ForEachSlot(folder, [&](Slot& slot) {
        DirectoryRecord record(&slot.stored);
        if (slot.stored.used != 0 && (!record.Check_Fixed_Validity() || !record.isUsed()))
            ++damaged;
        if (!record.isUsed())
            return;
        if (messages)
            messages->Add(AsJson(slot, record));
        else
            table.Add(record);
    });
    if (damaged)
        Warn("{} damaged: \"mailfolder check\" tells more.\n",
             Count(damaged, "record is", "records are"));
    if (messages)
        messages->Finish();
    else
        table.Show(folder);
    return keFine;
}

namespace {

struct Options {
    FolderArgument folder;
    bool json = false;
};

} // namespace

static const Command kList("list", "List the messages of a folder",
                           "  mailfolder list C:\\Mail\\InBox\n"
                           "  mailfolder list C:\\Mail\\InBox\\DFile --json",
                           [](CLI::App& app) -> Command::Run {
                               const auto given = std::make_shared<Options>();
                               AddFolder(app, given->folder);
                               AddJson(app, given->json);
                               return [given] {
                                   return List(given->folder.path, given->folder.type, given->json);
                               };
                           });
