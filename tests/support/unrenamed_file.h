#pragma once

#include <string>

#include "resident/core/windows_api.h"

// Keeps a file from being renamed or removed while it lives; the file can be read and written.
class UnrenamedFile {
public:
    explicit UnrenamedFile(const std::string& path)
        : mFile(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    UnrenamedFile(const UnrenamedFile&) = delete;
    UnrenamedFile& operator=(const UnrenamedFile&) = delete;
    ~UnrenamedFile() { CloseHandle(mFile); }

private:
    const HANDLE mFile;
};
