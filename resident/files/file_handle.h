#pragma once

#include <utility>

#include "resident/core/windows_api.h"

// Opens that keep nobody away: others may read, write, rename and remove meanwhile.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Owns a handle of CreateFile and closes it.
class FileHandle {
public:
    explicit FileHandle(HANDLE handle = INVALID_HANDLE_VALUE) : mHandle(handle) {}
    FileHandle(FileHandle&& other) noexcept
        : mHandle(std::exchange(other.mHandle, INVALID_HANDLE_VALUE)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(mHandle, other.mHandle);
        return *this;
    }
    ~FileHandle() {
        if (*this)
            CloseHandle(mHandle);
    }

    explicit operator bool() const { return mHandle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return mHandle; }
    // Leaves the handle to the caller.
    HANDLE Release() { return std::exchange(mHandle, INVALID_HANDLE_VALUE); }

private:
    HANDLE mHandle;
};
