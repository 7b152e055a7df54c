// The case's variables by access string, and the rules for changing them.
#include <cstdio>

#include "case/CaseSettings.h"
#include "dataserver/ExtDataServerTag.h"

namespace rivulet {

std::int32_t CaseSettings::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t) {
    if (!tag.MatchName("CaseDetails")) return 0;
    const bool recognised =
        tag.BindStdString("FileName", FileName) || tag.BindBool("IsLocalMachine", IsLocalMachine) ||
        tag.BindStdString("HeadNodeName", HeadNodeName) || tag.BindInt("HeadNodePort", HeadNodePort) ||
        tag.BindStdString("WindowsEquivDir", WindowsEquivDir) || tag.BindInt("RateControl", RateControl) ||
        tag.BindDouble("DefaultFluidTemp", DefaultFluidTemp) || tag.BindInt("FluidTempUnit", FluidTempUnit) ||
        tag.BindInt("GlrThreshold", GlrThreshold) || tag.BindInt("IprAlpha", IprAlpha) ||
        tag.BindInt("IprModel", IprModel) || tag.BindInt("UnconnectedState", UnconnectedState) ||
        tag.BindInt("ParallelCount", ParallelCount) || tag.BindStdString("LinuxQueue", LinuxQueue);
    return recognised ? 1 : 0;
}

std::int32_t CaseSettings::UpdateFromAccessString(CExtDataServerTag& tag, bool running, bool started) {
    CaseSettings edited(*this);
    const std::int32_t recognised = edited.ProcessAccessString(tag);
    if (recognised == 0 || tag.HasError()) return recognised;

    if (running) {
        tag.SetErrorText("Cannot edit CaseDetails while the simulator is running.");
    } else if (started) {
        if (edited.FileName != FileName) {
            tag.SetErrorText("Cannot edit FileName once the simulator has been started.");
        } else if (edited.IsLocalMachine != IsLocalMachine) {
            tag.SetErrorText("Cannot edit IsLocalMachine once the simulator has been started.");
        } else if (edited.HeadNodeName != HeadNodeName) {
            tag.SetErrorText("Cannot edit HeadNodeName once the simulator has been started.");
        } else if (edited.HeadNodePort != HeadNodePort) {
            tag.SetErrorText("Cannot edit HeadNodePort once the simulator has been started.");
        }
    } else if (edited.FileName != FileName) {
        if (edited.FileName.empty()) tag.SetErrorText("FileName must not be empty.");
    } else if (edited.HeadNodePort != HeadNodePort &&
               (edited.HeadNodePort < kMinimumPort || edited.HeadNodePort > kMaximumPort)) {
        char message[96];
        std::snprintf(message, sizeof message, "HeadNodePort must be from %d to %d (inclusive).",
                      kMinimumPort, kMaximumPort);
        tag.SetErrorText(message);
    }

    if (!tag.HasError()) CopyFrom(edited);
    return recognised;
}

}  // namespace rivulet
