#include "programs/mailfolder/writing.h"

#include "programs/mailfolder/input_file.h"

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

Folder FolderToWrite(const Path& path, int type) {
    if (path.What() == Path::keLink)
        Fail("{} is a link: name the file that it leads to. Nothing was changed.", path.Shown());
    NeedReadable(path);
    const Kind kind = KindOf(path);
    const std::wstring name = FoldCase(path.Name());
    const bool maybeEmpty = name == L"DFILE" || name == L"MFILE";
    if (kind != Kind::DFile && !(kind == Kind::Empty && maybeEmpty))
        Fail("{} is no D file: it looks like {}. Nothing was changed.", path.Shown(), Words(kind));
    const Folder folder = OpenFolder(path, type);
    if (folder.size > kLargest)
        Fail("{} has {} bytes; programs read no more than {}. Nothing was changed.", path.Shown(),
             folder.size, kLargest);
    return folder;
}

WriteLock::WriteLock(const Path& path) {
    if (path.What() == Path::keFile && mLock.Take(path.Full().c_str()) == keLockTimedOut)
        Fail("Another program has been changing {} for half a minute. Nothing was changed.",
             path.Shown());
    if (mLock.IsHeld())
        Detail("{} is locked.\n", path.Shown());
}
