// The search and word members of BaseString.

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

#include "resident/core/rb_country.h"
#include "resident/core/rb_string.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\STRSRCH.CPP");

static const char kDelimiters[] = " !@#$%&*()-+={}[]|:;\"`<>,.?/\n\r\t";

static bool IsDelimiter(char c) { return c && std::strchr(kDelimiters, c); }

static bool DoubleByteSystem() { return RbCountry::Instance()->GetCountry() == 0; }

// The bytes of the character at `p`.
static unsigned int CharacterSize(const char* p, bool doubleByte) {
    return doubleByte && BaseString::IsDoubleByte(p) ? 2 : 1;
}

// The first single-byte character from `p` on for which `wanted` holds, or null.
template <class Wanted>
static const char* FindCharacter(const char* p, Wanted wanted) {
    const bool doubleByte = DoubleByteSystem();
    for (; *p; p += CharacterSize(p, doubleByte))
        if (CharacterSize(p, doubleByte) == 1 && wanted(*p))
            return p;
    return nullptr;
}

bool BaseString::IsDoubleByte(const char* p) {
    const unsigned char lead = p[0];
    if (!((lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xEF)))
        return false;
    const unsigned char trail = p[1];
    return trail >= 0x40 && trail <= 0xFC;
}

unsigned int BaseString::DoubleByteAdjLen(const char* text, unsigned int n) {
    unsigned int reached = 0;
    while (reached < n && text[reached])
        reached += CharacterSize(text + reached, true);
    return reached > n ? n - 1 : n;
}

int BaseString::GetNthDelimitedWord(BaseString& word, unsigned int n,
                                    unsigned char delimiter) const {
    kReports.Check(n > 0, "tWhichWord > 0");
    kReports.Check(delimiter != 0, "bDelimiter != NULL");
    if (n == 0)
        return false;
    const auto isDelimiter = [delimiter](char c) {
        return static_cast<unsigned char>(c) == delimiter;
    };
    const char* field = Text();
    if (n > 1) {
        const char* p = Text();
        for (unsigned int round = 1; p && round < n; ++round) {
            // A delimiter at the very start ends the first field, which is empty.
            const unsigned int size = CharacterSize(p, DoubleByteSystem());
            if (round == 1 && size == 1 && isDelimiter(*p) && *p)
                continue;
            p = *p ? FindCharacter(p + size, isDelimiter) : nullptr;
        }
        if (!p)
            return false;
        field = p + 1;
    }
    const char* pszEndDelimiter = FindCharacter(field, isDelimiter);
    if (!pszEndDelimiter)
        pszEndDelimiter = field + std::strlen(field);
    kReports.Check(pszEndDelimiter, "pszEndDelimiter");
    const unsigned int length = pszEndDelimiter - field;
    if (length)
        word.puts(field, length);
    else
        word.reset();
    return true;
}

char* BaseString::GetStartAndEndPos(char** cursor, enumGSEPOptions option) const {
    if (!cursor || !*cursor || !**cursor)
        return nullptr;
    const bool doubleByte = DoubleByteSystem();
    char*& start = *cursor;
    for (;;) {
        const unsigned int size = CharacterSize(start, doubleByte);
        if (size == 2 || !IsDelimiter(*start) || start[1] == 0)
            break;
        start += size;
    }
    const char* end = FindCharacter(start, IsDelimiter);
    if (end && option == keGSEPOverPeriod && *end == '.')
        ++end;
    return const_cast<char*>(end);
}

int BaseString::GetWord(RBString& word, unsigned int* start, unsigned int* end,
                        unsigned int position, enumGetWordOptions option) const {
    if (Length() == 0 || position == 0 || position >= Length())
        return false;
    const char* const text = Text();
    char* cursor = const_cast<char*>(text) + position - 1;
    const char* wordEnd = GetStartAndEndPos(&cursor, static_cast<enumGSEPOptions>(option));
    if (position != 1 && cursor > text + Length() - 1)
        return false;
    if (!wordEnd || wordEnd == cursor)
        wordEnd = text + Length();
    const unsigned int first = cursor - text + 1;
    const unsigned int length = wordEnd - cursor;
    word.puts(cursor, length);
    if (start) {
        *start = first;
        if (end)
            *end = first + length - 1;
    }
    return true;
}

