#pragma once

#include <optional>
#include <string>
#include <utility>

#include "resident/core/windows_api.h"

// Owns a handle of a file; false when it was not opened.
class WinHandle {
public:
    explicit WinHandle(HANDLE handle = INVALID_HANDLE_VALUE) : mHandle(handle) {}
    WinHandle(WinHandle&& other) noexcept
        : mHandle(std::exchange(other.mHandle, INVALID_HANDLE_VALUE)) {}
    WinHandle& operator=(WinHandle&& other) noexcept {
        std::swap(mHandle, other.mHandle);
        return *this;
    }
    ~WinHandle() {
        if (*this)
            CloseHandle(mHandle);
    }

    explicit operator bool() const { return mHandle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return mHandle; }

private:
    HANDLE mHandle;
};

// Opens a file or a folder for reading, and keeps nobody from anything: writers, renames and
// removals go on.
WinHandle OpenShared(const std::wstring& path, DWORD flags = FILE_FLAG_BACKUP_SEMANTICS);
// Reads as much as there is, up to `size`, and returns that; nothing when reading fails.
std::optional<std::size_t> ReadFileAt(const WinHandle& file, unsigned long long position, void* to,
                                      std::size_t size);
// The same from where the last read ended: the system has less to do for it.
std::optional<std::size_t> ReadFileOn(const WinHandle& file, void* to, std::size_t size);

// Why the last call of the system failed, in words that go on after a name.
std::string LastErrorText();
