// The model's side of the inflow library's calibration callbacks.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "wells/WellControl.h"

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
    const OleDate end = OleDate::FromDays(CurrentDate.Days() + 365.0);
    if (!CurrentDate.IsValid() || !end.IsInCalendar() || !DateToBoundary(end, &target)) {
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

std::int32_t CExtModel::SetWellCtrlForSimCalc(std::int32_t index, double rate, char* err) {
    Guard lock(Lock);
    if (!IsConnected() || !Reservoir) {
        WriteCallbackText(err, "SetWellCtrlForSimCalc() was called before simulator is ready for data.");
        return 1;
    }
    WellData* well = Reservoir->wells.At(index);
    if (well == nullptr) {
        WriteCallbackText(
            err, "SetWellCtrlForSimCalc() was passed an invalid well index <" + std::to_string(index) + ">.");
        return 1;
    }
    const IprTable& table = well->ipr;
    if (table.Length() == 0) return 0;
    const auto anyAboveZero = [](const std::vector<double>& rates) {
        return std::any_of(rates.begin(), rates.end(), [](double r) { return r > 0.0; });
    };
    const bool hasGas = anyAboveZero(table.GasRates);
    const bool hasLiquid = anyAboveZero(table.OilRates) || anyAboveZero(table.WaterRates);
    if (!hasGas && !hasLiquid) return 0;

    // The well's flag in the map is true for a liquid well; a well the map does not know is judged by its
    // table.
    bool gas = !hasLiquid || table.IsGasRatioAbove(kGasWellRatio);
    if (const auto known = GasWellMap.find(well->name); known != GasWellMap.end()) gas = !known->second;

    const TNavUnitSystem& units = Reservoir->units;
    const double temperature = well->Temperature();
    NodeOperatingPoint point;
    point.temperature = temperature < TNavUnitSystem::kNoValueThreshold
                            ? units.toFieldTemperature(temperature)
                            : Settings.DefaultFluidTempF();
    if (gas) {
        well->vaneRateControl = kControlGas;
        point.gasRate = rate;
    } else if (well->IsProducer()) {
        well->vaneRateControl = kControlLiquid;
        point.oilRate = rate;
    } else {
        well->vaneRateControl = kControlWater;
        point.waterRate = rate;
    }
    const RateControlSettings control{Settings.RateControl, Settings.GlrThreshold};
    std::string error;
    if (!SetOpPtUnlocked(*well, point, control, units, Reservoir->fluid.IsBlackOil(), error)) {
        WriteCallbackText(err, error);
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::GetWellRatesForSimCalc(std::int32_t index, _tGetSetData* data, char* err) {
    Guard lock(Lock);
    if (!IsConnected() || !Reservoir) {
        WriteCallbackText(err,
                          "GetWellRatesForSimCalc() called before simulator was ready to generate data.");
        return 1;
    }
    const WellData* well = Reservoir->wells.At(index);
    if (well == nullptr) {
        WriteCallbackText(err, "GetWellRatesForSimCalc() was passed an invalid well index <" +
                                   std::to_string(index) + ">.");
        return 1;
    }
    const TNavUnitSystem& units = Reservoir->units;
    data->adPressure[0] = units.toFieldPressure(well->Bhp());
    // Rates are known once a step has been taken.
    const bool stepped = StepCount > 0;
    data->adGasRate[0] = stepped ? units.toFieldGasRate(well->GasRate()) : TNavUnitSystem::kNoValue;
    data->adOilRate[0] = stepped ? units.toFieldLiquidRate(well->OilRate()) : TNavUnitSystem::kNoValue;
    data->adWaterRate[0] = stepped ? units.toFieldLiquidRate(well->WaterRate()) : TNavUnitSystem::kNoValue;
    return 0;
}

}  // namespace rivulet
