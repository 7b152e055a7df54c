// A model on the scripted simulator library: a scratch directory with a case file, a configured machine
// and a fresh script for each test.
#pragma once

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

class StartPath : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::temp_directory_path() /
               ("rivulet_model_" + std::to_string(::getpid()) + "_" + info->name());
        std::filesystem::create_directories(dir_ / "locks");
        ::setenv("RIVULET_LOCK_DIR", (dir_ / "locks").c_str(), 1);
        std::ofstream(dir_ / "CASE.DATA") << "RUNSPEC\n";
        std::ofstream(dir_ / "tnav-standin") << "\n";
        saved_ = TheApp().Config;
        TheApp().Config.SimExecutable = (dir_ / "tnav-standin").string();
        TheApp().Config.LowerPort = 15960;
        TheApp().Config.UpperPort = 15961;
        TheApp().Config.DebugCommsDirectory.clear();
        tnavscripted::Script().Reset();
        model_.GetSettings().FileName = (dir_ / "CASE.DATA").string();
        model_.GetSettings().IsLocalMachine = true;
    }
    void TearDown() override {
        TheApp().Config = saved_;
        std::filesystem::remove_all(dir_);
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

    std::filesystem::path dir_;
    MachineConfig saved_;
    CExtModel model_;
    tErrorRecord err_{};
};

}  // namespace rivulet
