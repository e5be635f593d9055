#include "resident/users/format_words.h"

#include <map>

#include "resources/jxsysres.h"

static constexpr FormatWord kMessageFormats[] = {{713, 1}, {715, 2}, {716, 3}, {714, 4}};
static constexpr FormatWord kImportFormats[] = {{713, 1}, {714, 4}, {715, 2}, {712, 2}, {716, 3}};
static constexpr FormatWord kEnclosureEncodes[] = {{718, 1}, {719, 2}, {725, 7}};
static constexpr FormatWord kPlatforms[] = {{726, 6}, {720, 1}, {721, 2},
                                            {722, 3}, {723, 4}, {724, 5}};

const FormatWords kMessageFormatWords = {kMessageFormats};
const FormatWords kImportFormatWords = {kImportFormats};
const FormatWords kEnclosureEncodeWords = {kEnclosureEncodes};
const FormatWords kPlatformWords = {kPlatforms};

// The resource's text, loaded once: a user list asks for each of them on every line.
static const RBString& TextOf(const FormatWord& word) {
    static std::map<unsigned short, RBString>& texts = *new std::map<unsigned short, RBString>;
    const auto known = texts.find(word.resource);
    if (known != texts.end())
        return known->second;
    return texts[word.resource] =
               RBString(static_cast<unsigned int>(word.resource), GetJxSystemResHandle());
}

// The word with the same bytes, or null.
static const FormatWord* FindExactly(std::span<const FormatWord> words, std::string_view text) {
    for (const FormatWord& each : words)
        if (text == TextOf(each).Text())
            return &each;
    return nullptr;
}

int FormatWords::ValueOfExactly(std::string_view text, int fallback) const {
    const FormatWord* const exact = FindExactly(words, text);
    return exact ? exact->value : fallback;
}

int FormatWords::ValueOf(std::string_view text, int fallback) const {
    // Equal bytes are equal texts, and told much sooner than by the collation.
    if (const FormatWord* const exact = FindExactly(words, text))
        return exact->value;
    RBString string;
    string.puts(text);
    for (const FormatWord& each : words)
        if (string == TextOf(each))
            return each.value;
    return fallback;
}

bool FormatWords::WordOf(int value, RBString& word) const {
    for (const FormatWord& each : words) {
        if (each.value == value) {
            word = TextOf(each);
            return true;
        }
    }
    word.reset();
    return false;
}
