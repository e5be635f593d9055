// Mends what an interrupted rewriting left.

#include <fmt/xchar.h>

#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/writing.h"

static Path FreeBackupName(const Path& path) {
    Path free = path.Beside(path.Name() + L".BAK");
    for (int i = 2; free.IsThere(); ++i)
        free = path.Beside(path.Name() + fmt::format(L".{}.BAK", i));
    return free;
}

static void Move(const Path& from, const Path& to) {
    if (!MoveFileExW(from.Full().c_str(), to.Full().c_str(), 0))
        Fail("Cannot rename {} to {}: another program may hold it. What is done so far stays.",
             from.Shown(), to.Shown());
    Tell("  {} is {} now.\n", from.Shown(), to.Shown());
}

// Whatever is interrupted here leaves a state that is mended the same way.
static void PutRight(const Leftovers& found, const WriteLock& lock) {
    const Candidate& best = found.candidates.front();
    if (best.role == Candidate::WindowsCopy) {
        NewFile made(found.target, lock);
        made.Copy(best.path);
        if (BackupOf(found.target).IsThere())
            Move(BackupOf(found.target), FreeBackupName(BackupOf(found.target)));
        made.PutInPlace();
        Tell("  {} has the bytes of {} now.\n", found.target.Shown(), best.path.Shown());
    } else if (best.role != Candidate::Target) {
        if (found.target.IsThere())
            Move(found.target, FreeBackupName(found.target));
        Move(best.path, found.target);
    }
    for (const Candidate& other : found.candidates)
        if (&other != &best && other.role == Candidate::Temporary)
            Move(other.path, FreeBackupName(other.path));
}

// The files that an argument may mean: itself, or those of a folder.
static std::vector<Path> TargetsOf(const Path& argument) {
    if (argument.What() == Path::keDevice)
        Fail("Cannot use {}: it is a device.", argument.Shown());
    if (!argument.IsFolder()) {
        if (!argument.Folder().IsFolder())
            Fail("Cannot use {}: there is no such file or folder.", argument.Shown());
        return {argument};
    }
    std::vector<Path> targets;
    const Path folder = argument.Child(L"DFile");
    const Path messages = argument.Child(L"MFile");
    const auto hasTraces = [](const Path& path) {
        return path.IsThere() || BackupOf(path).IsThere() || path.WithExtension(L".TMP").IsThere();
    };
    targets.push_back(!hasTraces(folder) && hasTraces(messages) ? messages : folder);
    targets.push_back(argument.Child(L"RB.DAT"));
    return targets;
}

// A file that is something else is nobody's to be replaced, unless it has the D file's own name.
static void NeedOwnKind(const Path& target, const Leftovers& found) {
    if (!target.IsThere())
        return;
    if (target.What() != Path::keFile)
        Fail("{} is no plain file. Nothing was changed.", target.Shown());
    const std::wstring name = FoldCase(target.Name());
    const Kind kind = KindOf(target);
    if (kind != found.kind && kind != Kind::Empty && name != L"DFILE" && name != L"MFILE")
        Fail("{} is none of the files that are recovered: it looks like {}. Nothing was changed.",
             target.Shown(), Words(kind));
}

static int Recover(const std::string& argument, bool yes) {
    const Path given(argument);
    bool any = false;
    for (const Path& target : TargetsOf(given)) {
        const WriteLock lock(target);
        const Leftovers found = FindLeftovers(target);
        NeedOwnKind(target, found);
        if (found.state == Leftovers::None)
            continue;
        any = true;
        Tell("{}\n", found.Words());
        for (const Candidate& candidate : found.candidates)
            Tell("  {}: {}\n", candidate.path.Shown(),
                 candidate.records ? candidate.Words() : "nothing in it");
        Tell("{} is the one to keep: {}.\n", found.candidates.front().path.Shown(), found.why);
        if (yes)
            PutRight(found, lock);
    }
    if (!any && !given.IsThere())
        Fail("Cannot use {}: there is no such file or folder, and nothing left of one.",
             given.Shown());
    if (!any) {
        Tell("There is nothing to recover.\n");
        return keFine;
    }
    return yes ? keFine : NotAsked();
}

static const Command kRecover(
    "recover",
    "Find what an interrupted rewriting left, and put the newest whole file in its place",
    "  mailfolder recover C:\\Mail\\InBox          (tells what it would do)\n"
    "  mailfolder recover C:\\Mail\\InBox --yes\n"
    "  mailfolder recover C:\\Mail\\RB.DAT --yes",
    [](CLI::App& app) -> Command::Run {
        struct Options {
            std::string file;
            bool yes = false;
        };
        const auto given = std::make_shared<Options>();
        app.add_option("file", given->file,
                       "A folder, or the D file, preference file or file of user records itself")
            ->required();
        AddYes(app, given->yes);
        return [given] { return Recover(given->file, given->yes); };
    });
