#include "programs/console/output.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "resident/core/windows_api.h"

namespace {

// What a standard stream gets, in blocks that go to the system as they are: the run-time's streams
// cut them small, and terminals take their time for each piece.
class Buffer {
public:
    explicit Buffer(DWORD stream) : mHandle(GetStdHandle(stream)) {
        DWORD mode;
        mIsConsole = GetConsoleMode(mHandle, &mode);
        mText.reserve(2 * kSize);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    // Nobody is left to be told of a failure.
    ~Buffer() { HandOver(); }

    bool Add(std::string_view text) {
        for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
            mText += text.substr(0, end);
            if (end == 0 || text[end - 1] != '\r')
                mText += '\r';
            mText += '\n';
        }
        return AddBytes(text);
    }
    bool AddBytes(std::string_view bytes) {
        mText += bytes;
        return mText.size() < kSize || HandOver();
    }
    // Needs no memory: it is how the want of it is told.
    bool HandOver() {
        const bool written = mIsConsole ? WriteToConsole() : WriteToFile();
        mText.clear();
        return written;
    }

private:
    static constexpr std::size_t kSize = 0x10000;

    bool WriteToFile() const {
        DWORD done = 0;
        for (std::size_t at = 0; at < mText.size(); at += done)
            if (!WriteFile(mHandle, mText.data() + at, mText.size() - at, &done, nullptr) || !done)
                return false;
        return true;
    }
    bool WriteToConsole() const {
        static wchar_t wide[kSize];
        for (std::size_t at = 0; at < mText.size();) {
            std::size_t size = std::min(mText.size() - at, kSize);
            // Not in the middle of a character.
            while (at + size < mText.size() && size > 1 && (mText[at + size] & 0xC0) == 0x80)
                --size;
            const int length = MultiByteToWideChar(CP_UTF8, 0, mText.data() + at,
                                                   static_cast<int>(size), wide, kSize);
            DWORD done = 0;
            if (!WriteConsoleW(mHandle, wide, length, &done, nullptr))
                return false;
            at += size;
        }
        return true;
    }

    HANDLE mHandle;
    bool mIsConsole;
    std::string mText;
};

Buffer& Out() {
    static Buffer out(STD_OUTPUT_HANDLE);
    return out;
}

Buffer& Err() {
    static Buffer err(STD_ERROR_HANDLE);
    return err;
}

int ErrorNumber(DWORD error) {
    switch (error) {
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
    case ERROR_PIPE_NOT_CONNECTED:
        return EPIPE;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    default:
        return EIO;
    }
}

void Check(bool written) {
    if (!written)
        throw std::system_error(ErrorNumber(GetLastError()), std::generic_category());
}

} // namespace

void Write(std::string_view text) { Check(Out().Add(text)); }

void WriteBytes(std::string_view bytes) { Check(Out().AddBytes(bytes)); }

void WriteError(std::string_view text) { Check(Err().Add(text)); }

void FlushOutput() {
    const bool out = Out().HandOver();
    const DWORD error = GetLastError();
    Err().HandOver();
    SetLastError(error);
    Check(out);
}
