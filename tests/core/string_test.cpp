#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <vector>

#include "resources/jxsysres.h"
#include "tests/core/settings.h"
#include "tests/support/record_bytes.h"

using namespace testing;

// The length byte, the text and the NUL: as they stand in memory, and as they should.
static std::string Stored(const RBString& string) {
    return {reinterpret_cast<const char*>(string.Pascal()), string.Length() + 2};
}

static std::string Image(int lengthByte, const std::string& text) {
    return static_cast<char>(lengthByte) + text + '\0';
}

static std::string Many(unsigned int n, char c = 'x') { return std::string(n, c); }

TEST(StringValue, HasOneEmptyFormFromWhichItGrows) {
    const char* const noText = nullptr;
    const unsigned char* const noPascalText = nullptr;
    RBString reset("text"), truncated(reset), missing(reset);
    reset.reset();
    truncated.Truncate(0);
    for (RBString text : {RBString(), RBString(noText), RBString(noPascalText), RBString('\0'),
                          RBString(7, GetModuleHandleA(nullptr)), reset, truncated,
                          missing.getResource(7, GetModuleHandleA(nullptr))}) {
        EXPECT_EQ(Stored(text), Image(0, ""));
        text.concat(noText).concat("tex").concat('t').concat('\0').concat(noPascalText);
        EXPECT_EQ(Stored(text), Image(4, "text"));
    }
}

TEST(StringSharing, ChangingCaseDoesNotDetach) {
    const RBString kept("\xC4PFEL");
    {
        const std::vector<RBString> holders(70000, kept); // more than the count counts
        EXPECT_EQ(Stored(holders.back()), Image(5, "\xC4PFEL"));
    }
    RBString second(kept);
    EXPECT_TRUE(second.Lower().SetCharUpper(2));
    EXPECT_TRUE(second.IsCharUpperA(2) && !second.IsCharUpperA(3));
    EXPECT_STREQ(kept.Text(), "\xE4Pfel");
}

TEST(AdjustSize, BelowTheLengthKeepsWhatTheLengthClaims) {
    RBString text("abcdef");
    EXPECT_STREQ(text.AdjustSize(2), "ab");
    EXPECT_EQ(text.Length(), 6u);
    EXPECT_EQ(Written(text), Bytes("\0\0\0\6ab\0\0\0\0"));
    text.AdjustSize(0);
    EXPECT_EQ(Stored(text), Image(2, "ab"));
}

TEST(StringStream, LongTextsKeepEveryByte) {
    const std::pair<unsigned int, const char*> lengths[] = {
        {0x10000, "\0\1\0\0"}, {0x10001, "\0\1\0\1"}, {0x20001, "\0\2\0\1"}, {0x50000, "\0\5\0\0"}};
    for (const auto& [length, stored] : lengths) {
        std::string bytes(stored, 4);
        for (unsigned int i = 0; i < length; ++i)
            bytes += static_cast<char>(i % 251);
        std::istringstream in(bytes + "behind");
        std::ostringstream out;
        RBString text;
        in >> text, out << text;
        EXPECT_TRUE(out.str() == bytes) << length;
        EXPECT_EQ(in.get(), 'b');
    }
}

TEST(StringErrors, AreShownAndLeaveTheValue) {
    MessageBoxes boxes;
    RBString text("abc");
    text.puts("longer", 0xFFFFFFFE);
    char* const dummy = text.charAt(0);
    *dummy = 'x';
    EXPECT_EQ(text.charAt(4), dummy);
    { const StringRep none(0u), huge(0xFFFFFFFE); }
    const StringRep alone("abc", 9, 2, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(alone.mpBuffer) + 1, "abc");
    EXPECT_THAT(boxes.Texts(),
                AllOf(SizeIs(5), Each(RBString(3409, GetJxSystemResHandle()).Text())));
    EXPECT_EQ(boxes.Shown()[0].caption, RBString(149, GetJxSystemResHandle()).Text());
    text.SetCharUpper(0);
    *text.charAt(3) = 'z';
    EXPECT_EQ(Stored(text), Image(3, "abz"));
}

TEST(StringFormat, EstimatesItsRoomAndGoesBeyondTheEstimate) {
    const auto room = [](const char* format, std::vector<const void*> arguments) {
        arguments.resize(8);
        return BaseString::CalculateBufferSize(format, arguments.data());
    };
    EXPECT_EQ(room("%s=%d", {"abc"}), 18u);
    EXPECT_EQ(room("plain%", {}), 6u + 1025u);
    EXPECT_EQ(room("%5s%S", {nullptr, "four"}), 9u + 4u + 5u + 1u);
    EXPECT_EQ(room("%r%s", {nullptr, nullptr, "four"}), 9u + 4u + 4u + 1u);
    RBString text, format("%d.%d");
    EXPECT_EQ(text.Sprintf("%400d", 7), Many(399, ' ') + "7");
    EXPECT_EQ(std::strlen(text.Sprintf("%f%s", 1e300, "x")), 309u);
    EXPECT_STREQ(text.Sprintf(1, GetModuleHandleA(nullptr), "It", 7), "It has 7");
    EXPECT_STREQ(format.Sprintf(format, 3, 4), "3.4");
}

