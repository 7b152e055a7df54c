// The check that a restarted simulator model has the wells of the model it restarts.
#pragma once

#include <string>

#include "wells/WellList.h"

namespace rivulet {

// 0 when `current` has the wells of `previous`, by name, type and position (an empty previous list
// passes); 1 with the first difference in `error`.
int CheckConsistency(const WellList& current, const WellList& previous, std::string& error);

}  // namespace rivulet
