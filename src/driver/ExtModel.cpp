// Construction, destruction and the run lifecycle of a model: start, initialise, stop.
#include "driver/ExtModel.h"

#include <algorithm>
#include <cctype>

#include "case/CaseDlg.h"
#include "common/Trim.h"
#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/RivuletApp.h"
#include "driver/SimCalcCallbacks.h"
#include "inflowkit/InflowKit.h"
#include "session/LinuxJobSession.h"
#include "session/WindowsJobSession.h"
#include "wells/WellConsistency.h"
#include "wells/WellControl.h"

namespace rivulet {

namespace {

bool SameNameIgnoringCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

}  // namespace

CExtModel::CExtModel() {
    IprModel = CreateIPRModel(this);
    InstallSimCalcCallbacks(IprModel);
}

CExtModel::~CExtModel() {
    if (Session) {
        if (Stop() == 0) Session.reset();
    }
    Reservoir.reset();
    if (IprModel != nullptr) DestroyIPRModel(IprModel);
    GasWellMap.clear();
}

bool CExtModel::IsConnected() const {
    return Session && Session->IsConnected();
}

bool CExtModel::SeemsConnected() const {
    return Session && Session->SeenConnected();
}

bool CExtModel::IsRunActive() const {
    return Session && Session->SeenJobRunning() && RunInitialised;
}

void CExtModel::ResetRun() {
    StartDate = CurrentDate = ReportDate = SpareDate = OleDate::Null();
    StepCount = 0;
    RunInitialised = false;
    Session.reset();
    Reservoir.reset();
}

void CExtModel::CreateSession() {
    if (Settings.IsLocalMachine) {
        Session = std::make_unique<CWindowsJobSession>(&Settings, TheApp().Config);
    } else {
        Session = std::make_unique<CLinuxJobSession>(&Settings, TheApp().Config);
    }
}

std::int32_t CExtModel::StartRun(std::uint32_t startParam, const std::string& connectedWells,
                                 tErrorRecord* err) {
    StartParam = startParam;
    if (LoadedFromSave) return 0;  // a restored model does not start a simulator by itself
    ResetRun();
    CreateSession();
    std::string error;
    bool started = false;
    if (Session->StartProcess(error) != 0) {
        WriteFormat(err, "Could not start the simulator process: <%s>", error.c_str());
    } else if (!Session->LaunchJob(error)) {
        // A failed launch stops its job, so only a lost connection tells of a simulator that died.
        WriteText(err, Session->IsConnected() ? error.substr(0, 255) : CJobSession::kSimulatorEnded);
    } else {
        Reservoir.reset();
        if (!Session->CreateReservoir(Reservoir, connectedWells, error)) {
            if (Session->IsSimulatorGone()) error = CJobSession::kSimulatorEnded;
            WriteFormat(err, "Error when creating the initial reservoir data: <%s>", error.c_str());
        } else {
            UpdateFieldTotals();
            ReadModelDates();
            started = true;
        }
    }
    if (!started) {
        Session.reset();
        return 1;
    }
    RegisterIprWells();
    return 0;
}

void CExtModel::ReadModelDates() {
    StartDate = Session->StartDate();
    if (!StartDate.IsValid()) {
        StartDate = CurrentDate = ReportDate = EndDate = OleDate::LocalNow();
        return;
    }
    CurrentDate = ReportDate = Session->CurrentDate();
    EndDate = Session->EndDate();
}

void CExtModel::UpdateFieldTotals() {
    FieldTotals.fill(0.0);
    if (!Reservoir) return;
    for (const WellData& well : Reservoir->wells) {
        const WellRateRecord& r = well.IsInjector() ? well.injectionRecord : well.productionRecord;
        if (well.IsInjector()) {
            FieldTotals[kGasInjectionRate] += well.GasRate();
            FieldTotals[kGasInjectionTotal] += std::max(r[WellRateRecord::kCumGas], 0.0);
            FieldTotals[kWaterInjectionRate] += well.WaterRate();
            FieldTotals[kWaterInjectionTotal] += std::max(r[WellRateRecord::kCumWater], 0.0);
        } else if (well.IsProducer()) {
            FieldTotals[kGasProductionRate] += well.GasRate();
            FieldTotals[kGasProductionTotal] += std::max(r[WellRateRecord::kCumGas], 0.0);
            FieldTotals[kOilProductionRate] += well.OilRate();
            FieldTotals[kOilProductionTotal] += std::max(r[WellRateRecord::kCumOil], 0.0);
            FieldTotals[kWaterProductionRate] += well.WaterRate();
            FieldTotals[kWaterProductionTotal] += std::max(r[WellRateRecord::kCumWater], 0.0);
        }
    }
    // Sums are kept in field units: gas in MMscf, liquids in STB.
    const TNavUnitSystem& units = Reservoir->units;
    for (FieldTotal gas : {kGasInjectionRate, kGasInjectionTotal, kGasProductionRate, kGasProductionTotal}) {
        FieldTotals[gas] = units.toFieldGasRate(FieldTotals[gas]);
    }
    for (FieldTotal liquid : {kWaterInjectionRate, kWaterInjectionTotal, kOilProductionRate,
                              kOilProductionTotal, kWaterProductionRate, kWaterProductionTotal}) {
        FieldTotals[liquid] = units.toFieldLiquidRate(FieldTotals[liquid]);
    }
}

void CExtModel::RegisterIprWells() {
    StartIPRAddWell(IprModel);
    GasWellMap.clear();
    if (Reservoir) {
        std::int32_t index = 0;
        for (const WellData& well : Reservoir->wells) {
            // A well counts as liquid when its table has rows and their gas to liquid ratio is not above
            // 3300 scf/STB; a table without rows makes it neither, and it is entered as gas.
            const bool liquid = well.ipr.Length() > 0 && well.ipr.IsGasRatioNotAbove(kGasWellRatio);
            AddIPRWell(IprModel, index++, well.name.c_str(), well.IsProducer(), liquid);
            GasWellMap[well.name] = liquid;
        }
    }
    EndIPRAddWell(IprModel);
}

std::int32_t CExtModel::StartSimulator(tStartData* start, tErrorRecord* err) {
    Guard lock(Lock);
    return StartRun(start != nullptr ? start->dwStartParam : StartParam, std::string(), err);
}

std::int32_t CExtModel::Initialise(tInitData* init, tErrorRecord* err) {
    Guard lock(Lock);
    RunInitialised = false;
    StartParam = init != nullptr ? init->dwStartParam : 0;
    ProgressCallback = init != nullptr ? init->pfnProgress : nullptr;
    StatusCallback = init != nullptr ? init->pfnStatus : nullptr;

    if (!IsConnected()) {
        // What the model held before becomes the previous model, against which the new job is checked.
        LoadedFromSave = false;
        const bool hadPrevious = Reservoir != nullptr;
        WellList previousWells;
        TNavUnitSystem previousUnits;
        std::string connectedWells;
        if (hadPrevious) {
            previousWells = Reservoir->wells;
            for (WellData& well : previousWells)
                well.fluid = nullptr;  // the old fluid goes with the old data
            previousUnits = Reservoir->units;
            for (const WellData& well : Reservoir->wells) {
                if (well.underVaneControl) connectedWells += well.name + "\n";
            }
        }
        if (const std::int32_t result = ConnectWells(Reservoir.get(), init, err); result != 0) return result;

        std::int32_t result = 1;
        try {
            result = StartRun(StartParam, connectedWells, err);
        } catch (...) {
            WriteText(err, "An exception was thrown when loading the case file during initialisation.");
            return 1;
        }
        if (result != 0) return result;
        if (hadPrevious && previousUnits.IsSet() &&
            !SameNameIgnoringCase(Reservoir->units.name, previousUnits.name)) {
            WriteText(err, "The unit system used in the model has changed.");
            return 1;
        }
        if (hadPrevious) {
            std::string error;
            if (CheckConsistency(Reservoir->wells, previousWells, error) != 0) {
                WriteText(err, error);
                return 1;
            }
        }
    }
    if (init != nullptr && !CheckEndDate(&init->stEndDate, err)) return 1;
    if (const std::int32_t result = ConnectWells(Reservoir.get(), init, err); result != 0) {
        if (Session && Session->IsSimulatorGone()) WriteText(err, CJobSession::kSimulatorEnded);
        return result;
    }
    if (const std::int32_t result = RunToStartDate(init, err); result != 0) return result;
    RunInitialised = true;
    return 0;
}

std::int32_t CExtModel::ConnectWells(ReservoirData* reservoir, const tInitData* init, tErrorRecord* err) {
    if (init == nullptr || init->piWellIndices == nullptr || init->piWellKinds == nullptr ||
        init->piVanePhases == nullptr || reservoir == nullptr) {
        return 0;
    }
    ClearControls(reservoir->wells);
    WellRequester* requester = Session ? Session->Wells() : nullptr;
    std::string error;
    for (std::int32_t k = 0; k < init->iNumWells; ++k) {
        if (!ConnectWellToVaneCtrl(reservoir->wells, requester, init->piWellIndices[k], init->piWellKinds[k],
                                   init->piVanePhases[k], error)) {
            WriteText(err, error);
            return 1;
        }
    }
    if (!ResetInjectorPhasesStep(error)) {
        WriteText(err, error.substr(0, 255));
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::RunToStartDate(const tInitData* init, tErrorRecord* err) {
    if (init == nullptr || err == nullptr || init->dwRunToStartDate == 0) return 0;
    tDate start{};
    if (const std::int32_t result = GetStartDate(&start, err); result != 0) return result;
    const OleDate found = DateFromBoundary(&start);
    const OleDate wanted = DateFromBoundary(&init->stStartDate);
    if (found.Days() >= wanted.Days()) return 0;

    static const char* const kRunning = "Running tNavigator simulation to Conflux start date";
    if (ProgressCallback != nullptr) ProgressCallback(kRunning, this);
    if (StatusCallback != nullptr) StatusCallback(kRunning, this);

    const std::int32_t unconnectedState = Settings.UnconnectedState;
    Settings.UnconnectedState = 0;
    tTimestepData step{};
    step.iSize = static_cast<std::int32_t>(sizeof step);
    step.stStart = start;
    step.stTarget = init->stStartDate;
    step.dStepLength = wanted.Days() - found.Days();
    const std::int32_t result = Timestep(&step, err);
    Settings.UnconnectedState = unconnectedState;
    if (result != 0) return result;

    // The one read with the connected wells under the network fills their inflow tables.
    const bool connections = init->piWellIndices != nullptr && init->piWellKinds != nullptr &&
                             init->piVanePhases != nullptr && Reservoir;
    auto markConnected = [&](bool on) {
        if (!connections) return;
        for (std::int32_t k = 0; k < init->iNumWells; ++k) {
            if (WellData* well = Reservoir->wells.At(init->piWellIndices[k])) well->underVaneControl = on;
        }
    };
    markConnected(true);
    std::string error;
    const bool read = Session && Session->ReadCurrentData(Reservoir.get(), error);
    markConnected(false);
    if (!read) {
        if (Session && Session->IsSimulatorGone()) error = CJobSession::kSimulatorEnded;
        WriteFormat(err, "Error when reading data from tNavigator: <%s>", error.c_str());
        return 1;
    }
    StepCount = 0;
    return 0;
}

std::int32_t CExtModel::Stop() {
    if (!Session) return 0;
    Guard lock(Lock);
    Session.reset();
    return 0;
}

std::int32_t CExtModel::StopSimulator(tErrorRecord* err) {
    if (Stop() > 0) {
        WriteText(err, "Failed to stop simulator");
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::StartApp(std::int32_t, tErrorRecord* err) {
    tStartData start{};
    start.dwStartParam = 1;
    return StartSimulator(&start, err);
}

std::int32_t CExtModel::StopApp() {
    Stop();
    return 0;
}

namespace {

// The model as the case dialog sees it.
class DialogModel final : public CaseDialogModel {
  public:
    explicit DialogModel(CExtModel& model) : model_(model) {}
    CaseSettings GetCaseSettings() const override { return model_.GetSettings(); }
    void SetCaseSettings(const CaseSettings& settings) override { model_.GetSettings().CopyFrom(settings); }
    bool HasReservoirData() const override { return model_.GetReservoir() != nullptr; }
    bool HasCalculatedIpr() const override { return model_.HasCalculatedIpr(); }
    bool IsConnected() const override { return model_.IsConnected(); }
    bool IsRunActive() const override { return model_.IsRunActive(); }
    void Stop() override { model_.Stop(); }
    void CalculateIpr(const CaseSettings& onScreen) override { model_.CalculateIprCorrection(0, onScreen); }

  private:
    CExtModel& model_;
};

}  // namespace

std::int32_t CExtModel::EditCase(HostWindow parent, std::int32_t* modified, tErrorRecord*) {
    if (modified != nullptr) *modified = 0;
    DialogModel model(*this);
    CaseDlg dialog(model, TheApp().Config);
    if (CurrentUserInterface().RunModal(parent, dialog) == DialogAnswer::Cancel) return -1;
    if (dialog.StartRequested) {
        LoadedFromSave = false;
        if (modified != nullptr) *modified = 1;
    }
    return 0;
}

std::int32_t CExtModel::QueryReserved(std::uint32_t, tErrorRecord*) {
    return -999;
}

std::int32_t CExtModel::ImportComposition(HostWindow, void*, bool, tErrorRecord* err) {
    WriteText(err, "Compositional import to tNavigator is not supported.");
    return 1;
}

std::int32_t CExtModel::SetAlias(const char* alias, tErrorRecord* err) {
    std::string text = Trimmed(alias != nullptr ? alias : "");
    if (text.empty()) {
        WriteText(err, "Error: Alias cannot be empty or whitespace-only.");
        return 1;
    }
    Alias = std::move(text);
    return 0;
}

}  // namespace rivulet
