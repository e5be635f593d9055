#pragma once

#include <span>
#include <string_view>

#include "resident/core/rb_string.h"

// The words for message formats, enclosure encodings and platforms: strings of the product's
// resource library, by which "defaults.ini" and user lists name the settings.

// A string resource and the value that it stands for.
struct FormatWord {
    unsigned short resource;
    unsigned char value;
};

// The words of one setting, in the order in which texts are compared with them.
struct FormatWords {
    std::span<const FormatWord> words;

    // The value whose word equals `text` as strings compare, by the locale's collation, or
    // `fallback`.
    int ValueOf(std::string_view text, int fallback) const;
    // The value whose word has the same bytes, or `fallback`.
    int ValueOfExactly(std::string_view text, int fallback) const;
    // Puts the word of `value` into `word`; returns false, with an empty word, when it has none.
    bool WordOf(int value, RBString& word) const;
};

extern const FormatWords kMessageFormatWords;
extern const FormatWords kEnclosureEncodeWords;
extern const FormatWords kPlatformWords;
// User lists have a second word for message format 2.
extern const FormatWords kImportFormatWords;
