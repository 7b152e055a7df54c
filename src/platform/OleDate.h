// Date-times as automation dates: days from 30 December 1899 (day 1.0 is 31 December 1899), with the
// time of day as the fraction. Before day 0 the whole days run backwards while the fraction runs forwards,
// so -1.25 is 29 December 1899 at 06:00.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rivulet {

enum class DateStatus : std::int32_t { Valid = 0, Invalid = 1, Null = 2 };

struct CalendarTime {
    int year = 0;
    int month = 0;  // 1 to 12
    int day = 0;    // 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

class OleDate {
  public:
    static constexpr double kHalfSecond = 1.0 / 172800.0;
    static constexpr double kMaxSpanDays = 3615897.0;
    static constexpr double kFirstDay = -657434.0;  // 1 January 100
    static constexpr double kLastDay = 2958465.0;   // 31 December 9999

    OleDate() = default;
    static OleDate Null() { return {}; }
    static OleDate Invalid() { return OleDate(0.0, DateStatus::Invalid); }
    static OleDate FromDays(double days) { return OleDate(days, DateStatus::Valid); }
    // Midnight-based calendar fields to a date; an impossible day gives an invalid date.
    static OleDate FromCalendar(const CalendarTime& time);
    // The machine's local time now, or an invalid date if it cannot be had.
    static OleDate LocalNow();

    double Days() const { return days_; }
    DateStatus Status() const { return status_; }
    bool IsValid() const { return status_ == DateStatus::Valid; }
    bool IsNull() const { return status_ == DateStatus::Null; }
    // Valid and within the years 100 to 9999, the span a date can be written in.
    bool IsInCalendar() const { return IsValid() && days_ >= kFirstDay && days_ < kLastDay + 1.0; }

    // Calendar fields, rounded to the nearest second; empty for a date that is not valid or out of range.
    std::optional<CalendarTime> ToCalendar() const;
    // The date in the user's locale format ("%x" under LC_TIME); empty when it cannot be formatted.
    std::string FormatLocale() const;
    // The date through a strftime pattern under the user's LC_TIME; empty when it cannot be formatted.
    std::string Format(const char* pattern) const;

    // The date on a continuous axis: a negative day number has its fraction turned to run forwards.
    static double Continuous(double days);
    // Back from the continuous axis to a day number.
    static double FromContinuous(double days);

    // Two valid dates are equal within half a second of their raw values; two null dates are equal; an
    // invalid date equals nothing.
    bool operator==(const OleDate& other) const;
    // Order on the continuous axis, without tolerance; false whenever either date is not valid.
    bool operator<(const OleDate& other) const;
    bool operator>(const OleDate& other) const { return other < *this; }
    bool operator<=(const OleDate& other) const { return *this < other || *this == other; }
    bool operator>=(const OleDate& other) const { return *this > other || *this == other; }

  private:
    OleDate(double days, DateStatus status) : days_(days), status_(status) {}

    double days_ = 0.0;
    DateStatus status_ = DateStatus::Null;
};

}  // namespace rivulet
