// The model's side of the inflow library's calibration callbacks.
#include <set>
#include <string>

#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"

namespace rivulet {

double CExtModel::ElapsedDays() const {
    Guard lock(Lock);
    return OleDate::Continuous(CurrentDate.Days()) - OleDate::Continuous(StartDate.Days());
}

std::int32_t CExtModel::InitialiseForSimCalc(char* err) {
    Guard lock(Lock);
    if (IsConnected()) {
        tErrorRecord record{};
        if (StopSimulator(&record) != 0) {
            WriteCallbackText(err, record.szText);
            return 1;
        }
    }
    LoadedFromSave = false;
    Settings.IprAlpha = 0;
    Settings.RateControl = 1;
    Settings.IprModel = 1;

    std::string allWells;
    std::set<std::string> connected;
    if (Reservoir) {
        for (const WellData& well : Reservoir->wells) {
            allWells += well.name + "\n";
            if (well.underVaneControl) connected.insert(well.name);
        }
    }
    tErrorRecord record{};
    const std::int32_t started = StartRun(StartParam, allWells, &record);
    if (Reservoir) {
        for (WellData& well : Reservoir->wells) well.underVaneControl = connected.count(well.name) != 0;
    }
    if (started != 0) {
        WriteCallbackText(err, record.szText);
        return 1;
    }
    tDate target{};
    if (!DateToBoundary(OleDate::FromDays(CurrentDate.Days() + 365.0), &target) || !CurrentDate.IsValid()) {
        WriteCallbackText(err, "Invalid end date in InitialiseForSimCalc: model's start date is " +
                                   CurrentDate.FormatLocale() + ".");
        return 1;
    }
    if (!CheckEndDate(&target, &record)) {
        WriteCallbackText(err, record.szText);
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::SetWellCtrlForSimCalc(std::int32_t well, double, char* err) {
    Guard lock(Lock);
    if (!IsConnected() || !Reservoir) {
        WriteCallbackText(err, "SetWellCtrlForSimCalc() was called before simulator is ready for data.");
        return 1;
    }
    if (Reservoir->wells.At(well) == nullptr) {
        WriteCallbackText(
            err, "SetWellCtrlForSimCalc() was passed an invalid well index <" + std::to_string(well) + ">.");
        return 1;
    }
    WriteCallbackText(err, "Well rates cannot be set by this build of the driver.");
    return 1;
}

std::int32_t CExtModel::GetWellRatesForSimCalc(std::int32_t well, _tGetSetData*, char* err) {
    Guard lock(Lock);
    if (!IsConnected() || !Reservoir) {
        WriteCallbackText(err,
                          "GetWellRatesForSimCalc() called before simulator was ready to generate data.");
        return 1;
    }
    if (Reservoir->wells.At(well) == nullptr) {
        WriteCallbackText(
            err, "GetWellRatesForSimCalc() was passed an invalid well index <" + std::to_string(well) + ">.");
        return 1;
    }
    WriteCallbackText(err, "Well rates cannot be read by this build of the driver.");
    return 1;
}

}  // namespace rivulet
