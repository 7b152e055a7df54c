#include "case/CaseDlg.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "case/ConfigureDlg.h"
#include "common/FormatText.h"
#include "common/Trim.h"
#include "session/MachineConfig.h"

namespace rivulet {

namespace {

constexpr int kShownPort = 5555;
constexpr int kShownGlrThreshold = 587;
constexpr double kNoTemperature = 3.2e35;

// A combo's choices: the setting's values from `first` on, in the order of their texts.
struct ComboTable {
    int first;
    std::string (*text)(int);
    int unmatched;  // the value of a text that matches no choice
};

const ComboTable kRateTable{1, &CaseSettings::RateControlText, 0};
const ComboTable kUnitTable{1, &CaseSettings::FluidTempUnitText, 0};
const ComboTable kSpacingTable{0, &CaseSettings::IprAlphaText, 1};
const ComboTable kIprTable{1, &CaseSettings::IprModelText, 0};

std::vector<std::string> Texts(const ComboTable& table) {
    std::vector<std::string> texts;
    for (int value = table.first; !table.text(value).empty(); ++value) texts.push_back(table.text(value));
    return texts;
}

// The item with the value's text, or the first item when the value has none.
void Select(Control& combo, const ComboTable& table, int value) {
    const std::string text = table.text(value);
    combo.selection = combo.items.empty() ? -1 : 0;
    for (std::size_t i = 0; i < combo.items.size() && !text.empty(); ++i) {
        if (combo.items[i] == text) combo.selection = static_cast<int>(i);
    }
}

// The first choice whose text the selected text contains, exact case.
int Selected(const Control& combo, const ComboTable& table) {
    if (combo.selection < 0 || static_cast<std::size_t>(combo.selection) >= combo.items.size())
        return table.unmatched;
    const std::string& selected = combo.items[static_cast<std::size_t>(combo.selection)];
    for (int value = table.first; !table.text(value).empty(); ++value) {
        if (selected.find(table.text(value)) != std::string::npos) return value;
    }
    return table.unmatched;
}

std::string SelectedText(const Control& combo) {
    if (combo.selection < 0 || static_cast<std::size_t>(combo.selection) >= combo.items.size()) return {};
    return combo.items[static_cast<std::size_t>(combo.selection)];
}

// A number in the classic locale, the whole text of it.
bool ParseNumber(const std::string& text, double& value) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

bool InPortRange(int port) {
    return port >= CaseSettings::kMinimumPort && port <= CaseSettings::kMaximumPort;
}

constexpr int kEditing[] = {CaseDlg::kLocal,
                            CaseDlg::kCluster,
                            CaseDlg::kHeadNodeLabel,
                            CaseDlg::kHeadNode,
                            CaseDlg::kPortLabel,
                            CaseDlg::kPort,
                            CaseDlg::kQueueLabel,
                            CaseDlg::kQueue,
                            CaseDlg::kParallel,
                            CaseDlg::kFileName,
                            CaseDlg::kBrowse,
                            CaseDlg::kEquivDir,
                            CaseDlg::kRateControl,
                            CaseDlg::kGlrThreshold,
                            CaseDlg::kShut,
                            CaseDlg::kSpacing,
                            CaseDlg::kIprModel,
                            CaseDlg::kCalculate,
                            CaseDlg::kTemperature,
                            CaseDlg::kTemperatureUnit,
                            CaseDlg::kConfigure,
                            CaseDlg::kStart,
                            kIdOk};
constexpr int kLockedGroups[] = {CaseDlg::kLocationGroup, CaseDlg::kParallelGroup,    CaseDlg::kCaseGroup,
                                 CaseDlg::kWellsGroup,    CaseDlg::kUnconnectedGroup, CaseDlg::kIprGroup,
                                 CaseDlg::kSpacingGroup};
constexpr int kClusterOnly[] = {CaseDlg::kHeadNodeLabel, CaseDlg::kHeadNode,   CaseDlg::kPortLabel,
                                CaseDlg::kPort,          CaseDlg::kQueueLabel, CaseDlg::kQueue,
                                CaseDlg::kEquivDirLabel, CaseDlg::kEquivDir};

}  // namespace

CaseDlg::CaseDlg(CaseDialogModel& model, MachineConfig& config) : model_(model), config_(config) {
    using K = ControlKind;
    Add(kLocationGroup, K::Group, "Run tNavigator simulation on: ", {0, 0, 0, 5});
    Add(kLocal, K::Radio, "Local machine", {kLocationGroup, 0, 0, 1});
    Add(kCluster, K::Radio, "Linux cluster", {kLocationGroup, 0, 1, 1});
    Add(kHeadNodeLabel, K::Label, "Head Node Name", {kLocationGroup, 1, 0, 1});
    Add(kHeadNode, K::Edit, "", {kLocationGroup, 1, 1, 1});
    Add(kPortLabel, K::Label, "Head Node Port", {kLocationGroup, 2, 0, 1});
    Add(kPort, K::Edit, "", {kLocationGroup, 2, 1, 1});
    Add(kQueueLabel, K::Label, "Queue (blank for default)", {kLocationGroup, 3, 0, 1});
    Add(kQueue, K::EditableCombo, "", {kLocationGroup, 3, 1, 1});
    Add(kParallelGroup, K::Group, "Number of parallel processes (threads on local machine; nodes on Linux)",
        {0, 1, 0, 5});
    Add(kParallel, K::Edit, "", {kParallelGroup, 0, 0, 1});
    Add(kParallelNote, K::Label, "(Blank or zero for default)", {kParallelGroup, 0, 1, 1});
    Add(kCaseGroup, K::Group, "Case File", {0, 2, 0, 5});
    Add(kFileName, K::Edit, "", {kCaseGroup, 0, 0, 1});
    Add(kBrowse, K::Button, "Browse", {kCaseGroup, 0, 1, 1});
    Add(kEquivDirLabel, K::Label,
        "Case file's directory as viewed from your local machine (optional - required for Linux senario "
        "runs)",
        {kCaseGroup, 1, 0, 2});
    Add(kEquivDir, K::Edit, "", {kCaseGroup, 2, 0, 2});
    Add(kWellsGroup, K::Group, "Production Wells", {0, 3, 0, 5});
    Add(kRateLabel, K::Label, "Control Rate(s)", {kWellsGroup, 0, 0, 1});
    Add(kRateControl, K::Combo, "", {kWellsGroup, 0, 1, 2});
    Add(kGlrThreshold, K::Edit, "", {kWellsGroup, 1, 1, 1});
    Add(kGlrNote, K::Label, "Gas and Liquid in same units (e.g. sm3/sm3)", {kWellsGroup, 1, 2, 1});
    Add(kTemperatureLabel, K::Label,
        "Default fluid temperature (will be overriden if temperature can be read from the model)",
        {kWellsGroup, 2, 0, 3});
    Add(kTemperature, K::Edit, "", {kWellsGroup, 3, 1, 1});
    Add(kTemperatureUnit, K::Combo, "", {kWellsGroup, 3, 2, 1});
    Add(kUnconnectedGroup, K::Group, "Wells not connected to VANE", {0, 4, 0, 2});
    Add(kShut, K::Check, "Shut", {kUnconnectedGroup, 0, 0, 1});
    Add(kIprGroup, K::Group, "IPR Model", {0, 4, 2, 3});
    Add(kIprModel, K::Combo, "", {kIprGroup, 0, 0, 1});
    Add(kCalculate, K::Button, "Calculate Now", {kIprGroup, 0, 1, 1});
    Add(kSpacingGroup, K::Group, "IPR table spacing", {0, 5, 0, 5});
    Add(kSpacing, K::Combo, "", {kSpacingGroup, 0, 0, 1});
    Add(kConfigure, K::Button, "Configure", {0, 6, 0, 1});
    Add(kStart, K::Button, "Start", {0, 6, 1, 1});
    Add(kIdOk, K::Button, "OK", {0, 6, 2, 1});
    Add(kIdCancel, K::Button, "Cancel", {0, 6, 3, 1});
    Add(kIdHelp, K::Button, "Help", {0, 6, 4, 1});
    At(kRateControl).items = Texts(kRateTable);
    At(kTemperatureUnit).items = Texts(kUnitTable);
    At(kSpacing).items = Texts(kSpacingTable);
    At(kIprModel).items = Texts(kIprTable);
}

void CaseDlg::OnOpen() {
    Edited.ResetToDefaults();
    At(kStart).text = "Start";
    // A model without a case starts from the user's last-used values.
    const CaseSettings own = model_.GetCaseSettings();
    if (!own.FileName.empty()) {
        Edited.CopyFrom(own);
    } else {
        Edited.LoadLastUsed();
    }
    FillQueues();
    ShowSettings();
    SetCaseCaption();
    SetConfigureCaption();
    SetCalculateCaption();
    At(kCalculate).enabled = model_.HasReservoirData();
    ApplyLocationRule();
    ApplyRateRule();
    ApplyIprRule();
    if (model_.IsRunActive()) {
        SetEditing(false);
    } else if (model_.IsConnected()) {
        At(kStart).text = "Stop";
        LockEditing();
        At(kStart).enabled = true;
    }
}

void CaseDlg::ShowSettings() {
    const CaseSettings& s = Edited;
    At(kLocal).checked = s.IsLocalMachine;
    At(kCluster).checked = !s.IsLocalMachine;
    At(kHeadNode).text = s.HeadNodeName;
    At(kPort).text = std::to_string(InPortRange(s.HeadNodePort) ? s.HeadNodePort : kShownPort);
    At(kParallel).text = s.ParallelCount > 0 ? std::to_string(s.ParallelCount) : std::string();
    At(kFileName).text = s.FileName;
    At(kEquivDir).text = s.WindowsEquivDir;
    At(kGlrThreshold).text = std::to_string(s.GlrThreshold < 0 ? kShownGlrThreshold : s.GlrThreshold);
    At(kTemperature).text =
        s.DefaultFluidTemp > kNoTemperature ? std::string() : FormatText("%g", s.DefaultFluidTemp);
    Select(At(kRateControl), kRateTable, s.RateControl);
    Select(At(kTemperatureUnit), kUnitTable, s.FluidTempUnit);
    Select(At(kSpacing), kSpacingTable, s.IprAlpha);
    Select(At(kIprModel), kIprTable, s.IprModel);
    At(kShut).checked = s.UnconnectedState != 0;
    At(kQueue).text = s.LinuxQueue;
}

void CaseDlg::FillQueues() {
    Control& queue = At(kQueue);
    const std::string kept = queue.text;
    queue.items.clear();
    std::istringstream lines(config_.AllLinuxQueues);
    for (std::string line; std::getline(lines, line);) {
        const std::string name = Trimmed(line);
        if (!name.empty() && std::find(queue.items.begin(), queue.items.end(), name) == queue.items.end())
            queue.items.push_back(name);
    }
    if (!kept.empty()) queue.text = kept;
}

void CaseDlg::SetCaseCaption() {
    At(kCaseGroup).text = Local() ? "Case File (path as seen from your Local machine)"
                                  : "Case File (path as seen from Linux cluster)";
}

void CaseDlg::SetConfigureCaption() {
    At(kConfigure).text = config_.IsConfigured(Local()) ? "Reconfigure" : "Configure";
}

void CaseDlg::SetCalculateCaption() {
    At(kCalculate).text = model_.HasCalculatedIpr() ? "Recalculate" : "Calculate now";
}

void CaseDlg::ApplyLocationRule() {
    const bool cluster = At(kCluster).checked;
    for (int id : kClusterOnly) At(id).shown = cluster;
    At(kBrowse).enabled = !cluster;
}

void CaseDlg::ApplyRateRule() {
    const bool glr =
        SelectedText(At(kRateControl)).find("Driven by Gas-to-Liquid Ratio") != std::string::npos;
    At(kRateControl).shown = true;
    At(kGlrThreshold).shown = glr;
    At(kGlrNote).shown = glr;
}

void CaseDlg::ApplyIprRule() {
    At(kCalculate).shown = SelectedText(At(kIprModel)).find("Corrected (Quillon)") != std::string::npos;
}

void CaseDlg::SetEditing(bool enabled) {
    for (int id : kEditing) At(id).enabled = enabled;
}

void CaseDlg::LockEditing() {
    SetEditing(false);
    for (int id : kLockedGroups) {
        std::string& caption = At(id).text;
        if (!caption.empty() && caption.find(kLockText) == std::string::npos) caption += kLockText;
    }
}

void CaseDlg::UnlockEditing() {
    SetEditing(true);
    for (int id : kLockedGroups) {
        std::string& caption = At(id).text;
        if (const auto at = caption.find(kLockText); at != std::string::npos) caption.erase(at);
    }
}

DialogAction CaseDlg::OnClicked(int id) {
    switch (id) {
        case kIdOk:
            if (!Validate()) return DialogAction::None;
            Store();
            return DialogAction::CloseOk;
        case kIdCancel:
            return DialogAction::CloseCancel;
        case kIdHelp:
            CurrentUserInterface().ShowHelp(kHelpTopic);
            return DialogAction::None;
        case kStart:
            if (model_.IsConnected()) {
                model_.Stop();
                At(kStart).text = "Start";
                UnlockEditing();
                ApplyLocationRule();
                return DialogAction::None;
            }
            if (!Validate()) return DialogAction::None;
            StartRequested = true;
            Store();
            return DialogAction::CloseOk;
        case kLocal:
        case kCluster:
            At(kLocal).checked = id == kLocal;
            At(kCluster).checked = id == kCluster;
            ApplyLocationRule();
            SetCaseCaption();
            SetConfigureCaption();
            return DialogAction::None;
        case kConfigure:
            if (Configure()) {
                SetConfigureCaption();
                FillQueues();
            }
            return DialogAction::None;
        case kBrowse:
            if (auto file = CurrentUserInterface().ChooseFile("", "dat", "*.dat")) At(kFileName).text = *file;
            return DialogAction::None;
        case kCalculate:
            if (!Validate()) return DialogAction::None;
            SetEditing(false);
            model_.CalculateIpr(ReadControls());
            SetCalculateCaption();
            SetEditing(true);
            ApplyLocationRule();
            return DialogAction::None;
        default:
            return DialogAction::None;
    }
}

DialogAction CaseDlg::OnSelectionChanged(int id) {
    if (id == kRateControl) ApplyRateRule();
    if (id == kIprModel) ApplyIprRule();
    return DialogAction::None;
}

bool CaseDlg::Configure() {
    CConfigureDlg dialog(config_);
    return CurrentUserInterface().RunModal(0, dialog) == DialogAnswer::Ok;
}

bool CaseDlg::Validate() {
    UserInterface& ui = CurrentUserInterface();
    if (Trimmed(At(kFileName).text).empty()) {
        ui.ShowMessage("No case file name has been entered", MessageIcon::Warning);
        return false;
    }
    double temperature = 0.0;
    if (!ParseNumber(Trimmed(At(kTemperature).text), temperature)) {
        ui.ShowMessage("The Default fluid temperature must be a number", MessageIcon::Warning);
        return false;
    }
    const bool local = Local();
    const int port = std::atoi(Trimmed(At(kPort).text).c_str());
    if (local && !InPortRange(port)) At(kPort).text = std::to_string(kShownPort);
    if (!local && !InPortRange(port)) {
        ui.ShowMessage(FormatText("Head Node Port must be from %d to %d (inclusive).",
                                  CaseSettings::kMinimumPort, CaseSettings::kMaximumPort),
                       MessageIcon::Warning);
        return false;
    }
    if (!local && Trimmed(At(kHeadNode).text).empty()) {
        ui.ShowMessage("No Linux Head Node Name has been entered", MessageIcon::Error);
        return false;
    }
    if (config_.IsConfigured(local)) return true;
    Configure();
    if (config_.IsConfigured(local)) return true;
    ui.ShowMessage("Simulator cannot be set-up unless it is configured.", MessageIcon::Warning);
    return false;
}

CaseSettings CaseDlg::ReadControls() const {
    CaseSettings s;
    s.CopyFrom(Edited);
    s.IsLocalMachine = At(kLocal).checked;
    s.HeadNodeName = Trimmed(At(kHeadNode).text);
    s.HeadNodePort = std::atoi(Trimmed(At(kPort).text).c_str());
    s.LinuxQueue = Trimmed(At(kQueue).text);
    s.ParallelCount = std::atoi(Trimmed(At(kParallel).text).c_str());
    s.FileName = Trimmed(At(kFileName).text);
    s.WindowsEquivDir = Trimmed(At(kEquivDir).text);
    s.GlrThreshold = std::atoi(Trimmed(At(kGlrThreshold).text).c_str());
    double temperature = 0.0;
    if (ParseNumber(Trimmed(At(kTemperature).text), temperature)) s.DefaultFluidTemp = temperature;
    s.RateControl = Selected(At(kRateControl), kRateTable);
    s.FluidTempUnit = Selected(At(kTemperatureUnit), kUnitTable);
    s.IprAlpha = Selected(At(kSpacing), kSpacingTable);
    s.IprModel = Selected(At(kIprModel), kIprTable);
    s.UnconnectedState = At(kShut).checked ? 1 : 0;
    return s;
}

void CaseDlg::Store() {
    Edited.CopyFrom(ReadControls());
    Edited.SaveLastUsed();
    model_.SetCaseSettings(Edited);
}

}  // namespace rivulet
