#include "session/SimulatorDate.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

OleDate Day(int year, int month, int day) {
    return OleDate::FromCalendar({year, month, day});
}

tNavigator_API_RMA_time_moment_t Moment(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    tNavigator_API_RMA_time_moment_t m(y, static_cast<tNavigator_API_RMA_month_t>(mo), d);
    m.set_hour(h);
    m.set_minute(mi);
    m.set_second(s);
    return m;
}

std::string Text(const tNavigator_API_RMA_time_moment_t& m) {
    std::ostringstream out;
    out << m.get_year() << '-' << m.get_month() << '-' << m.get_day() << ' ' << m.get_hour() << ':'
        << m.get_minute() << ':' << m.get_second();
    return out.str();
}

TEST(SimulatorDate, MomentsBecomeDatesOnlyWhenTheyNameARealMoment) {
    EXPECT_EQ(DateFromMoment(Moment(2015, 1, 1)), Day(2015, 1, 1));
    EXPECT_DOUBLE_EQ(DateFromMoment(Moment(1900, 1, 1)).Days(), 2.0);
    EXPECT_DOUBLE_EQ(DateFromMoment(Moment(1899, 12, 29, 6)).Days(), -1.25);
    EXPECT_TRUE(DateFromMoment(Moment(2016, 2, 29)).IsValid());
    EXPECT_EQ(DateFromMoment(Moment(2015, 2, 29)).Status(), DateStatus::Invalid);
    EXPECT_EQ(DateFromMoment(Moment(2015, 4, 31)).Status(), DateStatus::Invalid);
    EXPECT_EQ(DateFromMoment(Moment(2015, 1, 1, 24)).Status(), DateStatus::Invalid);
    EXPECT_EQ(DateFromMoment(Moment(-1, 1, 1)).Status(), DateStatus::Invalid);
}

TEST(SimulatorDate, DatesBecomeMomentsRoundedToTheNearestSecond) {
    const double second = 1.0 / 86400.0;
    const OleDate noon = Day(2015, 3, 7);
    EXPECT_EQ(Text(MomentFromDate(OleDate::FromDays(noon.Days() + 0.5 + 0.4 * second))), "2015-3-7 12:0:0");
    EXPECT_EQ(Text(MomentFromDate(OleDate::FromDays(noon.Days() + 0.5 + 0.6 * second))), "2015-3-7 12:0:1");
    EXPECT_EQ(Text(MomentFromDate(OleDate::FromDays(noon.Days() + 1.0 - 0.2 * second))), "2015-3-8 0:0:0");
    EXPECT_EQ(Text(MomentFromDate(OleDate::FromDays(-1.75))), "1899-12-29 18:0:0");
    EXPECT_EQ(Text(MomentFromDate(OleDate::Null())), "-1--1--1 -1:-1:-1");
    // A moment taken back to a date and again to a moment is unchanged.
    const auto moment = Moment(2031, 12, 31, 23, 59, 59);
    EXPECT_EQ(Text(MomentFromDate(DateFromMoment(moment))), Text(moment));
}

// A launched job with its dates read: start 1 Jan 2015, end 1 Jan 2016, the job at its start and the
// schedule's next stop on 1 Feb 2015.
class ReportStepping : public LaunchedSession {
  protected:
    void SetUp() override {
        LaunchedSession::SetUp();
        ASSERT_TRUE(Create()) << error_;
        Script().ClearCalls();
    }
    // What a report date request or a step left: its error, or "(no error)" when it was taken.
    std::string Request(const OleDate& date) {
        return ErrorOf(session_->RequestReportDate(date, error_), error_);
    }
    std::string Step() { return ErrorOf(session_->Continue(error_), error_); }
};

TEST_F(ReportStepping, CreateReservoirReadsTheRunsDates) {
    EXPECT_EQ(std::tuple(session_->StartDate(), session_->EndDate(), session_->CurrentDate()),
              std::tuple(Day(2015, 1, 1), Day(2016, 1, 1), Day(2015, 1, 1)));
    EXPECT_TRUE(session_->NextReportDate().IsNull());
    const std::string log = Log();
    EXPECT_TRUE(log.starts_with("\n*** CreateReservoir ***\n")) << log;
    // The read of the wells ends with their inflow tables.
    EXPECT_TRUE(log.ends_with("\n*** ReadCurrentData ***\n\n*** getIprTables ***\n")) << log;
}

