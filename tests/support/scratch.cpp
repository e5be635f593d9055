#include "tests/support/scratch.h"

#include <cstdio>
#include <stdexcept>

#include "resident/files/file_handle.h"

// A name of any length: the file system takes 259 characters of others.
static std::wstring Wide(const std::string& path) {
    std::wstring wide(path.size(), L'\0');
    MultiByteToWideChar(CP_ACP, 0, path.data(), path.size(), wide.data(), wide.size());
    return path.compare(1, 2, ":\\") == 0 ? L"\\\\?\\" + wide : wide;
}

static void RemoveTree(const std::wstring& folder) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const std::wstring path = folder + L"\\" + name;
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(path);
            else
                DeleteFileW(path.c_str());
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(folder.c_str());
}

ScratchFolder::ScratchFolder() {
    static int number = 0;
    char name[64];
    std::snprintf(name, sizeof name, "C:\\T%05lX%02X", GetCurrentProcessId() & 0xFFFFF,
                  number++ & 0xFF);
    mPath = name;
    RemoveTree(Wide(mPath));
    if (!CreateDirectoryA(mPath.c_str(), nullptr))
        throw std::runtime_error("no scratch folder " + mPath);
    char previous[MAX_PATH];
    GetCurrentDirectoryA(sizeof previous, previous);
    mPrevious = previous;
    SetCurrentDirectoryA(mPath.c_str());
}

ScratchFolder::~ScratchFolder() {
    SetCurrentDirectoryA(mPrevious.c_str());
    RemoveTree(Wide(mPath));
}

std::string ScratchFolder::Path(const std::string& name) const {
    return name.empty() ? mPath : mPath + "\\" + name;
}

static FileHandle Open(const std::wstring& path, DWORD access, DWORD disposition) {
    return FileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  disposition, 0, nullptr));
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    const FileHandle file = Open(Wide(path), GENERIC_WRITE, CREATE_ALWAYS);
    if (!file)
        throw std::runtime_error("cannot write " + path);
    DWORD written;
    WriteFile(file.Get(), bytes.data(), bytes.size(), &written, nullptr);
}

std::string ReadFileBytes(const std::string& path) {
    const FileHandle file = Open(Wide(path), GENERIC_READ, OPEN_EXISTING);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), bytes.size(), &read, nullptr);
    return bytes.substr(0, read);
}

bool FileThere(const std::string& path) {
    return GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void RemoveAll(const std::string& path) {
    const std::wstring wide = Wide(path);
    SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!DeleteFileW(wide.c_str()))
        RemoveTree(wide);
}

bool MakeReadOnly(const std::string& path) {
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    return !Open(Wide(path), GENERIC_WRITE, OPEN_EXISTING);
}

// Gives everybody these rights on a folder.
static void Permit(const std::string& path, DWORD rights) {
    char everybody[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof everybody;
    CreateWellKnownSid(WinWorldSid, nullptr, everybody, &size);
    DWORD list[64];
    ACL* const acl = reinterpret_cast<ACL*>(list);
    InitializeAcl(acl, sizeof list, ACL_REVISION);
    AddAccessAllowedAce(acl, ACL_REVISION, rights, everybody);
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE);
    if (!SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, &descriptor))
        throw std::runtime_error("cannot set the rights on " + path);
}

ReadOnlyFolder::ReadOnlyFolder(std::string path) : mPath(std::move(path)) {
    Permit(mPath, GENERIC_READ | GENERIC_EXECUTE);
}

ReadOnlyFolder::~ReadOnlyFolder() { Permit(mPath, GENERIC_ALL); }

bool ReadOnlyFolder::Works() const {
    const std::string probe = mPath + "\\PROBE";
    const bool works = !Open(Wide(probe), GENERIC_WRITE, CREATE_NEW);
    DeleteFileA(probe.c_str());
    return works;
}

KeptFile::KeptFile(std::string path)
    : mPath(std::move(path)), mAttributes(GetFileAttributesA(mPath.c_str())) {
    if (mAttributes != INVALID_FILE_ATTRIBUTES)
        mBytes = ReadFileBytes(mPath);
}

void KeptFile::Remove() const {
    SetFileAttributesA(mPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryA(mPath.c_str());
    DeleteFileA(mPath.c_str());
}

KeptFile::~KeptFile() {
    Remove();
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
