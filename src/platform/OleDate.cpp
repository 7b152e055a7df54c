#include "platform/OleDate.h"

#include <locale.h>
#include <clocale>
#include <cmath>
#include <ctime>

namespace rivulet {

namespace {

// Days from 1970-01-01 of a proleptic Gregorian date (H. Hinnant's civil-days algorithm).
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2 ? 1 : 0;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void CivilFromDays(long long z, int& year, int& month, int& day) {
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long long y = static_cast<long long>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(y + (month <= 2 ? 1 : 0));
}

// 1899-12-30 as days from 1970-01-01.
constexpr long long kOleEpochFromUnix = -25569;

}  // namespace

double OleDate::Continuous(double days) {
    if (days > -kHalfSecond) return days;
    const double whole = std::ceil(days);
    const double fraction = days - std::trunc(days);
    return whole - fraction;
}

OleDate OleDate::FromCalendar(const CalendarTime& t) {
    if (t.month < 1 || t.month > 12 || t.day < 1 || t.day > 31 || t.hour < 0 || t.hour > 23 || t.minute < 0 ||
        t.minute > 59 || t.second < 0 || t.second > 59 || t.year < 100 || t.year > 9999) {
        return Invalid();
    }
    const long long civil =
        DaysFromCivil(t.year, static_cast<unsigned>(t.month), static_cast<unsigned>(t.day));
    int y = 0, m = 0, d = 0;
    CivilFromDays(civil, y, m, d);
    if (y != t.year || m != t.month || d != t.day) return Invalid();  // 31 April and the like
    const double wholeDays = static_cast<double>(civil - kOleEpochFromUnix);
    const double fraction = (t.hour * 3600.0 + t.minute * 60.0 + t.second) / 86400.0;
    return FromDays(wholeDays >= 0 ? wholeDays + fraction : wholeDays - fraction);
}

std::optional<CalendarTime> OleDate::ToCalendar() const {
    if (!IsValid() || std::isnan(days_) || std::fabs(days_) > kMaxSpanDays) return std::nullopt;
    const double continuous = Continuous(days_);
    double wholeDays = std::floor(continuous);
    long long seconds = std::llround((continuous - wholeDays) * 86400.0);
    if (seconds >= 86400) {
        seconds -= 86400;
        wholeDays += 1.0;
    }
    CalendarTime t;
    CivilFromDays(static_cast<long long>(wholeDays) + kOleEpochFromUnix, t.year, t.month, t.day);
    t.hour = static_cast<int>(seconds / 3600);
    t.minute = static_cast<int>((seconds / 60) % 60);
    t.second = static_cast<int>(seconds % 60);
    return t;
}

OleDate OleDate::LocalNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (now == static_cast<std::time_t>(-1) || localtime_r(&now, &local) == nullptr) return Invalid();
    return FromCalendar(
        {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec});
}

std::string OleDate::FormatLocale() const {
    return Format("%x");
}

double OleDate::FromContinuous(double days) {
    if (days > -kHalfSecond) return days;
    const double whole = std::floor(days);
    return whole - days + whole;
}

std::string OleDate::Format(const char* pattern) const {
    const auto t = ToCalendar();
    if (!t) return {};
    std::tm tm{};
    tm.tm_year = t->year - 1900;
    tm.tm_mon = t->month - 1;
    tm.tm_mday = t->day;
    tm.tm_hour = t->hour;
    tm.tm_min = t->minute;
    tm.tm_sec = t->second;
    char text[128];
    // The user's date format comes from the environment's LC_TIME, whatever the process locale is.
    locale_t userLocale = newlocale(LC_TIME_MASK, "", static_cast<locale_t>(0));
    std::size_t n = 0;
    if (userLocale != static_cast<locale_t>(0)) {
        n = strftime_l(text, sizeof(text), pattern, &tm, userLocale);
        freelocale(userLocale);
    } else {
        n = std::strftime(text, sizeof(text), pattern, &tm);
    }
    return std::string(text, n);
}

bool OleDate::operator==(const OleDate& other) const {
    if (status_ != other.status_) return false;
    if (IsNull()) return true;
    return IsValid() && std::fabs(days_ - other.days_) < kHalfSecond;
}

bool OleDate::operator<(const OleDate& other) const {
    return IsValid() && other.IsValid() && Continuous(days_) < Continuous(other.days_);
}

}  // namespace rivulet
