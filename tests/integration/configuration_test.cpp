// A host that keeps its own registry file: the machine configuration is brought forward from an older
// version's key, and the last-used case values stay out of a fresh model until its case dialog runs.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

namespace fs = std::filesystem;

class Configuration : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* previous = std::getenv("RIVULET_REGISTRY");
        previous_ = previous != nullptr ? previous : "";
        dir_ = fs::temp_directory_path() / ("rivulet-config-it-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        registry_ = (dir_ / "registry.reg").string();
        ::setenv("RIVULET_REGISTRY", registry_.c_str(), 1);
    }
    void TearDown() override {
        if (previous_.empty()) {
            ::unsetenv("RIVULET_REGISTRY");
        } else {
            ::setenv("RIVULET_REGISTRY", previous_.c_str(), 1);
        }
        fs::remove_all(dir_);
    }
    std::string RegistryText() const {
        std::ifstream in(registry_);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    // The lines of one key's section of the registry file.
    std::string Section(const std::string& key) const {
        const std::string text = RegistryText();
        const std::size_t start = text.find("[" + key + "]");
        if (start == std::string::npos) return {};
        const std::size_t end = text.find("\n[", start + 1);
        return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
    }

    fs::path dir_;
    std::string registry_;
    std::string previous_;
};

TEST_F(Configuration, CopyConfigureBringsAnOlderVersionForwardWithoutItsPorts) {
    const std::string simulator = (dir_ / "tnav-standin").string();
    std::ofstream(simulator) << "#!/bin/sh\n";
    std::ofstream(registry_) << "REGEDIT4\n\n"
                             << "[Software\\Quillon\\Conflux\\ExtensionDlls100_64\\tNavigator]\n"
                             << "\"SimExecutable\"=\"" << simulator << "\"\n"
                             << "\"LinuxUser\"=\"engineer\"\n"
                             << "\"AllLinuxQueues\"=\"short\\nlong\"\n"
                             << "\"Tassoc\"=\"0123456789ABCDEF0123456789ABCDEF\"\n"
                             << "\"LowerPort\"=dword:00007530\n"
                             << "\"UpperPort\"=dword:0000753a\n";
    std::string keyText = "Software\\Quillon\\Conflux\\ExtensionDlls100_64";
    char* key = keyText.data();
    Driver().CopyConfigure(0x80000001, &key);
    Driver().CopyConfigure(0x80000001, nullptr);  // nothing to copy from: no effect

    const std::string copied = Section("Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator");
    EXPECT_NE(copied.find("\"SimExecutable\"=\"" + simulator + "\""), std::string::npos) << copied;
    EXPECT_NE(copied.find("\"LinuxUser\"=\"engineer\""), std::string::npos) << copied;
    EXPECT_NE(copied.find("\"AllLinuxQueues\"=\"short\\nlong\""), std::string::npos) << copied;
    EXPECT_NE(copied.find("\"Tassoc\"=\"0123456789ABCDEF0123456789ABCDEF\""), std::string::npos) << copied;
    EXPECT_NE(copied.find("\"LowerPort\"=dword:00003e58"), std::string::npos) << copied;  // 15960
    EXPECT_NE(copied.find("\"UpperPort\"=dword:00003e6b"), std::string::npos) << copied;  // 15979
}

TEST_F(Configuration, AFreshModelKeepsTheDefaultsDespiteLastUsedValues) {
    std::ofstream(registry_) << "REGEDIT4\n\n"
                             << "[Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator]\n"
                             << "\"Case\"=\"  /cases/LAST.DATA \"\n"
                             << "\"IprAlpha\"=dword:00000004\n";
    void* model = nullptr;
    ASSERT_EQ(Driver().CreateInstance(&model, nullptr), 0u);
    for (const auto& [access, expected] :
         {std::pair<const char*, const char*>{"FileName", ""}, {"IprAlpha", "1"}, {"HeadNodePort", "5555"}}) {
        const std::string text = std::string("TNAVIGATOR.CaseDetails.") + access;
        host::Buffer record(528);
        record.Put<std::uint64_t>(8, Arg(text.c_str()));
        host::ErrorRecord err{};
        EXPECT_EQ(Driver().Cmd(model, 0, 96, record.Address(), 0, &err), 0u) << access;
        EXPECT_STREQ(reinterpret_cast<const char*>(record.data() + 16), expected) << access;
    }
    // The case dialog would offer the last-used values; headless, it is cancelled and nothing changes.
    host::Buffer modified(4);
    host::ErrorRecord err{};
    EXPECT_EQ(static_cast<std::int32_t>(Driver().Cmd(model, 0, 5, modified.Address(), 0, &err)), -1);
    EXPECT_EQ(Driver().DestroyInstance(model, nullptr), 0u);
}

}  // namespace
}  // namespace rivulet::it
