// The model's simulator start on the scripted simulator library: the session it makes, the texts of each
// failing step, the run's dates and the stop.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "ScriptedApi.h"
#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;
using tnavscripted::Script;

class StartPath : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("rivulet_start_" + std::to_string(::getpid()));
        fs::create_directories(dir_ / "locks");
        ::setenv("RIVULET_LOCK_DIR", (dir_ / "locks").c_str(), 1);
        std::ofstream(dir_ / "CASE.DATA") << "RUNSPEC\n";
        std::ofstream(dir_ / "tnav-standin") << "\n";
        saved_ = TheApp().Config;
        TheApp().Config.SimExecutable = (dir_ / "tnav-standin").string();
        TheApp().Config.LowerPort = 15960;
        TheApp().Config.UpperPort = 15961;
        TheApp().Config.DebugCommsDirectory.clear();
        Script().Reset();
        model_.GetSettings().FileName = (dir_ / "CASE.DATA").string();
        model_.GetSettings().IsLocalMachine = true;
    }
    void TearDown() override {
        TheApp().Config = saved_;
        fs::remove_all(dir_);
    }
    std::int32_t Start() {
        err_ = tErrorRecord{};
        return model_.StartSimulator(nullptr, &err_);
    }
    std::string Status() {
        char text[256] = {};
        model_.GetModMsg(text, sizeof text - 1, nullptr);
        return text;
    }

    fs::path dir_;
    MachineConfig saved_;
    CExtModel model_;
    tErrorRecord err_{};
};

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
