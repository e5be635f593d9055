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
    return OpenFolder(path, type);
}
