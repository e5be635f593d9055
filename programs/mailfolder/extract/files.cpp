#include "programs/mailfolder/extract/files.h"

#include <algorithm>

#include "programs/mailfolder/failure.h"
#include "programs/mime/charset.h"
#include "resident/core/windows_api.h"

namespace extract {

static constexpr std::wstring_view kPrefix = L"\\\\?\\";
static constexpr std::wstring_view kSharePrefix = L"\\\\?\\UNC\\";
static constexpr std::size_t kBufferSize = 0x40000;

void CloseFile::operator()(void* handle) const { CloseHandle(handle); }

static FileHandle Owned(HANDLE handle) {
    return FileHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

std::string Shown(std::wstring_view text) {
    std::wstring line(text);
    for (wchar_t& c : line)
        if (c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) ||
            (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069))
            c = L'\u00B7';
    return mime::Utf8(line);
}

std::wstring WideArgument(const std::string& argument) {
    unsigned long meaningless = 0;
    std::wstring wide = mime::Decoded(argument, mime::Charset::Utf8, &meaningless);
    if (meaningless) {
        wide.assign(argument.size(), L'\0');
        wide.resize(MultiByteToWideChar(CP_ACP, 0, argument.data(),
                                        static_cast<int>(argument.size()), wide.data(),
                                        static_cast<int>(wide.size())));
    }
    return wide;
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

std::wstring LongPath(const std::wstring& path) {
    if (path.starts_with(kPrefix))
        return path;
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), full.size(), full.data(), nullptr));
    while (full.size() > 3 && full.back() == L'\\')
        full.pop_back();
    if (full.empty())
        Fail("Cannot use {}: the name is empty.", Shown(path));
    if (full.starts_with(L"\\\\"))
        return std::wstring(kSharePrefix) + full.substr(2);
    return std::wstring(kPrefix) + full;
}

std::wstring WithoutPrefix(const std::wstring& longPath) {
    if (longPath.starts_with(kSharePrefix))
        return L"\\\\" + longPath.substr(kSharePrefix.size());
    return longPath.starts_with(kPrefix) ? longPath.substr(kPrefix.size()) : longPath;
}

std::wstring Joined(const std::wstring& folder, std::wstring_view name) {
    std::wstring path = folder;
    if (path.empty() || path.back() != L'\\')
        path += L'\\';
    return path.append(name);
}

std::wstring ParentOf(const std::wstring& path) {
    const std::size_t end = path.rfind(L'\\');
    if (end == path.npos)
        return {};
    // A drive's root keeps its backslash.
    return path.substr(0, end > 0 && path[end - 1] == L':' ? end + 1 : end);
}

std::wstring LastName(const std::wstring& path) { return path.substr(path.rfind(L'\\') + 1); }

