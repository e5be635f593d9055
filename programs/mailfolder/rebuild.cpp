// Merges a D file with the message files of its folder: what the D file has stays, what it has not
// comes from the message files.

#include <set>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/record.h"
#include "programs/mailfolder/writing.h"

namespace {

struct Options {
    FolderArgument folder;
    WriteOptions write;
    bool keepMissing = false;
};

constexpr DWORD kYoungMilliseconds = 2000;

// What a merge does, for whoever asked.
struct Report {
    unsigned long long kept = 0;
    unsigned long long freed = 0; // slots that undelete can take back
    unsigned long long dropped = 0;
    std::vector<std::string> mended;
    std::vector<std::string> made;
    std::vector<std::string> sayingSo; // made, of message files without a readable record
    std::vector<std::string> left;
    std::vector<std::string> unlisted;
    std::vector<std::string> marksLost;
    bool anyYoung = false; // of those that are not listed
    unsigned long long bytes = 0;
    bool changed = false;
};

class Merge {
public:
    Merge(const Folder& folder, bool keepMissing)
        : mFolder(folder), mDirectory(folder.Directory()), mKeepMissing(keepMissing),
          mNames(mDirectory), mFiles(FilesOf(mDirectory, mNames)) {
        GetSystemTimeAsFileTime(&mNow);
    }

    // Returns the number of message files.
    std::size_t MessageFiles() const { return mNames.MessageFiles(); }
    // Hands out the new file's bytes, in order.
    typedef std::function<void(const void* bytes, std::size_t size)> Sink;
    Report Run(const Sink& sink);

private:
    struct Best {
        unsigned long long slot;
        bool sound;
        unsigned long long fingerprint;
    };
    void ForEachRecord(const std::function<void(Slot&)>& visit);
    bool Fits(const Best& best, const std::wstring& key) const;
    void FindBest();
    void TakeSlot(const Slot& slot);
    void TakeFree(const Slot& slot);
    void TakeDamaged(const Slot& slot, const std::wstring& key);
    void Leave(const Slot& slot, const char* why);
    void AddMissing();
    bool IsYoung(const FileEntry& entry) const;
    void Put(const DiskDirRec& record);
    Path MessagePath(const std::wstring& key) const {
        return mDirectory.Child(mFiles.at(key).name);
    }
    OwnRecord Own(const std::wstring& key) const {
        const FileEntry& entry = mFiles.at(key);
        return ReadOwnRecord(MessagePath(key), RecordName(entry.name).value_or(""));
    }

