#include <string>
#include <tuple>

#include "common/PasswordStore.h"
#include "session/LinuxJobSession.h"
#include "session/WindowsJobSession.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

class LocalSession : public SessionTest {
  protected:
    bool Start(CWindowsJobSession& session) {
        error_.clear();
        return session.StartProcess(error_) == 0;
    }
    bool StartAndLaunch(CWindowsJobSession& session) { return Start(session) && session.LaunchJob(error_); }
    std::string error_;
};

TEST_F(LocalSession, StartsTheDispatcherOnTheFirstFreePortAndHoldsItUntilClosed) {
    {
        CWindowsJobSession session(&settings_, config_);
        ASSERT_TRUE(Start(session)) << error_;
        EXPECT_EQ(Args("create_local_dispatcher__force_ports"), config_.SimExecutable + "|(null)|15960");
        EXPECT_EQ(std::tuple(session.IsConnected(), CWindowsJobSession::PortsInUse()),
                  std::tuple(true, std::vector<int>{15960}));
        EXPECT_EQ(session.StartProcess(error_), 1);
        EXPECT_EQ(error_, "The current simulator process is still running. No new process was created.");

        // A second session of this process skips the held port.
        CWindowsJobSession second(&settings_, config_);
        ASSERT_TRUE(second.AcquirePort(15960, 15962));
        EXPECT_EQ(second.Port(), 15961);
    }
    EXPECT_EQ(
        std::tuple(CWindowsJobSession::PortsInUse().empty(), Calls("disconnect"), Calls("tnav_free_manager")),
        std::tuple(true, 1, 1));
}

TEST_F(LocalSession, RefusesAnUnconfiguredMachineAndABadRange) {
    config_.UpperPort = 70000;
    CWindowsJobSession session(&settings_, config_);
    EXPECT_FALSE(Start(session));
    EXPECT_EQ(
        error_,
        "The tNavigator configuration for a Local Machine run has not been set. No new process is created.");
    EXPECT_FALSE(session.AcquirePort(1023, 1030) || session.AcquirePort(2000, 1999));
    EXPECT_EQ(Calls("tnav_create_manager"), 0);
}

TEST_F(LocalSession, AMissingCaseFileKeepsThePortForTheNextAttempt) {
    settings_.FileName = (dir_ / "MISSING.DATA").string();
    CWindowsJobSession session(&settings_, config_);
    EXPECT_EQ(ErrorOf(Start(session), error_), "The case file " + settings_.FileName + " does not exist.");
    EXPECT_EQ(session.Port(), 15960);
    settings_.FileName = Touch("CASE.DATA");
    ASSERT_TRUE(Start(session)) << error_;
    EXPECT_EQ(std::tuple(session.Port(), CWindowsJobSession::PortsInUse()),
              std::tuple(15960, std::vector<int>{15960}));
}

TEST_F(LocalSession, AFailedDispatcherStartFreesTheManagerAndThePort) {
    Script().Fail("create_local_dispatcher__force_ports", 12, "port taken");
    CWindowsJobSession session(&settings_, config_);
    EXPECT_EQ(ErrorOf(Start(session), error_),
              "Failed to start local dispatcher.\nError code: 12\nport taken");
    EXPECT_EQ(std::tuple(Calls("tnav_free_manager"), session.IsConnected(),
                         CWindowsJobSession::PortsInUse().empty()),
              std::tuple(1, false, true));
}

TEST_F(LocalSession, DebugDirectoryNamesBothFilesWithThePort) {
    config_.DebugCommsDirectory = (dir_ / "IncDetailedApiLog").string();
    std::filesystem::create_directories(config_.DebugCommsDirectory);
    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(StartAndLaunch(session)) << error_;
    const std::string debugFile = config_.DebugCommsDirectory + "/DebugTNav15960.txt";
    EXPECT_EQ(Args("create_local_dispatcher__force_ports"),
              config_.SimExecutable + "|" + debugFile + "|15960");
    EXPECT_EQ(session.ApiLogPath(), config_.DebugCommsDirectory + "/DebugTNav15960_DetailedApiLog.txt");
    EXPECT_TRUE(session.ApiLog() != nullptr && std::filesystem::exists(session.ApiLogPath()));

    // Any other directory gives only the simulator's file.
    config_.DebugCommsDirectory = (dir_ / "plain").string();
    std::filesystem::create_directories(config_.DebugCommsDirectory);
    CWindowsJobSession other(&settings_, config_);
    ASSERT_TRUE(StartAndLaunch(other)) << error_;
    EXPECT_EQ(Args("create_local_dispatcher__force_ports"),
              config_.SimExecutable + "|" + config_.DebugCommsDirectory + "/DebugTNav15961.txt|15961");
    EXPECT_EQ(other.ApiLog(), nullptr);
}