bool SameName(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

std::wstring Upper(std::wstring text) {
    CharUpperBuffW(text.data(), text.size());
    return text;
}

void ForEachEntry(const std::wstring& folder, const std::function<void(const Entry&)>& visit) {
    WIN32_FIND_DATAW found;
    const HANDLE search =
        FindFirstFileExW(Joined(folder, L"*").c_str(), FindExInfoBasic, &found,
                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..")
            visit({name, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                   (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0});
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

std::vector<Entry> EntriesOf(const std::wstring& folder) {
    std::vector<Entry> entries;
    ForEachEntry(folder, [&](const Entry& entry) { entries.push_back(entry); });
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

FileHandle OpenShared(const std::wstring& path) {
    return Owned(CreateFileW(path.c_str(), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::wstring FinalPath(const FileHandle& file) {
    std::wstring path(512, L'\0');
    DWORD size = GetFinalPathNameByHandleW(file.get(), path.data(), path.size(), 0);
    if (size > path.size()) {
        path.resize(size);
        size = GetFinalPathNameByHandleW(file.get(), path.data(), path.size(), 0);
    }
    path.resize(size < path.size() ? size : 0);
    return path;
}

std::wstring FinalPathOf(const std::wstring& path) {
    std::wstring there = path;
    std::wstring missing;
    while (there.size() > kPrefix.size() + 3 && !Exists(there)) {
        missing = L"\\" + LastName(there) + missing;
        there = ParentOf(there);
    }
    const FileHandle file = OpenShared(there);
    const std::wstring found = file ? FinalPath(file) : std::wstring();
    return (found.empty() ? there : found) + missing;
}

bool IsWithin(const std::wstring& path, const std::wstring& folder) {
    if (path.size() < folder.size() ||
        !SameName(std::wstring_view(path).substr(0, folder.size()), folder))
        return false;
    return path.size() == folder.size() || folder.back() == L'\\' || path[folder.size()] == L'\\';
}

std::size_t ReadAt(const FileHandle& file, unsigned long long position, char* buffer,
                   std::size_t size) {
    std::size_t total = 0;
    while (total < size) {
        OVERLAPPED place = {};
        place.Offset = static_cast<DWORD>(position + total);
        place.OffsetHigh = static_cast<DWORD>((position + total) >> 32);
        DWORD read = 0;
        if (!ReadFile(file.get(), buffer + total, size - total, &read, &place) &&
            GetLastError() != ERROR_HANDLE_EOF)
            throw Unreadable{"reading it failed: " + LastErrorText()};
        if (read == 0)
            break;
        total += read;
    }
    return total;
}

NewFile::NewFile(std::wstring path)
    : mPath(std::move(path)), mTemporary(mPath + L".mailfolder-new") {
    const auto make = [this] {
        return Owned(CreateFileW(mTemporary.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                 CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    mFile = make();
    if (!mFile && GetLastError() == ERROR_FILE_EXISTS) {
        if (!DeleteFileW(mTemporary.c_str()))
            Fail("Cannot write {}: another program is writing it.", Shown(WithoutPrefix(mPath)));
        mFile = make();
    }
    if (!mFile)
        FailWriting();
    mBuffer.reserve(kBufferSize);
}

NewFile::~NewFile() {
    if (mFile) {
        mFile.reset();
        DeleteFileW(mTemporary.c_str());
    }
}

void NewFile::FailWriting() const {
    Fail("Cannot write {}: {}.", Shown(WithoutPrefix(mPath)), LastErrorText());
}

void NewFile::Write(std::string_view bytes) {
    if (mBuffer.size() + bytes.size() > kBufferSize)
        Flush();
    if (bytes.size() < kBufferSize) {
        mBuffer += bytes;
        return;
    }
    mBuffer.assign(bytes);
    Flush();
}

void NewFile::Flush() {
    DWORD written = 0;
    if (!WriteFile(mFile.get(), mBuffer.data(), mBuffer.size(), &written, nullptr))
        FailWriting();
    if (written != mBuffer.size()) {
        SetLastError(ERROR_DISK_FULL);
        FailWriting();
    }
    mWritten += written;
    mBuffer.clear();
}

void NewFile::CutTo(unsigned long long size) {
    if (size >= mWritten) {
        mBuffer.resize(static_cast<std::size_t>(size - mWritten));
        return;
    }
    mBuffer.clear();
    LARGE_INTEGER end;
    end.QuadPart = static_cast<long long>(size);
    if (!SetFilePointerEx(mFile.get(), end, nullptr, FILE_BEGIN) || !SetEndOfFile(mFile.get()))
        FailWriting();
    mWritten = size;
}

bool NewFile::PutInPlace(const std::wstring& path) {
    Flush();
    if (!FlushFileBuffers(mFile.get()))
        FailWriting();
    mFile.reset();
    if (MoveFileW(mTemporary.c_str(), path.c_str()))
        return true;
    const DWORD error = GetLastError();
    DeleteFileW(mTemporary.c_str());
    SetLastError(error);
    if (error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS)
        FailWriting();
    return false;
}

void MakeFolders(const std::wstring& path) {
    if (IsFolder(path))
        return;
    const std::wstring parent = ParentOf(path);
    if (parent.size() > kPrefix.size() && parent.size() < path.size())
        MakeFolders(parent);
    if (!CreateDirectoryW(path.c_str(), nullptr) && !IsFolder(path))
        Fail("Cannot make the folder {}: {}.", Shown(WithoutPrefix(path)), LastErrorText());
}

} // namespace extract
