#include "wells/WellControl.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "common/FormatText.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/WellRequester.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

// Standard gas volume per MMscf and per standard barrel of liquid: the ratio tests compare scf with scf.
constexpr double kScfPerMMscf = 1.0e6;
constexpr double kScfPerBarrel = 5.615;

// The fixed ratio limits of combined control, scf per standard barrel.
constexpr double kCombinedGasLimit = 5870.0;
constexpr double kCombinedLiquidLimit = 58.7;

double Ratio(double g, double l) {
    return g * kScfPerMMscf / (l * kScfPerBarrel);
}

// The cleaned rates of a node.
struct Rates {
    double oil;
    double water;
    double gas;
};

Rates CleanRates(const NodeOperatingPoint& point) {
    return {SanitiseRate(point.oilRate), SanitiseRate(point.waterRate), SanitiseRate(point.gasRate)};
}

// The one rate that a single-phase rate control names; false for any other control.
bool WriteSinglePhaseRate(OperatingPoint& target, int control, const Rates& r, const TNavUnitSystem& units) {
    switch (control) {
        case kControlWater:
            target.WaterRate = units.fromFieldLiquidRate(r.water);
            return true;
        case kControlLiquid:
            target.LiquidRate = units.fromFieldLiquidRate(r.water + r.oil);
            return true;
        case kControlOil:
            target.OilRate = units.fromFieldLiquidRate(r.oil);
            return true;
        case kControlGas:
            target.GasRate = units.fromFieldGasRate(r.gas);
            return true;
        default:
            return false;
    }
}

}  // namespace

std::vector<WellControlState> CaptureControls(const WellList& wells) {
    std::vector<WellControlState> controls;
    for (const WellData& well : wells) {
        controls.push_back({well.name, well.underVaneControl, well.underTapServerControl,
                            well.vaneRateControl, well.targetStatus, well.injectionPhase, well.target});
    }
    return controls;
}

void RestoreControls(WellList& wells, const std::vector<WellControlState>& controls) {
    std::unordered_map<std::string_view, const WellControlState*> byName;
    for (const WellControlState& control : controls) byName.emplace(control.name, &control);
    for (WellData& well : wells) {
        const auto found = byName.find(well.name);
        if (found == byName.end()) continue;
        const WellControlState& c = *found->second;
        well.underVaneControl = c.underVaneControl;
        well.underTapServerControl = c.underTapServerControl;
        well.vaneRateControl = c.vaneRateControl;
        well.targetStatus = c.targetStatus;
        well.injectionPhase = c.injectionPhase;
        well.target = c.target;
    }
}

void ClearControls(WellList& wells) {
    for (WellData& well : wells) {
        well.vaneRateControl = kControlUnset;
        well.underVaneControl = false;
        well.underTapServerControl = false;
    }
}

bool ConnectWellToVaneCtrl(WellList& wells, WellRequester* requester, int index, int networkType,
                           int vanePhase, std::string& error) {
    // The upper bound admits the count itself: that index names no well, and connects nothing below.
    if (index < 0 || index > wells.Size()) {
        error = FormatText("The well index %d does not exist (function connectWellToVaneCtrl).", index);
        return false;
    }
    WellData* well = wells.At(index);
    if (well == nullptr) return true;  // past the last well there is nothing to connect

    if (networkType == kNetworkInjector && well->wellType != kWellInjector) {
        if (requester == nullptr) {
            error =
                FormatText("The well <%s> cannot be opened as an injector: there is no simulator connection.",
                           well->name.c_str());
            return false;
        }
        if (!requester->SetWellAsVaneInjector(kPhaseWater, index, *well, error)) return false;
    }
    if ((well->wellType == kWellProducer && networkType != kNetworkProducer) ||
        (well->wellType == kWellInjector && networkType != kNetworkInjector)) {
        error = FormatText("The well <%s> has a producer/injector mismatch between VANE and tNavigator.",
                           well->name.c_str());
        return false;
    }
    switch (vanePhase) {
        case 0:
            well->vaneRateControl = kControlDefault;
            break;
        case 1:
            well->vaneRateControl = kControlWater;
            break;
        case 2:
        case 3:
            well->vaneRateControl = kControlLiquid;
            break;
        case 4:
        case 5:
            well->vaneRateControl = kControlGas;
            break;
        default:
            error = FormatText("Unrecognised VANE phase <%d> for well <%s>.", vanePhase, well->name.c_str());
            return false;
    }
    return true;
}

