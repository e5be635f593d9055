#include "resident/core/day_time.h"

#include <cstdio>
#include <cstring>

#include "resident/core/windows_api.h"

static constexpr unsigned long kEpochDifference = 2082844800; // from 1904-01-01 to 1970-01-01
static constexpr unsigned long kFirstPCTime = 315561600;      // 1980-01-01 08:00

static const char kSection[] = "intl";
static const char kUnset[] = "????????";

static char morningMarker[10];
static char afternoonMarker[10];
static char shortDate[10];
static char timeSeparator[2];
static char dateSeparator[2];

int DayTime::miInstances;

// Seconds have 32 bits, unsigned: they last beyond the run-time's 32-bit time.
static std::tm* LocalTime(unsigned long seconds) {
    const __time64_t time = seconds;
    return _localtime64(&time);
}

DayTime::DayTime() : mulSeconds(static_cast<unsigned long>(_time64(nullptr))) {
    CommonConstructor();
}

DayTime::DayTime(unsigned long seconds, enum_DayTime_Constructor_Format format)
    : mulSeconds(format == keDayTimeMac ? MacToPC(seconds) : seconds) {
    CommonConstructor();
}

DayTime::DayTime(struct ftime& stamp) {
    std::tm time = {};
    time.tm_sec = stamp.ft_tsec;
    time.tm_min = stamp.ft_min;
    time.tm_hour = stamp.ft_hour;
    time.tm_mday = stamp.ft_day;
    time.tm_mon = stamp.ft_month;
    time.tm_year = stamp.ft_year;
    mulSeconds = static_cast<unsigned long>(_mktime64(&time));
    CommonConstructor();
}

void DayTime::CommonConstructor() {
    // Set, not raised: the construction behind the first destruction reads the settings again.
    if (miInstances == 0) {
        RetrieveDefaults();
        miInstances = 1;
    }
    mpoTimeWithMarker = nullptr;
    BreakTime();
    mfMorning = mpoBrokenDown && mpoBrokenDown->tm_hour < 12;
}

DayTime::~DayTime() {
    --miInstances;
    delete mpoTimeWithMarker;
}

void DayTime::Reset() { mulSeconds = static_cast<unsigned long>(_time64(nullptr)); }

unsigned long DayTime::MacToPC(unsigned long mac) const {
    unsigned long pc = mac - kEpochDifference;
    if (pc < kFirstPCTime)
        pc = kFirstPCTime;
    return pc - static_cast<unsigned long>(GetGmtDiff(static_cast<long>(pc)));
}

unsigned long DayTime::PCToMac(unsigned long pc) const {
    return pc + static_cast<unsigned long>(GetGmtDiff(static_cast<long>(pc))) + kEpochDifference;
}

long DayTime::GetGmtDiff(long t) {
    const __time64_t time = static_cast<unsigned long>(t);
    // Any 32-bit time has a date.
    const __time64_t asLocal = _mktime64(_gmtime64(&time));
    return asLocal == -1 ? 0 : static_cast<long>(time - asLocal);
}

unsigned long DayTime::Date(unsigned long mac) {
    DayTime day(mac, keDayTimeMac);
    if (!day.mpoBrokenDown)
        return 0;
    std::tm& time = *day.mpoBrokenDown;
    time.tm_sec = time.tm_min = time.tm_hour = time.tm_isdst = 0;
    const __time64_t start = _mktime64(&time);
    return start == -1 ? 0 : day.PCToMac(static_cast<unsigned long>(start));
}

void DayTime::BreakTime() { mpoBrokenDown = LocalTime(mulSeconds); }

void DayTime::RetrieveDefaults() {
    GetProfileStringA(kSection, "s1159", "AM", morningMarker, sizeof morningMarker);
    GetProfileStringA(kSection, "s2359", "PM", afternoonMarker, sizeof afternoonMarker);
    GetProfileStringA(kSection, "sShortDate", "MM/dd/yy", shortDate, sizeof shortDate);
    GetProfileStringA(kSection, "sTime", ":", timeSeparator, sizeof timeSeparator);
    GetProfileStringA(kSection, "sDate", "/", dateSeparator, sizeof dateSeparator);
}

int DayTime::GetTimeFormatA() { return static_cast<int>(GetProfileIntA(kSection, "iTime", 0)); }
const char* DayTime::GetDateSeparator() { return dateSeparator; }
const char* DayTime::GetTimeSeparator() { return timeSeparator; }
const char* DayTime::GetAMRep() { return morningMarker; }
const char* DayTime::GetPMRep() { return afternoonMarker; }

// January 1970 marks an unset time. In zones west of Greenwich its first second lies in 1969; and a
// file time that is no time has the run-time's -1.
bool DayTime::IsSet() const {
    return mpoBrokenDown && mulSeconds != 0 && mulSeconds != 0xFFFFFFFF &&
           !(mpoBrokenDown->tm_year == 70 && mpoBrokenDown->tm_mon == 0);
}

// A number of at most two digits, with a leading zero when asked for.
static RBString TwoDigits(int number, bool padded) {
    char digits[12];
    std::snprintf(digits, sizeof digits, padded ? "%02d" : "%d", number % 100);
    return RBString(digits);
}

const char* DayTime::DateToWinFormat() {
    BreakTime();
    if (!IsSet()) {
        mstrText.puts(kUnset);
        return mstrText.Text();
    }
    const RBString day = TwoDigits(mpoBrokenDown->tm_mday, std::strstr(shortDate, "dd"));
    const RBString month = TwoDigits(mpoBrokenDown->tm_mon + 1, std::strstr(shortDate, "MM"));
    const RBString year = TwoDigits(mpoBrokenDown->tm_year, true);
    const auto join = [this](const RBString& first, const RBString& second, const RBString& third) {
        mstrText = first;
        mstrText.concat(dateSeparator).concat(second).concat(dateSeparator).concat(third);
    };
    switch (shortDate[0]) {
    case 'M':
        join(month, day, year);
        break;
    case 'd':
        join(day, month, year);
        break;
    case 'y':
        join(year, month, day);
        break;
    default:
        break;
    }
    return mstrText.Text();
}

const char* DayTime::TimeToWinFormat() {
    BreakTime();
    if (!IsSet()) {
        mstrText.puts(kUnset);
        return mstrText.Text();
    }
    int hour = mpoBrokenDown->tm_hour;
    // Midnight stays hour 0 on a 12-hour clock.
    if (GetTimeFormatA() == 0 && hour > 12)
        hour -= 12;
    mstrText = TwoDigits(hour, GetProfileIntA(kSection, "iTLZero", 1) != 0);
    mstrText.concat(timeSeparator).concat(TwoDigits(mpoBrokenDown->tm_min, true));
    return mstrText.Text();
}

const char* DayTime::GetTimeStringWithAMPM() {
    if (!mpoTimeWithMarker)
        mpoTimeWithMarker = new RBString;
    mpoTimeWithMarker->puts(TimeToWinFormat());
    if (IsSet() && GetTimeFormatA() == 0)
        mpoTimeWithMarker->concat(' ').concat(mfMorning ? morningMarker : afternoonMarker);
    return mpoTimeWithMarker->Text();
}