TEST_F(LocalSession, LaunchSendsTheThreadCountWhenNotNegativeAndAScenarioRunsACopyOfTheCase) {
    {
        settings_.ParallelCount = 0;
        CWindowsJobSession session(&settings_, config_);
        ASSERT_TRUE(StartAndLaunch(session)) << error_;
        EXPECT_EQ(Args("launch_job"), settings_.FileName + "||0|--cpu-num=0");
    }
    Script().Reset();
    settings_.ParallelCount = -1;
    SetScenario("3", "4", "node7");
    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(StartAndLaunch(session)) << error_;
    EXPECT_EQ(settings_.FileName, (dir_ / "CASE_NODE7_3.DATA").string());
    EXPECT_TRUE(std::filesystem::exists(settings_.FileName));
    EXPECT_EQ(Args("launch_job"), settings_.FileName + "||0");
}

TEST_F(LocalSession, VersionGateAndMaxRateDetails) {
    // The version, the launch's error (empty: it passes) and whether the simulator gives max rate details.
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"v4.2", "", false},
        {"V5.0", "", true},
        {"v5", "", true},
        {"v4.2.3", "", false},
        {"v4.2.4", "", true},
        {"v4.3", "", true},
        {"v4.1", "The simulator version number (v4.1) is is below the minimum supported (v4.2).", false},
        {"v4", "The simulator version number (v4) is is below the minimum supported (v4.2).", false},
        {"4.2", "The simulator version number (4.2) is not in the expected format.", false},
        {"v", "The simulator version number (v) is not in the expected format.", false},
        {"", "No simulator version number has been read.", false},
    };
    for (const auto& [version, error, details] : cases) {
        Script().Reset();
        Sim().version = version;
        CWindowsJobSession session(&settings_, config_);
        const bool launched = StartAndLaunch(session);
        EXPECT_EQ(std::tuple(launched, launched ? std::string() : error_, Calls("stop"),
                             launched && session.GetSupportsMaxRateDetails()),
                  std::tuple(*error == '\0', error, launched ? 0 : 1, details))
            << version;
    }
}

TEST_F(LocalSession, LaunchFailuresGiveTheirTextsAndStopTheJob) {
    // The failing call, its text and how many stops follow it.
    const std::tuple<const char*, const char*, int> cases[] = {
        {"launch_job", "Failed to launch job: boom.", 0},
        {"get_job_by_id", "Failed to identify job using job id: boom.", 0},
        {"wait_for_start", "Error when waiting for job to start: boom.", 1},
        {"check_compatibility", "Error when launching job: boom.", 1},
        {"get_tnav_version", "Error when reading simulator version: boom.", 1},
    };
    for (const auto& [call, error, stops] : cases) {
        Script().Reset();
        Script().Fail(call, 5, "boom");
        CWindowsJobSession session(&settings_, config_);
        EXPECT_FALSE(StartAndLaunch(session)) << call;
        // The manager stays until the session goes.
        EXPECT_EQ(std::tuple(error_, Calls("stop"), session.IsConnected()), std::tuple(error, stops, true));
    }
    Script().Reset();
    Sim().nullWellRequester = true;
    CWindowsJobSession session(&settings_, config_);
    EXPECT_FALSE(StartAndLaunch(session));
    EXPECT_EQ(std::tuple(error_, Calls("stop")), std::tuple("Error when creating well data requester.", 1));
}

TEST_F(LocalSession, OpeningIsAwaitedTwiceBeforeItFails) {
    Script().Fail("wait_for_state", 2, "still loading");
    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(StartAndLaunch(session)) << error_;
    EXPECT_EQ(std::tuple(Calls("wait_for_state"), Calls("state")), std::tuple(2, 1));

    Script().Reset();
    Script().Fail("wait_for_state", 2, "first", 1);
    Script().Fail("wait_for_state", 2, "second", 2);
    CWindowsJobSession twice(&settings_, config_);
    EXPECT_EQ(ErrorOf(StartAndLaunch(twice), error_),
              "Error when waiting for job to complete opening: second.");

    Script().Reset();
    Script().Fail("wait_for_state", 2, "first");
    Script().Fail("state", 2, "no state");
    CWindowsJobSession unread(&settings_, config_);
    EXPECT_EQ(ErrorOf(StartAndLaunch(unread), error_),
              "Error when waiting for job to complete opening: first.");
}

TEST_F(LocalSession, LaunchNeedsAConnectionAndHappensOnceAndClosingStopsTheJobTwice) {
    CWindowsJobSession session(&settings_, config_);
    EXPECT_EQ(ErrorOf(session.LaunchJob(error_), error_), "The process is not running.");
    ASSERT_TRUE(StartAndLaunch(session)) << error_;
    EXPECT_EQ(ErrorOf(session.LaunchJob(error_), error_),
              "Invalid operation: the job has already been launched.");
    EXPECT_EQ(std::tuple(Calls("launch_job"), session.IsJobRunning(), session.HasJobEnded()),
              std::tuple(1, true, false));

    Script().ClearCalls();
    session.CloseSession();
    EXPECT_EQ(std::tuple(Calls("stop"), Calls("tnav_free_job"), Calls("disconnect"), session.IsConnected(),
                         session.Port()),
              std::tuple(2, 1, 1, false, -1));
}

