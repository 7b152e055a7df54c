// The limit groups of the targets' send. Each group goes out in three calls for all its wells: every limit
// removed, the group's limits enabled with their values, then one target limit per well.
#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "dataserver/TNavUnitSystem.h"
#include "session/ApiLog.h"
#include "session/WellRequester.h"
#include "session/WellTargetSend.h"
#include "session/WellTargets.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using targets::CountOf;
using targets::Report;
using targets::UnderControl;
using Error = tNavigator_API_RMA_error_t;
using Api = tNavigator_API_RMA_well_data_requester_t;
using InjLimit = tNavigator_API_RMA_inj_limit_t;
using ProdLimit = tNavigator_API_RMA_prod_limit_t;

// A rate of this size or more is no rate when an injector's target rate is chosen.
constexpr double kNoInjectorRate = 1e35;
// MMscf per STB from which a well with a gas and a liquid limit is controlled by its gas rate.
constexpr double kGasControlRatio = 0.01123;

// A pressure at -1.0 or below is replaced by the default.
double PressureOrDefault(double pressure, double fallback) {
    return pressure > -1.0 ? pressure : fallback;
}

// The smallest positive rate; 0 without one.
double InjectorTargetRate(const OperatingPoint& target) {
    double smallest = kNoInjectorRate;
    for (double rate : {target.GasRate, target.OilRate, target.WaterRate, target.LiquidRate}) {
        if (rate > 0.0 && rate < smallest) smallest = rate;
    }
    return smallest < kNoInjectorRate ? smallest : 0.0;
}

// True when the gas limit is to be the target of a well with a gas and a liquid limit: no liquid, or at
// least 0.01123 MMscf of gas per STB of liquid. Both rates are clamped at zero first.
bool GasTakesControl(double gas, double liquid, const TNavUnitSystem* units) {
    double g = std::max(gas, 0.0);
    double l = std::max(liquid, 0.0);
    if (units != nullptr) {
        g = units->toFieldGasRate(g);
        l = units->toFieldLiquidRate(l);
    }
    return l <= 0.0 || g / l >= kGasControlRatio;
}

// The failure texts of a group's three calls, each followed by the simulator's description, and the text of
// an exception.
struct GroupTexts {
    std::string disabling;
    std::string enabling;
    std::string targets;
    std::string thrown;
};

// The enabling and target calls of injectors or of producers, with their log banners.
template <class Limit>
struct LimitCalls {
    const char* enableBanner;
    const char* targetsBanner;
    const char* limitType;
    Error (Api::*enable)(const int*, int, const Limit*, int, const double*, tNavigator_API_RMA_request_t*);
    Error (Api::*targets)(const int*, int, const Limit*, tNavigator_API_RMA_request_t*);
};

const LimitCalls<InjLimit> kInjectorCalls{"enable_injector_limits(int*, int, inj_limit_t*, int, double*)",
                                          "set_injector_targets(int*, int, inj_limit_t*)", "inj_limit_t",
                                          &Api::enable_injector_limits, &Api::set_injector_targets};
const LimitCalls<ProdLimit> kProducerCalls{"enable_producer_limits(int*, int, prod_limit_t*, int, double*)",
                                           "set_producer_targets(int*, int, prod_limit_t*)", "prod_limit_t",
                                           &Api::enable_producer_limits, &Api::set_producer_targets};

// One group as it is sent: its wells, the limits that every one of them gets, the values well by well and
// the target of each well.
template <class Limit>
struct LimitBatch {
    std::vector<int> wells;
    std::vector<Limit> limits;
    std::vector<double> values;
    std::vector<Limit> targets;
};

