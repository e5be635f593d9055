// Searches, against a plain loop and against one another.

#include <array>
#include <cstring>
#include <memory>

#include "benchmarks/measure.h"
#include "postrider.h"

static constexpr unsigned int kTextLength = 2000;
static constexpr unsigned int kSearches = 1000;

// Words that begin as the pattern does, and the pattern at the end.
static RBString SearchedText(const char* pattern) {
    std::string text;
    while (text.size() < kTextLength - std::strlen(pattern))
        text += "the Postmaster past a post; ";
    text.resize(kTextLength - std::strlen(pattern));
    return RBString((text + pattern).c_str());
}

static std::uint64_t SearchByLibrary(const RBString& text, const char* pattern,
                                     enumStringSearch mode) {
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < kSearches; ++i) {
        unsigned int start = 0;
        text.FindTextA(pattern, &start, nullptr, 1 + i % 2, mode);
        sum += start;
    }
    return sum;
}

static std::uint64_t SearchByLoop(const RBString& text, const char* pattern) {
    const unsigned int length = std::strlen(pattern);
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < kSearches; ++i) {
        const char* const first = text.Text() + i % 2;
        const char* const last = text.Text() + text.Length() - length;
        for (const char* place = first; place <= last; ++place) {
            if (*place != *pattern || std::memcmp(place, pattern, length) != 0)
                continue;
            sum += place - first + 1;
            break;
        }
    }
    return sum;
}

std::vector<Contest> StringContests(const std::string&) {
    static const char kPattern[] = "Postrider";
    const auto text = std::make_shared<RBString>(SearchedText(kPattern));
    const auto search = [text](enumStringSearch mode) {
        return [text, mode] { return SearchByLibrary(*text, kPattern, mode); };
    };
    return {{"1,000 searches of 2,000 characters (FindTextA)", 2.0,
             [text] { return SearchByLoop(*text, kPattern); }, search(keSearchExact)},
            {"the same without case, against the exact search", 1.05, search(keSearchExact),
             search(keSearchNoCase)}};
}
