// The model's simulator start on the scripted simulator library: the session it makes, the texts of each
// failing step, the run's dates and the stop.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "ScriptedApi.h"
#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"
#include "driver/tests/ExtModelProbe.h"
#include "driver/tests/ScriptedModelFixture.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;
using tnavscripted::Script;

TEST_F(StartPath, AStartedModelHasTheRunsDatesUntilStopped) {
    ASSERT_EQ(Start(), 0) << err_.szText;
    EXPECT_TRUE(model_.IsConnected());
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\nRunning on: Local host");
    EXPECT_EQ(model_.StartDateTime(), OleDate::FromCalendar({2015, 1, 1}));
    EXPECT_EQ(model_.EndDateTime(), OleDate::FromCalendar({2016, 1, 1}));
    EXPECT_EQ(model_.CurrentDateTime(), model_.StartDateTime());
    EXPECT_EQ(model_.ReportDateTime(), model_.StartDateTime());
    ASSERT_NE(model_.GetReservoir(), nullptr);

    EXPECT_EQ(model_.Stop(), 0);
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_NE(model_.GetReservoir(), nullptr);  // the data stay readable after the stop
    EXPECT_EQ(Script().Count("disconnect"), 1);
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\n<Not currently running>");
}

TEST_F(StartPath, EachFailingStepGivesItsTextAndDropsTheSession) {
    TheApp().Config.SimExecutable.clear();
    EXPECT_EQ(Start(), 1);
    EXPECT_STREQ(
        err_.szText,
        "Could not start the simulator process: <The tNavigator configuration for a Local Machine run has "
        "not been set. No new process is created.>");
    EXPECT_EQ(model_.GetSession(), nullptr);

    TheApp().Config.SimExecutable = (dir_ / "tnav-standin").string();
    Script().Fail("launch_job", 2, std::string(300, 'x'));
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(std::string(err_.szText), ("Failed to launch job: " + std::string(300, 'x')).substr(0, 255));
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_EQ(Script().Count("disconnect"), 1);

    Script().Fail("get_time_moment", 2, "no date", 2);
    EXPECT_EQ(Start(), 1);
    EXPECT_STREQ(
        err_.szText,
        "Error when creating the initial reservoir data: <Error when reading date: <no date>, type: <1>>");
    EXPECT_EQ(model_.GetSession(), nullptr);
}

TEST_F(StartPath, AModelWithoutAStartDateTakesTheTimeNow) {
    Script().state.start = {0, 13, 0};
    ASSERT_EQ(Start(), 0) << err_.szText;
    const double now = OleDate::LocalNow().Days();
    EXPECT_NEAR(model_.StartDateTime().Days(), now, 1.0 / 24);
    EXPECT_EQ(model_.EndDateTime(), model_.StartDateTime());
    EXPECT_EQ(model_.CurrentDateTime(), model_.StartDateTime());
}

TEST_F(StartPath, AClusterCaseConnectsToItsHeadNode) {
    model_.GetSettings().IsLocalMachine = false;
    model_.GetSettings().HeadNodeName = "head01";
    model_.GetSettings().HeadNodePort = 4000;
    ASSERT_EQ(Start(), 0) << err_.szText;
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\nRunning on: head01");
    EXPECT_EQ(Script().Count("create_local_dispatcher__force_ports"), 0);
    EXPECT_EQ(Script().LastArgs("connect_to_dispatcher").substr(0, 12), "head01|4000|");
}

}  // namespace
}  // namespace rivulet

namespace rivulet {
namespace {

// A started model stepped by the host: the job at 1 Jan 2015, the deck ending on 1 Jan 2016.
class Stepping : public StartPath {
  protected:
    void SetUp() override {
        StartPath::SetUp();
        ASSERT_EQ(Start(), 0) << err_.szText;
        Script().ClearCalls();
    }
    std::int32_t StepTo(double days) {
        tTimestepData step{};
        step.iSize = sizeof step;
        step.stTarget.bFlags = 1;
        step.stTarget.dSerial = days - 1.0;
        err_ = tErrorRecord{};
        return model_.Timestep(&step, &err_);
    }
    const double start_ = OleDate::FromCalendar({2015, 1, 1}).Days();
};

TEST_F(Stepping, AReportDateIsReachedThroughTheDecksOwnStops) {
    Script().state.stops = {{2015, 1, 11}, {2015, 1, 21}};
    ASSERT_EQ(StepTo(start_ + 31), 0) << err_.szText;
    EXPECT_EQ(Script().Count("run"), 3);
    EXPECT_EQ(model_.CurrentDateTime(), OleDate::FromDays(start_ + 31));
    EXPECT_EQ(model_.GetStepCount(), 1);
    // The schedule's next stop is the next event once it lies ahead; until then the deck's end is.
    tDate next{};
    ASSERT_EQ(model_.GetNextEvent(&next, &err_), 0);
    EXPECT_DOUBLE_EQ(next.dSerial, OleDate::FromCalendar({2016, 1, 1}).Days() - 1.0);
    Script().state.nextSchedule = {2015, 3, 1};
    ASSERT_EQ(model_.GetNextEvent(&next, &err_), 0);
    EXPECT_DOUBLE_EQ(next.dSerial, OleDate::FromCalendar({2015, 3, 1}).Days() - 1.0);

    // A target within a minute needs no pass at all.
    Script().ClearCalls();
    ASSERT_EQ(StepTo(start_ + 31 + 50.0 / 86400), 0) << err_.szText;
    EXPECT_EQ(Script().Count("run"), 0);
    EXPECT_EQ(model_.GetStepCount(), 2);
}

TEST_F(Stepping, EachWayOfMissingTheTargetHasItsText) {
    EXPECT_EQ(StepTo(start_ - 1), 1);
    EXPECT_STREQ(err_.szText, "Report was requested for a date preceeding the current date.");

    Script().state.stuck = true;
    EXPECT_EQ(StepTo(start_ + 10), 1);
    EXPECT_STREQ(err_.szText, "Timestep() inner loop failed to increment the current time.");
}

TEST_F(Stepping, AnOvershootIsReadButDoesNotMatch) {
    Script().state.overshootMinutes = 2;
    EXPECT_EQ(StepTo(start_ + 10), 1);
    EXPECT_STREQ(err_.szText, "Timestep() completed without matching the target report date.");
    EXPECT_EQ(model_.GetStepCount(), 0);
    EXPECT_EQ(Script().Count("get_time_moment"), 2);  // the clock, then the data read on arrival
}

TEST_F(Stepping, AJobThatEndsBetweenPassesEndsTheStep) {
    Script().state.stops = {{2015, 1, 11}};
    int passes = 0;
    ExtModelProbe::SetBetweenPasses(model_, [&] {
        if (++passes == 2) Script().state.jobEnded = true;
    });
    EXPECT_EQ(StepTo(start_ + 31), 1);
    EXPECT_STREQ(err_.szText, "Error when moving to the next time-step: <The simulator is not running.>");
}

TEST_F(Stepping, AStopFromAnotherThreadBetweenPassesEndsTheStepCleanly) {
    Script().state.stops = {{2015, 1, 11}, {2015, 1, 21}};
    int passes = 0;
    ExtModelProbe::SetBetweenPasses(model_, [&] {
        if (++passes == 2) std::thread([&] { model_.Stop(); }).join();
    });
    EXPECT_EQ(StepTo(start_ + 31), 1);
    EXPECT_STREQ(err_.szText, "Process was stopped during a Timestep().");
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_EQ(model_.CurrentDateTime(), OleDate::FromCalendar({2015, 1, 11}));
}

}  // namespace
}  // namespace rivulet
