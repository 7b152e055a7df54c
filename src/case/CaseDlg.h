// The "tNavigator Case" dialog: edits a working copy of one model's case settings, and can start or stop
// the model's simulator and start the inflow calculation. The model is seen through CaseDialogModel.
#pragma once

#include <string>

#include "case/CaseSettings.h"
#include "platform/UserInterface.h"

namespace rivulet {

class MachineConfig;

// What the case dialog asks of its model.
class CaseDialogModel {
  public:
    virtual ~CaseDialogModel() = default;
    virtual CaseSettings GetCaseSettings() const = 0;
    virtual void SetCaseSettings(const CaseSettings& settings) = 0;
    virtual bool HasReservoirData() const = 0;
    // The inflow library holds a calculation for the model's wells.
    virtual bool HasCalculatedIpr() const = 0;
    virtual bool IsConnected() const = 0;
    // The job runs and its run has been initialised.
    virtual bool IsRunActive() const = 0;
    virtual void Stop() = 0;
    // Runs the inflow calculation with `onScreen` in force, then stops the simulator and puts the model's
    // own settings back.
    virtual void CalculateIpr(const CaseSettings& onScreen) = 0;
};

class CaseDlg final : public ModalDialog {
  public:
    enum Id {
        kLocationGroup = 1139,
        kLocal = 1149,
        kCluster = 1150,
        kHeadNodeLabel = 1157,
        kHeadNode = 1158,
        kPortLabel = 1140,
        kPort = 1141,
        kQueueLabel = 1216,
        kQueue = 1215,
        kParallelGroup = 1217,
        kParallel = 1138,
        kParallelNote = 1218,
        kCaseGroup = 1111,
        kFileName = 1124,
        kBrowse = 1123,
        kEquivDirLabel = 1163,
        kEquivDir = 1164,
        kWellsGroup = 1112,
        kRateLabel = 1209,
        kRateControl = 1131,
        kGlrThreshold = 1137,
        kGlrNote = 1135,
        kTemperatureLabel = 1210,
        kTemperature = 1211,
        kTemperatureUnit = 1212,
        kUnconnectedGroup = 1159,
        kShut = 1160,
        kIprGroup = 1155,
        kIprModel = 1099,
        kCalculate = 1156,
        kSpacingGroup = 1198,
        kSpacing = 1200,
        kConfigure = 1143,
        kStart = 1142,
    };
    static constexpr int kHelpTopic = 8700;
    static constexpr const char* kLockText = " - Press Stop to edit";

    CaseDlg(CaseDialogModel& model, MachineConfig& config);

    std::string Title() const override { return "tNavigator Case"; }
    void OnOpen() override;
    DialogAction OnClicked(int id) override;
    DialogAction OnSelectionChanged(int id) override;

    // The controls read into settings: edits trimmed, numbers as integers, combos by their texts.
    CaseSettings ReadControls() const;

    // The working copy, as OK leaves it.
    CaseSettings Edited;
    // Set when the user asked from the dialog for the simulator to be started.
    bool StartRequested = false;

  private:
    void ShowSettings();
    void FillQueues();
    void SetCaseCaption();
    void SetConfigureCaption();
    void SetCalculateCaption();
    void ApplyLocationRule();
    void ApplyRateRule();
    void ApplyIprRule();
    void SetEditing(bool enabled);
    void LockEditing();
    void UnlockEditing();
    bool Validate();
    void Store();
    bool Local() const { return At(kLocal).checked; }
    // Runs the configuration dialog; true when it closed with OK.
    bool Configure();

    CaseDialogModel& model_;
    MachineConfig& config_;
};

}  // namespace rivulet
