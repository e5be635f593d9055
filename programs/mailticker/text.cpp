#include "programs/mailticker/text.h"

#include <algorithm>
#include <array>

#include "programs/mailticker/windows_api.h"

static constexpr UINT kCodePage = 1252;

namespace {

struct Table {
    Table() {
        char bytes[256];
        for (int c = 0; c < 256; ++c)
            bytes[c] = static_cast<char>(c);
        MultiByteToWideChar(kCodePage, 0, bytes, 256, plain.data(), 256);
        shown = plain;
        for (wchar_t& c : shown)
            if (c < 0x20 || (c >= 0x7F && c < 0xA0))
                c = L'\u00B7';
        for (int c = 0; c < 256; ++c)
            folded[c] = c < 0x20 ? static_cast<unsigned char>(c) : Fold(plain[c], c);
    }

    // The letter under the accents, in lower case; `otherwise` where that is none of the code page.
    static unsigned char Fold(wchar_t c, int otherwise) {
        wchar_t parts[8] = {};
        const int count = FoldStringW(MAP_COMPOSITE, &c, 1, parts, 8);
        wchar_t letter = count > 1 ? parts[0] : c;
        CharLowerBuffW(&letter, 1);
        char byte;
        BOOL lost = FALSE;
        const int size = WideCharToMultiByte(kCodePage, WC_NO_BEST_FIT_CHARS, &letter, 1, &byte, 1,
                                             nullptr, &lost);
        return static_cast<unsigned char>(size == 1 && !lost ? byte : otherwise);
    }

    std::array<wchar_t, 256> plain;
    std::array<wchar_t, 256> shown;
    std::array<unsigned char, 256> folded;
};

} // namespace

static const Table table;

wchar_t Shown(unsigned char c) { return table.shown[c]; }

std::wstring Shown(std::string_view text) {
    std::wstring shown(text.size(), L'\0');
    std::transform(text.begin(), text.end(), shown.begin(),
                   [](char c) { return Shown(static_cast<unsigned char>(c)); });
    return shown;
}

unsigned char Folded(unsigned char c) { return table.folded[c]; }

std::optional<std::string> Folded(std::wstring_view typed) {
    std::string bytes(2 * typed.size(), '\0');
    BOOL lost = FALSE;
    const int size = typed.empty()
                         ? 0
                         : WideCharToMultiByte(kCodePage, WC_NO_BEST_FIT_CHARS, typed.data(),
                                               static_cast<int>(typed.size()), bytes.data(),
                                               static_cast<int>(bytes.size()), nullptr, &lost);
    if (lost)
        return {};
    bytes.resize(size);
    for (char& c : bytes)
        c = static_cast<char>(Folded(static_cast<unsigned char>(c)));
    return bytes;
}

std::wstring ShownLines(std::string_view text) {
    std::wstring lines;
    lines.reserve(text.size() + text.size() / 32);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n' && i > 0 && text[i - 1] == '\r')
            continue;
        if (c == '\r' || c == '\n')
            lines += L"\r\n";
        else
            lines += c == '\t' ? L'\t' : Shown(static_cast<unsigned char>(c));
    }
    return lines;
}

std::wstring FromAnsi(const char* name) {
    std::wstring wide(MultiByteToWideChar(CP_ACP, 0, name, -1, nullptr, 0), L'\0');
    MultiByteToWideChar(CP_ACP, 0, name, -1, wide.data(), static_cast<int>(wide.size()));
    if (!wide.empty())
        wide.pop_back();
    return wide;
}
