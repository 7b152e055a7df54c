// The plug-in's dynamic interface and the lifetime of model instances, seen only through the exports.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <sstream>
#include <string>

#include "PluginHarness.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace rivulet::it {
namespace {

const char* const kFunctions[] = {"ExtIdentify", "ExtCreateInstance", "ExtDestroyInstance",
                                  "ExtCmd",      "ExtConfigure",      "ExtCopyConfigure",
                                  "ExtHelp",     "ExtEquipXml",       "ExtConnectToApp",
                                  "ExtStartApp", "ExtStopApp"};
const char* const kDataSymbol = "GlpfnSorrelShowDataServerString";

// Name -> nm symbol type of every defined dynamic symbol of the built plug-in.
std::map<std::string, char> DefinedDynamicSymbols() {
    std::map<std::string, char> symbols;
    const std::string command = std::string("nm -D --defined-only '") + RIVULET_PLUGIN_PATH + "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return symbols;
    std::string output;
    char chunk[4096];
    while (const std::size_t n = fread(chunk, 1, sizeof(chunk), pipe)) output.append(chunk, n);
    EXPECT_EQ(pclose(pipe), 0) << output;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string address, type, name;
        if (!(fields >> address >> type >> name)) continue;
        if (type == "A") continue;  // version-script nodes, not symbols
        symbols[name] = type[0];
    }
    return symbols;
}

TEST(Exports, EveryFunctionAndTheDataSymbolResolve) {
    // The loader looks up all eleven functions and the data symbol, and throws naming any that is missing.
    EXPECT_NO_THROW(host::Plugin{RIVULET_PLUGIN_PATH});
    ASSERT_NE(Driver().ShowDataServerString, nullptr);
    EXPECT_EQ(*Driver().ShowDataServerString, nullptr);
}

TEST(Exports, NothingButTheDriverInterfaceIsExported) {
    const std::map<std::string, char> symbols = DefinedDynamicSymbols();
    std::map<std::string, char> unexpected = symbols;
    for (const char* name : kFunctions) {
        SCOPED_TRACE(name);
        ASSERT_EQ(symbols.count(name), 1u);
        EXPECT_EQ(symbols.at(name), 'T');
        unexpected.erase(name);
    }
    ASSERT_EQ(symbols.count(kDataSymbol), 1u);
    EXPECT_NE(std::string("BD").find(symbols.at(kDataSymbol)), std::string::npos) << "not writable data";
    unexpected.erase(kDataSymbol);
    for (const auto& [name, type] : unexpected) ADD_FAILURE() << "also exported: " << type << " " << name;
}

TEST(Instances, CreateAndDestroyClearTheRecord) {
    void* model = nullptr;
    host::ErrorRecord err = StaleRecord();
    EXPECT_EQ(Driver().CreateInstance(&model, &err), 0u);
    EXPECT_NE(model, nullptr);
    EXPECT_TRUE(IsBlank(err));
    err = StaleRecord();
    EXPECT_EQ(Driver().DestroyInstance(model, &err), 0u);
    EXPECT_TRUE(IsBlank(err));
}

TEST(Instances, NullPointersNeedNoInstance) {
    host::ErrorRecord err = StaleRecord();
    {
#if defined(__SANITIZE_ADDRESS__)
        // Only the registry holds these instances, so nothing can destroy them: not a leak of the driver's.
        __lsan::ScopedDisabler registryOnly;
#endif
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
    for (const std::uint32_t command : {2u, 3u, 23u, 99u, 4096u, 4097u, 5000u}) {
        SCOPED_TRACE(command);
        host::ErrorRecord err = StaleRecord();
        EXPECT_EQ(Driver().Cmd(nullptr, 0, command, 0, 0, &err), 1u);
        EXPECT_EQ(Message(err), "ExtCmd() was passed a null object instance.");
        EXPECT_EQ(err.code, 0);
        EXPECT_EQ(Driver().Cmd(nullptr, 0, command, 0, 0, nullptr), 1u);
    }
}

}  // namespace
}  // namespace rivulet::it
