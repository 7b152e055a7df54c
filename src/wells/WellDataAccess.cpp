// A well's variables by access string, behind "WELL[{name}]." or "WELL[n].": what a host reads, in the
// model's own units, and the few things it may write (the well's type, its target and its status). A
// write takes the well from the network: it is then under the tap server's control.
#include <strings.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/FormatText.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"
#include "wells/WellData.h"

namespace rivulet {

namespace {

constexpr const char* kNoFluid = "No compositional fluid description been assigned to this well.";

// Status and type as the access strings word them: what is neither open, shut, stop, producer nor injector
// reads "Undefined".
const char* StatusWord(std::int32_t status) {
    const char* text = WellData::StatusText(status);
    return *text != '\0' ? text : "Undefined";
}

const char* TypeWord(std::int32_t type) {
    const char* text = WellData::TypeText(type);
    return *text != '\0' ? text : "Undefined";
}

bool ReadInt(CExtDataServerTag& tag, const char* name, std::int32_t value) {
    return tag.BindInt(name, value);
}

bool ReadReal(CExtDataServerTag& tag, const char* name, double value) {
    return tag.BindDouble(name, value);
}

bool ReadText(CExtDataServerTag& tag, const char* name, const char* text) {
    if (!tag.MatchName(name)) return false;
    tag.SetValueText(text);
    return true;
}

double Element(const std::vector<double>& values, std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < values.size()
               ? values[static_cast<std::size_t>(index)]
               : -1.0;
}

struct RealVariable {
    const char* name;
    double (*value)(const WellData&);
};

// The real variables, in the order in which they are tried.
constexpr RealVariable kRealVariables[] = {
    {"Bhp", [](const WellData& w) { return w.Bhp(); }},
    {"Thp", [](const WellData& w) { return w.Thp(); }},
    {"GasRate", [](const WellData& w) { return w.GasRate(); }},
    {"OilRate", [](const WellData& w) { return w.OilRate(); }},
    {"LiquidRate", [](const WellData& w) { return w.OilRate() + w.WaterRate(); }},
    {"RcLiquidRate", [](const WellData& w) { return w.Result(WellRateRecord::kRcLiquid); }},
    {"WaterRate", [](const WellData& w) { return w.WaterRate(); }},
    {"CumGas", [](const WellData& w) { return w.Result(WellRateRecord::kCumGas); }},
    {"CumOil", [](const WellData& w) { return w.Result(WellRateRecord::kCumOil); }},
    {"CumLiquid",
     [](const WellData& w) {
         return w.Result(WellRateRecord::kCumOil) + w.Result(WellRateRecord::kCumWater);
     }},
    {"CumRcLiquid", [](const WellData& w) { return w.Result(WellRateRecord::kCumRcLiquid); }},
    {"CumWater", [](const WellData& w) { return w.Result(WellRateRecord::kCumWater); }},
    {"Temperature", [](const WellData& w) { return w.Temperature(); }},
    {"Efficiency", [](const WellData& w) { return w.Efficiency(); }},
    {"GasDensity", [](const WellData& w) { return w.Density(WellRateRecord::kGasDensity); }},
    {"OilDensity", [](const WellData& w) { return w.Density(WellRateRecord::kOilDensity); }},
    {"WaterDensity", [](const WellData& w) { return w.Density(WellRateRecord::kWaterDensity); }},
};

struct MolarVariable {
    const char* name;
    int block;  // of the composition's molar values
};

constexpr MolarVariable kMolarVariables[] = {
    {"CumGasMoles", 3},
    {"CumLiquidMoles", 2},
    {"GasMolarRate", 1},
    {"LiquidMolarRate", 0},
};

}  // namespace

std::int32_t WellData::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t) {
    switch (tag.GetMode()) {
        case CExtDataServerTag::kGet:
            return ReadVariable(tag);
        case CExtDataServerTag::kSet:
            return WriteVariable(tag);
        default:
            return 0;
    }
}

// ---- reads ----

