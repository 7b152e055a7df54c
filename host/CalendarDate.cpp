// Calendar dates and the driver's serial day numbers, by the standard library's proleptic Gregorian calendar.
#include "host/CalendarDate.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace host {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

// Day 0 of the serial numbers: 1 January 1900 is day 1.
constexpr sys_days kSerialZero = sys_days{std::chrono::year{1899} / 12 / 31};

// Serials farther than this from day 0 fall outside the calendar's years.
constexpr double kLargestSerial = 11'000'000.0;

}  // namespace

double CalendarDate::Serial() const {
    const year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                              std::chrono::day{static_cast<unsigned>(day)}};
    return static_cast<double>((sys_days{date} - kSerialZero).count());
}

CalendarDate CalendarDate::FromSerial(double serial) {
    // A number that names no day gives the empty date 0000-00-00 rather than an undefined conversion.
    if (!std::isfinite(serial) || std::fabs(serial) > kLargestSerial) return CalendarDate{};
    const year_month_day date{kSerialZero + days{static_cast<long>(std::floor(serial))}};
    return CalendarDate{static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                        static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::string CalendarDate::Text() const {
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", year, month, day);
    return text;
}

}  // namespace host
