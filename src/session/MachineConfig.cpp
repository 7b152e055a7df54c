#include "session/MachineConfig.h"

#include <strings.h>

#include "common/PasswordStore.h"
#include "platform/Registry.h"
#include "session/FileUtils.h"

namespace rivulet {

namespace {

bool ValidPort(std::int32_t port) {
    return port >= MachineConfig::kLowestPort && port <= MachineConfig::kHighestPort;
}

void ReadText(const RegistryValues& values, const char* name, std::string& field) {
    if (const auto value = Registry::StringValue(values, name)) field = *value;
}

void ReadNumber(const RegistryValues& values, const char* name, std::int32_t& field) {
    if (const auto value = Registry::DwordValue(values, name)) field = static_cast<std::int32_t>(*value);
}

}  // namespace

MachineConfig::MachineConfig() {
    Load(kHkeyCurrentUser, kDriverRegistryKey);
}

void MachineConfig::Load(std::uint64_t hive, const std::string& key) {
    RegistryValues values;
    Registry::ReadKey(hive, key, values);
    ReadText(values, "SimExecutable", SimExecutable);
    ReadText(values, "DebugCommsDirectory", DebugCommsDirectory);
    if (!FileUtils::FileExists(SimExecutable, true)) SimExecutable.clear();
    if (!FileUtils::DirectoryIsWritable(DebugCommsDirectory)) DebugCommsDirectory.clear();

    // The ports are the machine's own: they come from the driver's key whatever key is being read.
    RegistryValues own;
    const bool readingOwnKey = hive == kHkeyCurrentUser && strcasecmp(key.c_str(), kDriverRegistryKey) == 0;
    if (readingOwnKey) {
        own = values;
    } else {
        Registry::ReadKey(kHkeyCurrentUser, kDriverRegistryKey, own);
    }
    ReadNumber(own, "LowerPort", LowerPort);
    ReadNumber(own, "UpperPort", UpperPort);
    GetPortRange(LowerPort, UpperPort);

    ReadText(values, "LinuxUser", LinuxUser);
    ReadText(values, "AllLinuxQueues", AllLinuxQueues);
    ReadText(values, "Tassoc", Password);
}

void MachineConfig::Store() const {
    RegistryValues values{
        {"SimExecutable", RegistryValue::String(SimExecutable)},
        {"DebugCommsDirectory", RegistryValue::String(DebugCommsDirectory)},
        {"LowerPort", RegistryValue::Dword(static_cast<std::uint32_t>(LowerPort))},
        {"UpperPort", RegistryValue::Dword(static_cast<std::uint32_t>(UpperPort))},
        {"LinuxUser", RegistryValue::String(LinuxUser)},
        {"AllLinuxQueues", RegistryValue::String(AllLinuxQueues)},
    };
    if (Password != kPasswordMask) values.emplace("Tassoc", RegistryValue::String(Password));
    Registry::WriteValues(kHkeyCurrentUser, kDriverRegistryKey, values);
}

void MachineConfig::GetPortRange(std::int32_t& lower, std::int32_t& upper) const {
    const std::int32_t a = LowerPort;
    const std::int32_t b = UpperPort;
    if (ValidPort(a) && ValidPort(b)) {
        lower = a < b ? a : b;
        upper = a < b ? b : a;
    } else {
        lower = kDefaultLowerPort;
        upper = kDefaultUpperPort;
    }
}

bool MachineConfig::IsConfigured(bool local) const {
    if (!local) return true;
    return !SimExecutable.empty() && FileUtils::FileExists(SimExecutable, true) && ValidPort(LowerPort) &&
           ValidPort(UpperPort);
}

}  // namespace rivulet