    const Folder& mFolder;
    Path mDirectory;
    bool mKeepMissing;
    FileNames mNames;
    FileEntries mFiles;
    FILETIME mNow;
    std::map<std::wstring, Best> mBest;
    std::set<std::wstring> mFreed;
    Sink mSink;
    Report mReport;
};

// A record that stands in the header's place counts, too.
void Merge::ForEachRecord(const std::function<void(Slot&)>& visit) {
    if (!mFolder.path.IsThere())
        return;
    if (mFolder.HasHeader()) {
        Slot header = {0, 0, {}};
        InputFile(mFolder.path).ReadAt(0, &header.stored, sizeof header.stored);
        if (header.stored.used != 0 && LooksLikeRecord(header.stored))
            visit(header);
    }
    ForEachSlot(mFolder, visit);
}

bool Merge::Fits(const Best& best, const std::wstring& key) const {
    const OwnRecord own = Own(key);
    return own.IsKnown() && Fingerprint(own.record) == best.fingerprint;
}

// Of several records for one file a sound one stays: that which agrees with the file's own, or else
// the first.
void Merge::FindBest() {
    ForEachRecord([this](Slot& slot) {
        if (slot.stored.used == 0)
            return;
        const auto key = mNames.KeyOf(DirectoryRecord(&slot.stored));
        if (!key || !mFiles.count(*key))
            return;
        const Best mine = {slot.number, IsSound(slot.stored) && !IsBlank(slot.stored),
                           Fingerprint(slot.stored)};
        const auto [best, fresh] = mBest.emplace(*key, mine);
        if (!fresh && mine.sound &&
            (!best->second.sound || (!Fits(best->second, *key) && Fits(mine, *key))))
            best->second = mine;
    });
}

void Merge::Put(const DiskDirRec& record) {
    mSink(&record, sizeof record);
    mReport.bytes += sizeof record;
}

static std::string Named(const DirectoryRecord& record, const char* why) {
    return fmt::format("{} \"{}\" ({})", Printable(record.FileName().Text()),
                       Printable(record.Topic().Text()), why);
}

void Merge::Leave(const Slot& slot, const char* why) {
    mReport.left.push_back(Named(DirectoryRecord(&slot.stored), why));
}

// A freed slot stays while its message could be taken back; others are given up.
void Merge::TakeFree(const Slot& slot) {
    const auto key = mNames.KeyOf(DirectoryRecord(&slot.stored));
    if (key && mFiles.count(*key) && !mBest.count(*key) && Own(*key).state == OwnRecord::Sound &&
        Fingerprint(Own(*key).record) == Fingerprint(slot.stored) && mFreed.insert(*key).second) {
        ++mReport.freed;
        Put(slot.stored);
    } else {
        ++mReport.dropped;
    }
}

// Whether all that the record tells of its message is as it was.
static bool IsMarkedBroken(const DiskDirRec& stored) {
    const auto faults = FaultsOf(stored);
    return faults.size() == 1 && faults[0].what == std::string("broken-index") && !IsBlank(stored);
}

// A message file's record, with what only the D file knows of the message.
static DiskDirRec WithMarks(const DiskDirRec& own, const DiskDirRec& stored) {
    DiskDirRec merged = own;
    merged.status = stored.status;
    merged.attributes = stored.attributes;
    const DirectoryRecord old(&stored);
    const auto* const identifier =
        reinterpret_cast<const unsigned char*>(&stored) + DirectoryRecord::keMessageIDOffset;
    if (identifier[0] == 0 || identifier[0] >= DirectoryRecord::keMessageIDSize)
        return merged;
    DirectoryRecord record(&merged);
    record.SetMessageID(identifier);
    return record.Record();
}

void Merge::TakeDamaged(const Slot& slot, const std::wstring& key) {
    const OwnRecord own = Own(key);
    const std::string name = Printable(mFiles.at(key).name);
    const bool ownTells = own.state == OwnRecord::Sound && !IsBlank(own.record);
    if (IsMarkedBroken(slot.stored) || (!ownTells && LooksLikeRecord(slot.stored))) {
        // A blank record whose file has no other is what there is.
        const bool same = IsSound(slot.stored);
        same ? static_cast<void>(++mReport.kept) : mReport.mended.push_back(name);
        Put(same ? slot.stored : Mended(slot.stored));
    } else if (LooksLikeRecord(slot.stored)) {
        mReport.mended.push_back(name);
        Put(WithMarks(own.record, slot.stored));
    } else {
        mReport.marksLost.push_back(name);
        mBest.erase(key); // gets a new one, as if it had none
    }
}

void Merge::TakeSlot(const Slot& slot) {
    if (slot.stored.used == 0)
        return TakeFree(slot);
    const auto key = mNames.KeyOf(DirectoryRecord(&slot.stored));
    if (!key || !mFiles.count(*key)) {
        if (mKeepMissing && LooksLikeRecord(slot.stored)) {
            ++mReport.kept;
            Put(Mended(slot.stored));
        } else {
            Leave(slot, key ? "its message file is not there" : "it names no file of the folder");
        }
        return;
    }
    const auto best = mBest.find(*key);
    if (best == mBest.end() || best->second.slot != slot.number) {
        Leave(slot, "the file has another record");
    } else if (best->second.sound) {
        ++mReport.kept;
        Put(slot.stored);
    } else {
        TakeDamaged(slot, *key);
    }
}

// Whether who wrote the message file may be about to add it: with a record that is made here, it
// would be listed twice.
bool Merge::IsYoung(const FileEntry& entry) const {
    const unsigned long long now =
        static_cast<unsigned long long>(mNow.dwHighDateTime) << 32 | mNow.dwLowDateTime;
    constexpr unsigned long long kTicks = 10000ull * kYoungMilliseconds;
    return entry.written <= now && now - entry.written < kTicks;
}

void Merge::AddMissing() {
    Progress progress("Reading message files");
    std::size_t done = 0;
    for (const auto& [key, entry] : mFiles) {
        progress.Show(++done, mFiles.size());
        if (!IsMessageFileName(entry.name) || mBest.count(key) || mFreed.count(key))
            continue;
        if (IsYoung(entry)) {
            mReport.anyYoung = true;
            mReport.unlisted.push_back(Printable(entry.name) +
                                       " (it was written this moment: rebuild once more)");
            continue;
        }
        const auto name = RecordName(entry.name);
        const OwnRecord own = name ? ReadOwnRecord(MessagePath(key), *name) : OwnRecord();
        if (!name || own.state == OwnRecord::Link || own.state == OwnRecord::Unreadable) {
            mReport.unlisted.push_back(
                fmt::format("{} ({})", Printable(entry.name),
                            !name ? "a record cannot hold its name: rename it"
                            : own.state == OwnRecord::Link ? "it is a link"
                                                           : "it cannot be read"));
            continue;
        }
        (own.IsKnown() ? mReport.made : mReport.sayingSo).push_back(Printable(entry.name));
        Put(own.state == OwnRecord::Sound     ? own.record
            : own.state == OwnRecord::Damaged ? Mended(own.record)
                                              : RecordThatSaysSo(entry, *name));
    }
}

Report Merge::Run(const Sink& sink) {
    mReport = {};
    mBest.clear();
    mFreed.clear();
    // Compared with the old bytes on the way.
    std::optional<InputFile> old;
    if (mFolder.path.IsThere())
        old.emplace(mFolder.path);
    mReport.changed = !old;
    unsigned long long position = 0;
    mSink = [&](const void* bytes, std::size_t size) {
        if (!mReport.changed) {
            const std::string before = old->BytesAt(position, size);
            mReport.changed = before != std::string(static_cast<const char*>(bytes), size);
        }
        position += size;
        sink(bytes, size);
    };
    if (mFolder.HasHeader())
        Put(DiskDirRec{});
    FindBest();
    ForEachRecord([this](Slot& slot) { TakeSlot(slot); });
    AddMissing();
    mReport.changed = mReport.changed || position != old->Size();
    return mReport;
}

} // namespace

