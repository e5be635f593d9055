// Takes back messages whose slots are freed while their message files are still there.

#include <set>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/record.h"
#include "programs/mailfolder/writing.h"

namespace {

struct Options {
    FolderArgument folder;
    WriteOptions write;
    std::vector<unsigned long long> slots;
};

} // namespace

// The freed slots whose message file is there, has no other record, and has not become another
// message's since.
static std::vector<Slot> FreedSlots(const Folder& folder) {
    const FileNames files(folder.Directory());
    std::set<std::wstring> listed;
    std::map<std::wstring, Slot> freed;
    ForEachSlot(folder, [&](Slot& slot) {
        const auto key = files.KeyOf(DirectoryRecord(&slot.stored));
        if (!key || !files.Has(*key))
            return;
        if (slot.stored.used != 0)
            listed.insert(*key);
        else
            freed[*key] = slot; // the last one is the newest
    });
    std::vector<Slot> slots;
    for (const auto& [key, slot] : freed) {
        if (listed.count(key))
            continue;
        const std::string name = DirectoryRecord(&slot.stored).FileName().Text();
        const OwnRecord own = ReadOwnRecord(folder.Directory().Child(WideOfAnsi(name)), name);
        if (own.state != OwnRecord::Sound || Fingerprint(own.record) == Fingerprint(slot.stored))
            slots.push_back(slot);
    }
    std::sort(slots.begin(), slots.end(),
              [](const Slot& a, const Slot& b) { return a.number < b.number; });
    return slots;
}

static void Choose(std::vector<Slot>& slots, const std::vector<unsigned long long>& numbers) {
    for (const unsigned long long number : numbers)
        if (std::none_of(slots.begin(), slots.end(),
                         [&](const Slot& slot) { return slot.number == number; }))
            Fail("Slot {} is no freed slot whose message file is there. Nothing was changed.",
                 number);
    if (!numbers.empty())
        std::erase_if(slots, [&](const Slot& slot) {
            return std::find(numbers.begin(), numbers.end(), slot.number) == numbers.end();
        });
}

static void Show(const std::vector<Slot>& slots) {
    std::vector<std::vector<std::string>> rows;
    for (const Slot& slot : slots) {
        const DirectoryRecord record(&slot.stored);
        const std::string date = DateText(FlipLong(slot.stored.date));
        rows.push_back({std::to_string(slot.number), Printable(ShownSender(record)),
                        Printable(record.Topic().Text()), date.empty() ? "-" : date,
                        Printable(record.FileName().Text())});
    }
    if (talk != Talk::Quiet)
        PrintTable({{"Slot", true}, {"From"}, {"Topic"}, {"Date"}, {"File"}}, rows);
}

static void Write(const Folder& folder, const std::vector<Slot>& slots, const WriteLock& lock) {
    NewFile made(folder.path, lock);
    const InputFile old(folder.path);
    std::size_t next = 0;
    DiskDirRec record;
    for (unsigned long long position = 0; position < old.Size(); position += sizeof record) {
        const std::size_t size = old.ReadAt(position, &record, sizeof record);
        if (next < slots.size() && slots[next].position == position) {
            record = Mended(record);
            record.used = 1;
            ++next;
        }
        made.Write(&record, size);
    }
    made.PutInPlace();
}

static int Undelete(const Options& options) {
    const LockedFolder target(options.folder);
    const auto& [path, lock, folder] = target;
    std::vector<Slot> slots = FreedSlots(folder);
    Choose(slots, options.slots);
    Tell("{}: {} can be taken back\n", path.Shown(), Count(slots.size(), "freed message"));
    if (slots.empty())
        return keFine;
    Show(slots);
    NeedBackupPlace(path, options.write.replaceBackup);
    if (!options.write.yes)
        return NotAsked();
    Write(folder, slots, lock);
    Tell("{} taken back.\n", Count(slots.size(), "message"));
    return keFine;
}

static const Command
    kUndelete("undelete",
              "List the freed slots whose message files are still there, and take them back",
              "  mailfolder undelete C:\\Mail\\InBox          (lists them)\n"
              "  mailfolder undelete C:\\Mail\\InBox --yes\n"
              "  mailfolder undelete C:\\Mail\\InBox --slot 17 --slot 23 --yes",
              [](CLI::App& app) -> Command::Run {
                  const auto given = std::make_shared<Options>();
                  AddFolder(app, given->folder);
                  AddWriteOptions(app, given->write);
                  app.add_option("--slot", given->slots, "Only this one; may be said several times")
                      ->check(CLI::NonNegativeNumber)
                      ->expected(1)
                      ->take_all();
                  return [given] { return Undelete(*given); };
              });