std::int32_t WellData::ReadVariable(CExtDataServerTag& tag) const {
    if (ReadInt(tag, "IsOpen", IsOpen() ? 1 : 0) || ReadInt(tag, "IsShut", status == kStatusShut ? 1 : 0) ||
        ReadInt(tag, "IsStop", status == kStatusStop ? 1 : 0) ||
        ReadInt(tag, "IsInjector", IsInjector() ? 1 : 0) ||
        ReadInt(tag, "IsProducer", IsProducer() ? 1 : 0)) {
        return 1;
    }
    for (const RealVariable& variable : kRealVariables) {
        if (!tag.MatchName(variable.name)) continue;
        tag.SetValueDouble(variable.value(*this));
        return 1;
    }
    if (ReadText(tag, "Status", StatusWord(status)) || ReadText(tag, "WellType", TypeWord(wellType)))
        return 1;
    if (tag.MatchSpelling("Target", "TARGET")) {
        if (ReadText(tag, "Status", StatusWord(targetStatus))) return 1;
        return OperatingPoint(target).ProcessAccessString(tag, nullptr);
    }
    if (tag.MatchSpelling("HcComponent", "HCCOMPONENT")) return ReadComponentVariable(tag);
    if (ReadReal(tag, "IprCorrection", iprCorrection)) return 1;
    return ReadIdentity(tag);
}

std::int32_t WellData::ReadIdentity(CExtDataServerTag& tag) const {
    const bool recognised = ReadText(tag, "Name", name.c_str()) || ReadText(tag, "Label", name.c_str()) ||
                            ReadInt(tag, "VaneRateControl", vaneRateControl) ||
                            ReadInt(tag, "EosRegion", eosRegion);
    return recognised ? 1 : 0;
}

std::int32_t WellData::ReadComponentVariable(CExtDataServerTag& tag) const {
    if (fluid == nullptr) {
        tag.SetErrorText(kNoFluid);
        return 1;
    }
    const std::int32_t component = fluid->ResolveComponent(tag);
    if (component < 0) return 1;
    if (fluid->ProcessComponentVariable(tag, eosRegion, component) != 0) return 1;
    for (const MolarVariable& variable : kMolarVariables) {
        if (ReadReal(tag, variable.name, composition.HcParam(variable.block, component))) return 1;
    }
    if (ReadReal(tag, "HcMoleFraction", Element(composition.rateFractions, component)) ||
        ReadReal(tag, "CumHcMoleFraction", Element(composition.cumFractions, component))) {
        return 1;
    }
    // Behind a component, the well's own identity still answers: HcComponent[0].EosRegion is the well's.
    return ReadIdentity(tag);
}

// ---- writes ----

std::int32_t WellData::WriteVariable(CExtDataServerTag& tag) {
    if (underVaneControl) {
        tag.SetErrorText("Cannot apply TapServer control to a well under VANE control.");
        return 1;
    }
    if (tag.MatchSpelling("SetWellType", "SETWELLTYPE")) {
        WriteWellType(tag);
        if (!tag.HasError()) underTapServerControl = true;
        return 1;
    }
    if (tag.MatchSpelling("HcComponent", "HCCOMPONENT")) {
        if (fluid == nullptr) {
            tag.SetErrorText(kNoFluid);
            return 1;
        }
        const std::int32_t component = fluid->ResolveComponent(tag);
        if (component < 0) return 1;
        // A value given as "MoleFraction" is read and not kept: the walk goes on below, finds no further
        // name, and the host is told the write was not taken. Any other name behind the component stores a
        // fraction of 0.
        double ignored = 0.0;
        if (!tag.BindDouble("MoleFraction", ignored)) {
            std::string error;
            if (SetHcMoleFraction(component, 0.0, error)) {
                underTapServerControl = true;
            } else {
                tag.SetErrorText(error);
            }
            return 1;
        }
    }
    if (tag.MatchSpelling("Target", "TARGET")) return WriteTarget(tag);
    return 0;
}