TEST_F(LocalSession, AnEndedJobOrALostConnectionCountsAsEnded) {
    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(StartAndLaunch(session)) << error_;
    Sim().jobEnded = true;
    EXPECT_EQ(std::tuple(session.IsJobRunning(), session.HasJobEnded()), std::tuple(false, true));
    Script().ClearCalls();
    EXPECT_TRUE(session.StopSimulation(error_));
    EXPECT_EQ(Calls("stop"), 0);

    Sim().jobEnded = false;
    Sim().connectionLost = true;
    EXPECT_EQ(std::tuple(session.IsJobRunning(), session.HasJobEnded()), std::tuple(false, true));
}

class ClusterSession : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        settings_.IsLocalMachine = false;
        settings_.HeadNodeName = "head01";
        settings_.HeadNodePort = 1024;
        settings_.FileName = "/data/runs/CASE.DATA";
        config_.LinuxUser = "reservoir";
        config_.Password = StorePassword("crypted:secret");
    }
    std::string error_;
};

TEST_F(ClusterSession, ChecksTheCaseBeforeConnecting) {
    const std::tuple<int, const char*, const char*> cases[] = {
        {1023, "/data/CASE.DATA",
         "The tNavigator case settings for a Linux cluster are invalid. No new process is created."},
        {65536, "/data/CASE.DATA",
         "The tNavigator case settings for a Linux cluster are invalid. No new process is created."},
        {65535, "", "No case file name has been defined. No new process is created"},
        {65535, "CASE.DATA", "The case name CASE.DATA could not be split into a file name and linux path."},
    };
    for (const auto& [port, file, error] : cases) {
        settings_.HeadNodePort = port;
        settings_.FileName = file;
        CLinuxJobSession session(&settings_, config_);
        EXPECT_EQ((std::tuple{session.StartProcess(error_), error_}), std::tuple(1, error));
    }
    EXPECT_EQ(Calls("connect_to_dispatcher"), 0);
}

TEST_F(ClusterSession, ConnectsAsTheUserWithTheCryptedPassword) {
    settings_.ParallelCount = 0;
    settings_.LinuxQueue = "   ";
    CLinuxJobSession session(&settings_, config_);
    ASSERT_EQ(session.StartProcess(error_), 0) << error_;
    EXPECT_EQ(Args("connect_to_dispatcher"), "head01|1024|reservoir|crypted:secret");
    EXPECT_STREQ(session.GetHostDescription(), "head01");
    ASSERT_TRUE(session.LaunchJob(error_)) << error_;
    EXPECT_EQ(Args("launch_job"), "/data/runs/CASE.DATA||0");  // no node count, no queue

    settings_.ParallelCount = 8;
    settings_.LinuxQueue = " long ";
    CLinuxJobSession second(&settings_, config_);
    ASSERT_EQ(second.StartProcess(error_), 0) << error_;
    ASSERT_TRUE(second.LaunchJob(error_)) << error_;
    EXPECT_EQ(Args("launch_job"), "/data/runs/CASE.DATA|long|8");
}

TEST_F(ClusterSession, ARefusedConnectionKeepsTheManagerUntilTheSessionGoes) {
    Script().Fail("connect_to_dispatcher", 401, "unknown user");
    {
        CLinuxJobSession session(&settings_, config_);
        EXPECT_EQ(session.StartProcess(error_), 1);
        EXPECT_EQ(error_, "Failed to connect to linux dispatcher.\nError code: 401\nunknown user");
        EXPECT_EQ(std::tuple(std::string(session.GetHostDescription()), Calls("tnav_free_manager")),
                  std::tuple("", 0));
    }
    EXPECT_EQ(Calls("tnav_free_manager"), 1);
}

TEST_F(ClusterSession, ScenarioCopyIsNamedInTheClustersTerms) {
    SetScenario("3", "4", "host");
    CLinuxJobSession unseen(&settings_, config_);
    EXPECT_EQ(unseen.StartProcess(error_), 1);
    EXPECT_EQ(error_,
              "The case file's directory as viewed by your local machine must exist for a senario run.");

    settings_.WindowsEquivDir = (dir_ / "runs").string();
    Touch("runs/CASE.DATA");
    CLinuxJobSession session(&settings_, config_);
    ASSERT_EQ(session.StartProcess(error_), 0) << error_;
    EXPECT_EQ(settings_.FileName, "/data/runs/CASE_HOST_3.DATA");
    EXPECT_TRUE(std::filesystem::exists(dir_ / "runs" / "CASE_HOST_3.DATA"));
}

}  // namespace
}  // namespace rivulet
