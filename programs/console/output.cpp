#include "programs/console/output.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

class Buffer {
public:
    explicit Buffer(std::FILE* file) : mFile(file) {
        std::setvbuf(file, nullptr, _IOFBF, kSize);
        mText.reserve(kSize);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    // Nobody is left to be told of a failure.
    ~Buffer() { HandOver(); }

    bool Add(std::string_view text) {
        mText += text;
        return mText.size() < kSize || HandOver();
    }
    bool HandOver() {
        const std::string text = std::move(mText);
        mText.clear();
        return std::fwrite(text.data(), 1, text.size(), mFile) == text.size() &&
               std::fflush(mFile) == 0;
    }

private:
    static constexpr std::size_t kSize = 0x10000;

    std::FILE* mFile;
    std::string mText;
};

Buffer& Out() {
    static Buffer out(stdout);
    return out;
}

Buffer& Err() {
    static Buffer err(stderr);
    return err;
}

void Check(bool written) {
    if (!written)
        throw std::system_error(errno, std::generic_category());
}

} // namespace

void Write(std::string_view text) { Check(Out().Add(text)); }

void WriteError(std::string_view text) { Check(Err().Add(text)); }

void FlushOutput() {
    const bool out = Out().HandOver();
    Err().HandOver();
    Check(out);
}