static void TellNames(const char* label, const std::vector<std::string>& names) {
    if (names.empty())
        return;
    Tell("  {:<14}{}\n", label, names.size());
    for (const std::string& name : names)
        Tell("                {}\n", name);
}

static void TellReport(const Folder& folder, const Report& report) {
    Tell("{}: type {} ({})\n", folder.path.Shown(), static_cast<int>(folder.type), folder.why);
    Tell("  {:<14}{}\n", "Kept", Count(report.kept, "record"));
    TellNames("Mended", report.mended);
    TellNames("Made anew", report.made);
    TellNames("Saying so", report.sayingSo);
    TellNames("Left behind", report.left);
    TellNames("Not listed", report.unlisted);
    TellNames("Marks lost", report.marksLost);
    if (report.freed)
        Tell("  {:<14}{}, whose messages undelete can take back\n", "Freed",
             Count(report.freed, "slot"));
    Tell("  {:<14}{}\n", "Dropped", Count(report.dropped, "free slot"));
    Tell("  {:<14}{} before, {} after\n", "Bytes", folder.size, report.bytes);
}

// The D file that is there, or one to be made in a folder that was named itself.
static Folder FolderToRebuild(const Path& path, int type) {
    Folder folder;
    folder.path = path;
    if (path.IsThere())
        folder = FolderToWrite(path, type);
    else
        NeedNoLeftovers(path);
    if (folder.size == 0 && type < 0) {
        folder.type = keDirFolder;
        folder.why = "what programs make";
    } else if (folder.size == 0) {
        folder.type = static_cast<TypeDirFile>(type);
        folder.why = "as it was told";
    }
    return folder;
}

// Nothing, with `wait` alone, when there are message files that may be about to be added.
static std::optional<int> RebuildOnce(const Options& options, bool wait) {
    const Path path = DFileOf(Path(options.folder.path));
    const WriteLock lock(path);
    const Folder folder = FolderToRebuild(path, options.folder.type);
    if (folder.type == keDirForeign)
        Fail("Files of type 1 are made by other programs alone; --type 0 makes one of the same "
             "form.");
    Merge merge(folder, options.keepMissing);
    if (merge.MessageFiles() == 0)
        Fail("There is no message file in {}: a D file that is made from none lists nothing. "
             "Nothing was changed.",
             folder.Directory().Shown());
    const Report report = merge.Run([](const void*, std::size_t) {});
    if (report.anyYoung && wait)
        return {};
    TellReport(folder, report);
    const ExitCode code = report.sayingSo.empty() && report.unlisted.empty() ? keFine : keDamage;
    if (!report.changed) {
        Tell("There is nothing to rebuild.\n");
        return code;
    }
    if (folder.path.IsThere())
        NeedBackupPlace(folder.path, options.write.replaceBackup);
    if (!options.write.yes)
        return NotAsked(code);
    NewFile made(folder.path, lock);
    merge.Run([&](const void* bytes, std::size_t size) { made.Write(bytes, size); });
    made.PutInPlace();
    Tell("Rebuilt.\n");
    return code;
}

static int Rebuild(const Options& options) {
    if (const auto code = RebuildOnce(options, true))
        return *code;
    Detail("Waiting for who may be adding messages that were written this moment.\n");
    Sleep(kYoungMilliseconds);
    return *RebuildOnce(options, false);
}

static const Command kRebuild(
    "rebuild",
    "Merge a folder's D file with its message files: records stay, those that are missing or "
    "damaged are made anew; the old file stays as .BAK",
    "  mailfolder rebuild C:\\Mail\\InBox          (tells what it would do)\n"
    "  mailfolder rebuild C:\\Mail\\InBox --yes\n"
    "  mailfolder rebuild D:\\Old\\MFile --type 0 --yes",
    [](CLI::App& app) -> Command::Run {
        const auto given = std::make_shared<Options>();
        AddFolder(app, given->folder);
        AddWriteOptions(app, given->write);
        app.add_flag("--keep-missing", given->keepMissing,
                     "Keep records whose message files are not there");
        return [given] { return Rebuild(*given); };
    });
