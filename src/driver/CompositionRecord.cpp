#include "driver/CompositionRecord.h"

#include <strings.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "common/FormatText.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"

namespace rivulet {

namespace {

// Critical volumes are per unit mass in the metric systems; the host wants them per pound, in cubic feet.
constexpr double kCriticalVolumeFactor = 16.018447258720002;

enum class Conversion { None, Temperature, Pressure, Volume };

struct PropertySlot {
    ComponentProperty property;
    double (tCompositionData::*values)[kMaxComponents];
    std::uint32_t maskBit;
    Conversion conversion;
};

constexpr PropertySlot kSlots[] = {
    {kCriticalTemperature, &tCompositionData::adCriticalTemperature, 0x1, Conversion::Temperature},
    {kCriticalPressure, &tCompositionData::adCriticalPressure, 0x2, Conversion::Pressure},
    {kCriticalVolume, &tCompositionData::adCriticalVolume, 0x4, Conversion::Volume},
    {kAcentricFactor, &tCompositionData::adAcentricFactor, 0x8, Conversion::None},
    {kMolecularWeight, &tCompositionData::adMolecularWeight, 0x10, Conversion::None},
    {kShift, &tCompositionData::adProperty8, 0x80, Conversion::None},
    {kOmegaA, &tCompositionData::adOmegaA, 0x100, Conversion::None},
    {kOmegaB, &tCompositionData::adOmegaB, 0x200, Conversion::None},
    {kParachor, &tCompositionData::adProperty9, 0x400, Conversion::None},
};

double Convert(double value, Conversion conversion, const TNavUnitSystem& units) {
    switch (conversion) {
        case Conversion::Temperature:
            // The simulator gives field temperatures in degrees R.
            return units.IsField() ? value - 459.67 : units.toFieldTemperature(value);
        case Conversion::Pressure:
            return units.toFieldPressure(value);
        case Conversion::Volume:
            return units.IsField() ? value : value * kCriticalVolumeFactor;
        case Conversion::None:
            break;
    }
    return value;
}

// The run of `count` values from `first` lies within `values`: a fluid read from a short stream may not.
bool Holds(const std::vector<double>& values, const double* first, long long count) {
    if (first == nullptr) return false;
    const long long start = first - values.data();
    return start >= 0 && start + count <= static_cast<long long>(values.size());
}

std::int32_t EquationOfStateCode(const std::string& name) {
    if (strcasecmp(name.c_str(), "PR") == 0) return 1;
    if (strcasecmp(name.c_str(), "SRK") == 0) return 2;
    return 0;
}

}  // namespace

bool FillCompositionRecord(tCompositionData* record, const FluidProperties* fluid, std::int32_t eosRegion,
                           const TNavUnitSystem& units, std::string& error) {
    if (record == nullptr || fluid == nullptr || fluid->IsBlackOil() || eosRegion < 1) return true;
    record->iEquationOfState = EquationOfStateCode(fluid->EosName(eosRegion));
    record->dwMask = 0;

    const std::int32_t count = fluid->HcCount();
    if (count < 0) {
        error = FormatText("Model contains an invalid number of hc components (%d).", count);
        return false;
    }
    if (count > kMaxComponents) {
        error = FormatText("Conflux can only transfer %d hc components; model contains %d.", kMaxComponents,
                           count);
        return false;
    }
    record->iNumComponents = count;
    if (count == 0) return true;

    for (std::int32_t c = 0; c < count; ++c) {
        std::snprintf(record->aszNames[c], sizeof(record->aszNames[c]), "%.15s",
                      fluid->hcNames[static_cast<std::size_t>(c)].c_str());
    }
    for (const PropertySlot& slot : kSlots) {
        const double* values = fluid->PropertyArray(eosRegion, slot.property);
        if (!Holds(fluid->componentProperties, values, count)) continue;
        double* out = record->*slot.values;
        for (std::int32_t c = 0; c < count; ++c) out[c] = Convert(values[c], slot.conversion, units);
        record->dwMask |= slot.maskBit;
    }
    const double* coefficients = fluid->InteractionCoefficients(eosRegion);
    if (Holds(fluid->interactionCoefficients, coefficients, static_cast<long long>(count) * count)) {
        for (std::int32_t i = 0; i < count; ++i) {
            std::memcpy(record->adInteraction[i], coefficients + static_cast<std::ptrdiff_t>(i) * count,
                        sizeof(double) * static_cast<std::size_t>(count));
        }
        record->dwMask |= 0x800;
    }
    return true;
}

}  // namespace rivulet
