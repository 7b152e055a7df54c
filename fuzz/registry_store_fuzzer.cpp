// Arbitrary text as the per-user registry file (RIVULET_REGISTRY, a file of this process). The machine
// configuration loads from it, stores back, and loads again: every field must come back as it was, the
// driver's key must then hold what was stored, and every other key and value of the file must survive the
// rewrite unchanged.
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>

#include "ScratchFolder.h"
#include "platform/RegFile.h"
#include "platform/Registry.h"
#include "session/MachineConfig.h"

using namespace rivulet;

namespace {

struct Store {
    ScratchFolder folder{"rivulet-registry-store"};
    std::string file = folder / "registry.reg";
    Store() { ::setenv("RIVULET_REGISTRY", file.c_str(), 1); }
};

const Store& TheStore() {
    static const Store store;
    return store;
}

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

auto Fields(const MachineConfig& c) {
    return std::tie(c.SimExecutable, c.DebugCommsDirectory, c.LinuxUser, c.AllLinuxQueues, c.LowerPort,
                    c.UpperPort, c.Password);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Store& store = TheStore();
    const std::string text(reinterpret_cast<const char*>(data), size);
    {
        std::ofstream out(store.file, std::ios::binary | std::ios::trunc);
        out << text;
        if (!out) __builtin_trap();
    }
    const RegistryKeys before = ParseRegFile(text);

    const MachineConfig loaded;
    // The ports are always a valid range, smaller first.
    if (loaded.LowerPort < MachineConfig::kLowestPort || loaded.UpperPort > MachineConfig::kHighestPort ||
        loaded.LowerPort > loaded.UpperPort)
        __builtin_trap();
    loaded.Store();

    const MachineConfig reloaded;
    if (Fields(reloaded) != Fields(loaded)) __builtin_trap();

    // The driver's key holds the stored fields; every other key is as it was.
    RegistryKeys after = ParseRegFile(ReadAll(store.file));
    RegistryValues driver;
    if (!Registry::ReadKey(kHkeyCurrentUser, kDriverRegistryKey, driver)) __builtin_trap();
    if (Registry::StringValue(driver, "LinuxUser") != loaded.LinuxUser) __builtin_trap();
    if (Registry::StringValue(driver, "AllLinuxQueues") != loaded.AllLinuxQueues) __builtin_trap();
    if (Registry::DwordValue(driver, "LowerPort") != static_cast<std::uint32_t>(loaded.LowerPort))
        __builtin_trap();
    if (Registry::DwordValue(driver, "UpperPort") != static_cast<std::uint32_t>(loaded.UpperPort))
        __builtin_trap();
    RegistryKeys others = before;
    const auto kept = others.find(kDriverRegistryKey);
    const RegistryValues driverBefore = kept == others.end() ? RegistryValues() : kept->second;
    if (kept != others.end()) others.erase(kept);
    after.erase(kDriverRegistryKey);
    if (after != others) __builtin_trap();
    // Values of the driver's key that the configuration does not own are kept too.
    for (const auto& [name, value] : driverBefore) {
        const auto found = driver.find(name);
        if (found == driver.end()) __builtin_trap();
        static const char* const kOwned[] = {"SimExecutable", "DebugCommsDirectory", "LowerPort", "UpperPort",
                                             "LinuxUser",     "AllLinuxQueues",      "Tassoc"};
        bool owned = false;
        const CaseInsensitiveLess less;
        for (const char* field : kOwned) owned = owned || (!less(name, field) && !less(field, name));
        if (!owned && !(found->second == value)) __builtin_trap();
    }
    return 0;
}
