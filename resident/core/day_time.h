#pragma once

#include <ctime>

#include "resident/core/rb_string.h"

// The run-time's packed file time.
struct ftime {
    unsigned int ft_tsec : 5;
    unsigned int ft_min : 6;
    unsigned int ft_hour : 5;
    unsigned int ft_day : 5;
    unsigned int ft_month : 4;
    unsigned int ft_year : 7;
};

// The epoch of seconds given.
enum enum_DayTime_Constructor_Format : int {
    keDayTimeMac = 0, // local time, seconds since 1904-01-01
    keDayTimePC = 1   // UTC, seconds since 1970-01-01
};

// A point in time, kept in PC seconds, and its texts by the user's regional settings, section
// "intl" of WIN.INI:
//
//     s1159, s2359    markers of morning and afternoon   "AM", "PM"   9 characters count
//     sShortDate      order and padding of dates         "MM/dd/yy"   9
//     sTime, sDate    separators                         ":", "/"     1
//     iTime           0: 12-hour clock                   0
//     iTLZero         not 0: hours have two digits       1
//
// The last two are read each time, the others as RetrieveDefaults says. A short date begins with M,
// d or y, which gives the order (with another letter dates have no text); "MM" and "dd" anywhere in
// its 9 characters give leading zeros, so that "yyyy-MM-dd" pads months alone.
//
// The broken-down time is the run-time's shared structure: the next DayTime, or any conversion,
// overwrites it.
class JX_API DayTime {
public:
    // Now, or the seconds given.
    DayTime();
    DayTime(unsigned long seconds, enum_DayTime_Constructor_Format format);
    // The fields as they are stored, in local time and without scaling: month from 0, year from
    // 1900. Fields that make no time give an unset one.
    explicit DayTime(struct ftime& stamp);
    DayTime(const DayTime&) = delete;
    DayTime& operator=(const DayTime&) = delete;
    ~DayTime();

    // To now. The marker of morning or afternoon stays that of the construction.
    void Reset();

    unsigned long Seconds() const { return mulSeconds; }

    // Between seconds of the two epochs, by GetGmtDiff. Macintosh values before 1970 wrap to far in
    // the future; later ones before 1980 become 1980-01-01 08:00 UTC, less the zone's offset.
    unsigned long MacToPC(unsigned long mac) const;
    unsigned long PCToMac(unsigned long pc) const;
    // The local zone's offset from UTC in seconds, east positive: the standard one, in summer too.
    // 0 when it cannot be told.
    static long GetGmtDiff(long t);
    // The start of that day, both in Macintosh seconds; 0 when it cannot be told.
    static unsigned long Date(unsigned long mac);
    // Takes the broken-down time anew from the seconds.
    void BreakTime();

    // By the seconds.
    int operator<(const DayTime& other) const { return mulSeconds < other.mulSeconds; }
    int operator>(const DayTime& other) const { return mulSeconds > other.mulSeconds; }
    int operator==(const DayTime& other) const { return mulSeconds == other.mulSeconds; }

    // Reads the regional settings. A construction does when the counter of instances is 0, and sets
    // it to 1; each destruction lowers it. So programs that keep several instances do not see later
    // changes of WIN.INI unless they call it.
    static void RetrieveDefaults();
    // iTime: 0 is a 12-hour clock.
    static int GetTimeFormatA();
    // The settings kept; the texts stay valid.
    static const char* GetDateSeparator();
    static const char* GetTimeSeparator();
    static const char* GetAMRep();
    static const char* GetPMRep();

    // "????????" for a time that cannot be broken down, and for one of January 1970, an unset one.
    // Years show their last two digits. Hour 0 stays 0 on a 12-hour clock. Valid until the next of
    // the two calls, or until destroyed.
    const char* DateToWinFormat();
    const char* TimeToWinFormat();
    // The time, and on a 12-hour clock a blank and the marker. Valid until the next call of this
    // one.
    const char* GetTimeStringWithAMPM();

private:
    void CommonConstructor();
    bool IsSet() const;

    static int miInstances;

    RBString* mpoTimeWithMarker;
    std::tm* mpoBrokenDown;
    unsigned long mulSeconds;
    RBString mstrText;
    int mfMorning;
};
