#pragma once

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
