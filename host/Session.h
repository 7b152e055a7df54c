// One model driven through the plug-in's exports, with every answer printed.
#pragma once

#include <string>

#include "host/Plugin.h"

namespace host {

// Identifies the plug-in, creates a model, hands it the case, sends the commands of a run's set-up and
// destroys the model. Returns 0 when every answer was the expected kind, 1 otherwise.
int RunSession(Plugin& plugin, const std::string& casePath);

}  // namespace host