namespace {

// What each single byte is in another case: asked once, since the system takes longer to answer for
// a pattern than many texts take to be searched.
struct Folding {
    using Convert = DWORD WINAPI(LPSTR, DWORD);

    explicit Folding(Convert* convert) {
        for (unsigned int c = 0; c < 256; ++c) {
            mOf[c] = static_cast<char>(c);
            if (convert)
                convert(&mOf[c], 1);
        }
    }
    static const Folding& Exact() {
        static const Folding exact(nullptr);
        return exact;
    }
    static const Folding& Upper() {
        static const Folding upper(CharUpperBuffA);
        return upper;
    }
    static const Folding& Lower() {
        static const Folding lower(CharLowerBuffA);
        return lower;
    }
    char operator()(char c) const { return mOf[static_cast<unsigned char>(c)]; }

private:
    char mOf[256];
};

// A character of one byte or two; the second is zero where there is one.
using Character = std::array<char, 2>;

// Tells, for offsets that only grow, which lie inside a double-byte character.
class CharacterWalk {
public:
    explicit CharacterWalk(const char* text) : mpszText(text) {}

    bool Splits(unsigned int offset) {
        while (mReached < offset && mpszText[mReached])
            mReached += CharacterSize(mpszText + mReached, true);
        return mReached > offset;
    }

private:
    const char* mpszText;
    unsigned int mReached = 0;
};

// One search of FindTextA: the pattern against the places of a text.
class PatternScan {
public:
    PatternScan(const BaseString& text, std::string_view pattern, enumStringSearch mode)
        : mfNoCase(mode == keSearchNoCase || mode == keSearchNoCaseWord),
          mfWord(mode == keSearchExactWord || mode == keSearchNoCaseWord),
          mfDoubleByte(DoubleByteSystem()), mpszText(text.Text()),
          mpszLast(text.Text() + text.Length() - 1),
          mFold(mfNoCase ? Folding::Upper() : Folding::Exact()), mPattern(pattern),
          mBefore(mpszText), mBehind(mpszText) {
        mUpperFirst = mLowerFirst = FirstCharacter();
        if (!mfNoCase)
            return;
        mUpperPattern = pattern;
        if (mfDoubleByte) {
            CharLowerBuffA(mLowerFirst.data(), mLowerFirst[1] ? 2 : 1);
            CharUpperBuffA(mUpperPattern.data(), mUpperPattern.size());
        } else {
            mLowerFirst[0] = Folding::Lower()(pattern[0]);
            std::transform(pattern.begin(), pattern.end(), mUpperPattern.begin(), std::cref(mFold));
        }
        mPattern = mUpperPattern;
        mUpperFirst = FirstCharacter();
    }

    // The first match from `first` on that starts at `last` or before; null when there is none.
    const char* Find(const char* first, const char* last) {
        return mfDoubleByte ? FindDoubleByte(first, last) : FindSingleByte(first, last);
    }

private:
    // A match starts with the pattern's first character as upper or lower case has it. Others may
    // fold to it, and count only behind the first.
    const char* FindSingleByte(const char* first, const char* last) {
        const char upper = mUpperFirst[0];
        const char lower = mLowerFirst[0];
        // The last letter tells places apart that begin as the pattern does.
        const std::size_t end = mPattern.size() - 1;
        const char lastLetter = mPattern[end];
        for (const char* place = first; place <= last; ++place)
            if ((*place == upper || *place == lower) && mFold(place[end]) == lastLetter &&
                Matches<false>(place) && (!mfWord || IsWord(first, place)))
                return place;
        return nullptr;
    }
    const char* FindDoubleByte(const char* first, const char* last) {
        for (const char* place = first; place <= last; place += CharacterSize(place, true)) {
            const Character character = At(place, true);
            if ((character == mUpperFirst || character == mLowerFirst) && Matches<true>(place) &&
                (!mfWord || IsWord(first, place)))
                return place;
        }
        return nullptr;
    }

