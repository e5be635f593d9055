// Rewrites a D file without its free slots.

#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/record.h"
#include "programs/mailfolder/writing.h"

namespace {

struct Options {
    FolderArgument folder;
    WriteOptions write;
    bool dropDamaged = false;
};

struct Report {
    unsigned long long used = 0;
    unsigned long long freeSlots = 0;
    unsigned long long undeletable = 0; // of these
    std::vector<std::string> damaged;   // used records that cannot be read, by their files' names
    unsigned long long rest = 0;        // bytes of a record that is not whole
};

} // namespace

static Report LookThrough(const Folder& folder) {
    Report report;
    report.rest = folder.size % BaseDirFile::keRecordSize;
    const FileNames files(folder.Directory());
    ForEachSlot(folder, [&](Slot& slot) {
        if (slot.stored.used != 0) {
            if (IsUsed(slot.stored))
                ++report.used;
            else
                report.damaged.push_back(
                    fmt::format("slot {}: {}", slot.number,
                                Printable(DirectoryRecord(&slot.stored).FileName().Text())));
            return;
        }
        ++report.freeSlots;
        const auto key = files.KeyOf(DirectoryRecord(&slot.stored));
        report.undeletable += key && files.Has(*key);
    });
    return report;
}

static void Write(const Folder& folder, const WriteLock& lock) {
    NewFile made(folder.path, lock);
    const DiskDirRec header = {};
    if (folder.HasHeader())
        made.Write(&header, sizeof header);
    ForEachSlot(folder, [&](Slot& slot) {
        if (IsUsed(slot.stored))
            made.Write(&slot.stored, sizeof slot.stored);
    });
    made.PutInPlace();
}

static int Compress(const Options& options) {
    const LockedFolder target(options.folder);
    const auto& [path, lock, folder] = target;
    const Report report = LookThrough(folder);
    const unsigned long long after = (report.used + folder.HasHeader()) * BaseDirFile::keRecordSize;
    Tell("{}: {}, {} free\n", path.Shown(), Count(folder.Slots(), "slot"), report.freeSlots);
    const bool damaged = !report.damaged.empty();
    if ((damaged || report.rest) && !options.dropDamaged) {
        Warn("{}{} would be lost, which cannot be read: see check, or say --drop-damaged. Nothing "
             "was changed.\n",
             damaged ? Count(report.damaged.size(), "record") : "",
             report.rest ? fmt::format("{}{} of a record that is cut", damaged ? " and " : "",
                                       Count(report.rest, "byte"))
                         : "");
        return keDamage;
    }
    if (after >= folder.size) {
        Tell("There is nothing to save.\n");
        return keFine;
    }
    Tell("  Kept          {}\n", Count(report.used, "record"));
    Tell("  Dropped       {}\n", Count(report.freeSlots, "free slot"));
    if (report.undeletable)
        Tell("                {} of a message file that is still there: undelete takes it back "
             "first\n",
             report.undeletable);
    if (damaged || report.rest)
        Tell("                {}, {} of a cut one\n",
             Count(report.damaged.size(), "damaged record"), Count(report.rest, "byte"));
    for (const std::string& name : report.damaged)
        Tell("                {}\n", name);
    Tell("  Bytes         {} before, {} after\n", folder.size, after);
    NeedBackupPlace(path, options.write.replaceBackup);
    if (!options.write.yes)
        return NotAsked();
    Write(folder, lock);
    Tell("Saved {}.\n", Count(folder.size - after, "byte"));
    return keFine;
}

static const Command
    kCompress("compress", "Rewrite a D file without its free slots; the old file stays as .BAK",
              "  mailfolder compress C:\\Mail\\InBox         (tells what it would save)\n"
              "  mailfolder compress C:\\Mail\\InBox --yes",
              [](CLI::App& app) -> Command::Run {
                  const auto given = std::make_shared<Options>();
                  AddFolder(app, given->folder);
                  AddWriteOptions(app, given->write);
                  app.add_flag("--drop-damaged", given->dropDamaged,
                               "Let records go that cannot be read");
                  return [given] { return Compress(*given); };
              });
