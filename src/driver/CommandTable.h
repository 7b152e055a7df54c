// The numeric command table behind ExtCmd.
#pragma once

#include <cstdint>

#include "driver/ExtRecords.h"

namespace rivulet {

class CExtModel;

inline constexpr std::uint32_t kViewCaseFileCommand = 4096;
inline constexpr std::uint32_t kViewLogFileCommand = 4097;

// Runs one command on a model (which must not be null) and gives the operation's result. Ids that the table
// does not list answer 0 with nothing called.
std::int32_t DispatchCommand(CExtModel& model, std::uint64_t window, std::uint32_t command,
                             std::uint64_t argument, std::uint32_t count, tErrorRecord* err);

}  // namespace rivulet
