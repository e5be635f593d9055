#include "programs/mime/encodings.h"

namespace mime {

static constexpr std::size_t kLine = 76;                 // RFC 2045, 6.7 (5) and 6.8
static constexpr std::size_t kLineBytes = kLine / 4 * 3; // what a base64 line holds

std::string HexEscape(unsigned char byte) {
    static const char kDigits[] = "0123456789ABCDEF";
    return {'=', kDigits[byte >> 4], kDigits[byte & 15]};
}

// Characters stay on a line as long as the "=" of a soft line break fits behind them.
void QuotedPrintable::Put(std::string_view token) {
    if (mLine.size() + token.size() > kLine - 1) {
        mSink.Line(mLine + "=");
        mLine.clear();
    }
    mLine += token;
}

void QuotedPrintable::PutEncoded(unsigned char byte) { Put(HexEscape(byte)); }

void QuotedPrintable::PutBlank(bool lineEnds) {
    const char blank = mBlank;
    mBlank = 0;
    if (blank && lineEnds)
        PutEncoded(static_cast<unsigned char>(blank));
    else if (blank)
        Put({&blank, 1});
}

void QuotedPrintable::Text(std::string_view piece) {
    for (const char c : piece) {
        PutBlank(false);
        if (c == ' ' || c == '\t')
            mBlank = c;
        else if (c > 0x20 && c < 0x7F && c != '=')
            Put({&c, 1});
        else
            PutEncoded(static_cast<unsigned char>(c));
    }
}

void QuotedPrintable::EndLine() {
    PutBlank(true);
    mSink.Line(mLine);
    mLine.clear();
}

void QuotedPrintable::Finish() {
    PutBlank(true);
    if (!mLine.empty())
        mSink.Text(mLine);
    mLine.clear();
    mSink.Finish();
}

void Base64::Text(std::string_view piece) {
    while (!piece.empty()) {
        const std::size_t taken = std::min(piece.size(), kLineBytes - mBytes.size());
        mBytes += piece.substr(0, taken);
        piece.remove_prefix(taken);
        if (mBytes.size() == kLineBytes) {
            mSink.Line(Base64Of(mBytes));
            mBytes.clear();
        }
    }
}

void Base64::Finish() {
    if (!mBytes.empty())
        mSink.Line(Base64Of(mBytes));
    mBytes.clear();
    mSink.Finish();
}

std::string Base64Of(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(3, bytes.size()))) {
        unsigned long bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= bytes.size() ? kBase64Digits[bits >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    std::string bytes;
    unsigned long bits = 0;
    int count = 0;
    for (const char c : text.substr(0, text.find('='))) {
        const std::size_t digit = kBase64Digits.find(c);
        if (digit == kBase64Digits.npos)
            return {};
        bits = bits << 6 | digit;
        if ((count += 6) >= 8)
            bytes += static_cast<char>(bits >> (count -= 8));
    }
    return bytes;
}

} // namespace mime
