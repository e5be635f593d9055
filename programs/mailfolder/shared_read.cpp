#include "programs/mailfolder/shared_read.h"

#include <fmt/format.h>

FileHandle OpenShared(const std::wstring& path, DWORD flags) {
    return FileHandle(
        CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
}

std::optional<std::size_t> ReadFileAt(const FileHandle& file, unsigned long long position, void* to,
                                      std::size_t size) {
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    // Of a file on a disk less comes at its end alone.
    DWORD count = 0;
    if (!ReadFile(file.Get(), to, static_cast<DWORD>(size), &count, &at) &&
        GetLastError() != ERROR_HANDLE_EOF)
        return {};
    return count;
}

std::optional<std::size_t> ReadFileOn(const FileHandle& file, void* to, std::size_t size) {
    DWORD count = 0;
    if (!ReadFile(file.Get(), to, static_cast<DWORD>(size), &count, nullptr))
        return {};
    return count;
}

std::string LastErrorText() {
    switch (const DWORD error = GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return "there is no such file";
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return "another program is holding it";
    case ERROR_ACCESS_DENIED:
        return "it may not be opened so";
    case ERROR_INVALID_NAME:
        return "no file can have that name";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return "the disk is full";
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return "it is there already";
    default:
        return fmt::format("the system's error {}", error);
    }
}
