// A host that keeps its own registry file, holding an older version's machine configuration and this
// version's last-used case values.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

const char* const kDriverKey = "Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator";

class Configuration : public ModelTest {
  protected:
    void SetUp() override {
        const char* previous = std::getenv("RIVULET_REGISTRY");
        previous_ = previous != nullptr ? previous : "";
        std::ofstream(registry_)
            << "REGEDIT4\n\n[Software\\Quillon\\Conflux\\ExtensionDlls100_64\\tNavigator]\n"
            << "\"SimExecutable\"=\"" << simulator_ << "\"\n"
            << "\"LinuxUser\"=\"engineer\"\n"
            << "\"AllLinuxQueues\"=\"short\\nlong\"\n"
            << "\"Tassoc\"=\"0123456789ABCDEF0123456789ABCDEF\"\n"
            << "\"LowerPort\"=dword:00007530\n\"UpperPort\"=dword:0000753a\n\n"
            << "[" << kDriverKey << "]\n\"Case\"=\"  /cases/LAST.DATA \"\n"
            << "\"IprAlpha\"=dword:00000004\n";
        ::setenv("RIVULET_REGISTRY", registry_.c_str(), 1);
        ModelTest::SetUp();
    }
    void TearDown() override {
        ModelTest::TearDown();
        if (previous_.empty()) {
            ::unsetenv("RIVULET_REGISTRY");
        } else {
            ::setenv("RIVULET_REGISTRY", previous_.c_str(), 1);
        }
    }

    ScratchDir scratch_;
    const std::string simulator_ = scratch_.File("tnav-standin", "#!/bin/sh\n");
    const std::string registry_ = (scratch_.root / "registry.reg").string();
    std::string previous_;
};

TEST_F(Configuration, CopyConfigureBringsAnOlderVersionForwardWithoutItsPorts) {
    std::string keyText = "Software\\Quillon\\Conflux\\ExtensionDlls100_64";
    char* key = keyText.data();
    Driver().CopyConfigure(0x80000001, &key);
    Driver().CopyConfigure(0x80000001, nullptr);  // nothing to copy from: no effect

    std::ifstream in(registry_);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    const std::size_t start = text.find(std::string("[") + kDriverKey + "]");
    const std::string copied = text.substr(start, text.find("\n[", start + 1) - start);
    const std::string lines[] = {"\"SimExecutable\"=\"" + simulator_ + "\"",
                                 "\"LinuxUser\"=\"engineer\"",
                                 "\"AllLinuxQueues\"=\"short\\nlong\"",
                                 "\"Tassoc\"=\"0123456789ABCDEF0123456789ABCDEF\"",
                                 "\"LowerPort\"=dword:00003e58",  // 15960, the default
                                 "\"UpperPort\"=dword:00003e6b"};
    for (const std::string& line : lines) EXPECT_NE(copied.find(line), std::string::npos) << copied;
}

TEST_F(Configuration, AFreshModelKeepsTheDefaultsDespiteLastUsedValues) {
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.FileName"), "");
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IprAlpha"), "1");
}

}  // namespace
}  // namespace rivulet::it
