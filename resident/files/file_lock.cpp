#include "resident/files/file_lock.h"

#include <cwchar>
#include <list>
#include <string>

#include "resident/core/windows_api.h"

#include <winternl.h>

#include "resident/files/error_mode.h"
#include "resident/files/file_handle.h"
#include "resident/files/file_identity.h"

// A lock that this process holds, once for all that have taken it.
struct FileLock::Held {
    std::wstring path; // that it was taken by
    FileHandle file;
    ULONGLONG index;
    int holders;
};

static std::list<FileLock::Held> held;

static constexpr DWORD kOffsetHigh = 0x100; // 1 TB

// The file's index in its volume. The volume itself is left out: asking for it costs more than all
// the rest of a lock.
static bool GetIndex(const FileHandle& file, ULONGLONG& index) {
    IO_STATUS_BLOCK status;
    FILE_INTERNAL_INFORMATION information;
    if (NtQueryInformationFile(file.Get(), &status, &information, sizeof information,
                               FileInternalInformation) != 0)
        return false;
    index = information.IndexNumber.QuadPart;
    return true;
}

static FileHandle Open(const wchar_t* path) {
    return FileHandle(CreateFileW(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

static FileLock::Held* FindHeld(const wchar_t* path) {
    for (FileLock::Held& lock : held)
        if (_wcsicmp(lock.path.c_str(), path) == 0)
            return &lock;
    return nullptr;
}

// The same by another name: of files with one index, the volumes decide.
static FileLock::Held* FindHeld(const FileHandle& file, ULONGLONG index) {
    FileIdentity identity;
    FileIdentity other;
    for (FileLock::Held& lock : held)
        if (lock.index == index && GetFileIdentity(file.Get(), identity) &&
            GetFileIdentity(lock.file.Get(), other) && identity == other)
            return &lock;
    return nullptr;
}

static bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Whether a rewrite, here or interrupted, has given the file its backup's name.
static bool HasBackup(const wchar_t* path) {
    std::wstring backup(path);
    const std::size_t last = backup.find_last_of(L"\\/:.");
    if (last != std::wstring::npos && backup[last] == L'.')
        backup.resize(last);
    return Exists(backup + L".BAK") || Exists(backup + L".TMP");
}

// Locks the byte, unless another program has it.
static bool LockByte(HANDLE file) {
    OVERLAPPED place = {};
    place.OffsetHigh = kOffsetHigh;
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place))
        return true;
    // A file system without locks: nobody can be kept away there.
    const DWORD error = GetLastError();
    return error != ERROR_LOCK_VIOLATION && error != ERROR_IO_PENDING;
}

enumFileLockResult FileLock::Share(Held& lock) {
    ++lock.holders;
    mpoHeld = &lock;
    return keLockTaken;
}

enumFileLockResult FileLock::Take(const wchar_t* path, unsigned long milliseconds) {
    Release();
    if (!path || !*path)
        return keLockNoFile;
    if (Held* const own = FindHeld(path))
        return Share(*own);
    const CriticalErrorsFail guard;
    const ULONGLONG start = GetTickCount64();
    const ULONGLONG end = start + milliseconds;
    for (;;) {
        FileHandle file = Open(path);
        ULONGLONG index;
        if (!file || !GetIndex(file, index)) {
            if (file || GetLastError() != ERROR_FILE_NOT_FOUND ||
                GetTickCount64() >= start + keRenameMilliseconds || !HasBackup(path))
                return keLockNoFile;
            Sleep(1);
            continue;
        }
        if (Held* const own = FindHeld(file, index))
            return Share(*own);
        if (!LockByte(file.Get())) {
            if (GetTickCount64() >= end)
                return keLockTimedOut;
            // Closed meanwhile: the holder may remove the file and use its name again.
            file = FileHandle();
            Sleep(1);
            continue;
        }
        ULONGLONG indexNow;
        const FileHandle now = Open(path);
        if (now && GetIndex(now, indexNow) && indexNow == index) {
            held.push_back({path, std::move(file), index, 0});
            return Share(held.back());
        }
        // A rewrite has put another file in its place: that one's lock is wanted.
        if (GetTickCount64() >= end)
            return keLockTimedOut;
    }
}

enumFileLockResult FileLock::Take(const FileSpec& file, unsigned long milliseconds) {
    return Take(OpenedName(file).c_str(), milliseconds);
}

enumFileLockResult FileLock::Take(const RbFile& file, unsigned long milliseconds) {
    return Take(OpenedName(file).c_str(), milliseconds);
}

void FileLock::Release() {
    if (!mpoHeld || --mpoHeld->holders > 0) {
        mpoHeld = nullptr;
        return;
    }
    OVERLAPPED place = {};
    place.OffsetHigh = kOffsetHigh;
    UnlockFileEx(mpoHeld->file.Get(), 0, 1, 0, &place);
    held.remove_if([this](const Held& lock) { return &lock == mpoHeld; });
    mpoHeld = nullptr;
}
