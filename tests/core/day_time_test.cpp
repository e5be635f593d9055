#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/scratch.h"

// Regional settings of WIN.INI's own, which is put back in the end. A null value is no setting.
class DayTimeTest : public testing::Test {
protected:
    DayTimeTest() {
        Zone("UTC0");
        WriteProfileStringA("intl", nullptr, nullptr);
    }
    ~DayTimeTest() override {
        Zone("");
        WriteProfileStringA("intl", nullptr, nullptr);
        DayTime::RetrieveDefaults();
    }
    static void Zone(const std::string& zone) {
        _putenv(("TZ=" + zone).c_str());
        _tzset();
    }
    static void Set(const char* key, const char* value) { WriteProfileStringA("intl", key, value); }
    static std::string Date(unsigned long seconds, const char* format,
                            const char* separator = "/") {
        Set("sShortDate", format);
        Set("sDate", separator);
        DayTime::RetrieveDefaults();
        return DayTime(seconds, keDayTimePC).DateToWinFormat();
    }
    static std::string Time(unsigned long seconds, const char* clock, const char* leadingZero) {
        Set("iTime", clock);
        Set("iTLZero", leadingZero);
        DayTime time(seconds, keDayTimePC);
        const DayTime other(seconds + 3661, keDayTimePC); // leaves the first one as it is
        return time.TimeToWinFormat() + std::string("|") + time.GetTimeStringWithAMPM();
    }

    KeptFile mIni{WindowsDirectory() + "\\WIN.INI"};
    // 1998-03-05, 1998-11-25 and 2000-01-01 at midnight.
    const unsigned long kMarch = 889056000, kNovember = 911952000, k2000 = 946684800;
    const unsigned long kMacOf1970 = 2082844800, kMacOf2000 = kMacOf1970 + k2000;
};

TEST_F(DayTimeTest, MacintoshSecondsAreLocalTimeFrom1904) {
    const DayTime now;
    const unsigned long first = 315561600; // 1980-01-01 08:00
    for (const auto& [zone, offset] :
         {std::pair("JST-9", 32400), {"EST5EDT", -18000}, {"UTC0", 0}}) {
        Zone(zone);
        // Summer time takes no part.
        for (unsigned long pc : {k2000, k2000 + 182 * 86400}) {
            EXPECT_EQ(DayTime::GetGmtDiff(pc), offset) << zone;
            EXPECT_EQ(DayTime(pc + kMacOf1970, keDayTimeMac).Seconds(), pc - offset) << zone;
            EXPECT_EQ(now.PCToMac(pc), pc + offset + kMacOf1970) << zone;
        }
        for (unsigned long pc : {0ul, 86400 * 365ul, first - 1, first})
            EXPECT_EQ(now.MacToPC(pc + kMacOf1970), first - offset) << zone;
        for (unsigned long second : {0, 1, 43200, 86399})
            EXPECT_EQ(DayTime::Date(kMacOf2000 + second), kMacOf2000) << zone << second;
        EXPECT_EQ(DayTime::Date(kMacOf2000 - 1), kMacOf2000 - 86400) << zone;
        // No local time is before 1970.
        EXPECT_EQ(DayTime::GetGmtDiff(0), std::min(offset, 0)) << zone;
    }
    EXPECT_EQ(DayTime(0, keDayTimeMac).Seconds(), 0u - kMacOf1970);
    EXPECT_EQ(now.MacToPC(kMacOf1970 - 1), 0xFFFFFFFFu);
    EXPECT_EQ(DayTime(5, static_cast<enum_DayTime_Constructor_Format>(2)).Seconds(), 5u);
}

TEST_F(DayTimeTest, PackedFileTimesCountAsTheyAreStored) {
    const unsigned int bits = 7 | 5 << 5 | 13 << 11 | 15 << 16 | 2 << 21 | 98u << 25;
    struct ftime stamp;
    std::memcpy(&stamp, &bits, sizeof stamp);
    Zone("EST5EDT");
    EXPECT_EQ(DayTime(stamp).Seconds(), 889967107u + 18000); // 1998-03-15 13:05:07
}

TEST_F(DayTimeTest, UnsetAndRefusedTimesAreNoDates) {
    for (const char* zone : {"UTC0", "EST5EDT", "UTC-14"}) {
        Zone(zone);
        EXPECT_EQ(Date(0, "dd/MM/yy"), "????????") << zone;
    }
    Zone("UTC0");
    struct ftime stamp = {};
    stamp.ft_month = 1; // of 1900, which is no time
    EXPECT_STREQ(DayTime(stamp).DateToWinFormat(), "????????");
}