TEST(DoubleByte, TruncateKeepsCharactersWhole) {
    const CodePage japanese("932", "boot_description");
    for (const char* pair : {"\x81\x40", "\x9F\xFC", "\xE0\x7F", "\xEF\x80"})
        EXPECT_STREQ(RBString(pair).Truncate(1).Text(), "");
    for (const char* pair :
         {"\x80\x40", "\xA0\x40", "\xDF\x40", "\xF0\x40", "\x81\x3F", "\x81\xFD"})
        EXPECT_EQ(Stored(RBString(pair).Truncate(1)), Image(1, {*pair}));
    RBString text("a\x81\x81\x81\x81z"), shared(text);
    EXPECT_STREQ(shared.Truncate(4).Text(), "a\x81\x81");
    EXPECT_STREQ(text.Truncate(3).Truncate(2).Text(), "a");
    WritePrivateProfileStringA("boot_description", "codepage", nullptr, "SYSTEM.INI");
    EXPECT_EQ(RbCountry::Instance()->GetCountry(), 0); // asked once
    RbCountry::KillInstance();
    EXPECT_EQ(RbCountry::Instance()->GetCountry(), 1);
    EXPECT_EQ(Stored(RBString("\x81\x40").Truncate(1)), Image(1, "\x81"));
}

TEST(LStrNCpy, CutsAndSaysSoAndReportsWhatItCannotUse) {
    Reports reports;
    char to[5] = "####";
    EXPECT_FALSE(LStrNCpyAndNullTerminate(to, "abcd", 4));
    EXPECT_STREQ(to, "abc");
    EXPECT_TRUE(LStrNCpyAndNullTerminate(to, "xyz", 4));
    LStrNCpyAndNullTerminate(to, "abc", 1);
    LStrNCpyAndNullTerminate(to + 2, "abc", 0);
    EXPECT_EQ(std::string(to, 4), std::string("\0yz\0", 4));
    EXPECT_FALSE(LStrNCpyAndNullTerminate(nullptr, "abc", 4));
    EXPECT_TRUE(LStrNCpyAndNullTerminate(to, nullptr, 4)); // nothing is nothing
    EXPECT_STREQ(to, "");
    const auto badSize = StartsWith("Assert Failed!\niiBufSize > 1\n47\n");
    const auto null = StartsWith("Assert Failed!\npszCopyTo != NULL && pszCopyFrom != NULL\n48\n");
    EXPECT_THAT(reports.Texts(), ElementsAre(badSize, badSize, null, null));
}

TEST(StringValue, ASmallerBufferCutsTheRecordedLength) {
    for (unsigned int size : {0, 1, 2, 3, 10}) {
        RBString text(Many(300).c_str()), fresh(text);
        text.ReAllocMem(size);
        fresh.AllocMem(size);
        EXPECT_TRUE(text.Length() + 2 <= std::max(size, 2u) && fresh.Length() == text.Length());
        text.AdjustSize(0);
        EXPECT_EQ(Stored(text), Image(text.Length(), Many(text.Length())));
    }
}

TEST(StringBuffer, NeverHoldsMoreThanItHasRoomFor) {
    const std::string text = Many(5000);
    for (const unsigned int capacity : {1u, 0xFFFFFFFDu + 1, 0xFFFFFFFFu})
        EXPECT_EQ(RBString(text.c_str(), capacity).Text(), text);
    // A writer that has not yet said how long its text is.
    RBString string("ab");
    std::memset(string.AdjustSize(3000), 'y', 2900);
    string.concat("c");
    EXPECT_STREQ(string.Text(), "yyc");
}

// Short texts' memory comes in a few sizes, of which so many blocks are kept: the last one given
// back is the next one taken.
TEST(StringBuffer, OfAShortTextIsUsedAgain) {
    if (GetModuleHandleA("guarded_memory.dll"))
        return; // each block has a page of its own there
    const auto block = [](unsigned int size) {
        StringRep rep;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(rep.AllocMem(size)) % 8, 0u);
        return rep.mpBuffer;
    };
    unsigned int least = 1;
    for (const unsigned int most : {24u, 56u, 120u, 264u}) {
        unsigned char* const memory = block(most);
        EXPECT_EQ(block(least), memory) << most;
        EXPECT_EQ(block(most), memory) << most;
        EXPECT_NE(block(most + 1), memory) << most;
        least = most + 1;
    }
    // No text takes more than itself, its length byte and its zero.
    const std::string counted = Pascal(Many(22));
    const char* rest[] = {"y"};
    unsigned char* const memory = block(24);
    EXPECT_EQ(StringRep(22u).mpBuffer, memory);
    EXPECT_EQ(StringRep(reinterpret_cast<const unsigned char*>(counted.data())).mpBuffer, memory);
    EXPECT_EQ(StringRep("x", 22, 2, rest).mpBuffer, memory);
    EXPECT_EQ(StringRep(Many(22).c_str(), 0).mpBuffer, memory);
    StringRep taken[70];
    for (StringRep& rep : taken)
        rep.AllocMem(24);
    unsigned char* kept;
    {
        StringRep given[65]; // the last one first, and the first one to the heap
        for (StringRep& rep : given)
            rep.AllocMem(24);
        kept = given[1].mpBuffer;
    }
    EXPECT_EQ(block(24), kept);
    block(300);
    EXPECT_EQ(block(1), kept);
}

TEST(StringBuffer, ADetachedOneHasNoLength) {
    RBString string("abc");
    const RBString sharer(string);
    string.AllocMem(100);
    EXPECT_EQ(string.Length(), 0u);
    EXPECT_STREQ(sharer.Text(), "abc");
}
