#include "programs/mailfolder/writing.h"

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/leftovers.h"

void AddWriteOptions(CLI::App& app, WriteOptions& options) {
    AddYes(app, options.yes);
    app.add_flag("--replace-backup", options.replaceBackup,
                 "Let an older .BAK go, unless it alone has what is missing now");
}

int NotAsked(ExitCode code) {
    Tell("Nothing was changed: say --yes to do it.\n");
    return code;
}

// The library tells positions in 31 bits.
static constexpr unsigned long long kLargest = 0x7FFFFFFF;

static void NeedNotTooLong(const Path& path) {
    const unsigned long long size = InputFile(path).Size();
    if (size > kLargest)
        Fail("{} has {} bytes; programs read no more than {}. Nothing was changed.", path.Shown(),
             size, kLargest);
}

static DiskDirRec FirstOf(const Path& path) {
    DiskDirRec first = {};
    InputFile(path).ReadAt(0, &first, sizeof first);
    return first;
}

Folder FolderToWrite(const Path& path, int type) {
    if (path.What() == Path::keLink)
        Fail("{} is a link: name the file that it leads to. Nothing was changed.", path.Shown());
    if (path.IsThere())
        NeedNotTooLong(path);
    NeedNoLeftovers(path);
    NeedReadable(path);
    const Kind kind = KindOf(path);
    const std::wstring name = FoldCase(path.Name());
    const bool maybeEmpty = name == L"DFILE" || name == L"MFILE";
    if (kind != Kind::DFile && !(kind == Kind::Empty && maybeEmpty))
        Fail("{} is no D file: it looks like {}. Nothing was changed.", path.Shown(), Words(kind));
    const Folder folder = OpenFolder(path, type);
    if (type == keDirMessages && folder.size >= BaseDirFile::keRecordSize && IsZero(FirstOf(path)))
        Fail("{} begins with an empty header, which files of type 2 have not: leave --type out. "
             "Nothing was changed.",
             path.Shown());
    return folder;
}

LockedFolder::LockedFolder(const FolderArgument& given)
    : path(DFileOf(Path(given.path))), lock(path), folder(FolderToWrite(path, given.type)) {
    if (folder.HasHeader() && LooksLikeRecord(FirstOf(path)))
        Fail("{} begins with a record where type {} has its header: leave --type out, or rebuild "
             "it. Nothing was changed.",
             path.Shown(), static_cast<int>(folder.type));
}
