// What the session tests share: the scripted simulator library reset for each test, a scratch directory
// that is also the machine-wide lock directory, a configured machine and an existing case file.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "ScriptedApi.h"
#include "case/CaseSettings.h"
#include "session/MachineConfig.h"

namespace rivulet {

class SessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::temp_directory_path() /
               ("rivulet_session_" + std::to_string(::getpid()) + "_" + info->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_ / "locks");
        ::setenv("RIVULET_LOCK_DIR", (dir_ / "locks").c_str(), 1);
        ::unsetenv("QNC_JOBID");
        tnavscripted::Script().Reset();

        config_.SimExecutable = Touch("tnav-standin");
        config_.LowerPort = 15960;
        config_.UpperPort = 15962;
        settings_.FileName = Touch("CASE.DATA");
        settings_.IsLocalMachine = true;
        settings_.ParallelCount = -1;
    }
    void TearDown() override {
        ::unsetenv("QNC_JOBID");
        ::unsetenv("QNC_JOBSLOT");
        ::unsetenv("QNC_HOST");
        std::filesystem::remove_all(dir_);
    }

    std::string Touch(const std::string& name) {
        const std::filesystem::path path = dir_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "RUNSPEC\n";
        return path.string();
    }
    static tnavscripted::State& Sim() { return tnavscripted::Script().state; }
    static int Calls(const std::string& name) { return tnavscripted::Script().Count(name); }
    static std::string Args(const std::string& name) { return tnavscripted::Script().LastArgs(name); }

    std::filesystem::path dir_;
    MachineConfig config_;
    CaseSettings settings_;
};

}  // namespace rivulet
