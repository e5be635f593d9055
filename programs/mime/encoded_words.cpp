#include "programs/mime/encoded_words.h"

#include <algorithm>
#include <optional>

#include "programs/mime/charset.h"
#include "programs/mime/decodings.h"
#include "programs/mime/encodings.h"
#include "programs/mime/header.h"

namespace mime {

namespace {

constexpr std::size_t kEncodedWord = 75; // RFC 2047, 2
// What is read for one: longer ones are about, but none goes over a line's end.
constexpr std::size_t kLongestRead = 998;

// RFC 2047, 4.2, with the characters that 5 (3) lets stand in a display name.
std::string QEncoded(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == ' ')
            text += '_';
        else if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                 c == '!' || c == '*' || c == '+' || c == '-' || c == '/')
            text += c;
        else
            text += HexEscape(static_cast<unsigned char>(c));
    }
    return text;
}

// The shorter of both encodings.
std::string EncodedWord(const char* charset, std::string_view bytes) {
    const std::string q = QEncoded(bytes);
    const std::string b = Base64Of(bytes);
    return std::string("=?") + charset + (b.size() < q.size() ? "?B?" + b : "?Q?" + q) + "?=";
}

std::string FromQ(std::string_view text) {
    std::string blanks(text);
    std::replace(blanks.begin(), blanks.end(), '_', ' ');
    return DecodedHex(blanks);
}

struct EncodedText {
    unsigned int codePage;
    std::string bytes;
    std::size_t size; // as it stands
};

// The encoded word that a text begins with (RFC 2047, 2; the language of RFC 2231, 5, says nothing
// here).
std::optional<EncodedText> WordAt(std::string_view text) {
    text = text.substr(0, kLongestRead);
    if (!text.starts_with("=?"))
        return {};
    const std::size_t charset = std::min(text.find('?', 2), text.size());
    const std::size_t end = text.find("?=", std::min(charset + 3, text.size()));
    if (end == text.npos || text[charset + 2] != '?')
        return {};
    const std::string_view name = text.substr(2, charset - 2);
    const std::string_view encoded = text.substr(charset + 3, end - charset - 3);
    const auto codePage = CodePageNamed(name.substr(0, name.find('*')));
    if (!codePage || encoded.find_first_of(" \t?") != encoded.npos)
        return {};
    switch (text[charset + 1]) {
    case 'q':
    case 'Q':
        return EncodedText{*codePage, FromQ(encoded), end + 2};
    case 'b':
    case 'B':
        if (auto bytes = FromBase64(encoded))
            return EncodedText{*codePage, *std::move(bytes), end + 2};
    }
    return {};
}

} // namespace

std::string EncodedWords(std::wstring_view text) {
    const bool narrow = Windows1252(text).has_value();
    const auto encoded = [&](std::wstring_view part) {
        return narrow ? EncodedWord("windows-1252", *Windows1252(part))
                      : EncodedWord("utf-8", Utf8(part));
    };
    std::string words;
    while (!text.empty()) {
        std::size_t length = std::min<std::size_t>(text.size(), kEncodedWord);
        while (length > 1 && encoded(text.substr(0, length)).size() > kEncodedWord)
            --length;
        if (length < text.size() && length > 1 && (text[length] & 0xFC00) == 0xDC00)
            --length;
        words += (words.empty() ? "" : " ") + encoded(text.substr(0, length));
        text.remove_prefix(length);
    }
    return words;
}

std::wstring FieldText(std::string_view body) {
    const std::string line = Unfolded(body);
    std::wstring text;
    // Some writers part a character: words of one set that stand together are one text.
    EncodedText run = {};
    const auto endRun = [&] {
        text += DecodedFrom(run.codePage, run.bytes);
        run.bytes.clear();
    };
    for (std::string_view rest = line; !rest.empty();) {
        if (const auto word = WordAt(rest)) {
            if (word->codePage != run.codePage)
                endRun();
            run.codePage = word->codePage;
            run.bytes += word->bytes;
            rest.remove_prefix(word->size);
            // Blanks between two of them only part them (6.2).
            const std::size_t blanks = std::min(rest.find_first_not_of(" \t"), rest.size());
            if (WordAt(rest.substr(blanks)))
                rest.remove_prefix(blanks);
        } else {
            endRun();
            const std::size_t size = std::min(rest.find("=?", 1), rest.size());
            text += Decoded(rest.substr(0, size), Charset::Windows1252);
            rest.remove_prefix(size);
        }
    }
    endRun();
    return OneLine(text);
}

std::wstring OneLine(std::wstring_view text) {
    std::wstring line(text);
    for (wchar_t& c : line)
        if (c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029)
            c = ' ';
    return line;
}

} // namespace mime
