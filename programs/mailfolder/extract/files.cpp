#include "programs/mailfolder/extract/files.h"

#include <algorithm>

#include <winternl.h>

#include "programs/mailfolder/failure.h"
#include "resident/files/file_handle.h"

namespace extract {

bool SameName(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

void ForEachEntry(const Path& folder, const std::function<void(const Entry&)>& visit) {
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileExW(folder.Child(L"*").Full().c_str(), FindExInfoBasic,
                                               &found, FindExSearchNameMatch, nullptr,
                                               FIND_FIRST_EX_LARGE_FETCH));
    if (!search)
        return;
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..")
            visit({name, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                   (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0});
    } while (FindNextFileW(search.Get(), &found));
}

std::vector<Entry> EntriesOf(const Path& folder) {
    std::vector<Entry> entries;
    ForEachEntry(folder, [&](const Entry& entry) { entries.push_back(entry); });
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

bool Exists(const Path& path) {
    return GetFileAttributesW(path.Full().c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const Path& path) {
    const DWORD attributes = GetFileAttributesW(path.Full().c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// Under Wine final paths of over 260 characters are not told; this is what it makes them of.
static std::wstring ObjectName(const FileHandle& file) {
    constexpr OBJECT_INFORMATION_CLASS kObjectNameInformation = OBJECT_INFORMATION_CLASS(1);
    std::vector<UNICODE_STRING> information(0x10000 / sizeof(UNICODE_STRING));
    ULONG size = 0;
    if (NtQueryObject(file.Get(), kObjectNameInformation, information.data(), 0x10000, &size) < 0)
        return {};
    std::wstring name(information[0].Buffer, information[0].Length / sizeof(wchar_t));
    if (name.starts_with(L"\\??\\"))
        name[1] = L'\\';
    return name;
}

std::wstring FinalPath(const FileHandle& file) {
    std::wstring path(512, L'\0');
    DWORD size = GetFinalPathNameByHandleW(file.Get(), path.data(), path.size(), 0);
    if (size > path.size()) {
        path.resize(size);
        size = GetFinalPathNameByHandleW(file.Get(), path.data(), path.size(), 0);
    }
    if (size == 0 && GetLastError() == ERROR_MORE_DATA)
        return ObjectName(file);
    path.resize(size < path.size() ? size : 0);
    return path;
}

std::wstring FinalPathOf(const Path& path) {
    Path there = path;
    std::wstring missing;
    // A drive that is not there has no folder above it.
    while (!Exists(there) && there.Folder().Full().size() < there.Full().size()) {
        missing = L"\\" + there.Name() + missing;
        there = there.Folder();
    }
    const FileHandle file = OpenShared(there.Full());
    const std::wstring found = file ? FinalPath(file) : std::wstring();
    return (found.empty() ? there.Full() : found) + missing;
}

std::wstring ParentOf(const std::wstring& finalPath) {
    const std::size_t end = finalPath.rfind(L'\\');
    if (end == finalPath.npos)
        return {};
    // A drive's root keeps its backslash.
    return finalPath.substr(0, end > 0 && finalPath[end - 1] == L':' ? end + 1 : end);
}

bool IsWithin(const std::wstring& path, const std::wstring& folder) {
    if (path.size() < folder.size() ||
        !SameName(std::wstring_view(path).substr(0, folder.size()), folder))
        return false;
    return path.size() == folder.size() || folder.back() == L'\\' || path[folder.size()] == L'\\';
}

static std::size_t WhatWasRead(const std::optional<std::size_t>& read) {
    if (!read)
        throw Unreadable{GetLastError() == ERROR_INVALID_FUNCTION
                             ? "it is no plain file"
                             : "reading it failed: " + LastErrorText()};
    return *read;
}

std::size_t ReadOn(const FileHandle& file, char* buffer, std::size_t size) {
    return WhatWasRead(ReadFileOn(file, buffer, size));
}

std::size_t ReadAt(const FileHandle& file, unsigned long long position, char* buffer,
                   std::size_t size) {
    return WhatWasRead(ReadFileAt(file, position, buffer, size));
}

bool IsLeftover(const Path& path) {
    const FileHandle file = OpenShared(path.Full());
    char bytes[32];
    // A folder cannot be read.
    const auto read = file ? ReadFileAt(file, 0, bytes, sizeof bytes) : std::nullopt;
    if (!read)
        return false;
    const std::string_view start(bytes, *read);
    return start.empty() || start.starts_with("From ") ||
           start.starts_with("X-Postrider-Identity: ") || start.starts_with("folder,slot,");
}

static std::string CannotWrite(const Path& path) { return "Cannot write " + path.Shown(); }

NewFile::NewFile(const Path& path)
    : mPath(path), mTemporary(path.Beside(path.Name() + L".mailfolder-new")) {
    const auto make = [this] {
        return FileHandle(CreateFileW(mTemporary.Full().c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    FileHandle file = make();
    if (!file && GetLastError() == ERROR_FILE_EXISTS) {
        if (OpenShared(mTemporary.Full()) && !IsLeftover(mTemporary))
            Fail("{}: {} is there, and is not what an interrupted run left. Move it away.",
                 CannotWrite(mPath), mTemporary.Shown());
        if (!DeleteFileW(mTemporary.Full().c_str()))
            Fail("{}: another program is writing it.", CannotWrite(mPath));
        file = make();
    }
    if (!file)
        Fail("{}: {}.", CannotWrite(mPath), LastErrorText());
    mWriter.emplace(std::move(file), CannotWrite(mPath));
}

NewFile::~NewFile() {
    if (mWriter) {
        mWriter.reset();
        DeleteFileW(mTemporary.Full().c_str());
    }
}

bool NewFile::PutInPlace(const Path& path) {
    mWriter->Finish();
    mWriter.reset();
    if (MoveFileW(mTemporary.Full().c_str(), path.Full().c_str()))
        return true;
    const DWORD error = GetLastError();
    DeleteFileW(mTemporary.Full().c_str());
    SetLastError(error);
    if (error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS)
        Fail("{}: {}.", CannotWrite(path), LastErrorText());
    return false;
}

void MakeFolders(const Path& path) {
    if (IsFolder(path))
        return;
    const Path parent = path.Folder();
    if (parent.Full().size() < path.Full().size())
        MakeFolders(parent);
    if (!CreateDirectoryW(path.Full().c_str(), nullptr) && !IsFolder(path))
        Fail("Cannot make the folder {}: {}.", path.Shown(),
             Exists(path) ? "it is a file" : LastErrorText());
}

} // namespace extract
