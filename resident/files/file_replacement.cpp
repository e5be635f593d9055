#include "resident/files/file_replacement.h"

#include <vector>

#include "resident/files/disk_driver.h"
#include "resident/files/file_handle.h"
#include "resident/files/file_identity.h"

static constexpr ULONGLONG kRenameMilliseconds = 1000;

static std::vector<char> AccessRights(const wchar_t* path) {
    DWORD size = 0;
    GetFileSecurityW(path, DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<char> descriptor(size);
    if (size && !GetFileSecurityW(path, DACL_SECURITY_INFORMATION, descriptor.data(), size, &size))
        descriptor.clear();
    return descriptor;
}

// Gives `to` the access rights of `from`, so that a rewrite opens a file to nobody.
static void CopyAccessRights(const wchar_t* from, const wchar_t* to) {
    std::vector<char> rights = AccessRights(from);
    if (!rights.empty() && rights != AccessRights(to))
        SetFileSecurityW(to, DACL_SECURITY_INFORMATION, rights.data());
    // A read-only file is rewritten as an ordinary one, also where rights tell what is read-only.
    if (GetFileAttributesW(from) & FILE_ATTRIBUTE_READONLY)
        SetFileAttributesW(to, FILE_ATTRIBUTE_NORMAL);
}

static bool FlushToDisk(const wchar_t* path) {
    const FileHandle file(CreateFileW(path, GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && FlushFileBuffers(file.Get());
}

// Waits until no program has the file open in a way that keeps it from being renamed; false when
// one still has, or the file is not there.
static bool WaitUntilMovable(const wchar_t* path) {
    const ULONGLONG end = GetTickCount64() + kRenameMilliseconds;
    do {
        const FileHandle file(CreateFileW(path, DELETE, kShareAll, nullptr, OPEN_EXISTING,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file || GetLastError() != ERROR_SHARING_VIOLATION)
            return file || GetLastError() != ERROR_FILE_NOT_FOUND;
        Sleep(1);
    } while (GetTickCount64() < end);
    return false;
}

// Removes a backup, unless it is read-only. One that somebody reads, or waits for the lock of,
// keeps its name until they close it.
static void RemoveBackup(const wchar_t* path) {
    const ULONGLONG end = GetTickCount64() + kRenameMilliseconds;
    for (;;) {
        DeleteFileW(path);
        const DWORD attributes = GetFileAttributesW(path);
        if (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY) ||
            GetTickCount64() >= end)
            return;
        Sleep(1);
    }
}

static void RemoveReadOnlyToo(const wchar_t* path) {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesW(path, attributes & ~FILE_ATTRIBUTE_READONLY);
    DeleteFileW(path);
}

int ReplaceFileBy(const wchar_t* newFile, const wchar_t* target, const wchar_t* backup,
                  int options) {
    CopyAccessRights(target, newFile);
    const bool flushed = !(options & keReplaceFlush) || FlushToDisk(newFile);
    const bool movable = flushed && WaitUntilMovable(target);
    const bool dropOlder = options & keReplaceKeepOlder
                               ? movable
                               : flushed && GetFileAttributesW(target) != INVALID_FILE_ATTRIBUTES;
    if (dropOlder && !IsLink(target) && !IsLink(backup))
        RemoveBackup(backup);
    const bool dropNew = !(options & keReplaceKeepNew);
    if (!flushed || IsLink(target) || !DiskDriver::Rename(target, backup)) {
        if (dropNew)
            DeleteFileW(newFile);
        return false;
    }
    if (!DiskDriver::Rename(newFile, target)) {
        if (options & keReplaceNoWayBack)
            return false;
        // Where even the way back fails the backup is the only copy, and stays.
        DiskDriver::Rename(backup, target);
        if (dropNew)
            DeleteFileW(newFile);
        return false;
    }
    // A read-only file's backup is read-only as well.
    if (options & keReplaceDropBackup)
        RemoveReadOnlyToo(backup);
    return true;
}

int ReplaceFileBy(const FileSpec& newFile, const FileSpec& target, const FileSpec& backup,
                  int options) {
    return ReplaceFileBy(WideName(newFile).c_str(), WideName(target).c_str(),
                         WideName(backup).c_str(), options);
}

bool MakeNewFile(const wchar_t* path) {
    return static_cast<bool>(FileHandle(CreateFileW(path, GENERIC_WRITE, kShareAll, nullptr,
                                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

bool OpenAnew(RbFile& file) {
    const std::wstring name = OpenedName(file);
    MakeNewFile(name.c_str());
    return !IsLink(name.c_str()) && file.Open(keOpenRewrite | keOpenNoCreate);
}

bool MakeUniqueFile(RbFile* result, FileSpec& where, const char* pszExtension) {
    // A folder that takes no new file refuses each name: a few are enough to see that.
    for (int tries = 0; tries < 100; ++tries) {
        if (!RbFile::HashUniqueFileName(result, where, pszExtension))
            return false;
        if (MakeNewFile(WideName(*result).c_str()))
            return true;
        if (GetLastError() != ERROR_FILE_EXISTS && GetLastError() != ERROR_ALREADY_EXISTS)
            return false;
    }
    return false;
}
