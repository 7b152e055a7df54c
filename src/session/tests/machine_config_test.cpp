#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "common/PasswordStore.h"
#include "platform/Registry.h"
#include "session/MachineConfig.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;

class MachineConfigStore : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("rivulet-machine-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        ::setenv("RIVULET_REGISTRY", (dir_ / "registry.reg").c_str(), 1);
        simulator_ = (dir_ / "tnav-standin").string();
        std::ofstream(simulator_) << "#!/bin/sh\n";
    }
    void TearDown() override {
        ::unsetenv("RIVULET_REGISTRY");
        fs::remove_all(dir_);
    }
    static void Put(const std::string& key, const RegistryValues& values) {
        ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, key, values));
    }

    fs::path dir_;
    std::string simulator_;
};

TEST_F(MachineConfigStore, LoadsNormalisesAndStores) {
    Put(kDriverRegistryKey, {{"SimExecutable", RegistryValue::String(simulator_)},
                             {"DebugCommsDirectory", RegistryValue::String(dir_.string())},
                             {"LowerPort", RegistryValue::Dword(20000)},
                             {"UpperPort", RegistryValue::Dword(10000)},
                             {"Tassoc", RegistryValue::String("ABCDEF")}});
    MachineConfig config;
    EXPECT_EQ(config.SimExecutable, simulator_);
    EXPECT_EQ(config.DebugCommsDirectory, dir_.string());
    EXPECT_EQ(config.LowerPort, 10000);
    EXPECT_EQ(config.UpperPort, 20000);
    EXPECT_TRUE(config.IsConfigured(true));

    config.Password = kPasswordMask;  // the dialog's mask leaves the stored text alone
    config.LinuxUser = "reservoir";
    config.Store();
    RegistryValues stored;
    ASSERT_TRUE(Registry::ReadKey(kHkeyCurrentUser, kDriverRegistryKey, stored));
    EXPECT_EQ(Registry::StringValue(stored, "Tassoc"), "ABCDEF");
    EXPECT_EQ(Registry::DwordValue(stored, "LowerPort"), 10000u);
    EXPECT_EQ(Registry::StringValue(stored, "LinuxUser"), "reservoir");
}

TEST_F(MachineConfigStore, UnusableValuesFallBack) {
    Put(kDriverRegistryKey, {{"SimExecutable", RegistryValue::String((dir_ / "deleted").string())},
                             {"DebugCommsDirectory", RegistryValue::String((dir_ / "missing").string())},
                             {"LowerPort", RegistryValue::Dword(80)},
                             {"UpperPort", RegistryValue::Dword(16000)},
                             {"LinuxUser", RegistryValue::Dword(7)}});
    MachineConfig config;
    EXPECT_EQ(config.SimExecutable, "");
    EXPECT_EQ(config.DebugCommsDirectory, "");
    EXPECT_EQ(config.LinuxUser, "");  // a value of another kind is not read
    EXPECT_EQ(config.LowerPort, MachineConfig::kDefaultLowerPort);
    EXPECT_EQ(config.UpperPort, MachineConfig::kDefaultUpperPort);
    EXPECT_FALSE(config.IsConfigured(true));
    EXPECT_TRUE(config.IsConfigured(false));
}

}  // namespace
}  // namespace rivulet
