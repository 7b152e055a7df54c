#include "session/SimulatorDate.h"

#include <cstdint>

namespace rivulet {

namespace {

int Word(int value) {
    return static_cast<std::uint16_t>(value);
}

}  // namespace

OleDate DateFromMoment(const tNavigator_API_RMA_time_moment_t& moment) {
    const CalendarTime fields{Word(moment.get_year()), Word(moment.get_month()),  Word(moment.get_day()),
                              Word(moment.get_hour()), Word(moment.get_minute()), Word(moment.get_second())};
    const OleDate date = OleDate::FromCalendar(fields);
    const auto back = date.ToCalendar();
    if (!back || back->year != fields.year || back->month != fields.month || back->day != fields.day ||
        back->hour != fields.hour || back->minute != fields.minute || back->second != fields.second) {
        return OleDate::Invalid();
    }
    return date;
}

tNavigator_API_RMA_time_moment_t MomentFromDate(const OleDate& date) {
    const auto fields = date.ToCalendar();
    const CalendarTime t = fields ? *fields : CalendarTime{-1, -1, -1, -1, -1, -1};
    tNavigator_API_RMA_time_moment_t moment(t.year, static_cast<tNavigator_API_RMA_month_t>(t.month), t.day);
    moment.set_hour(t.hour);
    moment.set_minute(t.minute);
    moment.set_second(t.second);
    return moment;
}

}  // namespace rivulet