std::vector<int> SettleInjectorPhases(WellList& wells) {
    for (WellData& well : wells) {
        if (well.IsProducer() || well.vaneRateControl != kControlUnset) continue;
        if (well.targetStatus == kStatusShut || well.targetStatus == kStatusStop) continue;
        const double g = well.GasRate();
        const double w = well.WaterRate();
        if (g > 0.0 && !(w > 0.0)) {
            well.vaneRateControl = kControlGas;
        } else if (w > 0.0 && !(g > 0.0)) {
            well.vaneRateControl = kControlWater;
        }
    }
    std::vector<int> changed;
    for (int k = 0; k < wells.Size(); ++k) {
        WellData& well = wells[static_cast<std::size_t>(k)];
        if (well.targetStatus != kStatusOpenProducer && well.targetStatus != kStatusOpenInjector) continue;
        if (DeriveInjectionPhase(well)) changed.push_back(k);
    }
    return changed;
}

bool DeriveInjectionPhase(WellData& well) {
    if (well.IsProducer()) {
        well.injectionPhase = kPhaseNone;
        return false;
    }
    std::int32_t phase = well.injectionPhase;
    switch (well.vaneRateControl) {
        case kControlWater:
        case kControlLiquid:
            phase = kPhaseWater;
            break;
        case kControlOil:
            phase = kPhaseOil;
            break;
        case kControlGas:
            phase = kPhaseGas;
            break;
        default:
            break;
    }
    const bool changed = phase != well.injectionPhase;
    well.injectionPhase = phase;
    return changed;
}

void SetTargetStatusFromNode(WellData& well, bool maskFlag, int maskKind) {
    if (!maskFlag) {
        well.targetStatus = well.IsInjector() ? kStatusOpenInjector : kStatusOpenProducer;
    } else {
        well.targetStatus = (maskKind == -1 || maskKind == 2) ? kStatusShut : kStatusStop;
    }
}

double SanitiseRate(double rate) {
    if (std::isnan(rate) || rate < 0.0 || rate >= TNavUnitSystem::kNoValue) return 0.0;
    return rate;
}

bool GlrAtOrAbove(double g, double l, double t) {
    if (l <= 0.0 && g > 0.0) return true;
    if (g <= 0.0) return false;
    return Ratio(g, l) >= t;
}

bool GlrBelow(double g, double l, double t) {
    if (g <= 0.0 && l > 0.0) return true;
    if (l <= 0.0) return false;
    return t > Ratio(g, l);
}

bool SetOpPtUnlocked(WellData& well, const NodeOperatingPoint& point, const RateControlSettings& settings,
                     const TNavUnitSystem& units, bool blackOil, std::string& error) {
    if (!well.underVaneControl) {
        std::string reverted;  // the network takes the well back from the tap server without a word
        well.SetUnderVaneControl(reverted);
    }
    const double efficiency = 1.0 - point.downtime;
    well.target.Efficiency = (efficiency >= 0.0 && efficiency <= 1.0) ? efficiency : 1.0;

    bool ok = false;
    if (!well.IsInjector()) {
        switch (settings.rateControl) {
            case kRateByVaneType:
                ok = setVaneProductionTarget(well, point, units, error);
                break;
            case kRateByGlr:
                ok = SetOpPtGlr(well, point, static_cast<double>(settings.glrThreshold), units, error);
                break;
            case kRateCombined:
                ok = SetOpPtCombined(well, point, units, error);
                break;
            default:
                error = FormatText("SetOpPt(): The well <%s> has an invalid rate control type <%d>.",
                                   well.name.c_str(), settings.rateControl);
                return false;
        }
    } else {
        // Both run: the composition is cleared even when the target could not be set.
        const bool targetSet = setVaneInjectorTarget(well, point, units, error);
        const bool compositionSet = SetInjectionComposition(well, point, blackOil, error);
        ok = targetSet && compositionSet;
    }
    if (!ok) return false;

    if (well.targetStatus == kStatusOpenProducer || well.targetStatus == kStatusOpenInjector) {
        const OperatingPoint& t = well.target;
        if (t.GasRate < 0.0 && t.OilRate < 0.0 && t.WaterRate < 0.0 && t.LiquidRate < 0.0 && t.Bhp < 0.0 &&
            t.Thp < 0.0) {
            error = FormatText("SetOpPt(): A valid rate/pressure constraint for the well <%s> was not set.",
                               well.name.c_str());
            return false;
        }
    }
    return true;
}

bool setVaneProductionTarget(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                             std::string& error) {
    const int control = well.vaneRateControl;
    if (control == kControlUnset) {
        error = FormatText("setVaneProductionTarget(): The well <%s> has not had its Vane control set.",
                           well.name.c_str());
        return false;
    }
    if (control == kControlDefault) return SetOpPtCombined(well, point, units, error);
    if (!WriteSinglePhaseRate(well.target, control, CleanRates(point), units)) {
        error = FormatText("setVaneProductionTarget(): The well <%s> has an invalid Vane control.",
                           well.name.c_str());
        return false;
    }
    SetTargetStatusFromNode(well, point.maskFlag, point.maskKind);
    return true;
}

