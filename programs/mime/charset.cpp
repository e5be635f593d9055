#include "programs/mime/charset.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "resident/core/windows_api.h"

namespace mime {

namespace {

struct Known {
    Charset charset;
    const char* name;
    unsigned int codePage;
};
constexpr Known kKnown[] = {{Charset::Windows1252, "windows-1252", 1252},
                            {Charset::Macintosh, "macintosh", 10000},
                            {Charset::Utf8, "utf-8", CP_UTF8}};
constexpr wchar_t kReplacement = 0xFFFD;

// The five bytes that windows-1252 leaves undefined. The system takes them for C1 controls.
bool IsUndefined1252(unsigned char byte) {
    return byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
}

} // namespace

const char* NameOf(Charset charset) { return kKnown[static_cast<int>(charset)].name; }

std::optional<Charset> CharsetNamed(std::string_view name) {
    for (const Known& known : kKnown)
        if (name == known.name)
            return known.charset;
    return {};
}

// Sets whose names end in the number that tells their code page.
struct Family {
    const char* prefix;
    unsigned int base;
};
constexpr Family kFamilies[] = {{"windows-", 0}, {"cp", 0}, {"ibm", 0}, {"iso-8859-", 28590}};
// Who says ISO 8859-1 or ASCII often means windows-1252, which has the same characters and more.
constexpr struct {
    const char* name;
    unsigned int codePage;
} kOthers[] = {{"utf-8", CP_UTF8},   {"us-ascii", 1252},     {"iso-8859-1", 1252},
               {"macintosh", 10000}, {"koi8-r", 20866},      {"koi8-u", 21866},
               {"shift_jis", 932},   {"iso-2022-jp", 50220}, {"euc-jp", 51932},
               {"gb2312", 936},      {"gbk", 936},           {"gb18030", 54936},
               {"big5", 950},        {"euc-kr", 51949},      {"ks_c_5601-1987", 949},
               {"tis-620", 874}};

static unsigned int CodePageOf(const std::string& name) {
    for (const auto& other : kOthers)
        if (name == other.name)
            return other.codePage;
    for (const Family& family : kFamilies) {
        const std::size_t size = std::strlen(family.prefix);
        const std::string number = name.substr(std::min(size, name.size()));
        if (name.starts_with(family.prefix) && !number.empty() && number.size() < 6 &&
            number.find_first_not_of("0123456789") == number.npos)
            return family.base + std::stoul(number);
    }
    return 0;
}

std::optional<unsigned int> CodePageNamed(std::string_view name) {
    std::string lower(name);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
    // 0 would be the system's own.
    const unsigned int codePage = CodePageOf(lower);
    if (codePage == 0 || !IsValidCodePage(codePage))
        return {};
    return codePage;
}

std::wstring DecodedFrom(unsigned int codePage, std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0), L'\0');
    wide.resize(MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(),
                                    static_cast<int>(wide.size())));
    return wide;
}

std::wstring Decoded(std::string_view text, Charset charset, unsigned long* meaningless) {
    const Known& known = kKnown[static_cast<int>(charset)];
    const int size = static_cast<int>(text.size());
    // No character of these sets is shorter in bytes than in UTF-16 units.
    std::wstring wide(text.size(), L'\0');
    wide.resize(MultiByteToWideChar(known.codePage, 0, text.data(), size, wide.data(), size));
    if (charset == Charset::Windows1252)
        for (std::size_t i = 0; i < wide.size(); ++i)
            if (IsUndefined1252(static_cast<unsigned char>(text[i])))
                wide[i] = kReplacement;
    if (meaningless) {
        MeaninglessBytes bytes(charset);
        bytes.Add(text);
        *meaningless += bytes.Count();
    }
    return wide;
}

std::string Utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    // A UTF-16 unit takes three bytes at most.
    std::string utf8(3 * text.size(), '\0');
    utf8.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(),
                                    static_cast<int>(utf8.size()), nullptr, nullptr));
    return utf8;
}

std::optional<std::string> Windows1252(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size(), '\0');
    BOOL lost = FALSE;
    bytes.resize(WideCharToMultiByte(1252, WC_NO_BEST_FIT_CHARS, text.data(), length, bytes.data(),
                                     length, nullptr, &lost));
    for (const char byte : bytes)
        lost |= IsUndefined1252(static_cast<unsigned char>(byte));
    if (lost)
        return {};
    return bytes;
}

std::size_t WholeCharacters(std::string_view utf8) {
    MeaninglessBytes bytes(Charset::Utf8);
    bytes.Add(utf8);
    return utf8.size() - bytes.Cut();
}

void MeaninglessBytes::Add(std::string_view piece) {
    if (mCharset == Charset::Windows1252) {
        for (const char c : piece)
            mCount += IsUndefined1252(static_cast<unsigned char>(c));
    } else if (mCharset == Charset::Utf8) {
        for (const char c : piece)
            AddUtf8(static_cast<unsigned char>(c));
    }
}

// The well-formed sequences of RFC 3629, 4: only the second byte's range depends on the first.
void MeaninglessBytes::AddUtf8(unsigned char byte) {
    if (mToCome) {
        if (byte >= mLeast && byte <= mMost) {
            mLeast = 0x80, mMost = 0xBF;
            mPending = --mToCome ? mPending + 1 : 0;
            return;
        }
        mCount += mPending;
        mPending = mToCome = 0;
    }
    mLeast = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
    mMost = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
    mToCome = byte >= 0xC2 && byte <= 0xDF   ? 1
              : byte >= 0xE0 && byte <= 0xEF ? 2
              : byte >= 0xF0 && byte <= 0xF4 ? 3
                                             : 0;
    if (mToCome)
        mPending = 1;
    else
        mCount += byte >= 0x80;
}

} // namespace mime
