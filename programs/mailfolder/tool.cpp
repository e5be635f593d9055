#include "programs/mailfolder/tool.h"

#include <chrono>

Talk talk = Talk::Normal;

std::string Count(unsigned long long number, const char* one, const char* many) {
    return number == 1 ? fmt::format("1 {}", one)
           : many      ? fmt::format("{} {}", number, many)
                       : fmt::format("{} {}s", number, one);
}

std::string DateText(unsigned long seconds) {
    using namespace std::chrono;
    if (seconds == 0)
        return {};
    const sys_days epoch = sys_days(year(1904) / January / 1);
    const year_month_day date(epoch + days(seconds / 86400));
    const unsigned long time = seconds % 86400;
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", int(date.year()),
                       unsigned(date.month()), unsigned(date.day()), time / 3600, time / 60 % 60,
                       time % 60);
}
