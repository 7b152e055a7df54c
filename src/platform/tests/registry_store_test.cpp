#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/Registry.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;

class RegistryStore : public ::testing::Test {
  protected:
    void SetUp() override { ::setenv("RIVULET_REGISTRY", path_.c_str(), 1); }
    void TearDown() override {
        ::unsetenv("RIVULET_REGISTRY");
        fs::remove_all(dir_);
    }
    std::string FileText() const {
        std::ifstream in(path_);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    const fs::path dir_ = fs::temp_directory_path() / ("rivulet-registry-" + std::to_string(::getpid()));
    const std::string path_ = (dir_ / "sub" / "registry.reg").string();
};

TEST_F(RegistryStore, ValuesRoundTripThroughTheFile) {
    RegistryValues written{{"Queues", RegistryValue::String("short\nlong \"night\" C:\\q")},
                           {"LowerPort", RegistryValue::Dword(15960)}};
    ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, kDriverRegistryKey, written));
    EXPECT_EQ(fs::status(path_).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(FileText().find("\"LowerPort\"=dword:00003e58"), std::string::npos) << FileText();

    RegistryValues read;
    ASSERT_TRUE(Registry::ReadKey(kHkeyCurrentUser,
                                  "software\\QUILLON\\conflux\\ExtensionDlls110_64\\tNavigator", read));
    EXPECT_EQ(Registry::StringValue(read, "queues"), "short\nlong \"night\" C:\\q");
    EXPECT_EQ(Registry::DwordValue(read, "LOWERPORT"), 15960u);
    EXPECT_EQ(Registry::DwordValue(read, "Queues"), std::nullopt);  // a value of another kind
    EXPECT_EQ(Registry::StringValue(read, "LowerPort"), std::nullopt);
    EXPECT_EQ(Registry::StringValue(read, "Missing"), std::nullopt);
}

TEST_F(RegistryStore, KeysAreCreatedOnReadAndOtherHivesAreEmpty) {
    RegistryValues values{{"x", RegistryValue::Dword(1)}};
    EXPECT_FALSE(Registry::WriteValues(0x80000002, "Software\\Other", values));
    EXPECT_FALSE(Registry::ReadKey(0x80000002, "Software\\Other", values));
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(Registry::WriteValues(kHkeyCurrentUser, "Bad\nKey", values));

    EXPECT_TRUE(
        Registry::ReadKey(0xFFFFFFFF80000001, "Software\\New", values));  // as a 64-bit host passes it
    EXPECT_TRUE(values.empty());
    EXPECT_NE(FileText().find("[Software\\New]"), std::string::npos);
}

TEST_F(RegistryStore, UnknownLinesOfAKeyAreKept) {
    fs::create_directories(fs::path(path_).parent_path());
    std::ofstream(path_) << "REGEDIT4\r\n\r\n[Software\\A]\r\n\"Bin\"=hex:01,02\r\n\"S\"=\"v\"\r\nnoise\r\n";
    ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, "Software\\A", {{"S", RegistryValue::String("w")}}));
    const RegistryKeys keys = ParseRegFile(FileText());
    const RegistryValues& a = keys.at("Software\\A");
    EXPECT_EQ(a.at("Bin"), (RegistryValue{RegistryValue::Kind::Other, "hex:01,02", 0}));
    EXPECT_EQ(a.at("S"), RegistryValue::String("w"));
    EXPECT_EQ(ParseRegFile(FormatRegFile(keys)), keys);
}

TEST_F(RegistryStore, ConcurrentWritersLoseNoValue) {
    constexpr int kWrites = 40;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    const std::string who = child == 0 ? "child" : "parent";
    for (int i = 0; i < kWrites; ++i) {
        Registry::WriteValues(
            kHkeyCurrentUser, "Software\\Race",
            {{who + std::to_string(i), RegistryValue::Dword(static_cast<std::uint32_t>(i))}});
    }
    if (child == 0) ::_exit(0);
    int status = 0;
    ::waitpid(child, &status, 0);
    RegistryValues values;
    ASSERT_TRUE(Registry::ReadKey(kHkeyCurrentUser, "Software\\Race", values));
    EXPECT_EQ(values.size(), 2u * kWrites);
}

}  // namespace
}  // namespace rivulet
