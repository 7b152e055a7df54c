// Calendar dates as the host keeps them, and the serial day numbers of the driver's date records (days from
// 31 December 1899, one less than the automation date).
#pragma once

#include <string>

namespace host {

struct CalendarDate {
    int year = 0;
    int month = 0;
    int day = 0;

    // The driver's serial day number of this date's midnight.
    double Serial() const;
    static CalendarDate FromSerial(double serial);
    CalendarDate AddDays(double days) const { return FromSerial(Serial() + days); }
    // "YYYY-MM-DD"
    std::string Text() const;
    bool operator==(const CalendarDate&) const = default;
    bool operator<(const CalendarDate& other) const { return Serial() < other.Serial(); }
};

}  // namespace host