bool setVaneInjectorTarget(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                           std::string& error) {
    if (well.underTapServerControl) return true;
    well.target.ClearRates();
    const int control = well.vaneRateControl;
    if (control == kControlUnset) {
        error = FormatText("setVaneInjectorTarget(): The type of rate control has not be been for well <%s>.",
                           well.name.c_str());
        return false;
    }
    if (control == kControlDefault) {
        error = FormatText(
            "The injection well <%s> has been set to use default phase control: a specific phase must be "
            "set.",
            well.name.c_str());
        return false;
    }
    if (!WriteSinglePhaseRate(well.target, control, CleanRates(point), units)) {
        error = FormatText("setVaneInjectorTarget(): The well <%s> has an invalid Vane control.",
                           well.name.c_str());
        return false;
    }
    well.target.Temperature = units.fromFieldTemperature(point.temperature);
    SetTargetStatusFromNode(well, point.maskFlag, point.maskKind);
    return true;
}

bool SetOpPtGlr(WellData& well, const NodeOperatingPoint& point, double glrThreshold,
                const TNavUnitSystem& units, std::string& error) {
    if (well.IsInjector()) {
        error = FormatText(
            "The injection well <%s> was set to GLR control; only single phase control for injectors is "
            "supported.",
            well.name.c_str());
        return false;
    }
    const Rates r = CleanRates(point);
    const double g = r.gas;
    const double l = well.IsProducer() ? r.water + r.oil : r.water;
    bool setGas = true;
    bool setLiquid = true;
    if (g != 0.0 || l != 0.0) {
        if (GlrAtOrAbove(g, l, glrThreshold)) {
            well.target.LiquidRate = -1.0;
            setLiquid = false;
        } else {
            well.target.GasRate = -1.0;
            setGas = false;
        }
    }
    if (setLiquid) well.target.LiquidRate = units.fromFieldLiquidRate(l);
    if (setGas) well.target.GasRate = units.fromFieldGasRate(g);
    SetTargetStatusFromNode(well, point.maskFlag, point.maskKind);
    return true;
}

bool SetOpPtCombined(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                     std::string& error) {
    if (well.IsInjector()) {
        error = FormatText(
            "The injection well <%s> was set to Combined control; only single phase control for injectors is "
            "supported.",
            well.name.c_str());
        return false;
    }
    const Rates r = CleanRates(point);
    const double g = r.gas;
    const double l = r.water + r.oil;
    OperatingPoint& target = well.target;
    if (g > 0.0 && l > 0.0 && GlrAtOrAbove(g, l, kCombinedGasLimit)) {
        target.LiquidRate = -1.0;
        target.GasRate = units.fromFieldGasRate(g);
    } else if (g > 0.0 && l > 0.0 && GlrBelow(g, l, kCombinedLiquidLimit)) {
        target.GasRate = -1.0;
        target.LiquidRate = units.fromFieldLiquidRate(l);
    } else {
        // Between the two ratios, or with one rate zero: two rate limits, and the simulator picks the active
        // one.
        target.GasRate = units.fromFieldGasRate(g);
        target.LiquidRate = units.fromFieldLiquidRate(l);
    }
    SetTargetStatusFromNode(well, point.maskFlag, point.maskKind);
    return true;
}

bool SetInjectionComposition(WellData& well, const NodeOperatingPoint& point, bool blackOil,
                             std::string& error) {
    std::vector<double>& fractions = well.composition.rateFractions;
    std::fill(fractions.begin(), fractions.end(), 0.0);
    if (blackOil || well.vaneRateControl != kControlGas || SanitiseRate(point.gasRate) <= 0.0) return true;
    for (int k = 0; k < point.componentCount; ++k) {
        // A value past the model's components is not read: the index check refuses it first.
        const bool readable = point.moleFractions != nullptr && k < well.composition.hcCount;
        if (!StoreMoleFraction(well.composition, k, readable ? point.moleFractions[k] : 0.0, error))
            return false;
    }
    return true;
}

bool StoreMoleFraction(WellComposition& composition, int index, double value, std::string& error) {
    if (index < 0) {
        error = "iHcComponentIndex cannot be negative.";
        return false;
    }
    if (index >= composition.hcCount) {
        error = FormatText("iHcComponentIndex %d  exceeds the HcComponentCount (%d).", index,
                           composition.hcCount);
        return false;
    }
    if (value < 0.0 || value > 1.0) {
        error = FormatText("Mole Fraction value (%g) must lie in the range 0.0 to 1.0 (inclusive).", value);
        return false;
    }
    if (composition.rateFractions.size() < static_cast<std::size_t>(composition.hcCount)) {
        composition.rateFractions.resize(static_cast<std::size_t>(composition.hcCount), 0.0);
    }
    composition.rateFractions[static_cast<std::size_t>(index)] = value;
    return true;
}

}  // namespace rivulet
