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

enum enum_DayTime_Constructor_Format : int {
    keDayTimeMac = 0, // local time, seconds since 1904-01-01
    keDayTimePC = 1   // UTC, seconds since 1970-01-01
};

// A point in time, kept in PC seconds, and its texts by the user's regional settings in section
// "intl" of WIN.INI. The broken-down time is the run-time's shared structure: the next DayTime, or
// any conversion, overwrites it.
class JX_API DayTime {
public:
    // Now.
    DayTime();
    DayTime(unsigned long seconds, enum_DayTime_Constructor_Format format);
    // The fields as they are stored, without scaling: month from 0, year from 1900.
    explicit DayTime(struct ftime& stamp);
    DayTime(const DayTime&) = delete;
    DayTime& operator=(const DayTime&) = delete;
    ~DayTime();

    void Reset(); // to now

    unsigned long Seconds() const { return mulSeconds; }

    // Macintosh values before 1970 wrap to far in the future; later ones before 1980 become
    // 1980-01-01 08:00.
    unsigned long MacToPC(unsigned long mac) const;
    unsigned long PCToMac(unsigned long pc) const;
    // The local zone's offset at `t`, in seconds; 0 when it cannot be told.
    static long GetGmtDiff(long t);
    // The start of that day, both in Macintosh seconds; 0 when it cannot be told.
    static unsigned long Date(unsigned long mac);
    void BreakTime();

    int operator<(const DayTime& other) const { return mulSeconds < other.mulSeconds; }
    int operator>(const DayTime& other) const { return mulSeconds > other.mulSeconds; }
    int operator==(const DayTime& other) const { return mulSeconds == other.mulSeconds; }

    // The regional settings. They are read by the first construction, and again by the first after
    // the counter of instances, which a construction sets to 1 and each destruction lowers, has
    // come back to 0.
    static void RetrieveDefaults();
    static int GetTimeFormatA(); // 0: 12-hour clock
    static const char* GetDateSeparator();
    static const char* GetTimeSeparator();
    static const char* GetAMRep();
    static const char* GetPMRep();

    // "????????" for a time that cannot be broken down, and for January 1970, an unset one. Years
    // show their last two digits. Valid until the next text, or until destroyed.
    const char* DateToWinFormat();
    const char* TimeToWinFormat();
    // The same with the morning or afternoon marker on a 12-hour clock; valid until the next call.
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
