#include "session/MaxRateDetails.h"

#include <algorithm>
#include <array>
#include <exception>
#include <vector>

#include "common/FormatText.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/ApiLog.h"
#include "session/WellRequester.h"
#include "wells/WellControl.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using Error = tNavigator_API_RMA_error_t;
using Phase = tNavigator_API_RMA_phase_t;

// Below this a maximum rate counts as none, in every phase.
constexpr double kNoRate = 5e-5;

// The well flows when it is open and moves liquid at reservoir conditions or gas.
bool IsFlowing(const WellData& well) {
    return well.IsOpen() &&
           (well.Result(WellRateRecord::kRcLiquid) > 0.0 || well.Result(WellRateRecord::kGas) > 0.0);
}

// A producer whose maximum rates say something that its own rates cannot.
bool NeedsMaxRateDetails(const WellData& well, const std::array<double, 3>& max) {
    if (!well.IsProducer() || IsFlowing(well)) return false;
    return max[kPhaseWater] >= kNoRate || max[kPhaseOil] >= kNoRate || max[kPhaseGas] >= kNoRate;
}

int DensityIndex(int phase) {
    if (phase == kPhaseGas) return WellRateRecord::kGasDensity;
    if (phase == kPhaseOil) return WellRateRecord::kOilDensity;
    return WellRateRecord::kWaterDensity;
}

// Calls the library, turning whatever it throws into "<prefix>: <what>".
template <class Call>
bool Guarded(WellRequester& requester, const char* failure, const char* thrown, Call call,
             std::string& error) {
    try {
        const Error result = call();
        if (result.id() != 0) return requester.Fail(failure, result, error);
        return true;
    } catch (const std::exception& e) {
        return requester.Thrown(FormatText("%s: %s", thrown, e.what()).c_str(), error);
    } catch (const char* text) {
        return requester.Thrown(FormatText("%s: %s", thrown, text != nullptr ? text : "").c_str(), error);
    } catch (int code) {
        return requester.Thrown(FormatText("%s: %d", thrown, code).c_str(), error);
    } catch (...) {
        return requester.Thrown(FormatText("%s: %s", thrown, "unknown exception").c_str(), error);
    }
}

// One phase of one well whose composition is asked for: the mass it carries at its maximum rate, lb/day.
struct CompositionEntry {
    int well;
    Phase phase;
    double mass;
    bool only;
};

double NotBelowZero(double value) {
    return value > 0.0 ? value : 0.0;
}

// Stores `count` fractions through the checked setter.
bool StoreFractions(WellComposition& composition, const double* fractions, int count, std::string& error) {
    for (int k = 0; k < count; ++k) {
        if (!StoreMoleFraction(composition, k, fractions[k], error)) return false;
    }
    return true;
}

// The molar mix of a gas run `x` and an oil run `y` of masses `gasMass` and `oilMass`.
bool StoreMix(WellData& well, int hcCount, const double* x, const double* y, double gasMass, double oilMass,
              std::string& error) {
    const FluidProperties* fluid = well.fluid;
    if (hcCount < 1 || fluid == nullptr || fluid->HcCount() < hcCount) return true;
    const double* weights = fluid->PropertyArray(well.eosRegion, kMolecularWeight);
    if (weights == nullptr) return true;  // no weights: the well takes no fractions
    double gasWeight = 0.0;
    double oilWeight = 0.0;
    for (int k = 0; k < hcCount; ++k) {
        gasWeight += weights[k] * x[k];
        oilWeight += weights[k] * y[k];
    }
    if (gasWeight <= 0.0 || oilWeight <= 0.0) return false;
    const double gasMoles = gasMass / gasWeight;
    const double oilMoles = oilMass / oilWeight;
    const double moles = gasMoles + oilMoles;
    std::vector<double> mixed(static_cast<std::size_t>(hcCount));
    for (int k = 0; k < hcCount; ++k) {
        double fraction = oilMoles / moles * y[k] + gasMoles / moles * x[k];
        if (fraction > 1.0 && fraction < 1.001) fraction = 1.0;  // rounding of a single-component fluid
        mixed[static_cast<std::size_t>(k)] = fraction;
    }
    return StoreFractions(well.composition, mixed.data(), hcCount, error);
}

}  // namespace

