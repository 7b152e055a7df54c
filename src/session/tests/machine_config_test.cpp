#include "common/PasswordStore.h"
#include "platform/Registry.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

// The driver's registry key, in a file of the scratch directory.
class MachineConfigStore : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        ::setenv("RIVULET_REGISTRY", (dir_ / "registry.reg").c_str(), 1);
    }
    void TearDown() override {
        ::unsetenv("RIVULET_REGISTRY");
        SessionTest::TearDown();
    }
    static void Put(const RegistryValues& values) {
        ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, kDriverRegistryKey, values));
    }
};

TEST_F(MachineConfigStore, LoadsNormalisesAndStores) {
    Put({{"SimExecutable", RegistryValue::String(config_.SimExecutable)},
         {"DebugCommsDirectory", RegistryValue::String(dir_.string())},
         {"LowerPort", RegistryValue::Dword(20000)},
         {"UpperPort", RegistryValue::Dword(10000)},
         {"Tassoc", RegistryValue::String("ABCDEF")}});
    MachineConfig config;
    EXPECT_EQ(config.SimExecutable, config_.SimExecutable);
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
    Put({{"SimExecutable", RegistryValue::String((dir_ / "deleted").string())},
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
