#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mime {

// The character sets that texts without one of their own may be in.
enum class Charset { Windows1252, Macintosh, Utf8 };

// The name by which the Content-Type field calls it (RFC 2046, 4.1.2).
const char* NameOf(Charset charset);
std::optional<Charset> CharsetNamed(std::string_view name);

// The system's number of a character set that mail names in whatever way (IANA's names, and common
// ones that are none), in any case of its letters; none of sets that it does not know.
std::optional<unsigned int> CodePageNamed(std::string_view name);
// The text in UTF-16, as the system decodes it.
std::wstring DecodedFrom(unsigned int codePage, std::string_view text);

// The text in UTF-16. What has no meaning in the character set becomes U+FFFD, and is counted into
// `meaningless` where that is given.
std::wstring Decoded(std::string_view text, Charset charset, unsigned long* meaningless = nullptr);

// The text in UTF-8, and in windows-1252; the latter is none when a character is not in that set.
std::string Utf8(std::wstring_view text);
std::optional<std::string> Windows1252(std::wstring_view text);

// The size of a UTF-8 text without the character that its end cuts.
std::size_t WholeCharacters(std::string_view utf8);

// Counts bytes that have no meaning in a character set, over a text that comes in pieces.
class MeaninglessBytes {
public:
    explicit MeaninglessBytes(Charset charset) : mCharset(charset) {}

    void Add(std::string_view piece);
    // Those up to here, with a sequence that the text's end cuts.
    unsigned long Count() const { return mCount + mPending; }
    // Of such a sequence.
    unsigned int Cut() const { return mPending; }

private:
    void AddUtf8(unsigned char byte);

    Charset mCharset;
    unsigned long mCount = 0;
    // Of the sequence that is begun: its bytes so far, those to come, and the next one's range.
    unsigned int mPending = 0;
    unsigned int mToCome = 0;
    unsigned char mLeast = 0x80;
    unsigned char mMost = 0xBF;
};

} // namespace mime
