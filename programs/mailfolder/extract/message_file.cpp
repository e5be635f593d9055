#include "programs/mailfolder/extract/message_file.h"

#include <algorithm>
#include <cstring>

#include "resident/core/windows_api.h"

namespace extract {

static constexpr std::size_t kPiece = 0x40000;
// Most messages are no longer, and the system looks through all of a buffer that it gets.
static constexpr std::size_t kFirstPiece = 0x4000;

MessageFile::MessageFile(const Path& folder, const std::wstring& finalPath)
    : mFolder(folder), mFinal(finalPath), mBuffer(kFirstPiece, '\0') {}

void MessageFile::Open(const std::wstring& name) {
    mBuffered = 0;
    if (!IsPlainName(name))
        throw Unreadable{"no file of the folder can have that name"};
    const std::wstring path = mFolder.Child(name).Full();
    mFile = OpenShared(path);
    // A lone dot at the end is no part of a name on the disk.
    if (!mFile && name.size() > 1 && name.back() == L'.')
        mFile = OpenShared(path.substr(0, path.size() - 1));
    if (!mFile)
        throw Unreadable{LastErrorText(), GetLastError() == ERROR_FILE_NOT_FOUND};
    if (!SameName(ParentOf(FinalPath(mFile)), mFinal))
        throw Unreadable{"it is a link out of the folder"};
    mBuffered = ReadOn(mFile, mBuffer.data(), kFirstPiece);
    if (mBuffered == kFirstPiece) {
        mBuffer.resize(kPiece);
        mBuffered += ReadOn(mFile, &mBuffer[mBuffered], kPiece - mBuffered);
    }
    ReadRecord();
}

// What another program put into the folder. A record has zeros and other controls.
static bool IsText(std::string_view bytes) {
    return !bytes.empty() && std::all_of(bytes.begin(), bytes.end(), [](unsigned char c) {
        return c >= 0x20 || (c >= '\t' && c <= '\r');
    });
}

void MessageFile::ReadRecord() {
    const auto beginning = std::string_view(mBuffer).substr(0, std::min(mBuffered, sizeof mRecord));
    mTextStart = IsText(beginning) ? 0 : sizeof mRecord;
    mRecord = {};
    if (!HasRecord())
        return;
    if (mBuffered < sizeof mRecord)
        throw Unreadable{"it is shorter than a record"};
    std::memcpy(&mRecord, mBuffer.data(), sizeof mRecord);
}

std::string_view MessageFile::Beginning() const {
    return std::string_view(mBuffer).substr(mTextStart, mBuffered - mTextStart);
}

void MessageFile::ForEachPiece(const std::function<void(std::string_view)>& take) const {
    take(Beginning());
    if (mBuffered < mBuffer.size())
        return;
    std::string piece(kPiece, '\0');
    for (unsigned long long position = mBuffered;;) {
        const std::size_t size = ReadAt(mFile, position, piece.data(), piece.size());
        if (size == 0)
            return;
        take(std::string_view(piece).substr(0, size));
        position += size;
    }
}

unsigned long MessageFile::Written() const {
    FILETIME written = {};
    SYSTEMTIME universal = {};
    SYSTEMTIME local = {};
    if (!GetFileTime(mFile.Get(), nullptr, nullptr, &written) ||
        !FileTimeToSystemTime(&written, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) ||
        !SystemTimeToFileTime(&local, &written))
        return 0;
    const unsigned long long ticks =
        static_cast<unsigned long long>(written.dwHighDateTime) << 32 | written.dwLowDateTime;
    // Between 1601-01-01 and 1904-01-01.
    constexpr unsigned long long kSeconds = 9561628800ull;
    const unsigned long long seconds = ticks / 10000000;
    return static_cast<unsigned long>(seconds > kSeconds ? seconds - kSeconds : 0);
}

bool IsPlainName(std::wstring_view name) {
    return !name.empty() && name != L"." && name != L".." &&
           std::none_of(name.begin(), name.end(), [](wchar_t c) {
               return c < 0x20 || std::wstring_view(L"\\/:*?\"<>|").find(c) != std::wstring::npos;
           });
}

} // namespace extract
