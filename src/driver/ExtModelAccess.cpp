// Variables and commands by access string. Every string starts with the driver's name, in any case; the
// case, the wells, the fluid, the field and the run's times are offered the rest in that order, and the
// first to recognise it wins.
#include <algorithm>
#include <cstring>

#include "dataserver/ExtDataServerTag.h"
#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"

namespace rivulet {

namespace {

constexpr const char* kRootName = "tNavigator";

struct FieldVariable {
    const char* name;
    FieldTotal total;
};

// In the order in which they are tried.
constexpr FieldVariable kFieldVariables[] = {
    {"GasProductionRate", kGasProductionRate},     {"OilProductionRate", kOilProductionRate},
    {"WaterProductionRate", kWaterProductionRate}, {"GasInjectionRate", kGasInjectionRate},
    {"WaterInjectionRate", kWaterInjectionRate},   {"GasInjectionTotal", kGasInjectionTotal},
    {"WaterInjectionTotal", kWaterInjectionTotal}, {"GasProductionTotal", kGasProductionTotal},
    {"OilProductionTotal", kOilProductionTotal},   {"WaterProductionTotal", kWaterProductionTotal},
};

}  // namespace

bool CExtModel::HasSessionStarted() const {
    return Session && Session->SeenJobStarted();
}

bool CExtModel::ProcessModelVariable(CExtDataServerTag& tag) {
    if (tag.MatchSpelling("Field", "FIELD")) {
        for (const FieldVariable& variable : kFieldVariables) {
            double value = FieldTotals[variable.total];
            if (tag.BindDouble(variable.name, value)) return true;
        }
    }
    // The date is formatted only when asked for: this name is tried for every string that nothing else took.
    if (tag.MatchName("RunStartDate")) {
        if (tag.GetMode() == CExtDataServerTag::kGet) tag.SetValueText(StartDate.Format("%d %b %Y").c_str());
        return true;
    }
    double elapsed = 0.0;
    if (StartDate.IsValid() && CurrentDate.IsValid()) {
        elapsed =
            std::max(0.0, OleDate::Continuous(CurrentDate.Days()) - OleDate::Continuous(StartDate.Days()));
    }
    return tag.BindDouble("CurrentSimTime", elapsed);
}

std::int32_t CExtModel::FinishAccess(CExtDataServerTag& tag, bool recognised, bool caseRecognised,
                                     tErrorRecord* err) {
    if (!tag.HasError()) return recognised ? 0 : 1;

    // During a run the host hears of a failed access through its notification callbacks and goes on.
    if (IsRunActive() && (ProgressCallback != nullptr || StatusCallback != nullptr)) {
        if (ProgressCallback != nullptr) ProgressCallback(tag.GetErrorText().c_str(), this);
        if (StatusCallback != nullptr) StatusCallback(tag.GetErrorText().c_str(), this);
        tag.ClearErrorText();
        tag.SetValueText("0");
        return 0;
    }
    const bool setting = tag.GetMode() == CExtDataServerTag::kSet;
    if (!caseRecognised && !HasSessionStarted() && (setting || !RunInitialised)) {
        WriteText(err, setting ? "Error: Only CaseDetails can be edited when the simulator is not running."
                               : "Error: Only the CaseDetails can be read before the simulator is started.");
        return 1;
    }
    WriteText(err, tag.GetErrorText());
    return 1;
}

std::int32_t CExtModel::GetVar(tGetVarData* data, tErrorRecord* err) {
    if (data == nullptr || data->pszAccess == nullptr) {
        WriteText(err, "A null data item was provided to GetVar().");
        return 1;
    }
    auto tag = CExtDataServerTag::ForGet(data->pszAccess, data->szValue, sizeof data->szValue);
    if (!tag.MatchName(kRootName)) return 1;
    Guard lock(Lock);

    const bool caseRecognised = Settings.ProcessAccessString(tag) != 0;
    bool recognised = caseRecognised;
    if (!recognised && !Reservoir) {
        tag.SetErrorText("Case data does not yet exist.");
        recognised = true;
    }
    if (!recognised) recognised = Reservoir->wells.ProcessAccessString(tag, false, 0, {}) != 0;
    if (!recognised) recognised = Reservoir->fluid.ProcessAccessString(tag) != 0;
    if (!recognised) recognised = ProcessModelVariable(tag);
    return FinishAccess(tag, recognised, caseRecognised, err);
}

std::int32_t CExtModel::SetVar(tSetVarData* data, tErrorRecord* err) {
    if (data == nullptr || data->pszAccess == nullptr || data->pszValue == nullptr) {
        WriteText(err, "A null data item was provided to SetVar().");
        return 1;
    }
    auto tag = CExtDataServerTag::ForSet(data->pszAccess, data->pszValue);
    if (!tag.MatchName(kRootName)) return 1;
    Guard lock(Lock);

    const bool caseRecognised = Settings.UpdateFromAccessString(tag, IsRunActive(), HasSessionStarted()) != 0;
    bool recognised = caseRecognised;
    // Without reservoir data there are no wells, and the string is simply not recognised.
    if (!recognised && Reservoir) recognised = Reservoir->wells.ProcessAccessString(tag, false, 0, {}) != 0;
    return FinishAccess(tag, recognised, caseRecognised, err);
}

std::int32_t CExtModel::DoCmd(const char* command, tErrorRecord* err) {
    if (command == nullptr) {
        WriteText(err, "A null data item was provided to DoCmd().");
        return 1;
    }
    auto tag = CExtDataServerTag::ForCommand(command);
    if (!tag.MatchName(kRootName)) return 1;

    CExtDataServerCmdArgumentCollection arguments;
    // Until a dialog offers it, scripts start the case's inflow calculation, as its button would.
    if (tag.ParseCommand("CalculateIprCorrection", arguments, 0, 0) >= 0) {
        if (tag.HasError()) {
            WriteText(err, tag.GetErrorText());
            return 1;
        }
        CaseSettings present;
        {
            Guard lock(Lock);
            present = Settings;
        }
        if (CalculateIprCorrection(0, present) == 0) return 0;
        WriteText(err, "The corrected inflow could not be calculated for this case.");
        return 1;
    }
    if (tag.ParseCommand("RunToTime", arguments, 1, 1) < 0) return 0;  // an unknown command counts as done
    if (tag.HasError()) {
        WriteText(err, tag.GetErrorText());
        return 1;
    }

    // The target lies N days after the run's start, whatever the current date. The lock is held only to
    // read the dates; Timestep takes it for each of its passes.
    const double days = arguments.GetAt(0)->realValue;
    tTimestepData step{};
    {
        Guard lock(Lock);
        const double target = OleDate::FromContinuous(OleDate::Continuous(StartDate.Days()) + days);
        DateToBoundary(CurrentDate, &step.stStart);
        DateToBoundary(OleDate::FromDays(target), &step.stTarget);
    }
    return Timestep(&step, err) == 0 ? 0 : 1;
}

}  // namespace rivulet