void WellData::WriteWellType(CExtDataServerTag& tag) {
    const char* value = tag.GetValueText();
    std::int32_t wanted = kWellUndefined;
    if (strcasecmp(value, "Producer") == 0) {
        wanted = kWellProducer;
    } else if (strcasecmp(value, "Injector") == 0) {
        wanted = kWellInjector;
    } else {
        tag.SetErrorText("Unrecognised value: must be Injector or Producer.");
        return;
    }
    if (wellType == kWellUndefined) {
        SetWellStatus(wanted == kWellProducer ? kStatusOpenProducer : kStatusOpenInjector);
    } else if (wellType != wanted) {
        tag.SetErrorText("A well type can only be changed if currently Undefined.");
    }
}

bool WellData::SetHcMoleFraction(std::int32_t component, double fraction, std::string& error) {
    if (component < 0) {
        error = "iHcComponentIndex cannot be negative.";
        return false;
    }
    const auto count = static_cast<std::int32_t>(composition.rateFractions.size());
    if (component >= composition.hcCount || component >= count) {
        error = FormatText("iHcComponentIndex %d  exceeds the HcComponentCount (%d).", component,
                           composition.hcCount);
        return false;
    }
    if (!(fraction >= 0.0 && fraction <= 1.0)) {
        error =
            FormatText("Mole Fraction value (%g) must lie in the range 0.0 to 1.0 (inclusive).", fraction);
        return false;
    }
    composition.rateFractions[static_cast<std::size_t>(component)] = fraction;
    return true;
}

std::int32_t WellData::WriteTarget(CExtDataServerTag& tag) {
    if (wellType == kWellUndefined) {
        tag.SetErrorText("Well must be defined as an Injector or Producer before calling Target.");
        return 1;
    }
    std::int32_t recognised = 1;
    if (tag.MatchName("Status")) {
        const char* value = tag.GetValueText();
        if (strcasecmp(value, "Open") == 0) {
            targetStatus = IsInjector() ? kStatusOpenInjector : kStatusOpenProducer;
        } else if (strcasecmp(value, "Shut") == 0) {
            targetStatus = kStatusShut;
        } else if (strcasecmp(value, "Stop") == 0) {
            targetStatus = kStatusStop;
        } else {
            tag.SetErrorText("Unrecognised value: must be Open; Shut or Stop.");
        }
    } else {
        recognised = IsInjector() ? WriteInjectorTarget(tag) : WriteProducerTarget(tag);
    }
    if (recognised != 0 && !tag.HasError()) underTapServerControl = true;
    return recognised;
}

std::int32_t WellData::WriteInjectorTarget(CExtDataServerTag& tag) {
    OperatingPoint given;
    std::string name;
    if (given.ProcessAccessString(tag, &name) == 0) return 0;

    // An injector is controlled on one phase: a gas or water rate replaces every rate set before.
    if (name == "GasRate") {
        target.ClearRates();
        target.GasRate = given.GasRate;
    } else if (name == "WaterRate") {
        target.ClearRates();
        target.WaterRate = given.WaterRate;
    } else if (name == "OilRate" || name == "LiquidRate") {
        const double rate = name == "OilRate" ? given.OilRate : given.LiquidRate;
        if (rate >= 0.0)
            tag.SetErrorText("tNavigator injectors only support single-phase gas or water control.");
    } else if (name == "Bhp") {
        target.Bhp = given.Bhp;
    } else if (name == "Thp") {
        target.Thp = given.Thp;
    } else if (name == "Efficiency") {
        target.Efficiency = given.Efficiency;
    } else {
        // The injection temperature is published as writeable but is not taken.
        tag.SetErrorText("Could not set unrecognised target point.");
    }
    return 1;
}

std::int32_t WellData::WriteProducerTarget(CExtDataServerTag& tag) {
    OperatingPoint edited(target);
    if (edited.ProcessAccessString(tag, nullptr) == 0) return 0;
    if (tag.HasError()) return 1;
    edited.Normalise();
    target = edited;
    return 1;
}

}  // namespace rivulet