    static Character At(const char* place, bool doubleByte) {
        return {place[0], CharacterSize(place, doubleByte) == 2 ? place[1] : '\0'};
    }
    Character FirstCharacter() const { return At(mPattern.data(), mfDoubleByte); }

    // Compares character by character; a double-byte character only equals a whole one.
    template <bool kDoubleByte>
    bool Matches(const char* place) const {
        const char* pattern = mPattern.data();
        const char* const patternEnd = pattern + mPattern.size();
        while (pattern < patternEnd) {
            const unsigned int size = CharacterSize(pattern, kDoubleByte);
            if (size != CharacterSize(place, kDoubleByte))
                return false;
            if (size == 2 ? !EqualsPair(place, pattern) : mFold(*place) != *pattern)
                return false;
            place += size;
            pattern += size;
        }
        return true;
    }

    bool EqualsPair(const char* place, const char* pattern) const {
        Character pair = {place[0], place[1]};
        if (mfNoCase)
            CharUpperBuffA(pair.data(), pair.size());
        return std::equal(pair.begin(), pair.end(), pattern);
    }

    // A trail byte that looks like a delimiter is half of another character.
    bool IsDelimiterAt(const char* p, CharacterWalk& walk) const {
        return IsDelimiter(*p) && !(mfDoubleByte && walk.Splits(p - mpszText));
    }

    // The whole-word rule. Its three cases are what callers have always had: a match whose next
    // character is the text's last one is judged by the character before it alone, and one at the
    // scan's start, or at the text's end, by the character behind it, where the end of the text
    // counts as a delimiter.
    bool IsWord(const char* first, const char* match) {
        const char* const before = match - 1;
        const char* const behind = match + mPattern.size();
        const bool startsWord = match > mpszText && IsDelimiterAt(before, mBefore);
        const bool endsWord = behind > mpszLast || IsDelimiterAt(behind, mBehind);
        if (first < before && behind < mpszLast)
            return startsWord && endsWord;
        if (behind == mpszLast)
            return startsWord;
        return endsWord;
    }

    bool mfNoCase;
    bool mfWord;
    bool mfDoubleByte;
    const char* mpszText;
    const char* mpszLast;
    const Folding& mFold;
    std::string mUpperPattern;
    std::string_view mPattern;
    Character mUpperFirst;
    Character mLowerFirst;
    CharacterWalk mBefore;
    CharacterWalk mBehind;
};

} // namespace

int BaseString::FindTextA(const char* pattern, unsigned int* start, unsigned int* end,
                          unsigned int position, enumStringSearch mode) const {
    const unsigned int patternLength = pattern ? std::strlen(pattern) : 0;
    if (patternLength == 0 || Length() == 0 || position == 0 ||
        Length() + 1ull < position + static_cast<unsigned long long>(patternLength))
        return false;
    const char* const first = Text() + position - 1;
    const char* const lastPlace = Text() + Length() - patternLength;
    const char* match =
        PatternScan(*this, std::string_view(pattern, patternLength), mode).Find(first, lastPlace);
    if (!match)
        return false;
    if (start)
        *start = match - first + 1;
    if (end)
        *end = match - first + patternLength;
    return true;
}

unsigned int BaseString::Replace(unsigned int from, unsigned int to, const char* text) {
    const std::string old(Text(), Length());
    const std::string insertion(text ? text : "");
    // The first character that is replaced, counted from 0, and the first behind that is kept.
    const std::size_t begin = from == 0 ? 0 : std::min<std::size_t>(from - 1, old.size());
    const std::size_t behind = std::min<std::size_t>(to, old.size());
    const std::string result = old.substr(0, begin) + insertion + old.substr(behind);
    Assign(result.data(), result.size(), result.size());
    return begin + 1 + insertion.size();
}
