#pragma once

#include <utility>

#include "resident/core/windows_api.h"

// Opens that keep nobody away: others may read, write, rename and remove meanwhile.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Owns a handle that is INVALID_HANDLE_VALUE where there is none, and closes it.
template <class Closer>
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle = INVALID_HANDLE_VALUE) : mHandle(handle) {}
    OwnedHandle(OwnedHandle&& other) noexcept
        : mHandle(std::exchange(other.mHandle, INVALID_HANDLE_VALUE)) {}
    OwnedHandle& operator=(OwnedHandle&& other) noexcept {
        std::swap(mHandle, other.mHandle);
        return *this;
    }
    ~OwnedHandle() {
        if (*this)
            Closer()(mHandle);
    }

    explicit operator bool() const { return mHandle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return mHandle; }
    // Leaves the handle to the caller.
    HANDLE Release() { return std::exchange(mHandle, INVALID_HANDLE_VALUE); }

private:
    HANDLE mHandle;
};

struct FileCloser {
    void operator()(HANDLE file) const { CloseHandle(file); }
};
struct SearchCloser {
    void operator()(HANDLE search) const { FindClose(search); }
};

using FileHandle = OwnedHandle<FileCloser>;     // of CreateFile
using SearchHandle = OwnedHandle<SearchCloser>; // of FindFirstFile
