#include "programs/mailticker/message_file.h"

#include <string_view>

#include "programs/mailticker/owners.h"
#include "programs/mailticker/text.h"
#include "programs/mime/encoded_words.h"
#include "programs/mime/header.h"
#include "resident/files/file_handle.h"

static constexpr DWORD kRecordSize = 316;
static constexpr DWORD kMostShown = 0x100000;

// Whether a record's file name is a name in the folder and nothing else: neither a path nor a
// stream, and no device.
static bool IsPlainName(const std::wstring& folder, const std::wstring& name) {
    if (name.empty() || name == L"." || name == L".." ||
        name.find_first_of(L"\\/:*?\"<>|") != std::wstring::npos)
        return false;
    const DWORD attributes = GetFileAttributesW((folder + name).c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ||
           !(attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE));
}

// The message's file behind its record; null with a sentence in `why`.
static Owned<HANDLE> OpenBehindRecord(const std::wstring& folder, const std::wstring& name,
                                      std::wstring& why) {
    if (!IsPlainName(folder, name)) {
        why = L"The message\u2019s record names no file of this folder.";
        return nullptr;
    }
    auto file = OwnedFile(CreateFileW((folder + name).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) {
        const DWORD error = GetLastError();
        why = error == ERROR_SHARING_VIOLATION
                  ? L"Another program is holding the message\u2019s file."
              : error == ERROR_FILE_NOT_FOUND ? L"The message\u2019s file is not in the folder."
                                              : L"The message\u2019s file cannot be read.";
        return nullptr;
    }
    if (GetFileType(file.get()) != FILE_TYPE_DISK ||
        GetFileSize(file.get(), nullptr) < kRecordSize) {
        why = L"The message\u2019s file is too short to be one.";
        return nullptr;
    }
    SetFilePointer(file.get(), kRecordSize, nullptr, FILE_BEGIN);
    return file;
}

static std::string ReadUpTo(HANDLE file, DWORD size) {
    std::string bytes(size, '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), size, &read, nullptr);
    bytes.resize(read);
    return bytes;
}

// A header's fields, a line each, as they are meant.
static std::wstring FieldLines(const mime::Header& header) {
    std::wstring lines;
    for (const mime::Field& field : header.fields) {
        lines += lines.empty() ? L"" : L"\r\n";
        lines += std::wstring(field.name.begin(), field.name.end()) + L": ";
        lines += mime::FieldText(field.body);
    }
    return lines;
}

std::optional<MessageText> ReadMessageText(const std::wstring& folder, const std::wstring& name,
                                           std::wstring& why) {
    const auto file = OpenBehindRecord(folder, name, why);
    if (!file)
        return {};
    const std::string bytes = ReadUpTo(file.get(), kMostShown + 1);
    const std::string_view shown = std::string_view(bytes).substr(0, kMostShown);
    const auto header = mime::HeaderOf(shown);
    return MessageText{header ? FieldLines(*header) : L"",
                       ShownLines(shown.substr(header ? header->size : 0)),
                       bytes.size() > kMostShown};
}

MessageCopies::MessageCopies() {
    wchar_t temporary[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, temporary);
    mFolder = std::wstring(temporary, length) + L"Postrider Ticker\\";
    // An earlier ticker may have been ended before it could.
    Remove();
}

MessageCopies::~MessageCopies() { Remove(); }

void MessageCopies::Remove() {
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileW((mFolder + L"*").c_str(), &found));
    if (search) {
        do
            DeleteFileW((mFolder + found.cFileName).c_str());
        while (FindNextFileW(search.Get(), &found));
    }
    RemoveDirectoryW(mFolder.c_str());
}

std::wstring MessageCopies::Make(const std::wstring& folder, const std::wstring& name,
                                 std::wstring& why) {
    const auto file = OpenBehindRecord(folder, name, why);
    if (!file)
        return {};
    std::string bytes = ReadUpTo(file.get(), kMostShown);
    const std::wstring path = mFolder + name.substr(0, name.find_last_of(L'.')) +
                              (mime::HeaderOf(bytes) ? L".eml" : L".txt");
    CreateDirectoryW(mFolder.c_str(), nullptr);
    const auto copy = OwnedFile(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                            CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr));
    DWORD written = 0;
    bool whole = copy != nullptr;
    for (; whole && !bytes.empty(); bytes = ReadUpTo(file.get(), kMostShown))
        whole = WriteFile(copy.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                          nullptr) &&
                written == bytes.size();
    if (!whole)
        why = L"The copy for the other program could not be written.";
    return whole ? path : std::wstring();
}
