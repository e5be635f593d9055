#include "tests/support/scratch.h"

#include <cstdio>
#include <stdexcept>

#include "resident/core/windows_api.h"

static void RemoveTree(const std::string& folder) {
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::string name = found.cFileName;
            if (name == "." || name == "..")
                continue;
            const std::string path = folder + "\\" + name;
            SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(path);
            else
                DeleteFileA(path.c_str());
        } while (FindNextFileA(search, &found));
        FindClose(search);
    }
    RemoveDirectoryA(folder.c_str());
}

ScratchFolder::ScratchFolder() {
    static int number = 0;
    char name[64];
    std::snprintf(name, sizeof name, "C:\\T%05lX%02X", GetCurrentProcessId() & 0xFFFFF,
                  number++ & 0xFF);
    mPath = name;
    RemoveTree(mPath);
    if (!CreateDirectoryA(mPath.c_str(), nullptr))
        throw std::runtime_error("no scratch folder " + mPath);
    char previous[MAX_PATH];
    GetCurrentDirectoryA(sizeof previous, previous);
    mPrevious = previous;
    SetCurrentDirectoryA(mPath.c_str());
}

ScratchFolder::~ScratchFolder() {
    SetCurrentDirectoryA(mPrevious.c_str());
    RemoveTree(mPath);
}

std::string ScratchFolder::Path(const std::string& name) const {
    return name.empty() ? mPath : mPath + "\\" + name;
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot write " + path);
    DWORD written;
    WriteFile(file, bytes.data(), bytes.size(), &written, nullptr);
    CloseHandle(file);
}

std::string ReadFileBytes(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot read " + path);
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), bytes.size(), &read, nullptr);
    CloseHandle(file);
    bytes.resize(read);
    return bytes;
}

bool FileThere(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool MakeReadOnly(const std::string& path) {
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return true;
    CloseHandle(file);
    return false;
}

KeptFile::KeptFile(std::string path)
    : mPath(std::move(path)), mAttributes(GetFileAttributesA(mPath.c_str())) {
    if (mAttributes != INVALID_FILE_ATTRIBUTES)
        mBytes = ReadFileBytes(mPath);
}

KeptFile::~KeptFile() {
    SetFileAttributesA(mPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryA(mPath.c_str());
    DeleteFileA(mPath.c_str());
    if (mAttributes == INVALID_FILE_ATTRIBUTES)
        return;
    WriteFileBytes(mPath, mBytes);
    SetFileAttributesA(mPath.c_str(), mAttributes);
}

std::string WindowsDirectory() {
    char path[MAX_PATH];
    GetWindowsDirectoryA(path, sizeof path);
    return path;
}
