#include "case/CaseSettings.h"
#include "session/JobSession.h"

namespace rivulet {

std::unique_ptr<CJobSession> MakeJobSession(CaseSettings& settings, std::string& error) {
    // Neither the local dispatcher nor the cluster connection is part of this build yet.
    error = settings.IsLocalMachine ? "Local Machine runs are not available in this build of the driver."
                                    : "Linux cluster runs are not available in this build of the driver.";
    return nullptr;
}

}  // namespace rivulet
