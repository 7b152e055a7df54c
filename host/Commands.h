// Ids of the driver's command table that the host sends.
#pragma once

#include <cstdint>

namespace host {

enum Command : std::uint32_t {
    kQuery = 2,
    kEditCase = 5,
    kGetStartDate = 11,
    kSaveModelString = 12,
    kLoadModelString = 13,
    kGetFileListEntry = 16,
    kSetConnection = 19,
    kSetAlias = 21,
    kStartSimulator = 23,
    kInitialise = 48,
    kTimestep = 49,
    kGetIpr = 50,
    kSetOpPt = 53,
    kStop = 56,
    kNodeResult = 58,
    kGetNextEvent = 62,
    kGetVar = 96,
    kSetVar = 97,
    kDoCmd = 98,
    kGetModMsg = 129,
    kSetTopLevelFile = 136,
};

}  // namespace host
