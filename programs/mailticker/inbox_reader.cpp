#include "programs/mailticker/inbox_reader.h"

#include <algorithm>

#include "postrider_ticker.h"
#include "programs/mailticker/owners.h"
#include "programs/mailticker/text.h"

// A record of the D file.
static constexpr unsigned int kRecordSize = 316;

// What room is made for, whatever a file's size says.
static constexpr std::size_t kMostExpected = 1000000;

// What the library takes of a path, with room to spare.
static constexpr std::size_t kLongestPath = 240;

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

static std::wstring FullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

static bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

static std::wstring CurrentUsersInbox() {
    char* inbox;
    char* userData;
    const std::wstring path = GetCurUserPath(&inbox, &userData) ? FromAnsi(inbox) : std::wstring();
    Done();
    return path;
}

// A path as the library can open it: names outside ASCII change on their way through it, and so
// their short form takes their place. Empty where there is none.
static std::string PassablePath(const std::wstring& path) {
    const auto passable = [](const std::wstring& name) {
        return name.size() <= kLongestPath &&
               std::all_of(name.begin(), name.end(), [](wchar_t c) { return c < 0x80; });
    };
    std::wstring name = path;
    if (!passable(name)) {
        name.resize(GetShortPathNameW(path.c_str(), nullptr, 0));
        name.resize(GetShortPathNameW(path.c_str(), name.data(), static_cast<DWORD>(name.size())));
    }
    return passable(name) ? std::string(name.begin(), name.end()) : std::string();
}

static InboxState StateOf(unsigned long error, const std::wstring& path) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return IsFolder(FolderOf(path)) ? InboxState::NoFile : InboxState::NoFolder;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return InboxState::Held;
    default:
        return InboxState::Denied;
    }
}

// Walks through the D file. Returns the error that kept it from being opened or ended the walk.
static unsigned long Walk(const std::string& path, Messages& messages) {
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    int more = GetFirstRecord(path.c_str(), &topic, &fileName, &sender, &kind, &flag);
    for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
        messages.Add(sender, topic, fileName, kind, flag != 0);
    // A walk's end is told like a failure.
    const unsigned long error = GetLastError();
    Done();
    return error == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : error;
}

// What a notifier can see of damage, as a sentence.
static std::wstring DamageOf(const Reading& reading) {
    const Messages& messages = reading.messages;
    if (reading.error)
        return L"Reading it broke off in the middle.";
    WIN32_FILE_ATTRIBUTE_DATA file;
    if (GetFileAttributesExW(reading.path.c_str(), GetFileExInfoStandard, &file) &&
        file.nFileSizeLow % kRecordSize)
        return L"It ends in the middle of a record.";
    std::size_t damaged = 0;
    for (std::size_t i = 0; i < messages.Count(); ++i)
        damaged += messages.Kind(i) == kDamagedKind || !messages.HasFile(i);
    if (damaged == 0)
        return {};
    return damaged == 1 ? L"One of its records is damaged."
                        : std::to_wstring(damaged) + L" of its records are damaged.";
}

InboxReader::InboxReader(const std::wstring& path) {
    if (path.empty())
        return;
    mPath = FullPath(path);
    if (IsFolder(mPath))
        mPath += mPath.back() == L'\\' ? L"DFile" : L"\\DFile";
}

// Walks through a reading's D file.
static InboxState Walked(Reading& reading) {
    if (reading.path.empty())
        return InboxState::NoUser;
    WIN32_FILE_ATTRIBUTE_DATA file;
    if (!GetFileAttributesExW(reading.path.c_str(), GetFileExInfoStandard, &file))
        return StateOf(reading.error = GetLastError(), reading.path);
    const std::string name = PassablePath(reading.path);
    if (name.empty())
        return InboxState::Unspeakable;
    reading.messages.Expect(std::min<std::size_t>(file.nFileSizeLow / kRecordSize, kMostExpected));
    reading.error = Walk(name, reading.messages);
    if (reading.error == ERROR_SHARING_VIOLATION || reading.error == ERROR_LOCK_VIOLATION)
        return InboxState::Held;
    if (reading.error && reading.messages.Count() == 0)
        return StateOf(reading.error, reading.path);
    reading.damage = DamageOf(reading);
    if (!reading.damage.empty())
        return InboxState::Damaged;
    return reading.messages.Count() ? InboxState::Readable : InboxState::Empty;
}

std::wstring InboxReader::Path() const { return mPath.empty() ? CurrentUsersInbox() : mPath; }

Reading InboxReader::Read(const std::wstring& path) {
    Reading reading;
    reading.path = path;
    reading.state = Walked(reading);
    return reading;
}
