// The current user's registry: a per-user file in the .reg text format. The hive handles keep the
// registry's predefined numbers; only the current user's hive has a store, any other reads as empty and
// refuses writes. The file is $RIVULET_REGISTRY when that is set, else $XDG_CONFIG_HOME/rivulet/registry.reg
// (~/.config/rivulet/registry.reg). Reads take a shared lock and writes an exclusive one, on a lock file
// beside it; a write replaces the file atomically, so two processes writing at once lose no value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/RegFile.h"

namespace rivulet {

inline constexpr std::uint64_t kHkeyCurrentUser = 0x80000001;

// The key under which the driver keeps its machine configuration and last-used case values.
inline constexpr char kDriverRegistryKey[] = "Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator";

class Registry {
  public:
    // The store's file.
    static std::string FilePath();

    // The values of `key` in `hive`. Opening a key of the current user's hive creates it when it is missing,
    // as the registry does; false when the key cannot be opened (another hive, or a store that cannot be
    // read or written), with no values.
    static bool ReadKey(std::uint64_t hive, const std::string& key, RegistryValues& values);

    // Sets each of `values` under `key`, creating the key, in one replacement of the file. Other keys and
    // values are kept. False for another hive, a key name with a line break, or a failed write.
    static bool WriteValues(std::uint64_t hive, const std::string& key, const RegistryValues& values);

    // A string value, or nothing when it is missing or of another kind.
    static std::optional<std::string> StringValue(const RegistryValues& values, const std::string& name);
    // A 32-bit value, or nothing when it is missing or of another kind.
    static std::optional<std::uint32_t> DwordValue(const RegistryValues& values, const std::string& name);
};

}  // namespace rivulet