template <class Limit>
bool SendBatch(WellRequester& requester, const LimitCalls<Limit>& calls, const LimitBatch<Limit>& batch,
               const GroupTexts& texts, std::string& error) {
    if (batch.wells.empty()) return true;
    Api* api = requester.Requester;
    if (api == nullptr)
        return Report(requester, "No well data requester is available to send the well targets.", error);
    std::ostream* log = requester.Log;
    const int n = CountOf(batch.wells);
    const int limitCount = static_cast<int>(batch.limits.size());
    try {
        apilog::Call(log, "disable_all_limits(int*, int)");
        apilog::Array(log, "int", batch.wells);
        apilog::Count(log, n);
        Error result = api->disable_all_limits(batch.wells.data(), n, nullptr);
        if (result.id() != 0) return Report(requester, texts.disabling + result.description(), error);

        apilog::Call(log, calls.enableBanner);
        apilog::Array(log, "int", batch.wells);
        apilog::Count(log, n);
        apilog::Array(log, calls.limitType, batch.limits);
        apilog::Count(log, limitCount);
        apilog::Array(log, "double", batch.values);
        result = (api->*calls.enable)(batch.wells.data(), n, batch.limits.data(), limitCount,
                                      batch.values.data(), nullptr);
        if (result.id() != 0) return Report(requester, texts.enabling + result.description(), error);

        apilog::Call(log, calls.targetsBanner);
        apilog::Array(log, "int", batch.wells);
        apilog::Count(log, n);
        apilog::Array(log, calls.limitType, batch.targets);
        result = (api->*calls.targets)(batch.wells.data(), n, batch.targets.data(), nullptr);
        if (result.id() != 0) return Report(requester, texts.targets + result.description(), error);
    } catch (...) {
        return Report(requester, texts.thrown, error);
    }
    return true;
}

// --- Injectors ---

struct InjectorGroup {
    const char* enabling;
    const char* targets;
    const char* thrown;
    std::vector<InjLimit> limits;
    // The pressures of the k-th well of the group are those of the k-th well of the whole list.
    bool positional;
};

enum InjectorGroupKind { kInjBhp, kInjPressure, kInjRate, kInjAll, kInjectorGroupCount };

const std::array<InjectorGroup, kInjectorGroupCount> kInjectorGroups{{
    {"Error when enabling bhp limits on injectors: ",
     "Error when setting bhp targets on injectors: ",
     "An exception was thrown when setting bhp targets on injectors.",
     {TNAV_INJ_LIMIT_BHP},
     true},
    {"Error when enabling pressure limits on injectors: ",
     "Error when setting pressure targets on injectors: ",
     "An exception was thrown when setting pressure targets on injectors.",
     {TNAV_INJ_LIMIT_BHP, TNAV_INJ_LIMIT_THP},
     true},
    {"Error when enabling limits on injectors: ",
     "Error when setting rate targets on injectors: ",
     "An exception was thrown when setting rate targets on injectors.",
     {TNAV_INJ_LIMIT_RATE, TNAV_INJ_LIMIT_BHP},
     false},
    {"Error when enabling limits on injectors: ",
     "Error when setting all targets on injectors: ",
     "An exception was thrown when setting all targets on injectors.",
     {TNAV_INJ_LIMIT_RATE, TNAV_INJ_LIMIT_BHP, TNAV_INJ_LIMIT_THP},
     false},
}};

double InjectorValue(InjLimit limit, const OperatingPoint& target, double defaultBhp) {
    switch (limit) {
        case TNAV_INJ_LIMIT_RATE:
            return InjectorTargetRate(target);
        case TNAV_INJ_LIMIT_BHP:
            return PressureOrDefault(target.Bhp, defaultBhp);
        case TNAV_INJ_LIMIT_THP:
            return PressureOrDefault(target.Thp, defaultBhp);
    }
    return 0.0;
}

// --- Producers ---

struct ProducerGroup {
    const char* word;
    std::vector<ProdLimit> limits;
};

enum ProducerGroupKind { kBhp, kDualPressure, kGas, kOil, kWater, kLiquid, kGasLiquid, kProducerGroupCount };

const std::array<ProducerGroup, kProducerGroupCount> kProducerGroups{{
    {"BHP", {TNAV_PROD_LIMIT_BHP}},
    {"dual pressure", {TNAV_PROD_LIMIT_BHP, TNAV_PROD_LIMIT_THP}},
    {"gas", {TNAV_PROD_LIMIT_GAS_RATE, TNAV_PROD_LIMIT_BHP}},
    {"oil", {TNAV_PROD_LIMIT_OIL_RATE, TNAV_PROD_LIMIT_BHP}},
    {"water", {TNAV_PROD_LIMIT_WATER_RATE, TNAV_PROD_LIMIT_BHP}},
    {"liquid", {TNAV_PROD_LIMIT_LIQUID_RATE, TNAV_PROD_LIMIT_BHP}},
    {"gas+liquid", {TNAV_PROD_LIMIT_GAS_RATE, TNAV_PROD_LIMIT_LIQUID_RATE, TNAV_PROD_LIMIT_BHP}},
}};

