// Automation dates: the calendar both ways, negative days, equality within half a second.
#include <gtest/gtest.h>

#include <optional>
#include <tuple>

#include "platform/OleDate.h"

namespace rivulet {
namespace {

TEST(OleDate, CalendarDaysMatchTheAutomationEpochAndImpossibleDaysAreInvalid) {
    // There is no 29 February 1900, and before day 0 the fraction runs forward.
    using C = std::pair<CalendarTime, std::optional<double>>;
    for (const auto& [time, days] :
         {C{{1899, 12, 30}, 0.0}, C{{1899, 12, 31}, 1.0}, C{{1900, 3, 1}, 61.0}, C{{2000, 1, 1, 12}, 36526.5},
          C{{2024, 2, 29}, 45351.0}, C{{1899, 12, 29, 6}, -1.25}, C{{2023, 2, 29}, std::nullopt},
          C{{2023, 4, 31}, std::nullopt}, C{{2023, 13, 1}, std::nullopt}}) {
        const OleDate date = OleDate::FromCalendar(time);
        EXPECT_EQ(date.IsValid() ? std::optional(date.Days()) : std::nullopt, days)
            << time.year << "-" << time.month;
    }
}

TEST(OleDate, RoundTripsThroughTheCalendarToTheNearestSecond) {
    for (const double days : {0.0, 1.5, -1.25, -400.75, 36526.5, 45000.123456, 2958465.0}) {
        const auto t = OleDate::FromDays(days).ToCalendar();
        ASSERT_TRUE(t.has_value()) << days;
        EXPECT_NEAR(OleDate::FromCalendar(*t).Days(), days, 0.5 / 86400.0) << days;
    }
    const auto late = OleDate::FromDays(1.0 + 86399.6 / 86400.0).ToCalendar();  // rounds up to midnight
    ASSERT_TRUE(late.has_value());
    EXPECT_EQ(std::tie(late->year, late->month, late->day, late->hour), std::tuple(1900, 1, 1, 0));
    EXPECT_FALSE(OleDate::FromDays(5e7).ToCalendar().has_value());
}

TEST(OleDate, EqualityAllowsHalfASecondAndOrderFoldsNegativeDays) {
    const double halfSecond = 1.0 / 172800.0;
    EXPECT_EQ(OleDate::FromDays(100.0), OleDate::FromDays(100.0 + 0.9 * halfSecond));
    EXPECT_FALSE(OleDate::FromDays(100.0) == OleDate::FromDays(100.0 + 1.1 * halfSecond));
    // Order has no tolerance: a date a fraction of a second later is both equal and greater.
    EXPECT_TRUE(OleDate::FromDays(100.0) < OleDate::FromDays(100.0 + 0.9 * halfSecond));
    EXPECT_TRUE(OleDate::FromDays(100.0 + 0.9 * halfSecond) >= OleDate::FromDays(100.0));
    EXPECT_FALSE(OleDate::FromDays(100.5) <= OleDate::FromDays(100.25));
    // -1.25 is 29 December 06:00 and -1.75 the same day at 18:00: later, though the number is smaller.
    EXPECT_TRUE(OleDate::FromDays(-1.25) < OleDate::FromDays(-1.75));
    EXPECT_TRUE(OleDate::FromDays(-1.75) < OleDate::FromDays(-0.5));
    EXPECT_TRUE(OleDate::FromDays(-2.0) < OleDate::FromDays(-1.25));
    EXPECT_FALSE(OleDate::FromDays(-1.75) < OleDate::FromDays(-1.25));
    // Null and invalid dates are neither before nor after anything.
    EXPECT_FALSE(OleDate::Null() < OleDate::FromDays(1.0));
    EXPECT_FALSE(OleDate::FromDays(1.0) < OleDate::Invalid());
    EXPECT_EQ(OleDate::Null(), OleDate::Null());
    EXPECT_FALSE(OleDate::Invalid() == OleDate::Invalid());
    EXPECT_FALSE(OleDate::Null() == OleDate::FromDays(0.0));
    EXPECT_FALSE(OleDate::Null() <= OleDate::FromDays(0.0));
    EXPECT_FALSE(OleDate::Null() >= OleDate::FromDays(0.0));
}

TEST(OleDate, DaysAddOnTheContinuousAxis) {
    // 29 December 1899 06:00 plus a day and a half is 30 December 18:00; 1 January less 3.25 days is
    // 28 December 18:00, day -2 with the fraction running forwards.
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(-1.25) + 1.5), 0.75);
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(2.0) - 3.25), -2.75);
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(-1.25)), -1.25);
    EXPECT_EQ(OleDate::FromDays(42000.5).Format("%d %b %Y %H"), "27 Dec 2014 12");
}

}  // namespace
}  // namespace rivulet
