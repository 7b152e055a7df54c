// The operations that show the reservoir to Conflux as network nodes: enumeration, compositions, inflow
// tables, connections and operating points. A well is named across the boundary by its index.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "common/FormatText.h"
#include "driver/CompositionRecord.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"
#include "wells/WellControl.h"

namespace rivulet {

namespace {

std::int32_t QueryTypeCode(std::int32_t wellType) {
    if (wellType == kWellProducer) return 1;
    if (wellType == kWellInjector) return 2;
    return 3;
}

// The part of the well record that follows the gravities, as the host sizes it.
constexpr std::int32_t kGetSetExtensionSize = 776;
// The case's choice "Corrected (Quillon)": inflow tables go through the inflow library.
constexpr std::int32_t kIprModelCorrected = 2;

// An entry of a table column, or `missing` when the column is short.
// The magnitudes of every rate of an inflow record's rows, oil, water and gas alike: the measure by which a
// correction of the whole table is told.
double TotalRate(const _tGetSetData& data) {
    double total = 0.0;
    for (int row = 0; row < std::clamp(data.iNumPoints, 0, kMaxIprPoints); ++row)
        total += std::fabs(data.adOilRate[row]) + std::fabs(data.adWaterRate[row]) +
                 std::fabs(data.adGasRate[row]);
    return total;
}

double Entry(const std::vector<double>& column, std::size_t row, double missing = 0.0) {
    return row < column.size() ? column[row] : missing;
}

// The well's mole fractions as the first row of the record's fractions.
bool CopyMoleFractions(const WellComposition& composition, double* row, std::string& error) {
    if (composition.hcCount > kMaxComponents) {
        error = FormatText("Conflux can only transfer %d hc components; model contains %d.", kMaxComponents,
                           composition.hcCount);
        return false;
    }
    if (composition.hcCount < 0 ||
        composition.rateFractions.size() != static_cast<std::size_t>(composition.hcCount)) {
        error = "Internal error: mole fractions array is the wrong size";
        return false;
    }
    std::copy(composition.rateFractions.begin(), composition.rateFractions.end(), row);
    return true;
}

}  // namespace

std::int32_t CExtModel::Query(tQueryData* pstQueryData, std::uint32_t dwRelation, tErrorRecord* err) {
    if (err == nullptr) return -1;
    if (pstQueryData == nullptr) {
        WriteText(err, "A null data item was provided to Query().");
        return -1;
    }
    if (dwRelation == EX_CHILD && pstQueryData->iHandle >= 0) {
        WriteText(err, "Query() was called with dwRelation == EX_CHILD && pstQueryData->iHandle >= 0.");
        return -1;
    }
    Guard lock(Lock);
    if (!Reservoir) {
        WriteText(err, "No data present for Query().");
        return -1;
    }
    long long index = static_cast<long long>(pstQueryData->iHandle) + 1;
    if (index < 0) index = 0;
    const WellData* well = Reservoir->wells.At(index);
    if (well == nullptr) {
        WriteFormat(err, "The requested well index <%lld> does not exist (function call Query).", index);
        return -1;
    }
    const std::int32_t type = QueryTypeCode(well->wellType);
    pstQueryData->iType = type;
    pstQueryData->iOne8 = 1;
    pstQueryData->iOne12 = 1;
    pstQueryData->iType16 = type;
    pstQueryData->iZero20 = 0;
    pstQueryData->iOne24 = 1;
    pstQueryData->iHandle = static_cast<std::int32_t>(index);
    std::snprintf(pstQueryData->szName, sizeof(pstQueryData->szName), "%s", well->name.c_str());
    std::memcpy(pstQueryData->szKind, "Well", 5);
    return 0;
}

std::int32_t CExtModel::QueryComp(tCompositionData* composition, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (composition == nullptr) {
        WriteText(err, "A null data item was provided to QueryComp().");
        return 1;
    }
    Guard lock(Lock);
    if (!Reservoir) {
        WriteText(err, "QueryComp() was called before the initial model data has been read.");
        return 1;
    }
    if (Reservoir->fluid.IsBlackOil()) return -1;
    if (Reservoir->fluid.eosRegionCount < 1) {
        WriteText(err, "There are no EosRegions available.");
        return 1;
    }
    std::string error;
    if (!FillCompositionRecord(composition, &Reservoir->fluid, 1, Reservoir->units, error)) {
        WriteText(err, error);
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::QueryCompByStream(tCompositionData* composition, std::int32_t well,
                                          tErrorRecord* err) {
    if (err == nullptr) return -1;
    if (composition == nullptr) {
        WriteText(err, "A null composition item was provided to QueryCompByStream().");
        return -1;
    }
    Guard lock(Lock);
    if (!Reservoir) {
        WriteText(err, "QueryCompByStream() was called before the initial model data has been read.");
        return -1;
    }
    if (Reservoir->fluid.eosRegionCount == 1) return 0;  // the host has region 1 from QueryComp already
    if (Reservoir->fluid.IsBlackOil()) return -1;
    const WellData* data = Reservoir->wells.At(well);
    if (data == nullptr) {
        WriteText(err, "The handle was provided to QueryCompByStream() was out-of-range.");
        return -1;
    }
    if (data->eosRegion < 1 || data->eosRegion > Reservoir->fluid.eosRegionCount) {
        WriteFormat(err, "The EosRegion for well index %d is invalid.", well);
        return -1;
    }
    std::string error;
    if (!FillCompositionRecord(composition, &Reservoir->fluid, data->eosRegion, Reservoir->units, error)) {
        WriteText(err, error);
        return -1;
    }
    return 1;  // the host reads 1 as a composition given for this well
}

std::int32_t CExtModel::GetIPR(_tGetSetData* data, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (data == nullptr) {
        WriteText(err, "A null data item was provided to GetIPR().");
        return 1;
    }
    Guard lock(Lock);
    if (!Reservoir) {
        WriteText(err, "No data present for GetIPR().");
        return 1;
    }
    const std::int32_t index = data->iWellIndex;
    WellData* well = Reservoir->wells.At(index);
    if (well == nullptr) {
        WriteFormat(err, "The requested well No. %d does not exist (function call GetIPR).", index + 1);
        return 1;
    }
    const TNavUnitSystem& units = Reservoir->units;
    const FluidProperties& fluid = Reservoir->fluid;

    std::memset(data, 0, sizeof(_tGetSetData));
    data->iSize = static_cast<std::int32_t>(sizeof(_tGetSetData));
    data->iWellIndex = index;
    data->stComposition.iSize = static_cast<std::int32_t>(sizeof(tCompositionData));
    data->iExtensionSize = kGetSetExtensionSize;
    data->iOne = 1;
    const double oilDensity = well->Density(WellRateRecord::kOilDensity);
    const double gasDensity = well->Density(WellRateRecord::kGasDensity);
    data->dOilGravity = oilDensity / units.WaterDensity();
    data->dGasGravity = gasDensity / units.AirDensity();
    data->dWaterGravity = well->Density(WellRateRecord::kWaterDensity) / units.WaterDensity();
    // Without both gravities there is no mass to report.
    const bool massKnown = data->dOilGravity > 0.0 && data->dGasGravity > 0.0;
    if (data->dOilGravity <= 0.0) data->dOilGravity = 0.8;
    if (data->dGasGravity <= 0.0) data->dGasGravity = 0.7;

    std::string error;
    if (!CopyMoleFractions(well->composition, data->aadMoleFractions[0], error) ||
        !FillCompositionRecord(&data->stComposition, &fluid, well->eosRegion, units, error)) {
        WriteText(err, error);
        return 1;
    }
    const std::size_t fractionBytes = sizeof(double) * static_cast<std::size_t>(well->composition.hcCount);

    const double defaultTemperature = Settings.DefaultFluidTempF();
    const bool modelTemperature = fluid.IsThermal();
    const double oilMass = units.toFieldLiquidDensity(oilDensity);
    const double gasMass = units.toFieldGasDensity(gasDensity);
    const IprTable& table = well->ipr;
    int column = 0;
    for (std::size_t row = 0; row < table.Length() && column < kMaxIprPoints; ++row) {
        if (table.IsRowZero(row)) continue;
        const double gas = Entry(table.GasRates, row);
        const double oil = Entry(table.OilRates, row);
        const double temperature = Entry(table.Temperatures, row, TNavUnitSystem::kNoValue);
        data->adGasRate[column] = gas;
        data->adOilRate[column] = oil;
        data->adWaterRate[column] = Entry(table.WaterRates, row);
        data->adPressure[column] = table.Pressures[row];
        data->adTemperature[column] = modelTemperature && temperature <= TNavUnitSystem::kNoValueThreshold
                                          ? temperature
                                          : defaultTemperature;
        data->adMassRate[column] = massKnown ? oil * oilMass + gas * gasMass : 0.0;
        // Each row of the table has its own row of fractions, all the well's composition.
        if (row > 0 && row < static_cast<std::size_t>(kMaxIprPoints) && fractionBytes > 0)
            std::memcpy(data->aadMoleFractions[row], data->aadMoleFractions[0], fractionBytes);
        ++column;
    }
    data->iNumPoints = column;

    // Present rates are known once a step has been taken, and only for a flowing well.
    data->dPresentPressure = units.toFieldPressure(well->Bhp());
    const bool flowing = StepCount > 0 && well->IsOpen();
    const double idle = StepCount > 0 ? 0.0 : TNavUnitSystem::kNoValue;
    data->dPresentOilRate = flowing ? units.toFieldLiquidRate(well->OilRate()) : idle;
    data->dPresentWaterRate = flowing ? units.toFieldLiquidRate(well->WaterRate()) : idle;
    data->dPresentGasRate = flowing ? units.toFieldGasRate(well->GasRate()) : idle;

    well->iprCorrection = 1.0;
    if (Settings.IprModel != kIprModelCorrected) return 0;
    const double raw = TotalRate(*data);
    if (!TransformIprRecord(*well, data)) {
        WriteText(err, "An exception was thrown during TransformIPR()");
        return 1;
    }
    if (raw > 0.0) well->iprCorrection = TotalRate(*data) / raw;
    return 0;
}

bool CExtModel::TransformIprRecord(const WellData& well, _tGetSetData* table) {
    if (!PresentIprRecord) PresentIprRecord = std::make_unique<_tGetSetData>();  // value-initialised: zero
    _tGetSetData& present = *PresentIprRecord;
    const TNavUnitSystem& units = Reservoir->units;
    const bool flowing = StepCount > 0 && well.IsOpen();
    present.adPressure[0] = well.IsOpen() ? units.toFieldPressure(well.Bhp()) : TNavUnitSystem::kNoValue;
    present.adGasRate[0] = flowing ? units.toFieldGasRate(well.GasRate()) : TNavUnitSystem::kNoValue;
    present.adOilRate[0] = flowing ? units.toFieldLiquidRate(well.OilRate()) : TNavUnitSystem::kNoValue;
    present.adWaterRate[0] = flowing ? units.toFieldLiquidRate(well.WaterRate()) : TNavUnitSystem::kNoValue;
    try {
        // The library knows the record only by its own opaque declaration.
        TransformIPR(IprModel, well.name.c_str(), reinterpret_cast<const ::_tGetSetData*>(&present),
                     reinterpret_cast<::_tGetSetData*>(table));  // its answer is not looked at
    } catch (...) {
        return false;
    }
    return true;
}

std::int32_t CExtModel::SetConnection(tSetConnectionData* data, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (data == nullptr) {
        WriteText(err, "A null data item was sent to SetConnection().");
        return 1;
    }
    if (!Reservoir) {
        WriteText(err, "SetConnection() was called before reservoir data was created.");
        return 1;
    }
    WellData* well = Reservoir->wells.At(data->iWellIndex);
    if (well == nullptr) {
        WriteFormat(err, "Request to SetConnection() for a well index <%d> that does not exist.",
                    data->iWellIndex);
        return 1;
    }
    if (data->bConnect == 0 && well->underVaneControl) {
        well->underVaneControl = false;
    } else if (data->bConnect != 0 && !well->underVaneControl) {
        std::string warning;  // a well taken back from the tap server is not worth a message here
        well->SetUnderVaneControl(warning);
    }
    return 0;
}

std::int32_t CExtModel::SetOpPt(_tGetSetData* data, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (data == nullptr) {
        WriteText(err, "A null data item was sent to SetOpPt().");
        return 1;
    }
    Guard lock(Lock);
    if (!SeemsConnected()) {
        WriteText(err, "SetOpPt() called when the simulation process is not running.");
        return 1;
    }
    if (!Reservoir) {
        WriteText(err, "SetOpPt() was called before reservoir data was created.");
        return 1;
    }
    WellData* well = Reservoir->wells.At(data->iWellIndex);
    if (well == nullptr) {
        WriteFormat(err, "Request to SetOpPt() for a well index <%d> that does not exist.", data->iWellIndex);
        return 1;
    }
    NodeOperatingPoint point;
    point.oilRate = data->adOilRate[0];
    point.waterRate = data->adWaterRate[0];
    point.gasRate = data->adGasRate[0];
    point.maskFlag = data->bMaskFlag != 0;
    point.maskKind = data->iMaskKind;
    point.temperature = data->adTemperature[0];
    point.downtime = data->dDowntime;
    point.moleFractions = data->aadMoleFractions[0];  // row 0 holds the injected composition
    point.componentCount = std::min(data->stComposition.iNumComponents, kMaxComponents);
    const RateControlSettings control{Settings.RateControl, Settings.GlrThreshold};
    std::string error;
    if (!SetOpPtUnlocked(*well, point, control, Reservoir->units, Reservoir->fluid.IsBlackOil(), error)) {
        WriteText(err, error);
        return 1;
    }
    return 0;
}

}  // namespace rivulet