bool ReadDensitiesOfMaxRates(WellRequester& requester, WellList& wells, const PhaseRateTable& maxRates,
                             std::string& error) {
    if (wells.Size() < 1 || maxRates.empty()) return true;
    std::vector<int> indices;
    std::vector<Phase> phases;
    const int n = std::min(wells.Size(), static_cast<int>(maxRates.size()));
    for (int i = 0; i < n; ++i) {
        const WellData& well = wells[static_cast<std::size_t>(i)];
        const std::array<double, 3>& max = maxRates[static_cast<std::size_t>(i)];
        if (!NeedsMaxRateDetails(well, max)) continue;
        for (Phase phase : {TNAV_PHASE_GAS, TNAV_PHASE_OIL, TNAV_PHASE_WATER}) {
            if (max[phase] > 0.0 && well.productionRecord[DensityIndex(phase)] <= 0.0) {
                indices.push_back(i);
                phases.push_back(phase);
            }
        }
    }
    if (indices.empty()) return true;

    const int count = static_cast<int>(indices.size());
    std::vector<double> densities(indices.size(), 0.0);
    std::ostream* log = requester.Log;
    apilog::Call(log, "get_sc_densities_of_max_rates(int*, int, phase_t*, double*)");
    apilog::Array(log, "int", indices);
    apilog::Count(log, count);
    apilog::Array(log, "phase_t", phases);
    apilog::OutputSize(log, "double", count);
    const bool read = Guarded(
        requester, "Error when reading production SC densities: <%s>",
        "An exception was thrown when reading production SC densities",
        [&] {
            return requester.Requester->get_sc_densities_of_max_rates(indices.data(), count, phases.data(),
                                                                      densities.data(), nullptr);
        },
        error);
    if (!read) return false;
    for (std::size_t e = 0; e < indices.size(); ++e) {
        wells[static_cast<std::size_t>(indices[e])].productionRecord[DensityIndex(phases[e])] = densities[e];
    }
    return true;
}

bool ReadCompositionOfMaxRates(WellRequester& requester, int hcCount, WellList& wells,
                               const PhaseRateTable& maxRates, const TNavUnitSystem& units,
                               std::string& error) {
    if (hcCount < 1 || wells.Size() < 1 || maxRates.empty()) return true;
    std::vector<CompositionEntry> entries;
    const int n = std::min(wells.Size(), static_cast<int>(maxRates.size()));
    for (int i = 0; i < n; ++i) {
        WellData& well = wells[static_cast<std::size_t>(i)];
        const std::array<double, 3>& max = maxRates[static_cast<std::size_t>(i)];
        if (!NeedsMaxRateDetails(well, max)) continue;
        const double gasMass =
            NotBelowZero(units.toFieldGasDensity(well.Density(WellRateRecord::kGasDensity)) *
                         units.toFieldGasRate(max[kPhaseGas]));
        const double oilMass =
            NotBelowZero(units.toFieldLiquidDensity(well.Density(WellRateRecord::kOilDensity)) *
                         units.toFieldLiquidRate(max[kPhaseOil]));
        // A phase whose mass is a millionth of the whole or less does not count.
        const double limit = (gasMass + oilMass) / 1e6;
        const bool gas = gasMass > limit;
        const bool oil = oilMass > limit;
        if (gas) entries.push_back({i, TNAV_PHASE_GAS, gasMass, !oil});
        if (oil) entries.push_back({i, TNAV_PHASE_OIL, oilMass, !gas});
        if (gas || oil)
            std::fill(well.composition.rateFractions.begin(), well.composition.rateFractions.end(), 0.0);
    }
    if (entries.empty()) return true;

    const int count = static_cast<int>(entries.size());
    std::vector<int> indices;
    std::vector<Phase> phases;
    for (const CompositionEntry& entry : entries) {
        indices.push_back(entry.well);
        phases.push_back(entry.phase);
    }
    std::vector<double> fractions(entries.size() * static_cast<std::size_t>(hcCount), 0.0);
    std::ostream* log = requester.Log;
    apilog::Call(log, "get_composition_of_max_rates(int*, int, ipr_rate_phase_t*, double*)");
    apilog::Array(log, "int", indices);
    apilog::Count(log, count);
    apilog::Array(log, "ipr_rate_phase_t", phases);
    apilog::OutputSize(log, "double", count * hcCount);
    const bool read = Guarded(
        requester, "Error when reading production hc component fractions: <%s>",
        "An exception was thrown when reading production hc component fractions",
        [&] {
            return requester.Requester->get_composition_of_max_rates(indices.data(), count, phases.data(),
                                                                     fractions.data(), nullptr);
        },
        error);
    if (!read) return false;

    auto run = [&](std::size_t e) { return fractions.data() + e * static_cast<std::size_t>(hcCount); };
    for (std::size_t e = 0; e < entries.size(); ++e) {
        const CompositionEntry& entry = entries[e];
        WellData& well = wells[static_cast<std::size_t>(entry.well)];
        if (entry.only) {
            if (!StoreFractions(well.composition, run(e), hcCount, error)) return false;
            continue;
        }
        // A well's two entries stand together, gas first.
        const CompositionEntry& oil = entries[e + 1];
        if (!StoreMix(well, hcCount, run(e), run(e + 1), entry.mass, oil.mass, error)) return false;
        ++e;
    }
    return true;
}

}  // namespace rivulet
