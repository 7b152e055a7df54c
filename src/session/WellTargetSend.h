// Small pieces shared by the two halves of the targets' send.
#pragma once

#include <string>
#include <vector>

#include "session/WellRequester.h"
#include "wells/WellData.h"

namespace rivulet::targets {

inline int CountOf(const std::vector<int>& wells) {
    return static_cast<int>(wells.size());
}

// The network or an access string controls the well; otherwise the deck does.
inline bool UnderControl(const WellData& well) {
    return well.underVaneControl || well.underTapServerControl;
}

// Logs the text between newlines and keeps it as the error; always false.
inline bool Report(const WellRequester& requester, const std::string& text, std::string& error) {
    return requester.Thrown(text.c_str(), error);
}

}  // namespace rivulet::targets
