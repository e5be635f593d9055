#include "programs/mime/decodings.h"

#include <algorithm>

#include "programs/mime/encodings.h"

namespace mime {

namespace {

// Longer lines come in pieces.
constexpr std::size_t kLongest = 0x10000;

int HexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
}

} // namespace

std::string DecodedHex(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '=' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            bytes += static_cast<char>(high << 4 | low);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

namespace {

class PlainDecoder : public LineSink {
public:
    explicit PlainDecoder(ByteSink sink) : mSink(std::move(sink)) {}
    void Text(std::string_view piece) override { mSink(piece); }
    void EndLine() override { mSink("\n"); }

private:
    ByteSink mSink;
};

class QuotedPrintableDecoder : public LineSink {
public:
    explicit QuotedPrintableDecoder(ByteSink sink) : mSink(std::move(sink)) {}
    void Text(std::string_view piece) override {
        mLine += piece;
        if (mLine.size() < kLongest)
            return;
        // Not in the middle of a byte.
        const std::size_t end = mLine.size() - 2;
        const std::size_t equals = mLine.find('=', end - 2);
        const std::size_t size = std::min(equals, end);
        mSink(DecodedHex(std::string_view(mLine).substr(0, size)));
        mLine.erase(0, size);
    }
    void EndLine() override { Put("\n"); }
    void Finish() override { Put(""); }

private:
    // Blanks at a line's end came on the way (3); a "=" there means that the line goes on (5).
    void Put(std::string_view lineEnd) {
        mLine.erase(mLine.find_last_not_of(" \t") + 1);
        const bool goesOn = !mLine.empty() && mLine.back() == '=';
        if (goesOn)
            mLine.pop_back();
        mSink(DecodedHex(mLine));
        if (!goesOn)
            mSink(lineEnd);
        mLine.clear();
    }

    ByteSink mSink;
    std::string mLine;
};

// Characters of no meaning are passed over (6.8).
class Base64Decoder : public LineSink {
public:
    explicit Base64Decoder(ByteSink sink) : mSink(std::move(sink)) {}
    void Text(std::string_view piece) override {
        std::string bytes;
        for (const char c : piece) {
            const std::size_t value = kBase64Digits.find(c);
            if (value == kBase64Digits.npos)
                continue;
            mBits = mBits << 6 | static_cast<unsigned int>(value);
            mCount += 6;
            if (mCount >= 8) {
                mCount -= 8;
                bytes += static_cast<char>(mBits >> mCount);
            }
        }
        mSink(bytes);
    }
    void EndLine() override {}

private:
    ByteSink mSink;
    unsigned int mBits = 0;
    unsigned int mCount = 0; // of bits that make no byte yet
};

} // namespace

std::unique_ptr<LineSink> DecoderOf(std::string_view encoding, ByteSink sink) {
    if (encoding == "quoted-printable")
        return std::make_unique<QuotedPrintableDecoder>(std::move(sink));
    if (encoding == "base64")
        return std::make_unique<Base64Decoder>(std::move(sink));
    return std::make_unique<PlainDecoder>(std::move(sink));
}

} // namespace mime