// Rates clamped at zero, pressures at -1.0 or below replaced by the default.
double ProducerValue(ProdLimit limit, const OperatingPoint& target, double defaultBhp) {
    switch (limit) {
        case TNAV_PROD_LIMIT_GAS_RATE:
            return std::max(target.GasRate, 0.0);
        case TNAV_PROD_LIMIT_OIL_RATE:
            return std::max(target.OilRate, 0.0);
        case TNAV_PROD_LIMIT_WATER_RATE:
            return std::max(target.WaterRate, 0.0);
        case TNAV_PROD_LIMIT_LIQUID_RATE:
            return std::max(target.LiquidRate, 0.0);
        case TNAV_PROD_LIMIT_BHP:
            return PressureOrDefault(target.Bhp, defaultBhp);
        case TNAV_PROD_LIMIT_THP:
            return PressureOrDefault(target.Thp, defaultBhp);
    }
    return 0.0;
}

// The group of a producer that is not under mixed control, first match winning.
ProducerGroupKind ProducerGroupOf(const OperatingPoint& target) {
    const int rates = target.RateCount();
    if (rates == 0) return target.Thp >= 0.0 ? kDualPressure : kBhp;
    if (rates == 1 && target.GasRate >= 0.0) return kGas;
    if (rates == 1 && target.OilRate >= 0.0) return kOil;
    if (rates == 1 && target.WaterRate >= 0.0) return kWater;
    if (target.GasRate >= 0.0 &&
        (target.OilRate >= 0.0 || target.WaterRate >= 0.0 || target.LiquidRate >= 0.0))
        return kGasLiquid;
    return kLiquid;
}

GroupTexts ProducerTexts(const std::string& word) {
    return {"Error when disabling all limits on " + word + " controlled producers: ",
            "Error when enabling limits on " + word + " controlled producers: ",
            "Error when setting targets on " + word + " controlled producers: ",
            "An exception was thrown when setting targets on " + word + " controlled producers."};
}

bool NoConstraint(const WellRequester& requester, const WellData& well, std::string& error) {
    return Report(requester, "There are no phase contraints for the Vane controlled well " + well.name,
                  error);
}

}  // namespace

bool SendInjectorTargets(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                         std::string& error) {
    std::array<std::vector<int>, kInjectorGroupCount> members;
    for (int index : injectors) {
        const WellData* well = wells.At(index);
        if (well == nullptr || !UnderControl(*well)) continue;
        const OperatingPoint& target = well->target;
        const bool thp = target.Thp >= 0.0;
        if (target.RateCount() > 0) {
            members[thp ? kInjAll : kInjRate].push_back(index);
        } else if (target.PressureCount() > 0) {
            members[thp ? kInjPressure : kInjBhp].push_back(index);
        } else if (well->underVaneControl) {
            return NoConstraint(requester, *well, error);
        }
    }
    for (int kind = 0; kind < kInjectorGroupCount; ++kind) {
        const InjectorGroup& group = kInjectorGroups[static_cast<std::size_t>(kind)];
        LimitBatch<InjLimit> batch;
        batch.wells = members[static_cast<std::size_t>(kind)];
        batch.limits = group.limits;
        for (std::size_t k = 0; k < batch.wells.size(); ++k) {
            const WellData& own = wells[static_cast<std::size_t>(batch.wells[k])];
            const WellData* source = group.positional ? wells.At(static_cast<long long>(k)) : &own;
            // A group longer than the whole list (an index listed twice) reads its own wells past the end.
            if (source == nullptr) source = &own;
            for (InjLimit limit : group.limits)
                batch.values.push_back(InjectorValue(limit, source->target, requester.defaultInjectorBhp));
            batch.targets.push_back(group.limits.front());
        }
        const GroupTexts texts{"Error when disabling all limits on injectors: ", group.enabling,
                               group.targets, group.thrown};
        if (!SendBatch(requester, kInjectorCalls, batch, texts, error)) return false;
    }
    return true;
}

