// Construction, destruction and the run lifecycle of a model: start, initialise, stop.
#include "driver/ExtModel.h"

#include <algorithm>
#include <cctype>

#include "case/CaseDlg.h"
#include "common/Trim.h"
#include "driver/ErrorRecord.h"
#include "driver/RivuletApp.h"
#include "driver/SimCalcCallbacks.h"
#include "inflowkit/InflowKit.h"
#include "session/LinuxJobSession.h"
#include "session/WindowsJobSession.h"

namespace rivulet {

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

bool CExtModel::IsRunActive() const {
    return Session && Session->IsJobRunning() && RunInitialised;
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
        WriteText(err, error.substr(0, 255).c_str());
    } else {
        Reservoir.reset();
        if (!Session->CreateReservoir(Reservoir, connectedWells, error)) {
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
    // The sums over the wells' rates and totals come with the wells' results; a model read without them
    // totals nothing.
    FieldTotals.fill(0.0);
}

void CExtModel::RegisterIprWells() {
    StartIPRAddWell(IprModel);
    GasWellMap.clear();
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
    const bool hasConnections = init != nullptr && init->piWellIndices != nullptr &&
                                init->piWellKinds != nullptr && init->piVanePhases != nullptr;

    if (!IsConnected()) {
        LoadedFromSave = false;
        std::string connectedWells;
        if (Reservoir) {
            for (const WellData& well : Reservoir->wells) {
                if (well.underVaneControl) connectedWells += well.name + "\n";
            }
        }
        if (hasConnections) {
            // Taking wells under the network's control needs the simulator's wells, which only a running
            // session provides.
            WriteText(err, "Wells cannot be connected before the simulator has been started.");
            return 1;
        }
        std::int32_t result = 1;
        try {
            result = StartRun(StartParam, connectedWells, err);
        } catch (...) {
            WriteText(err, "An exception was thrown when loading the case file during initialisation.");
            return 1;
        }
        if (result != 0) return result;
    }
    // Checking a restarted model, connecting the network's wells and the run to the host's start date
    // need the simulator's wells, which this build does not read yet.
    WriteText(err, "Initialise() cannot connect the wells of this build of the driver to the network.");
    return 1;
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

std::int32_t CExtModel::EditCase(HostWindow parent, std::int32_t* modified, tErrorRecord*) {
    if (modified != nullptr) *modified = 0;
    CaseDlg dialog(Settings);
    if (CurrentUserInterface().RunModal(parent, dialog) == DialogAnswer::Cancel) return -1;
    Settings.CopyFrom(dialog.Edited);
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
