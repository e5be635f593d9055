#include "programs/mime/date.h"

#include <fmt/format.h>

#include "resident/core/windows_api.h"

namespace mime {

using namespace std::chrono;

namespace {

constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct Parts {
    explicit Parts(seconds sinceEpoch)
        : day(floor<days>(sinceEpoch)), date(sys_days(day)), time(sinceEpoch - day) {}

    const char* DayName() const { return kDays[weekday(sys_days(day)).c_encoding()]; }
    const char* MonthName() const { return kMonths[unsigned(date.month()) - 1]; }

    days day;
    year_month_day date;
    hh_mm_ss<seconds> time;
};

// The rules of the year that was asked for last: the system looks each up in its settings.
const TIME_ZONE_INFORMATION& RulesOf(int year) {
    static TIME_ZONE_INFORMATION rules;
    static int known = -1;
    if (year != known && !GetTimeZoneInformationForYear(static_cast<USHORT>(year), nullptr, &rules))
        GetTimeZoneInformation(&rules);
    known = year;
    return rules;
}

seconds SinceEpoch(const SYSTEMTIME& time) {
    const sys_days day(year(time.wYear) / month(time.wMonth) / time.wDay);
    return day.time_since_epoch() + hours(time.wHour) + minutes(time.wMinute) +
           seconds(time.wSecond);
}

} // namespace

minutes ZoneOffset(local_seconds time) {
    const Parts parts(time.time_since_epoch());
    SYSTEMTIME local = {};
    local.wYear = static_cast<WORD>(int(parts.date.year()));
    local.wMonth = static_cast<WORD>(unsigned(parts.date.month()));
    local.wDay = static_cast<WORD>(unsigned(parts.date.day()));
    local.wHour = static_cast<WORD>(parts.time.hours().count());
    local.wMinute = static_cast<WORD>(parts.time.minutes().count());
    local.wSecond = static_cast<WORD>(parts.time.seconds().count());
    SYSTEMTIME universal;
    if (!TzSpecificLocalTimeToSystemTime(&RulesOf(local.wYear), &local, &universal))
        return minutes(0);
    return round<minutes>(time.time_since_epoch() - SinceEpoch(universal));
}

std::string DateTime(local_seconds time, minutes offset) {
    const Parts parts(time.time_since_epoch());
    const auto ahead = offset.count() < 0 ? -offset.count() : offset.count();
    return fmt::format("{}, {:02} {} {:04} {:02}:{:02}:{:02} {}{:02}{:02}", parts.DayName(),
                       unsigned(parts.date.day()), parts.MonthName(), int(parts.date.year()),
                       parts.time.hours().count(), parts.time.minutes().count(),
                       parts.time.seconds().count(), offset.count() < 0 ? '-' : '+', ahead / 60,
                       ahead % 60);
}

std::string AscTime(sys_seconds time) {
    const Parts parts(time.time_since_epoch());
    return fmt::format("{} {} {:2} {:02}:{:02}:{:02} {:04}", parts.DayName(), parts.MonthName(),
                       unsigned(parts.date.day()), parts.time.hours().count(),
                       parts.time.minutes().count(), parts.time.seconds().count(),
                       int(parts.date.year()));
}

} // namespace mime