bool SendProducerTargets(WellRequester& requester, WellList& wells, const TNavUnitSystem& units,
                         const std::vector<int>& producers, std::string& error) {
    std::array<std::vector<int>, kProducerGroupCount> members;
    for (int index : producers) {
        const WellData* well = wells.At(index);
        if (well == nullptr || !UnderControl(*well)) continue;
        const OperatingPoint& target = well->target;
        if (target.RateCount() > 0 && target.Thp >= 0.0) {
            if (!SendMixedControl(requester, wells, index, &units, error)) return false;
            continue;
        }
        if (target.RateCount() == 0 && target.PressureCount() == 0) {
            if (well->underVaneControl) return NoConstraint(requester, *well, error);
            continue;
        }
        members[ProducerGroupOf(target)].push_back(index);
    }
    for (int kind = 0; kind < kProducerGroupCount; ++kind) {
        const ProducerGroup& group = kProducerGroups[static_cast<std::size_t>(kind)];
        LimitBatch<ProdLimit> batch;
        batch.wells = members[static_cast<std::size_t>(kind)];
        batch.limits = group.limits;
        for (int index : batch.wells) {
            const OperatingPoint& target = wells[static_cast<std::size_t>(index)].target;
            for (ProdLimit limit : group.limits)
                batch.values.push_back(ProducerValue(limit, target, requester.defaultProducerBhp));
            ProdLimit first = group.limits.front();
            if (kind == kGasLiquid && !GasTakesControl(target.GasRate, target.LiquidRate, &units))
                first = TNAV_PROD_LIMIT_LIQUID_RATE;
            batch.targets.push_back(first);
        }
        if (!SendBatch(requester, kProducerCalls, batch, ProducerTexts(group.word), error)) return false;
    }
    return true;
}

bool SendMixedControl(WellRequester& requester, WellList& wells, int index, const TNavUnitSystem* units,
                      std::string& error) {
    const WellData* well = wells.At(index);
    if (well == nullptr)
        return Report(requester, "Invalid well index sent when setting producer mixed control targets",
                      error);
    const OperatingPoint& target = well->target;
    const int rates = target.RateCount();
    if (rates == 0 && target.PressureCount() == 0) return true;

    LimitBatch<ProdLimit> batch;
    batch.wells = {index};
    const auto add = [&batch](ProdLimit limit, double value) {
        batch.limits.push_back(limit);
        batch.values.push_back(value);
    };
    if (target.LiquidRate >= 0.0 || target.OilRate >= 0.0 || target.WaterRate >= 0.0) {
        if (rates == 1 && target.OilRate >= 0.0) {
            add(TNAV_PROD_LIMIT_OIL_RATE, target.OilRate);
        } else if (rates == 1 && target.WaterRate >= 0.0) {
            add(TNAV_PROD_LIMIT_WATER_RATE, target.WaterRate);
        } else {
            add(TNAV_PROD_LIMIT_LIQUID_RATE, target.LiquidRate);
        }
    }
    if (target.GasRate >= 0.0) add(TNAV_PROD_LIMIT_GAS_RATE, target.GasRate);

    std::optional<ProdLimit> chosen;
    if (batch.limits.size() == 1) {
        chosen = batch.limits[0];
    } else if (batch.limits.size() == 2) {
        chosen = GasTakesControl(batch.values[1], batch.values[0], units) ? batch.limits[1] : batch.limits[0];
    }
    add(TNAV_PROD_LIMIT_BHP, PressureOrDefault(target.Bhp, requester.defaultProducerBhp));
    if (!chosen && target.Bhp >= 0.0) chosen = TNAV_PROD_LIMIT_BHP;
    if (target.Thp >= 0.0) {
        add(TNAV_PROD_LIMIT_THP, target.Thp);
        if (!chosen) chosen = TNAV_PROD_LIMIT_THP;
    }
    batch.targets = {chosen.value_or(batch.limits.front())};

    const std::string name = "a mixed control producer (" + well->name + ")";
    const GroupTexts texts{"Error when disabling all limits on " + name + ": ",
                           "Error when enabling limits on " + name + ": ",
                           "Error when setting targets on " + name + ": ",
                           "An exception was thrown when setting targets on " + name + "."};
    return SendBatch(requester, kProducerCalls, batch, texts, error);
}

}  // namespace rivulet
