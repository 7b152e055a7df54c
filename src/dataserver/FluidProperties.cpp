#include "dataserver/FluidProperties.h"

#include <strings.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "common/BinaryArchive.h"
#include "common/Trim.h"

namespace rivulet {

namespace {

struct PropertyTable {
    const ComponentProperty* list;
    std::int32_t count;
};

constexpr ComponentProperty kIsothermalProperties[] = {kCriticalTemperature,
                                                       kCriticalPressure,
                                                       kMolecularWeight,
                                                       kAcentricFactor,
                                                       kOmegaA,
                                                       kOmegaB,
                                                       kCriticalVolume,
                                                       kCriticalVolumeForViscosity,
                                                       kShift};
constexpr ComponentProperty kThermalProperties[] = {kCriticalTemperature, kCriticalPressure,
                                                    kMolecularWeight};
constexpr ComponentProperty kMiscibleProperties[] = {
    kCriticalTemperature, kCriticalPressure,           kMolecularWeight, kAcentricFactor, kOmegaA, kOmegaB,
    kCriticalVolume,      kCriticalVolumeForViscosity, kShift,           kParachor};
constexpr ComponentProperty kMiscibleThermalProperties[] = {kCriticalTemperature, kCriticalPressure,
                                                            kMolecularWeight, kParachor};

template <std::size_t N>
constexpr PropertyTable Table(const ComponentProperty (&list)[N]) {
    return {list, static_cast<std::int32_t>(N)};
}

PropertyTable PropertiesOf(std::int32_t type) {
    switch (type) {
        case 3:
            return Table(kIsothermalProperties);
        case 4:
            return Table(kThermalProperties);
        case 5:
            return Table(kMiscibleProperties);
        case 6:
            return Table(kMiscibleThermalProperties);
        default:
            return {nullptr, 0};
    }
}

bool NameIs(const std::string& name, const char* expected) {
    return strcasecmp(Trimmed(name).c_str(), expected) == 0;
}

std::size_t Size(long long count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

// The entry of `values` at `at`, or 0.0 outside the array.
double EntryAt(const std::vector<double>& values, long long at) {
    return at >= 0 && at < static_cast<long long>(values.size()) ? values[static_cast<std::size_t>(at)] : 0.0;
}

// The least one item takes in the stream: a double its eight bytes, a string its length.
template <typename T>
constexpr std::size_t MinItemBytes() {
    if constexpr (std::is_same_v<T, std::string>) {
        return sizeof(std::int32_t);
    } else {
        return sizeof(T);
    }
}

// A count followed by that many items. A loaded count is checked against the bytes left before any item is
// read.
template <typename T>
void TransferVector(BinaryArchive& archive, std::vector<T>& values) {
    auto count = static_cast<std::int32_t>(values.size());
    archive.TransferCount(count, MinItemBytes<T>(), BinaryArchive::kMaxElements);
    if (archive.IsStoring()) {
        for (T& value : values) archive.Transfer(value);
        return;
    }
    values.clear();
    for (std::int32_t k = 0; k < count; ++k) {
        T value{};
        archive.Transfer(value);
        values.push_back(std::move(value));
    }
}

}  // namespace

const char* FluidProperties::ModelTypeText(std::int32_t type) {
    static const char* const kTexts[] = {"",
                                         "ISOTHERMAL_BLACK_OIL",
                                         "THERMAL_BLACK_OIL",
                                         "ISOTHERMAL_COMPOSITIONAL",
                                         "THERMAL_COMPOSITIONAL",
                                         "MISCIBLE_ISOTHERMAL_COMPOSITIONAL",
                                         "MISCIBLE_THERMAL_COMPOSITIONAL"};
    return type >= 0 && type <= kLastModelType ? kTexts[type] : "";
}

std::int32_t FluidProperties::ModelTypeOf(const std::string& mathModelName, bool miscible) {
    if (NameIs(mathModelName, "IsothermalBlackOil")) return 1;
    if (NameIs(mathModelName, "ThermalBlackOil")) return 2;
    if (NameIs(mathModelName, "Compositional")) return miscible ? 5 : 3;
    if (NameIs(mathModelName, "ThermalCompositional")) return miscible ? 6 : 4;
    return 0;
}

bool FluidProperties::IsBlackOilModelName(const std::string& mathModelName) {
    return NameIs(mathModelName, "IsothermalBlackOil") || NameIs(mathModelName, "ThermalBlackOil");
}

bool FluidProperties::IsPlainCompositionalModelName(const std::string& mathModelName) {
    return NameIs(mathModelName, "Compositional");
}

const char* FluidProperties::EosTypeName(std::int32_t type) {
    static const char* const kNames[] = {"PR", "RK", "SRK", "ZJ"};
    return type >= 0 && type <= 3 ? kNames[type] : "";
}

const char* FluidProperties::PropertyName(std::int32_t property) {
    static const char* const kNames[] = {"CriticalTemperature",
                                         "CriticalPressure",
                                         "MolecularWeight",
                                         "AcentricFactor",
                                         "OmegaA",
                                         "OmegaB",
                                         "CriticalVolume",
                                         "CriticalVolumeForViscosity",
                                         "Shift",
                                         "Parachor"};
    return property >= kCriticalTemperature && property <= kParachor ? kNames[property] : "";
}

void FluidProperties::ClearArrays() {
    eosNames.clear();
    waterNames.clear();
    waterDensities.clear();
    hcNames.clear();
    interactionCoefficients.clear();
    componentProperties.clear();
    blackOilDensities.clear();
}

void FluidProperties::SizeComponentArrays() {
    const long long hc = HcCount();
    const long long regions = eosRegionCount;
    const bool compositional = modelType > 2;
    componentProperties.assign(compositional ? Size(hc * propertyCount * regions) : 0, 0.0);
    interactionCoefficients.assign(compositional ? Size(hc * hc * regions) : 0, 0.0);
}

void FluidProperties::Clear() {
    ClearArrays();
    modelType = 0;
    eosRegionCount = 0;
    propertyCount = 0;
    pvtRegionCount = 0;
    propertyList = nullptr;
}

void FluidProperties::SetModelType(std::int32_t type) {
    if (type < 1 || type > kLastModelType) {
        Clear();
        return;
    }
    ClearArrays();
    modelType = type;
    const PropertyTable table = PropertiesOf(type);
    propertyList = table.list;
    propertyCount = table.count;
    SetPvtRegionCount(pvtRegionCount);
    SizeComponentArrays();
}

void FluidProperties::SetPvtRegionCount(std::int32_t count) {
    pvtRegionCount = std::max(count, 0);
    blackOilDensities.assign(IsBlackOil() ? Size(3LL * pvtRegionCount) : 0, 0.0);
}

void FluidProperties::SetHcNames(std::vector<std::string> names) {
    hcNames = std::move(names);
    SizeComponentArrays();
}

std::int32_t FluidProperties::PropertyPosition(std::int32_t property) const {
    for (std::int32_t p = 0; propertyList != nullptr && p < propertyCount; ++p) {
        if (propertyList[p] == property) return p;
    }
    return -1;
}

const double* FluidProperties::PropertyArray(std::int32_t eosRegion, std::int32_t property) const {
    if (IsBlackOil() || eosRegion < 1) return nullptr;
    const std::int32_t position = PropertyPosition(property);
    if (position < 0) return nullptr;
    const long long hc = HcCount();
    const long long start = hc * (eosRegion - 1) * propertyCount + hc * position;
    if (start >= static_cast<long long>(componentProperties.size())) return nullptr;
    return componentProperties.data() + start;
}

const double* FluidProperties::InteractionCoefficients(std::int32_t eosRegion) const {
    if (eosRegion < 1) return nullptr;
    const long long hc = HcCount();
    const long long start = hc * hc * (eosRegion - 1);
    if (start >= static_cast<long long>(interactionCoefficients.size())) return nullptr;
    return interactionCoefficients.data() + start;
}

std::string FluidProperties::EosName(std::int32_t eosRegion) const {
    if (eosRegion < 1 || eosRegion > static_cast<std::int32_t>(eosNames.size())) return {};
    return eosNames[static_cast<std::size_t>(eosRegion - 1)];
}

double FluidProperties::WaterDensity(std::int32_t pvtRegion) const {
    if (pvtRegion < 1) return 0.0;
    if (IsBlackOil()) return EntryAt(blackOilDensities, 3LL * (pvtRegion - 1));
    return EntryAt(waterDensities, pvtRegion - 1LL);
}

double FluidProperties::OilDensity(std::int32_t pvtRegion) const {
    if (pvtRegion < 1 || !IsBlackOil()) return 0.0;
    return EntryAt(blackOilDensities, 3LL * (pvtRegion - 1) + 1);
}

double FluidProperties::GasDensity(std::int32_t pvtRegion) const {
    if (pvtRegion < 1 || !IsBlackOil()) return 0.0;
    return EntryAt(blackOilDensities, 3LL * (pvtRegion - 1) + 2);
}

std::int32_t FluidProperties::StreamData(BinaryArchive* archive, std::int32_t /*version*/) {
    if (archive == nullptr) return 1;
    // A load fills a fresh object and keeps it only once the stream has held out.
    FluidProperties loaded;
    FluidProperties& fluid = archive->IsStoring() ? *this : loaded;

    auto type = static_cast<std::int8_t>(fluid.modelType);
    archive->Transfer(type);
    if (!archive->IsStoring()) fluid.SetModelType(type);
    // The region count sizes the densities whenever the model type is set again, so it is held to the
    // ceiling of an array of three densities a region.
    archive->TransferCount(fluid.pvtRegionCount, 0, BinaryArchive::kMaxElements / 3);
    if (fluid.IsBlackOil()) {
        TransferVector(*archive, fluid.blackOilDensities);
    } else {
        archive->TransferCount(fluid.eosRegionCount, MinItemBytes<std::string>(),
                               BinaryArchive::kMaxElements);
        if (archive->IsStoring()) {
            for (std::int32_t r = 1; r <= fluid.eosRegionCount; ++r) {
                std::string name = fluid.EosName(r);
                archive->Transfer(name);
            }
        } else {
            for (std::int32_t r = 0; r < fluid.eosRegionCount; ++r) {
                std::string name;
                archive->Transfer(name);
                fluid.eosNames.push_back(std::move(name));
            }
        }
        TransferVector(*archive, fluid.waterNames);
        TransferVector(*archive, fluid.waterDensities);
        TransferVector(*archive, fluid.hcNames);
        TransferVector(*archive, fluid.componentProperties);
        TransferVector(*archive, fluid.interactionCoefficients);
    }
    if (!archive->IsStoring()) *this = std::move(loaded);
    return 0;
}

}  // namespace rivulet
