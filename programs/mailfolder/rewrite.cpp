// What writes a D file anew: only when told to, and with a copy of the old one kept where records
// could be lost.

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/progress.h"

// The D file's name with another extension.
static std::string WithExtension(const std::string& path, const char* ext) {
    FileSpec spec = SpecOf(path);
    spec.SetFileExt(ext);
    return spec.FullFileSpec();
}

static int NotAsked() {
    fmt::print(stderr, "Nothing was changed: say --yes to do it.\n");
    return keWrongUse;
}

static void NeedBackupPlace(const std::string& backup, bool replaceBackup) {
    if (IsThere(backup) && !replaceBackup)
        Fail("{} is there already, and would be lost: move it away, or say --replace-backup.",
             Printable(backup));
}

static void KeepCopy(const std::string& path, const std::string& backup) {
    Progress progress("Copying " + Printable(path));
    RbFile source(SpecOf(path));
    RbFile copy(SpecOf(backup));
    const int result = copy.Copy(source, 1, Progress::Copying, keDupLargeBuffer);
    for (RbFile* file : {&source, &copy})
        if (file->isOpen())
            file->close();
    if (result != keCopyDone)
        Fail("Cannot copy {} to {}; nothing was changed.", Printable(path), Printable(backup));
}

namespace {

// A new D file under a temporary name beside the old one, removed unless it takes its place.
class NewFile {
public:
    explicit NewFile(const Folder& folder) : mOld(SpecOf(folder.path)) {
        if (!RbFile::HashUniqueFileName(&mFile, mOld, ".TMP"))
            Fail("Cannot make a file beside {}.", Printable(folder.path));
        mFolder = folder;
        mFolder.path = mFile.FullFileSpec();
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (IsThere(mFolder.path))
            DiskDriver::RemoveFile(mFile);
    }

    const Folder& AsFolder() const { return mFolder; }

    void TakePlace() {
        if (IsThere(mOld.FullFileSpec()) && !DiskDriver::RemoveFile(mOld))
            Fail("Cannot replace {}: it may be held by another program, or read-only. It is as it "
                 "was.",
                 Printable(mOld.FullFileSpec()));
        if (!DiskDriver::Rename(mFile, mOld)) {
            const std::string kept = mFolder.path;
            mFolder.path.clear();
            Fail("Cannot name the new file {}: it stays as {}.", Printable(mOld.FullFileSpec()),
                 Printable(kept));
        }
    }

private:
    Folder mFolder;
    FileSpec mOld;
    RbFile mFile;
};

} // namespace

// The message files of the folder that a record can be made from, and those that none can.
static void SortMessageFiles(const std::string& directory, std::vector<std::string>& whole,
                             std::vector<std::string>& tooShort) {
    for (const auto& [key, entry] : FilesOf(directory))
        if (IsMessageFile(entry.name))
            (entry.size < sizeof(DiskDirRec) ? tooShort : whole).push_back(entry.name);
}

// Whether the record that a message file begins with has all its fields in range.
static bool HasSoundRecord(const std::string& path) {
    RbFile file;
    DirectoryRecord record;
    if (file.SetSpecPart(path.c_str(), 0) != FileSpec::keSpecOk || !file.Open(keOpenRead))
        return true; // another complaint, when it comes to adding it
    file >> record;
    file.close();
    return record.CheckValidity();
}

// Returns the names that no record could be made for.
static std::vector<std::string> AddMessages(LibraryFile& file, const std::string& directory,
                                            const std::vector<std::string>& names) {
    Progress progress("Reading message files");
    std::vector<std::string> refused;
    for (std::size_t i = 0; i < names.size(); ++i) {
        RbFile message;
        const std::string path = directory + "\\" + names[i];
        if (message.SetSpecPart(path.c_str(), 0) != FileSpec::keSpecOk ||
            !file.AddMessage(&message))
            refused.push_back(names[i]);
        progress.Show(i + 1, names.size());
    }
    return refused;
}

