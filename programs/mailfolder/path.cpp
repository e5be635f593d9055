#include "programs/mailfolder/path.h"

#include <algorithm>
#include <cstring>

#include "programs/console/text.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"
#include "resident/files/file_handle.h"
#include "resident/files/file_identity.h"

static constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
static constexpr std::wstring_view kShare = L"\\\\";
static constexpr std::wstring_view kLongSharePrefix = L"\\\\?\\UNC\\";
// From there on the system wants the prefix. Short of the limit: folders need room for a name.
static constexpr std::size_t kLongest = 240;

Path::Path(const std::string& given) : mGiven(given) {
    const std::wstring wide = WideOfUtf8(given);
    const DWORD size = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(wide.c_str(), size, full.data(), nullptr));
    if (full.empty() || wide.find(L'\0') != std::wstring::npos)
        Fail("Cannot use \"{}\": it is no name.", Shown());
    // A drive's root keeps its backslash.
    while (full.size() > 3 && full.back() == L'\\')
        full.pop_back();
    if (full.size() > kLongest && !full.starts_with(kLongPrefix) && full[1] == L':')
        full.insert(0, kLongPrefix);
    mFull = full;
}

Path Path::AsItStands() const {
    Path path = *this;
    if (!mFull.starts_with(kLongPrefix))
        path.mFull = mFull.starts_with(kShare)
                         ? std::wstring(kLongSharePrefix) + mFull.substr(kShare.size())
                         : std::wstring(kLongPrefix) + mFull;
    return path;
}

std::string Path::Shown() const { return Printable(WideOfUtf8(mGiven)); }

std::wstring Path::Name() const { return mFull.substr(mFull.rfind(L'\\') + 1); }

Path Path::Child(std::wstring_view name) const {
    Path child;
    child.mGiven = mGiven;
    if (!mGiven.empty() && !std::strchr("\\/:", mGiven.back()))
        child.mGiven += '\\';
    child.mGiven += Utf8(name);
    child.mFull = mFull;
    if (child.mFull.back() != L'\\')
        child.mFull += L'\\';
    child.mFull += name;
    if (child.mFull.size() > kLongest && child.mFull[1] == L':')
        child.mFull.insert(0, kLongPrefix);
    return child;
}

Path Path::Folder() const {
    Path folder;
    const std::size_t givenEnd = mGiven.find_last_of("\\/:");
    if (givenEnd != std::string::npos)
        folder.mGiven = mGiven.substr(0, givenEnd + 1);
    folder.mFull = mFull.substr(0, mFull.rfind(L'\\'));
    if (folder.mFull.empty() || folder.mFull.back() == L':')
        folder.mFull += L'\\';
    return folder;
}

std::wstring ExtensionOf(const std::wstring& name) {
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos ? std::wstring() : name.substr(dot);
}

Path Path::WithExtension(std::wstring_view extension) const {
    const std::wstring name = Name();
    return Beside(name.substr(0, name.size() - ExtensionOf(name).size()).append(extension));
}

std::string Path::LibraryName() const {
    const auto fits = [](const std::wstring& name) {
        return name.size() < FileSpec::keMaxPart &&
               std::all_of(name.begin(), name.end(), [](wchar_t c) { return c < 0x80; });
    };
    std::wstring name = mFull;
    if (name.starts_with(kLongPrefix))
        name.erase(0, kLongPrefix.size());
    if (!fits(name)) {
        wchar_t buffer[0x8000];
        name.assign(buffer, GetShortPathNameW(mFull.c_str(), buffer, 0x8000));
        if (name.starts_with(kLongPrefix))
            name.erase(0, kLongPrefix.size());
    }
    if (name.empty() || !fits(name))
        Fail("Cannot read {}: its name is too long, or has letters that the library does not take, "
             "and the system has no short name for it. Copy it to another folder.",
             Shown());
    return std::string(name.begin(), name.end());
}

std::wstring FoldCase(std::wstring name) {
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

// Whether the folder lists the name, though nothing can be opened by it.
static bool IsListed(const std::wstring& path) {
    WIN32_FIND_DATAW found;
    return static_cast<bool>(SearchHandle(FindFirstFileW(path.c_str(), &found)));
}

Path::Thing Path::What() const {
    if (IsDevice())
        return keDevice;
    if (mFull.find_first_of(L"*?", kLongPrefix.size()) != std::wstring::npos)
        return keMissing; // a search would find others
    DWORD attributes = GetFileAttributesW(mFull.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        if (!IsListed(mFull))
            return keMissing;
        // Or it has come meanwhile.
        attributes = GetFileAttributesW(mFull.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return keSpecial;
    }
    if (IsLink(mFull.c_str()))
        return keLink;
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? keFolder : keFile;
}

bool Path::IsSameFile(const Path& other) const {
    FileIdentity mine;
    FileIdentity its;
    return GetFileIdentity(mFull.c_str(), mine) && GetFileIdentity(other.mFull.c_str(), its) &&
           mine == its;
}