TEST_F(ReportStepping, DateReadsTellFailuresFromDatesTheSimulatorHasNot) {
    // A schedule that is done has no next date, which is no failure; a date past the deck's end, or not
    // after the current date, gives way to the end.
    OleDate next;
    for (const auto& [valid, stop, expected] :
         {std::tuple{true, tnavscripted::Moment{2015, 2, 1}, Day(2015, 2, 1)},
          std::tuple{false, tnavscripted::Moment{2015, 2, 1}, OleDate::Null()},
          std::tuple{true, tnavscripted::Moment{2017, 1, 1}, Day(2016, 1, 1)},
          std::tuple{true, tnavscripted::Moment{2015, 1, 1}, Day(2016, 1, 1)}}) {
        std::tie(Sim().nextScheduleValid, Sim().nextSchedule) = std::tuple(valid, stop);
        ASSERT_TRUE(session_->ReadNextEventDate(&next, error_));
        EXPECT_EQ(next, expected);
    }

    Script().Fail("get_time_moment", 9, "no job");
    next = Day(2000, 1, 1);
    EXPECT_EQ(ErrorOf(session_->ReadNextEventDate(&next, error_), error_),
              "Error when reading date: <no job>, type: <3>");
    EXPECT_EQ(next, Day(2000, 1, 1));
}

TEST_F(ReportStepping, ReportDatesOnlyMoveForwardAndStopAtTheEnd) {
    EXPECT_EQ(Request(OleDate::Null()), "An invalid report date was requested.");
    EXPECT_EQ(Request(Day(2014, 12, 31)), "Report was requested for a date preceeding the current date.");

    const double base = Day(2015, 1, 1).Days();
    ASSERT_TRUE(session_->RequestReportDate(OleDate::FromDays(base + 10.5), error_));
    EXPECT_EQ(Request(OleDate::FromDays(base + 10.25)),
              "Report date request is out-of-order: new report date must not precede previous dates.");
    EXPECT_TRUE(session_->RequestReportDate(OleDate::FromDays(base + 10.5), error_));

    ASSERT_TRUE(session_->RequestReportDate(Day(2020, 1, 1), error_));
    EXPECT_EQ(session_->NextReportDate(), Day(2016, 1, 1));
    ASSERT_TRUE(session_->Continue(error_));
    EXPECT_EQ(Calls("run"), 0);  // never run on to the deck's end
}

TEST_F(ReportStepping, ContinueRunsToTheReportDateAndWaitsForThePause) {
    EXPECT_EQ(Step(), "The simulator's next report date is not valid.");

    // Less than half a second ahead: the job stands there already.
    ASSERT_TRUE(session_->RequestReportDate(OleDate::FromDays(Day(2015, 1, 1).Days() + 0.4 / 86400), error_));
    ASSERT_TRUE(session_->Continue(error_));
    EXPECT_EQ(Calls("run"), 0);

    ASSERT_TRUE(session_->RequestReportDate(OleDate::FromDays(Day(2015, 3, 1).Days() + 0.25), error_));
    ASSERT_TRUE(session_->Continue(error_)) << error_;
    EXPECT_EQ(Args("run"), "2015-3-1 6:0:0");
    EXPECT_EQ(Script().CallNames().back(), "wait_for_state");
    OleDate current;
    ASSERT_TRUE(session_->ReadCurrentDate(&current, error_));
    EXPECT_EQ(current, session_->NextReportDate());
    // The stepping banner shows the end date under the report date's label.
    EXPECT_NE(Log().find("\n*** Continue: current date = 42005, next report date = 42370 ***\n"),
              std::string::npos);
}

TEST_F(ReportStepping, ContinueRefusesAJobThatCannotBeStepped) {
    ASSERT_TRUE(session_->RequestReportDate(Day(2015, 2, 1), error_));
    Sim().jobState = TNAV_JOB_STATE_RUNNING;
    EXPECT_EQ(Step(), "Cannot move to next step unless opening or paused");
    Script().Fail("state", 3, "lost");
    EXPECT_EQ(Step(), "Error when requesting current state: lost");
    Sim().jobState = TNAV_JOB_STATE_PAUSED;
    Script().Fail("run", 3, "refused");
    EXPECT_EQ(Step(), "Error when running to next report date: refused");

    Sim().jobEnded = true;
    EXPECT_EQ(Step(), "The simulator is not running.");
    Sim().connectionLost = true;
    EXPECT_EQ(Step(), "The process is not running.");
    EXPECT_EQ(Calls("run"), 1);
}

}  // namespace
}  // namespace rivulet
