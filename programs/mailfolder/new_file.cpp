#include "programs/mailfolder/new_file.h"

#include <fmt/xchar.h>

#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"
#include "resident/files/file_replacement.h"

static constexpr std::size_t kBuffer = 0x10000;

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
    if (const unsigned long long only = OnlyInBackup(target))
        Fail("{} alone lists {} whose files are there: move it away first. Nothing was changed.",
             backup.Shown(), Count(only, "message"));
}

NewFile::NewFile(const Path& target) : mTarget(target) {
    for (unsigned int number = GetTickCount() % 100000000, tries = 0; !mFile; ++number, ++tries) {
        mPath = target.Beside(fmt::format(L"{:08}.TMP", number % 100000000));
        mFile = WinHandle(CreateFileW(mPath.Full().c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW, 0,
                                      nullptr));
        const DWORD error = GetLastError();
        if (!mFile && (tries > 1000 || error != ERROR_FILE_EXISTS)) {
            mPath = Path();
            Fail("Cannot make a file beside {}. Nothing was changed.", target.Shown());
        }
    }
}

void NewFile::Remove() {
    mFile = WinHandle();
    if (!mPath.Full().empty())
        DeleteFileW(mPath.Full().c_str());
    mPath = Path();
}

NewFile::~NewFile() { Remove(); }

static void Flush(HANDLE file, std::string& buffer) {
    DWORD count = 0;
    if (!buffer.empty() &&
        (!WriteFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) ||
         count != buffer.size()))
        Fail("Cannot write the new file: {}. Nothing was changed.",
             GetLastError() == ERROR_DISK_FULL ? "the disk is full" : "writing failed");
    buffer.clear();
}

void NewFile::Write(const void* bytes, std::size_t size) {
    mBuffer.append(static_cast<const char*>(bytes), size);
    if (mBuffer.size() >= kBuffer)
        Flush(mFile.Get(), mBuffer);
}

void NewFile::PutInPlace() {
    Flush(mFile.Get(), mBuffer);
    if (!FlushFileBuffers(mFile.Get()))
        Fail("Cannot write the new file: writing failed. Nothing was changed.");
    mFile = WinHandle();
    const Path made = std::exchange(mPath, Path());
    Detail("{} is written, and on the disk.\n", made.Shown());
    if (mTarget.IsThere()) {
        if (!ReplaceFileBy(made.Full().c_str(), mTarget.Full().c_str(),
                           BackupOf(mTarget).Full().c_str(), keReplacePlain))
            Fail("Cannot replace {}: another program may hold it. It is as it was.",
                 mTarget.Shown());
        Detail("{} is {} now, the new file took its place.\n", mTarget.Shown(),
               BackupOf(mTarget).Shown());
    } else if (!MoveFileExW(made.Full().c_str(), mTarget.Full().c_str(), 0)) {
        DeleteFileW(made.Full().c_str());
        Fail("Cannot give the new file the name {}. Nothing was changed.", mTarget.Shown());
    }
}