static int Rebuild(const std::string& argument, int type, bool yes, bool replaceBackup) {
    const Folder folder = FindFolder(argument, type, true);
    if (folder.type == keDirForeign)
        Fail("Files of type 1 are made by other programs alone; --type 0 makes one of the same "
             "form.");
    const std::string directory = folder.Directory();
    if (!IsFolder(directory))
        Fail("{} is no folder.", Printable(directory));
    std::vector<std::string> whole;
    std::vector<std::string> tooShort;
    SortMessageFiles(directory, whole, tooShort);
    const bool isThere = IsThere(folder.path);
    const std::string backup = WithExtension(folder.path, ".BAK");

    for (const std::string& name : tooShort)
        fmt::print(stderr, "{} is shorter than a record: it gets none.\n", Printable(name));
    bool damaged = !tooShort.empty();
    for (const std::string& name : whole)
        if (!HasSoundRecord(directory + "\\" + name)) {
            damaged = true;
            fmt::print(
                stderr,
                "{} begins with a damaged record, or none: it gets what can be made of it.\n",
                Printable(name));
        }
    fmt::print("{}: type {} ({}), {} to make a record from\n", Printable(folder.path),
               static_cast<int>(folder.type), folder.why, Count(whole.size(), "message file"));
    if (isThere)
        fmt::print("  The old file stays as {}. Marks that only it has, such as processed, are not "
                   "in the new one.\n",
                   Printable(backup));
    if (!yes)
        return NotAsked();

    if (isThere) {
        NeedBackupPlace(backup, replaceBackup);
        KeepCopy(folder.path, backup);
    }
    NewFile made(folder);
    LibraryFile file(made.AsFolder());
    const bool created = file.CreateDFile();
    std::vector<std::string> refused;
    if (folder.type == keDirFolder && created)
        refused = AddMessages(file, directory, whole);
    for (const std::string& name : refused)
        fmt::print(stderr, "{} cannot be read: it gets no record.\n", Printable(name));
    if (!IsThere(made.AsFolder().path) || !file.GetInfo(keInfoAll) ||
        (folder.type == keDirFolder && !created))
        Fail("Cannot write a new D file in {}; the old one is as it was.", Printable(directory));
    const auto count = static_cast<unsigned long>(file.UsedCount());
    made.TakePlace();
    fmt::print("Rebuilt with {}.\n", Count(count, "record"));
    return damaged || count < whole.size() ? keDamage : keFine;
}

static int Compress(const std::string& argument, int type, bool yes, bool replaceBackup,
                    bool dropDamaged) {
    const Folder folder = FindFolder(argument, type);
    unsigned long freeSlots = 0;
    unsigned long damaged = 0;
    unsigned long used = 0;
    ForEachSlot(folder, [&](Slot& slot) {
        if (slot.stored.used == 0)
            ++freeSlots;
        else
            ++(IsUsed(slot.stored) ? used : damaged);
    });
    const unsigned long after =
        (used + (folder.HasHeader() ? 1 : 0)) * static_cast<unsigned long>(sizeof(DiskDirRec));
    const bool smaller = after < folder.size;
    fmt::print("{}: {}, {} free\n", Printable(folder.path), Count(folder.Slots(), "slot"),
               freeSlots);
    if (damaged && !dropDamaged) {
        fmt::print(
            stderr,
            "{} cannot be read, and would be lost: see check, or say --drop-damaged. Nothing "
            "was changed.\n",
            Count(damaged, "record"));
        return keDamage;
    }
    if (!smaller) {
        fmt::print("There is nothing to save.\n");
        return keFine;
    }
    if (!yes) {
        fmt::print("Compressing it saves {} of {}.\n", folder.size - after,
                   Count(folder.size, "byte"));
        return NotAsked();
    }
    // The library goes by way of that name, and removes what has it.
    NeedBackupPlace(WithExtension(folder.path, ".BAK"), replaceBackup);
    if (!LibraryFile(folder).CompressDFile())
        Fail(
            "Cannot compress {}: it is as it was. It may be held by another program, or its folder "
            "be read-only.",
            Printable(folder.path));
    const Folder now = FindFolder(folder.path, folder.type);
    fmt::print("Saved {}: {} bytes before, {} after.\n", Count(folder.size - now.size, "byte"),
               folder.size, now.size);
    if (damaged)
        fmt::print("{} dropped.\n", Count(damaged, "damaged record"));
    return keFine;
}

namespace {

struct Options {
    FolderArgument folder;
    bool yes = false;
    bool replaceBackup = false;
    bool dropDamaged = false;
};

} // namespace

static std::shared_ptr<Options> AddOptions(CLI::App& app) {
    const auto given = std::make_shared<Options>();
    AddFolder(app, given->folder);
    AddYes(app, given->yes);
    app.add_flag("--replace-backup", given->replaceBackup,
                 "Let an older .BAK file of the D file go");
    return given;
}

static const Command
    kRebuild("rebuild",
             "Make a folder's D file anew from its message files, and keep the old as .BAK",
             "  mailfolder rebuild C:\\Mail\\InBox          (tells what it would do)\n"
             "  mailfolder rebuild C:\\Mail\\InBox --yes\n"
             "  mailfolder rebuild D:\\Old\\MFile --type 0 --yes",
             [](CLI::App& app) -> Command::Run {
                 return [given = AddOptions(app)] {
                     return Rebuild(given->folder.path, given->folder.type, given->yes,
                                    given->replaceBackup);
                 };
             });

static const Command
    kCompress("compress", "Rewrite a D file without its free slots",
              "  mailfolder compress C:\\Mail\\InBox         (tells what it would save)\n"
              "  mailfolder compress C:\\Mail\\InBox --yes",
              [](CLI::App& app) -> Command::Run {
                  const auto given = AddOptions(app);
                  app.add_flag("--drop-damaged", given->dropDamaged,
                               "Let records go that cannot be read");
                  return [given] {
                      return Compress(given->folder.path, given->folder.type, given->yes,
                                      given->replaceBackup, given->dropDamaged);
                  };
              });
