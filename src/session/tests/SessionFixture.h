// What the session tests share: the scripted simulator library reset for each test, a scratch directory
// that is also the machine-wide lock directory, a configured machine and an existing case file; a local
// session launched on them; and a well requester on the scripted library that logs into a string.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ScriptedApi.h"
#include "ScriptedObjects.h"
#include "case/CaseSettings.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/MachineConfig.h"
#include "session/ReservoirData.h"
#include "session/WellRequester.h"
#include "session/WindowsJobSession.h"
#include "wells/WellList.h"

namespace rivulet {

using tnavscripted::Script;
using Names = std::vector<std::string>;

// Every failure ends the log with its message on a line of its own.
inline bool EndsWithLine(const std::string& log, const std::string& line) {
    return log.ends_with("\n" + line + "\n");
}

// How often the scripted library was called by that name, and the arguments of the last such call.
inline int Calls(const std::string& name) {
    return Script().Count(name);
}
inline std::string Args(const std::string& name) {
    return Script().LastArgs(name);
}

// The text a call that was to fail left: its error, or "(no error)" when it succeeded.
inline std::string ErrorOf(bool succeeded, const std::string& error) {
    return succeeded ? "(no error)" : error;
}

class SessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::temp_directory_path() /
               ("rivulet_session_" + std::to_string(::getpid()) + "_" + info->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_ / "locks");
        ::setenv("RIVULET_LOCK_DIR", (dir_ / "locks").c_str(), 1);
        UnsetScenario();
        Script().Reset();

        config_.SimExecutable = Touch("tnav-standin");
        config_.LowerPort = 15960;
        config_.UpperPort = 15962;
        settings_.FileName = Touch("CASE.DATA");
        settings_.IsLocalMachine = true;
        settings_.ParallelCount = -1;
    }
    void TearDown() override {
        UnsetScenario();
        std::filesystem::current_path(std::filesystem::temp_directory_path());
        std::filesystem::remove_all(dir_);
    }
    static void UnsetScenario() {
        for (const char* name : {"QNC_JOBSLOT", "QNC_JOBID", "QNC_HOST"}) ::unsetenv(name);
    }
    static void SetScenario(const char* slot, const char* id, const char* host) {
        ::setenv("QNC_JOBSLOT", slot, 1);
        ::setenv("QNC_JOBID", id, 1);
        ::setenv("QNC_HOST", host, 1);
    }

    std::string Touch(const std::string& name) {
        const std::filesystem::path path = dir_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "RUNSPEC\n";
        return path.string();
    }
    static tnavscripted::State& Sim() { return Script().state; }

    std::filesystem::path dir_;
    MachineConfig config_;
    CaseSettings settings_;
};

// A local session whose job is launched, writing the detailed API log unless logged_ is cleared first.
class LaunchedSession : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        if (logged_) {
            config_.DebugCommsDirectory = (dir_ / "IncDetailedApiLog").string();
            std::filesystem::create_directories(config_.DebugCommsDirectory);
        }
        session_ = std::make_unique<CWindowsJobSession>(&settings_, config_);
        ASSERT_EQ(session_->StartProcess(error_), 0) << error_;
        ASSERT_TRUE(session_->LaunchJob(error_)) << error_;
    }
    bool Create(const std::string& connected = "") {
        return session_->CreateReservoir(reservoir_, connected, error_);
    }
    WellData& At(int index) { return reservoir_->wells[static_cast<std::size_t>(index)]; }
    std::string Log() {
        session_->ApiLog()->flush();
        std::ifstream in(session_->ApiLogPath());
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    bool logged_ = true;
    std::unique_ptr<CWindowsJobSession> session_;
    std::unique_ptr<ReservoirData> reservoir_;
    std::string error_;
};

// A well requester on the scripted library; SetUp may be called again to start afresh within a test.
class RequesterTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Script().Reset();
        wells_.Clear();
        log_.str("");
        error_.clear();
    }

    FluidProperties fluid_;
    TNavUnitSystem units_;
    WellList wells_;
    std::ostringstream log_;
    tnavscripted::ScriptedWellRequester scripted_;
    WellRequester requester_{&scripted_, &log_};
    std::string error_;
};

}  // namespace rivulet
