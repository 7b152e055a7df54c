// The plug-in's dynamic interface and the lifetime of model instances, seen only through the exports.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>

#include "PluginHarness.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace rivulet::it {
namespace {

TEST(Exports, NothingButTheDriverInterfaceIsExported) {
    std::map<std::string, char> symbols;  // name -> nm's type of each defined dynamic symbol
    FILE* pipe = popen((std::string("nm -D --defined-only '") + RIVULET_PLUGIN_PATH + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    char address[64], type, name[256];
    while (std::fscanf(pipe, "%63s %c %255s", address, &type, name) == 3) {
        if (type != 'A') symbols[name] = type == 'D' ? 'B' : type;  // 'A': version nodes; data, set or not
    }
    EXPECT_EQ(pclose(pipe), 0);

    std::map<std::string, char> expected = {{"GlpfnSorrelShowDataServerString", 'B'}};
    for (const char* function :
         {"ExtIdentify", "ExtCreateInstance", "ExtDestroyInstance", "ExtCmd", "ExtConfigure",
          "ExtCopyConfigure", "ExtHelp", "ExtEquipXml", "ExtConnectToApp", "ExtStartApp", "ExtStopApp"}) {
        expected[function] = 'T';
    }
    EXPECT_EQ(symbols, expected);
    EXPECT_EQ(*Driver().ShowDataServerString, nullptr);
}

TEST(Instances, CreateAndDestroyClearTheRecordAndTakeNullPointers) {
    void* model = nullptr;
    host::ErrorRecord err = StaleRecord();
    EXPECT_EQ(Driver().CreateInstance(&model, &err), 0u);
    EXPECT_NE(model, nullptr);
    EXPECT_TRUE(IsBlank(err));
    err = StaleRecord();
    EXPECT_EQ(Driver().DestroyInstance(model, &err), 0u);
    EXPECT_TRUE(IsBlank(err));
    {
#if defined(__SANITIZE_ADDRESS__)
        // Only the registry holds these instances, so nothing can destroy them: not a leak of the driver's.
        __lsan::ScopedDisabler registryOnly;
#endif
        err = StaleRecord();
        EXPECT_EQ(Driver().CreateInstance(nullptr, &err), 0u);
        EXPECT_TRUE(IsBlank(err));
        EXPECT_EQ(Driver().CreateInstance(nullptr, nullptr), 0u);
    }
    err = StaleRecord();
    EXPECT_EQ(Driver().DestroyInstance(nullptr, &err), 0u);
    EXPECT_TRUE(IsBlank(err));
    EXPECT_EQ(Driver().DestroyInstance(nullptr, nullptr), 0u);
}

TEST(Instances, CmdWithoutAnInstanceIsRefused) {
    for (const std::uint32_t command : {2u, 99u, 4096u}) {
        host::ErrorRecord err = StaleRecord();
        EXPECT_EQ(Driver().Cmd(nullptr, 0, command, 0, 0, &err), 1u);
        EXPECT_EQ(Message(err), "ExtCmd() was passed a null object instance.");
        EXPECT_EQ(err.code, 0);
        EXPECT_EQ(Driver().Cmd(nullptr, 0, command, 0, 0, nullptr), 1u) << command;
    }
}

}  // namespace
}  // namespace rivulet::it
