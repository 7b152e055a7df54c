#include "case/ConfigureDlg.h"

#include <algorithm>
#include <cstdlib>
#include <exception>

#include "common/FormatText.h"
#include "common/PasswordStore.h"
#include "common/Trim.h"
#include "session/FileUtils.h"
#include "session/MachineConfig.h"

namespace rivulet {

namespace {

constexpr int kTipMilliseconds = 15000;

bool InPortRange(int port) {
    return port >= MachineConfig::kLowestPort && port <= MachineConfig::kHighestPort;
}

}  // namespace

CConfigureDlg::CConfigureDlg(MachineConfig& config) : config_(config) {
    using K = ControlKind;
    Add(kLocalGroup, K::Group, "Configuration for local machine", {0, 0, 0, 2});
    Add(kExecutableGroup, K::Group, "Path to local simulator executable \"tNavigator-con.exe\"",
        {kLocalGroup, 0, 0, 1});
    Add(kExecutable, K::Edit, "", {kExecutableGroup, 0, 0, 1});
    Add(kBrowseExecutable, K::Button, "Browse", {kExecutableGroup, 0, 1, 1});
    Add(kPortsGroup, K::Group, "Local Conflux/tNavigator communication ports", {kLocalGroup, 1, 0, 1});
    Add(kPortsFrom, K::Label, "Search for ports between", {kPortsGroup, 0, 0, 1});
    Add(kLowerPort, K::Edit, "", {kPortsGroup, 0, 1, 1});
    Add(kPortsAnd, K::Label, "and", {kPortsGroup, 0, 2, 1});
    Add(kUpperPort, K::Edit, "", {kPortsGroup, 0, 3, 1});
    Add(kPortsInclusive, K::Label, "(inclusive)", {kPortsGroup, 0, 4, 1});
    Add(kDebugGroup, K::Group, "Local Conflux/tNavigator communication debugging directory (optional)",
        {kLocalGroup, 2, 0, 1});
    Add(kDebugNote, K::Label,
        "Leave blank for no additional Conflux/tNavigator debug output.\nFor performance reasons, debugging "
        "should not be requested unless required.",
        {kDebugGroup, 0, 0, 2});
    Add(kDebugDirectory, K::Edit, "", {kDebugGroup, 1, 0, 1});
    Add(kBrowseDebug, K::Button, "Browse", {kDebugGroup, 1, 1, 1});
    Add(kClusterGroup, K::Group, "Configuration for Linux cluster", {0, 1, 0, 2});
    Add(kUserLabel, K::Label, "Linux user name", {kClusterGroup, 0, 0, 1});
    Add(kUser, K::Edit, "", {kClusterGroup, 0, 1, 1});
    Add(kPasswordLabel, K::Label, "Password", {kClusterGroup, 1, 0, 1});
    Add(kPassword, K::PasswordEdit, "", {kClusterGroup, 1, 1, 1});
    Add(kQueuesLabel, K::Label, "Linux queues available (optional)", {kClusterGroup, 2, 0, 2});
    Add(kQueues, K::MultiLineEdit, "", {kClusterGroup, 3, 0, 2});
    Add(kIdOk, K::Button, "OK", {0, 2, 0, 1});
    Add(kIdCancel, K::Button, "Cancel", {0, 2, 1, 1});
}

void CConfigureDlg::OnOpen() {
    At(kExecutable).text = config_.SimExecutable;
    At(kDebugDirectory).text = config_.DebugCommsDirectory;
    At(kQueues).text = config_.AllLinuxQueues;
    At(kUser).text = config_.LinuxUser;
    // The stored password is never shown.
    At(kPassword).text = kPasswordMask;
    const bool stored = InPortRange(config_.LowerPort) && InPortRange(config_.UpperPort);
    At(kLowerPort).text = std::to_string(stored ? config_.LowerPort : MachineConfig::kDefaultLowerPort);
    At(kUpperPort).text = std::to_string(stored ? config_.UpperPort : MachineConfig::kDefaultUpperPort);

    const auto tip = [this](int id, const char* text) {
        At(id).toolTip = text;
        At(id).toolTipMilliseconds = kTipMilliseconds;
    };
    tip(kExecutable, "Simulator executable.");
    tip(kDebugDirectory,
        "Optional file directory for debugging communication between Conflux and tNavigator.");
    tip(kLowerPort, "Conflux will search for currently available ports in the range specified.");
    tip(kUpperPort, "Conflux will search for currently available ports in the range specified.");
}

DialogAction CConfigureDlg::OnClicked(int id) {
    UserInterface& ui = CurrentUserInterface();
    switch (id) {
        case kBrowseExecutable:
            // The simulator has no extension on Linux, so every file can be picked too.
            if (auto file =
                    ui.ChooseFile("tNavigator executable file (*.exe)|*.exe|All files (*)|*|", "exe", ""))
                At(kExecutable).text = Trimmed(*file);
            return DialogAction::None;
        case kBrowseDebug:
            if (auto folder = ui.ChooseDirectory("Select Directory")) At(kDebugDirectory).text = *folder;
            return DialogAction::None;
        case kIdOk:
            return Validate() && Store() ? DialogAction::CloseOk : DialogAction::None;
        case kIdCancel:
            return DialogAction::CloseCancel;
        default:
            return DialogAction::None;
    }
}

bool CConfigureDlg::Validate() {
    UserInterface& ui = CurrentUserInterface();
    const int lower = std::atoi(At(kLowerPort).text.c_str());
    const int upper = std::atoi(At(kUpperPort).text.c_str());
    // A blank pair (both 0) turns the port search off; a reversed range is put in order on storing.
    const bool portsValid = lower != 0 ? InPortRange(lower) && InPortRange(upper) : upper == 0;
    if (!portsValid) {
        ui.ShowMessage(FormatText("Port values must be from %d to %d (inclusive).",
                                  MachineConfig::kLowestPort, MachineConfig::kHighestPort),
                       MessageIcon::Warning);
        return false;
    }
    const std::string debug = Trimmed(At(kDebugDirectory).text);
    if (!debug.empty() && !FileUtils::DirectoryExists(debug)) {
        ui.ShowMessage(
            FormatText("The communications debug directory (%s) must already exist.", debug.c_str()),
            MessageIcon::Warning);
        return false;
    }
    if (!debug.empty() && !FileUtils::DirectoryIsWritable(debug)) {
        ui.ShowMessage(FormatText("You must have write access to the communications debug directory (%s).",
                                  debug.c_str()),
                       MessageIcon::Warning);
        return false;
    }
    return true;
}

bool CConfigureDlg::Store() {
    config_.SimExecutable = Trimmed(At(kExecutable).text);
    config_.DebugCommsDirectory = Trimmed(At(kDebugDirectory).text);
    config_.LinuxUser = At(kUser).text;
    config_.AllLinuxQueues = Trimmed(At(kQueues).text);
    // The mask stands for the stored password; anything else, an emptied field too, is a new one.
    if (At(kPassword).text != kPasswordMask) config_.Password = StorePassword(At(kPassword).text);
    const int lower = std::atoi(At(kLowerPort).text.c_str());
    const int upper = std::atoi(At(kUpperPort).text.c_str());
    config_.LowerPort = std::min(lower, upper);
    config_.UpperPort = std::max(lower, upper);
    try {
        config_.Store();
    } catch (const std::exception& e) {
        CurrentUserInterface().ShowMessage(std::string("The configuration could not be saved: ") + e.what(),
                                           MessageIcon::Error);
        return false;
    }
    return true;
}

}  // namespace rivulet
