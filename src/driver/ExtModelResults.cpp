// The results that the network shows on the reservoir node: twelve field rows, then fourteen rows for each
// well, walked by the host with a rising index until it is answered 0.
#include <cstdio>
#include <cstring>

#include "common/FormatText.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "wells/WellControl.h"

namespace rivulet {

namespace {

constexpr std::int32_t kFieldRows = 12;
constexpr std::int32_t kWellRows = 14;
constexpr std::int32_t kNamedVariable = -1;
constexpr double kNoValue = TNavUnitSystem::kNoValue;

// A row of the result table: a type code the host knows, or a name and unit of its own (code -1).
struct ResultRow {
    std::int32_t code;
    const char* name;
    const char* unit;
};

constexpr ResultRow kFieldTable[kFieldRows] = {
    {2, "", ""},
    {5, "", ""},
    {3, "", ""},
    {4, "", ""},
    {9, "", ""},
    {8, "", ""},
    {kNamedVariable, "Cum Oil", "STB"},
    {kNamedVariable, "Cum Gas", "MMscf"},
    {kNamedVariable, "Cum Water", "STB"},
    {kNamedVariable, "Cum Liquid", "STB"},
    {kNamedVariable, "Cum Gas Injected", "MMscf"},
    {kNamedVariable, "Cum Water Injected", "STB"},
};

// What a well row needs before it shows the well's value.
enum Needs : unsigned { kDone = 1, kOpen = 2, kProducer = 4, kInjector = 8 };

struct WellRow {
    ResultRow row;
    unsigned needs;
};

constexpr WellRow kWellTable[kWellRows] = {
    {{2, "", ""}, kDone | kOpen | kProducer},
    {{5, "", ""}, kDone | kOpen | kProducer},
    {{3, "", ""}, kDone | kOpen | kProducer},
    {{4, "", ""}, kDone | kOpen | kProducer},
    {{kNamedVariable, "Cum Oil", "STB"}, kDone | kProducer},
    {{kNamedVariable, "Cum Gas", "MMscf"}, kDone | kProducer},
    {{kNamedVariable, "Cum Wat", "STB"}, kDone | kProducer},
    {{kNamedVariable, "Cum Liq", "STB"}, kDone | kProducer},
    {{9, "", ""}, kDone | kOpen | kInjector},
    {{8, "", ""}, kDone | kOpen | kInjector},
    {{kNamedVariable, "Cum Gas Injected", "MMscf"}, kDone | kInjector},
    {{kNamedVariable, "Cum Wat Injected", "STB"}, kDone | kInjector},
    {{1, "", ""}, kDone},
    {{kNamedVariable, "Temperature", "F"}, kDone},
};

void WriteRow(tExtraNodeResult* result, const ResultRow& row, double value) {
    result->iVariableCode = row.code;
    CopyText(result->szName, sizeof(result->szName), row.name);
    CopyText(result->szUnit, sizeof(result->szUnit), row.unit);
    result->dValue = value;
    result->iZero = 0;
}

// Empties what a row writes, so that an index past the last well leaves a blank record.
void ClearOutputs(tExtraNodeResult* result) {
    result->iVariableCode = 0;
    std::memset(result->szName, 0, sizeof(result->szName));
    std::memset(result->szUnit, 0, sizeof(result->szUnit));
    result->dValue = 0.0;
    result->iZero = 0;
    std::memset(result->szNodeName, 0, sizeof(result->szNodeName));
}

}  // namespace

std::int32_t CExtModel::DoGetExtraNodeResults(tExtraNodeResult* result, tErrorRecord* err) {
    if (result == nullptr) {
        WriteText(err, "A null data store was provided to DoGetExtraNodeResults().");
        return 0;
    }
    if (result->iResultIndex < 0) {
        WriteText(err, "An invalid (negative) iResultIndex was provided to DoGetExtraNodeResults().");
        return 0;
    }
    Guard lock(Lock);
    if (!Reservoir || Reservoir->wells.IsEmpty()) {
        WriteText(err, "No data present for DoGetExtraNodeResults().");
        return 0;
    }
    ClearOutputs(result);
    if (result->iResultIndex < kFieldRows) return getExtraNodeFieldResult(result, err);
    return getExtraNodeWellResult(result, err);
}

std::int32_t CExtModel::getExtraNodeFieldResult(tExtraNodeResult* result, tErrorRecord* err) const {
    const std::int32_t index = result->iResultIndex;
    if (index < 0 || index >= kFieldRows) {
        WriteFormat(err, "Error in getExtraNodeFieldResult(): unexpected iResultIndex <%d> for Field result.",
                    index);
        return 0;
    }
    const auto& t = FieldTotals;
    const double values[kFieldRows] = {
        t[kOilProductionRate],    t[kGasProductionRate],
        t[kWaterProductionRate],  t[kWaterProductionRate] + t[kOilProductionRate],
        t[kGasInjectionRate],     t[kWaterInjectionRate],
        t[kOilProductionTotal],   t[kGasProductionTotal],
        t[kWaterProductionTotal], t[kWaterProductionTotal] + t[kOilProductionTotal],
        t[kGasInjectionTotal],    t[kWaterInjectionTotal],
    };
    CopyText(result->szNodeName, sizeof(result->szNodeName), "Field");
    // Totals mean nothing before the first completed step.
    WriteRow(result, kFieldTable[index], StepCount > 0 ? values[index] : kNoValue);
    return 1;
}

std::int32_t CExtModel::getExtraNodeWellResult(tExtraNodeResult* result, tErrorRecord* err) const {
    const std::int32_t i = result->iResultIndex - kFieldRows;
    const std::int32_t wellIndex = i / kWellRows;
    const std::int32_t row = i % kWellRows;
    if (wellIndex < 0 || i < 0) {
        WriteFormat(err, "Error in getExtraNodeWellResult(): well index <%d> does not exist.", wellIndex);
        return 0;
    }
    const WellData* well = Reservoir->wells.At(wellIndex);
    if (well == nullptr) return 0;  // the end of the host's walk
    if (row >= kWellRows) {
        WriteFormat(err, "Error in getExtraNodeWellResult(): unexpected variable index <%d>.", row);
        return 0;
    }
    CopyText(result->szNodeName, sizeof(result->szNodeName), well->name.c_str());

    const TNavUnitSystem& units = Reservoir->units;
    const bool done = StepCount > 0;
    unsigned met = done ? kDone : 0u;
    if (well->IsOpen()) met |= kOpen;
    if (well->IsProducer()) met |= kProducer;
    if (well->IsInjector()) met |= kInjector;
    const WellRow& line = kWellTable[row];
    if ((line.needs & met) != line.needs) {
        // A shut well shows no value; a stopped or other well shows nothing flowing.
        const double blank = !done || well->status == kStatusShut ? kNoValue : 0.0;
        WriteRow(result, line.row, blank);
        return 1;
    }

    auto gas = [&](int index) { return SanitiseRate(units.toFieldGasRate(well->Result(index))); };
    auto liquid = [&](int index) { return SanitiseRate(units.toFieldLiquidRate(well->Result(index))); };
    double value = kNoValue;
    switch (row) {
        case 0:
            value = liquid(WellRateRecord::kOil);
            break;
        case 1:
        case 8:
            value = gas(WellRateRecord::kGas);
            break;
        case 2:
        case 9:
            value = liquid(WellRateRecord::kWater);
            break;
        case 3:
            value = liquid(WellRateRecord::kOil) + liquid(WellRateRecord::kWater);
            break;
        case 4:
            value = liquid(WellRateRecord::kCumOil);
            break;
        case 5:
        case 10:
            value = gas(WellRateRecord::kCumGas);
            break;
        case 6:
        case 11:
            value = liquid(WellRateRecord::kCumWater);
            break;
        case 7:
            value = liquid(WellRateRecord::kCumOil) + liquid(WellRateRecord::kCumWater);
            break;
        case 12:
            value = units.toFieldPressure(well->Bhp());
            break;
        default:  // 13
            value = Reservoir->fluid.IsThermal() ? units.toFieldTemperature(well->Temperature())
                                                 : Settings.DefaultFluidTempF();
            break;
    }
    WriteRow(result, line.row, value);
    return 1;
}

}  // namespace rivulet
