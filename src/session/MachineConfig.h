// What belongs to the machine rather than to a case: the local simulator, the ports to search, the debug
// directory and the cluster account. It lives in the current user's registry under the driver's key.
#pragma once

#include <cstdint>
#include <string>

namespace rivulet {

class MachineConfig {
  public:
    static constexpr std::int32_t kLowestPort = 1024;
    static constexpr std::int32_t kHighestPort = 65535;
    static constexpr std::int32_t kDefaultLowerPort = 15960;
    static constexpr std::int32_t kDefaultUpperPort = 15979;

    // Empty texts and unset ports, then a load from the driver's key.
    MachineConfig();

    // Reads the fields from `key` of `hive`; a value that is missing or of another kind leaves its field as
    // it was. A simulator that cannot be opened and a debug directory that cannot be written are emptied.
    // The ports always come from the driver's own key, and are stored normalised.
    void Load(std::uint64_t hive, const std::string& key);
    // Writes every field to the driver's key; the password only when it is not the dialog's mask
    // (kPasswordMask), which is never stored.
    void Store() const;

    // Both ports when both are valid, smaller first; the default range otherwise.
    void GetPortRange(std::int32_t& lower, std::int32_t& upper) const;
    // A cluster run can always be tried; a local one needs an openable simulator and valid ports.
    bool IsConfigured(bool local) const;

    std::string SimExecutable;
    std::string DebugCommsDirectory;
    std::string LinuxUser;
    std::string AllLinuxQueues;
    std::int32_t LowerPort = -1;
    std::int32_t UpperPort = -1;
    std::string Password;  // the stored, enciphered text
};

}  // namespace rivulet
