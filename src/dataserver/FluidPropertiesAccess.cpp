// The fluid's variables by access string. They stand at the root of the path and can only be read.
#include <string>

#include "common/FormatText.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"

namespace rivulet {

namespace {

// The component variables with a property behind them, in the order in which they are tried.
constexpr ComponentProperty kPropertyVariables[] = {kCriticalTemperature,
                                                    kCriticalPressure,
                                                    kMolecularWeight,
                                                    kAcentricFactor,
                                                    kOmegaA,
                                                    kOmegaB,
                                                    kCriticalVolume,
                                                    kShift,
                                                    kParachor};

}  // namespace

std::int32_t FluidProperties::ResolveComponent(CExtDataServerTag& tag) const {
    const long long index = tag.ReadIndex();
    if (index >= 0) {
        if (index >= HcCount()) {
            tag.SetErrorText(FormatText("Index %lld exceeds the number of Hydrocarbon components (%d).",
                                        index, HcCount()));
            return -1;
        }
        return static_cast<std::int32_t>(index);
    }
    const std::string key = tag.ReadBracedName();
    if (key.empty()) {
        tag.SetErrorText("An index is required to access a component array variable");
        return -1;
    }
    for (std::int32_t c = 0; c < HcCount(); ++c) {
        if (hcNames[static_cast<std::size_t>(c)] == key) return c;
    }
    tag.SetErrorText(FormatText("Hydrocarbon component name %s was not recognised.", key.c_str()));
    return -1;
}

std::int32_t FluidProperties::ResolveEosRegion(CExtDataServerTag& tag) const {
    if (eosRegionCount < 1) {
        tag.SetErrorText("There are no Eos regions in this model.");
        return 0;
    }
    const long long index = tag.ReadIndex();
    if (index >= 0) {
        if (index >= eosRegionCount) {
            tag.SetErrorText(
                FormatText("Index %lld exceeds the number of Eos Regions (%d).", index, eosRegionCount));
            return 0;
        }
        return static_cast<std::int32_t>(index + 1);
    }
    const std::string key = tag.ReadBracedName();
    if (key.empty()) {
        tag.SetErrorText("An index is required to access an EosRegion.");
        return 0;
    }
    // EOS names are type names, so a key finds the first region of that type.
    for (std::int32_t r = 1; r <= eosRegionCount; ++r) {
        if (EosName(r) == key) return r;
    }
    tag.SetErrorText(FormatText("EosRegion name %s was not recognised.", key.c_str()));
    return 0;
}

std::int32_t FluidProperties::ProcessComponentVariable(CExtDataServerTag& tag, std::int32_t eosRegion,
                                                       std::int32_t component) const {
    if (tag.GetMode() != CExtDataServerTag::kGet) return 0;
    if (eosRegion < 1 || eosRegion > eosRegionCount) {
        tag.SetErrorText(
            FormatText("Eos region %d (index-1 based value) does not exist in the set of (%d) eos regions.",
                       eosRegion, eosRegionCount));
        return 1;
    }
    if (component < 0 || component >= HcCount()) return 1;
    if (tag.MatchName("Name") || tag.MatchName("Label")) {
        tag.SetValueText(hcNames[static_cast<std::size_t>(component)].c_str());
        return 1;
    }
    for (const ComponentProperty property : kPropertyVariables) {
        const char* name = PropertyName(property);
        if (!tag.MatchName(name)) continue;
        if (PropertyPosition(property) < 0) {
            tag.SetErrorText(std::string(name) + " is not defined in the requested fluid.");
            return 1;
        }
        const double* values = PropertyArray(eosRegion, property);
        if (values == nullptr) return 1;
        const auto start = static_cast<std::size_t>(values - componentProperties.data());
        if (start + static_cast<std::size_t>(component) < componentProperties.size()) {
            tag.SetValueDouble(values[component]);
        }
        return 1;
    }
    return 0;
}

std::int32_t FluidProperties::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t /*unused*/) {
    // A fluid variable given a value is simply not one of the fluid's.
    if (tag.GetMode() != CExtDataServerTag::kGet) return 0;

    if (tag.MatchName("ModelType")) {
        tag.SetValueText(ModelTypeText(modelType));
        return 1;
    }
    std::int32_t hcCount = HcCount();
    if (tag.BindInt("HcComponentCount", hcCount)) return 1;
    if (tag.MatchName("HcNames")) {
        const std::int32_t component = ResolveComponent(tag);
        if (component >= 0) tag.SetValueText(hcNames[static_cast<std::size_t>(component)].c_str());
        return 1;
    }
    std::int32_t regionCount = eosRegionCount;
    if (tag.BindInt("EosRegionCount", regionCount)) return 1;
    if (tag.MatchName("EosNames")) {
        const std::int32_t region = ResolveEosRegion(tag);
        if (region > 0) tag.SetValueText(EosName(region).c_str());
        return 1;
    }
    if (!tag.MatchSpelling("EosRegion", "EOSREGION")) return 0;
    const std::int32_t region = ResolveEosRegion(tag);
    if (region < 1) return 1;
    if (!tag.MatchSpelling("HcComponent", "HCCOMPONENT")) {
        tag.SetErrorText("Unrecognised EosRegion data request");
        return 1;
    }
    const std::int32_t component = ResolveComponent(tag);
    if (component < 0) return 1;
    return ProcessComponentVariable(tag, region, component);
}

}  // namespace rivulet
