#include "programs/mailfolder/new_file.h"

#include <fmt/xchar.h>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"
#include "resident/files/file_replacement.h"

Path BackupOf(const Path& target) { return target.WithExtension(L".BAK"); }

void NeedBackupPlace(const Path& target, bool replaceBackup) {
    const Path backup = BackupOf(target);
    if (!backup.IsThere())
        return;
    if (!replaceBackup)
        Fail("{} is there already, and would be lost: move it away, or say --replace-backup. "
             "Nothing was changed.",
             backup.Shown());
    if (backup.What() != Path::keFile)
        Fail("{} is no plain file: move it away. Nothing was changed.", backup.Shown());
    if (const Kind kind = KindOf(backup); kind != KindOf(target) && kind != Kind::Empty)
        Fail("{} looks like {}, and would be lost: move it away first. Nothing was changed.",
             backup.Shown(), Words(kind));
    if (const unsigned long long only = OnlyInBackup(target))
        Fail("{} alone lists {} whose files are there: move it away first. Nothing was changed.",
             backup.Shown(), Count(only, "message"));
}

static FileHandle MakeNew(const Path& path) {
    return FileHandle(CreateFileW(path.Full().c_str(), GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW, 0,
                                  nullptr));
}

NewFile::NewFile(const Path& target, const WriteLock& lock)
    : mTarget(target), mReplaces(lock.IsHeld()) {
    FileHandle file;
    for (unsigned int number = GetTickCount() % 100000000, tries = 0; !file; ++number, ++tries) {
        const Path path = target.Beside(fmt::format(L"{:08}.TMP", number % 100000000));
        file = MakeNew(path);
        if (!file && (tries > 1000 || GetLastError() != ERROR_FILE_EXISTS))
            Fail("Cannot make a file beside {}: {}. Nothing was changed.", target.Shown(),
                 LastErrorText());
        mPath = path;
    }
    mWriter.emplace(std::move(file),
                    "Nothing was changed: cannot write the new file beside " + target.Shown());
}

NewFile::~NewFile() {
    mWriter.reset();
    if (!mPath.Full().empty())
        DeleteFileW(mPath.Full().c_str());
}

void NewFile::Copy(const Path& from) {
    const InputFile file(from);
    constexpr std::size_t kPiece = 0x40000;
    for (unsigned long long at = 0; at < file.Size(); at += kPiece)
        Write(file.BytesAt(at, kPiece));
}

void NewFile::PutInPlace() {
    mWriter->Finish();
    Detail("{} is written, and on the disk.\n", mPath.Shown());
    if (!mReplaces) {
        if (!MoveFileExW(mPath.Full().c_str(), mTarget.Full().c_str(), 0))
            Fail("Cannot give the new file the name {}: {}. Nothing was changed.", mTarget.Shown(),
                 LastErrorText());
        mPath = Path();
        return;
    }
    // What it leaves is its own matter: with a link in the way of the names, both files.
    const Path made = std::exchange(mPath, Path());
    if (!ReplaceFileBy(made.Full().c_str(), mTarget.Full().c_str(),
                       BackupOf(mTarget).Full().c_str(), keReplaceKeepOlder))
        Fail("Cannot replace {}: another program may hold it. {}", mTarget.Shown(),
             mTarget.IsThere() ? "It is as it was."
                               : "\"mailfolder recover\" gives it its name back.");
    Detail("{} is {} now, the new file took its place.\n", mTarget.Shown(),
           BackupOf(mTarget).Shown());
}
