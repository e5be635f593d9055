#include <gmock/gmock.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/core/settings.h"

using namespace testing;

TEST(Fields, ReportBadQuestionsAndGoOn) {
    Reports reports;
    RBString text("a:b"), word("kept");
    text.GetNthDelimitedWord(word, 0, ':');
    text.GetNthDelimitedWord(word, 3, 0); // finds nothing behind the text
    EXPECT_EQ(text.GetNthDelimitedWord(word, 1, 0), 1);
    EXPECT_STREQ(word.Text(), "a:b");
    const auto noDelimiter = HasSubstr("\nbDelimiter != NULL\n");
    EXPECT_THAT(reports.Texts(), ElementsAre(AllOf(HasSubstr("\ntWhichWord > 0\n"),
                                                   EndsWith("\nJXRESIDT\\STRSRCH.CPP\n")),
                                             noDelimiter, noDelimiter));
}

static std::string Find(const std::string& text, const char* pattern, int mode,
                        unsigned int position = 1) {
    unsigned int start = 0, end = 0;
    const int found =
        RBString(text.c_str()).FindTextA(pattern, &start, &end, position, enumStringSearch(mode));
    return found ? std::to_string(start) + "-" + std::to_string(end) : "none";
}

namespace {

// FindTextA as it is described: character by character, every one asked for its case again.
class PlainSearch {
public:
    PlainSearch(bool doubleByte, int mode) : mfDoubleByte(doubleByte), mMode(mode) {}

    std::string Find(const std::string& text, std::string pattern, unsigned int position) const {
        const unsigned int size = pattern.size();
        if (!size || text.empty() || !position || text.size() + 1 < position + size)
            return "none";
        const std::string lowerFirst = Cased(CharLowerBuffA, At(pattern, 0));
        pattern = Cased(CharUpperBuffA, pattern);
        const unsigned int scan = position - 1;
        for (unsigned int place = scan; place + size <= text.size();
             place += At(text, place).size())
            if ((At(text, place) == At(pattern, 0) || At(text, place) == lowerFirst) &&
                Agrees(text, place, pattern) && (mMode < 2 || IsWord(text, scan, place, size)))
                return std::to_string(place - scan + 1) + "-" + std::to_string(place - scan + size);
        return "none";
    }

private:
    std::string At(const std::string& text, unsigned int place) const {
        return text.substr(place, mfDoubleByte && BaseString::IsDoubleByte(&text[place]) ? 2 : 1);
    }
    template <class Call>
    std::string Cased(Call call, std::string text) const {
        if (mMode % 2)
            call(text.data(), text.size());
        return text;
    }
    bool Agrees(const std::string& text, unsigned int place, const std::string& pattern) const {
        for (unsigned int at = 0; at < pattern.size(); at += At(pattern, at).size())
            if (Cased(CharUpperBuffA, At(text, place + at)) != At(pattern, at))
                return false;
        return true;
    }
    bool IsWord(const std::string& text, int scan, int match, int size) const {
        const int last = text.size() - 1, before = match - 1, behind = match + size;
        const bool starts = before >= 0 && Delimits(text, before);
        const bool ends = behind > last || Delimits(text, behind);
        return scan < before && behind < last ? starts && ends : behind == last ? starts : ends;
    }
    bool Delimits(const std::string& text, unsigned int place) const {
        unsigned int at = 0;
        while (at < place)
            at += At(text, at).size();
        return at == place && std::strchr(" !@#$%&*()-+={}[]|:;\"`<>,.?/\n\r\t", text[place]);
    }

    bool mfDoubleByte;
    int mMode;
};

} // namespace

// Short texts of few characters, among them halves of double-byte ones and those whose case has no
// way back.
TEST(FindText, EqualsAPlainSearchInEveryModeAndCodePage) {
    const std::string alphabet = "aaAbB. ?|\xE4\xC4\xB5\xFF\x9F\xDF\x83\x61\x7C\x40\xE0";
    std::mt19937 random(1);
    const auto draw = [&](unsigned int most) {
        std::string text(random() % (most + 1), '\0');
        for (char& c : text)
            c = alphabet[random() % alphabet.size()];
        return text;
    };
    for (const char* codePage : {"1252", "932"}) {
        const CodePage kept(codePage);
        unsigned int found = 0;
        for (int i = 0; i < 10000; ++i) {
            const std::string text = draw(12), pattern = draw(3);
            const unsigned int position = random() % 4;
            const int mode = i % 4;
            const std::string expected =
                PlainSearch(codePage[0] == '9', mode).Find(text, pattern, position);
            ASSERT_EQ(Find(text, pattern.c_str(), mode, position), expected)
                << codePage << " mode " << mode << " at " << position << " \"" << text
                << "\" for \"" << pattern << "\"";
            found += expected != "none";
        }
        EXPECT_GT(found, 300u);
    }
}

// Work for each failed word that grew with the text before it would take minutes.
TEST(FindText, GoesOnBehindManyFailedWordsOfALongText) {
    std::string text;
    for (int word = 0; word < 1 << 20; ++word)
        text += " aaa";
    for (const char* codePage : {"1252", "932"}) {
        const CodePage kept(codePage);
        EXPECT_EQ(Find(text + ".", "aa", keSearchExactWord), "none");
        EXPECT_EQ(Find(text + ".", "AA", keSearchNoCaseWord), "none");
    }
}

TEST(DoubleByte, SearchesNeverTakeATrailByteForACharacter) {
    const CodePage japanese("932");
    RBString word;
    EXPECT_FALSE(RBString("\x83\x7Cx").GetNthDelimitedWord(word, 2, '\x83'));
    EXPECT_TRUE(RBString("\x83\x7C|\x83\x7Cz").GetNthDelimitedWord(word, 2, '|'));
    EXPECT_STREQ(word.Text(), "\x83\x7Cz");
    EXPECT_TRUE(RBString("\x83\x7Cx y").GetWord(word, nullptr, nullptr, 1, keGetWordPlain));
    EXPECT_STREQ(word.Text(), "\x83\x7Cx");
}

TEST(Replace, IsTrustedAndStaysInTheText) {
    RBString("abcd").Replace(0xFFFFFFFF, 4, "x");
    RBString("abcd").Replace(0, 9, nullptr);
}

TEST(LineEnds, StretchBetweenTwoKeepsTheLow16BitsOfItsLength) {
    RBString text;
    EXPECT_EQ(
        text.MacToPC((std::string(65535, 'x') + "\r" + std::string(65546, 'x') + "\r").c_str()),
        std::string(65535, 'x') + "\r\n" + "xxxxxxxxxx" + "\r\n");
}
