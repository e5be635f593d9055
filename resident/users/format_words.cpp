#include "resident/users/format_words.h"

#include "resources/jxsysres.h"

static constexpr FormatWord kMessageFormats[] = {{713, 1}, {715, 2}, {716, 3}, {714, 4}};
static constexpr FormatWord kEnclosureEncodes[] = {{718, 1}, {719, 2}, {725, 7}};
static constexpr FormatWord kPlatforms[] = {{726, 6}, {720, 1}, {721, 2},
                                            {722, 3}, {723, 4}, {724, 5}};

const FormatWords kMessageFormatWords = {kMessageFormats, 4};
const FormatWords kEnclosureEncodeWords = {kEnclosureEncodes, 3};
const FormatWords kPlatformWords = {kPlatforms, 6};

int FormatWords::ValueOf(const RBString& text, int fallback) const {
    for (unsigned int i = 0; i < count; ++i)
        if (text == RBString(static_cast<unsigned int>(words[i].resource), GetJxSystemResHandle()))
            return words[i].value;
    return fallback;
}

bool FormatWords::WordOf(int value, RBString& word) const {
    for (unsigned int i = 0; i < count; ++i) {
        if (words[i].value == value) {
            word.getResource(words[i].resource, GetJxSystemResHandle());
            return true;
        }
    }
    word.reset();
    return false;
}
