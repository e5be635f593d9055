// A D file's messages, as other programs see them.

#include <algorithm>
#include <cstddef>
#include <optional>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/extract/csv.h"
#include "programs/mailfolder/extract/selection.h"
#include "programs/mailfolder/json.h"
#include "programs/mailfolder/record.h"

// A longer identifier stands where the address does.
static std::string SenderAddress(const DirectoryRecord& record) {
    constexpr unsigned int kRoom = offsetof(DiskDirRec, sender) + offsetof(UserLRec, zone) -
                                   DirectoryRecord::keMessageIDOffset;
    return record.MessageID().Length() < kRoom ? FieldText(record.Record().sender.zone) : "";
}

// A stored record as one of JSON's objects.
static Json AsJson(const Slot& slot, const DirectoryRecord& record) {
    const DiskDirRec& fields = record.Record();
    // Put in one by one: a list of them would be copied twice.
    Json object = Json::object();
    auto& members = object.get_ref<Json::object_t&>();
    members.reserve(13);
    const auto put = [&](const char* key, Json value) {
        members.emplace_back(key, std::move(value));
    };
    put("slot", slot.number);
    put("position", slot.position);
    put("sender", Utf8(ShownSender(record)));
    put("address", Utf8(SenderAddress(record)));
    put("secondUser", Utf8(FieldText(fields.secondUser.name)));
    put("topic", Utf8(record.Topic().Text()));
    put("date", DateJson(FlipLong(fields.date)));
    put("kind", static_cast<int>(fields.kind));
    put("processed", (fields.status & keStatusProcessed) != 0);
    put("status", static_cast<int>(fields.status));
    put("attributes", static_cast<unsigned short>(fields.attributes));
    put("identifier", Utf8(record.MessageID().Text()));
    put("file", Utf8(record.FileName().Text()));
    return object;
}

namespace {

// The messages as a table, which is as wide as its longest cells.
class Table {
public:
    void Add(const DirectoryRecord& record) {
        const std::string date = DateText(FlipLong(record.Record().date));
        const bool done = record.Record().status & keStatusProcessed;
        mProcessed += done;
        mRows.push_back({Printable(ShownSender(record)), Printable(record.Topic().Text()),
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

namespace {

struct Options {
    FolderArgument folder;
    bool json = false;
    std::string format = "text";
    std::string sort;
    extract::Selection selection;
};

// Prints records one by one, in the form that was asked for.
class Printer {
public:
    Printer(const Folder& folder, const std::string& format) : mFolder(folder), mFormat(format) {
        if (mFormat == "json")
            mJson.emplace(
                Json{{"file", folder.path.Given()}, {"type", static_cast<int>(folder.type)}},
                "messages");
        else if (mFormat == "csv")
            Print("{}", extract::CsvLine({"slot", "from", "address", "subject", "date", "kind",
                                          "marks", "file"}));
    }

    void Add(const Slot& slot, const DirectoryRecord& record) {
        if (mJson)
            mJson->Add(AsJson(slot, record));
        else if (mFormat == "jsonl")
            PrintJsonLine(AsJson(slot, record));
        else if (mFormat == "csv")
            AddCsv(slot, record);
        else
            mTable.Add(record);
    }

    void Finish() {
        if (mJson)
            mJson->Finish();
        else if (mFormat == "text")
            mTable.Show(mFolder);
    }

private:
    // What others wrote is shown as in a table; the file's name is one to open it by.
    static void AddCsv(const Slot& slot, const DirectoryRecord& record) {
        const DiskDirRec& fields = record.Record();
        Print("{}",
              extract::CsvLine({std::to_string(slot.number), Printable(ShownSender(record)),
                                Printable(SenderAddress(record)), Printable(record.Topic().Text()),
                                DateText(FlipLong(fields.date)),
                                std::to_string(static_cast<int>(fields.kind)),
                                extract::MarksOf(fields), Utf8(record.FileName().Text())}));
    }

    const Folder& mFolder;
    std::string mFormat;
    std::optional<JsonList> mJson;
    Table mTable;
};

// What a record is put in order by: texts without regard to case.
std::wstring SortKey(const std::string& by, const Slot& slot, const DirectoryRecord& record) {
    const auto number = [](unsigned long value) {
        const std::string digits = fmt::format("{:010}", value);
        return std::wstring(digits.begin(), digits.end());
    };
    if (by == "date")
        return number(FlipLong(slot.stored.date));
    if (by == "kind")
        return number(static_cast<unsigned short>(slot.stored.kind));
    return FoldCase(WideOfAnsi(by == "from"      ? ShownSender(record)
                               : by == "subject" ? std::string(record.Topic().Text())
                                                 : std::string(record.FileName().Text())));
}

} // namespace

static int List(const Options& options) {
    const Folder folder = FindFolder(options.folder.path, options.folder.type);
    Printer printer(folder, options.json ? "json" : options.format);
    std::vector<std::pair<std::wstring, Slot>> sorted;
    unsigned long damaged = 0;
    ForEachSlot(folder, [&](Slot& slot) {
        DirectoryRecord record(&slot.stored);
        if (slot.stored.used != 0 && (!record.Check_Fixed_Validity() || !record.isUsed()))
            ++damaged;
        if (!record.isUsed() || !options.selection.Takes(
                                    record.Record(), {record.Record(), mime::Charset::Windows1252}))
            return;
        if (options.sort.empty())
            printer.Add(slot, record);
        else
            sorted.emplace_back(SortKey(options.sort, slot, record), slot);
    });
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [key, slot] : sorted) {
        DirectoryRecord record(&slot.stored);
        record.Check_Fixed_Validity();
        printer.Add(slot, record);
    }
    if (damaged)
        Warn("{} damaged: \"mailfolder check\" tells more.\n",
             Count(damaged, "record is", "records are"));
    printer.Finish();
    return keFine;
}

static const Command
    kList("list", "List the messages of a folder",
          "  mailfolder list C:\\Mail\\InBox\n"
          "  mailfolder list C:\\Mail\\InBox\\DFile --json\n"
          "  mailfolder list C:\\Mail\\InBox --unprocessed --since 1998-01-01 --sort date\n"
          "  mailfolder list C:\\Mail\\InBox --from smith --format csv",
          [](CLI::App& app) -> Command::Run {
              const auto given = std::make_shared<Options>();
              AddFolder(app, given->folder);
              CLI::Option* const format =
                  app.add_option("--format", given->format, "A table, or a form for other programs")
                      ->check(CLI::IsMember({"text", "json", "jsonl", "csv"}));
              app.add_flag("--json", given->json, "The same as --format json")->excludes(format);
              app.add_option("--sort", given->sort, "In this order; else that of the slots")
                  ->check(CLI::IsMember({"from", "subject", "date", "kind", "file"}));
              given->selection.AddTo(app);
              return [given] { return List(*given); };
          });
