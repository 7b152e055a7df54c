// The machine configuration a run uses. By default the host writes a private one into the run's output
// folder, naming the stand-in simulator and a port range, and points the driver at it through
// RIVULET_REGISTRY; that must happen before the plug-in is loaded.
#pragma once

#include <filesystem>
#include <optional>

#include "host/Scenario.h"

namespace host {

// Writes <folder>/machine.reg and sets RIVULET_REGISTRY to it. A cluster target adds its user and the
// stored form of its password. Throws std::runtime_error when the file cannot be written.
std::filesystem::path UsePrivateConfiguration(const std::filesystem::path& folder,
                                              const std::filesystem::path& simulator,
                                              const std::optional<ClusterTarget>& cluster);

}  // namespace host