TEST_F(DayTimeTest, DatesFollowTheShortFormatsFirstLetterAndPairs) {
    EXPECT_EQ(Date(kMarch, nullptr, nullptr), "03/05/98");
    EXPECT_EQ(Date(kMarch, "M/d/yy", "/"), "3/5/98");
    EXPECT_EQ(Date(kMarch, "dd.MM.yy", ".."), "05.03.98");
    EXPECT_EQ(Date(kMarch, "d-MM-yy", "-"), "5-03-98");
    EXPECT_EQ(Date(kMarch, "yy-MM-dd", ""), "980305");
    EXPECT_EQ(Date(kMarch, "yyyy-MM-dd", "-"), "98-03-5"); // nine characters are kept
    EXPECT_EQ(Date(kNovember, "dd/MM/yy", "/"), "25/11/98");
    EXPECT_EQ(Date(kMarch, std::string(10000, 'y').c_str(), "-"), "98-3-5");
    EXPECT_EQ(Date(kMarch, "tt", "/"), "");
    EXPECT_LE(Date(0xFFFFFFFFu, "ddddMMMMM", "/").size(), 8u);
    EXPECT_EQ(Date(31 * 86400 - 1, "dd/MM/yy", "/"), "????????");
    EXPECT_EQ(Time(0, "0", "1"), "????????|????????");
    EXPECT_EQ(Date(31 * 86400, "dd/MM/yy", "/"), "01/02/70");
}

TEST_F(DayTimeTest, TimesFollowTheClockAndTheLeadingZero) {
    Set("s1159", "in the morning");
    Set("sTime", ".:");
    DayTime::RetrieveDefaults();
    const unsigned long five = kMarch + 13 * 3600 + 5 * 60, half = kMarch + 30 * 60;
    EXPECT_EQ(Time(five, nullptr, nullptr), "01.05|01.05 PM");
    EXPECT_EQ(Time(five, "0", "0"), "1.05|1.05 PM");
    EXPECT_EQ(Time(five, "1", "0"), "13.05|13.05");
    EXPECT_EQ(Time(half, "2", "1"), "00.30|00.30");
    EXPECT_EQ(Time(half, "0", "0"), "0.30|0.30 in the mo");
    EXPECT_EQ(Time(kMarch + 43200, "0", "1"), "12.00|12.00 PM");
    EXPECT_EQ(Time(kMarch + 43199, "0", "1"), "11.59|11.59 in the mo");

    // The marker is the one of the construction, and its text lasts.
    const bool morning = std::time(nullptr) % 86400 < 43200;
    DayTime time(morning ? five : half, keDayTimePC);
    const char* const text = time.GetTimeStringWithAMPM();
    time.Reset();
    time.DateToWinFormat();
    EXPECT_STREQ(text, morning ? "01.05 PM" : "00.30 in the mo");
    EXPECT_STREQ(time.GetTimeStringWithAMPM() + 6, morning ? "PM" : "in the mo");
    EXPECT_LE(DayTime().Seconds() - time.Seconds(), 1u);
}

// In a process that has yet to read the settings.
TEST_F(DayTimeTest, SettingsAreReadWhenTheCounterIsBackAtZero) {
    if (!std::getenv("FIRST_DAY_TIME")) {
        _putenv("FIRST_DAY_TIME=1");
        HelperProcess process("test_core.exe", "--gtest_output= --gtest_brief=1 "
                                               "--gtest_filter=DayTimeTest.SettingsAreRead*");
        _putenv("FIRST_DAY_TIME=");
        EXPECT_EQ(process.ExitCode(), 0u);
        return;
    }
    const auto separator = [&](const char* setting) {
        Set("sDate", setting);
        const DayTime time(kMarch, keDayTimePC);
        return std::string(DayTime::GetDateSeparator());
    };
    EXPECT_EQ(separator("1"), "1");
    EXPECT_EQ(separator("2"), "2");
    {
        const DayTime first;
        EXPECT_EQ(separator("3"), "2");
    }
    EXPECT_EQ(separator("4"), "2"); // below zero it stays
    DayTime::RetrieveDefaults();
    EXPECT_STREQ(DayTime::GetDateSeparator(), "4");
}
