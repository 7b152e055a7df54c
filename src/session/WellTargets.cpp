// The send of the wells' targets: the sort into lists, and the steps that take one call for a whole list
// (statuses, efficiencies, injection phases, injector temperatures, injected gas composition, the closing
// check). The limit groups are in WellTargetGroups.cpp.
#include "session/WellTargets.h"
#include "session/WellTargetSend.h"

#include <cstddef>
#include <vector>

#include "common/FormatText.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/ApiLog.h"
#include "session/WellRequester.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using targets::CountOf;
using targets::Report;
using targets::UnderControl;
using Error = tNavigator_API_RMA_error_t;

// The five index lists of one send, in well order.
struct TargetLists {
    std::vector<int> statuses;
    std::vector<int> efficiencies;
    std::vector<int> phases;
    std::vector<int> injectors;
    std::vector<int> producers;
};

TargetLists SortWells(WellList& wells, std::int32_t unconnectedState) {
    TargetLists lists;
    for (int index = 0; index < wells.Size(); ++index) {
        WellData& well = wells[static_cast<std::size_t>(index)];
        if (!UnderControl(well) && unconnectedState == kUnconnectedShut) {
            well.targetStatus = kStatusShut;
            lists.statuses.push_back(index);
            continue;
        }
        if (well.targetStatus == kStatusNone || well.targetStatus == kStatusUnknown) continue;
        // A well that nobody controls is left to the deck.
        if (!UnderControl(well)) continue;
        if (well.targetStatus == kStatusShut || well.targetStatus == kStatusStop) {
            lists.statuses.push_back(index);
            continue;
        }
        lists.efficiencies.push_back(index);
        if (well.IsInjector()) {
            lists.injectors.push_back(index);
            if (well.status != well.targetStatus) lists.statuses.push_back(index);
            if (!well.target.FitsPhase(well.injectionPhase)) lists.phases.push_back(index);
        } else {
            if (well.status != well.targetStatus) lists.statuses.push_back(index);
            lists.producers.push_back(index);
        }
    }
    return lists;
}

bool SendStatuses(WellRequester& requester, WellList& wells, const std::vector<int>& list,
                  std::string& error) {
    if (list.empty()) return true;
    std::vector<tNavigator_API_RMA_well_status_t> statuses;
    for (int index : list) {
        statuses.push_back(static_cast<tNavigator_API_RMA_well_status_t>(
            wells[static_cast<std::size_t>(index)].targetStatus));
    }
    try {
        apilog::Call(requester.Log, "set_new_well_statuses(int*, int, well_status_t*)");
        apilog::Array(requester.Log, "int", list);
        apilog::Count(requester.Log, CountOf(list));
        apilog::Array(requester.Log, "well_status_t", statuses);
        const Error result =
            requester.Requester->set_new_well_statuses(list.data(), CountOf(list), statuses.data(), nullptr);
        if (result.id() != 0) return requester.Fail("Error when setting well statuses: %s", result, error);
    } catch (...) {
        return Report(requester, "An exception was thrown when setting well statuses", error);
    }
    return true;
}

bool SendEfficiencies(WellRequester& requester, WellList& wells, const std::vector<int>& list,
                      std::string& error) {
    if (list.empty()) return true;
    std::vector<double> factors;
    for (int index : list) {
        const double efficiency = wells[static_cast<std::size_t>(index)].target.Efficiency;
        factors.push_back(efficiency < 0.0 || efficiency >= 1.0 ? 1.0 : efficiency);
    }
    try {
        apilog::Call(requester.Log, "set_well_efficiency_factors(int*, int, double*)");
        apilog::Array(requester.Log, "int", list);
        apilog::Count(requester.Log, CountOf(list));
        apilog::Array(requester.Log, "double", factors);
        const Error result = requester.Requester->set_well_efficiency_factors(list.data(), CountOf(list),
                                                                              factors.data(), nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when setting well efficiencies: %s", result, error);
    } catch (...) {
        return Report(requester, "An exception was thrown when setting well efficiencies", error);
    }
    return true;
}

// The phase of each listed injector: that of its one flowing phase, or without a positive rate that of its
// rate control (oil, gas, else water).
bool SendInjectorPhases(WellRequester& requester, WellList& wells, const std::vector<int>& list,
                        std::string& error) {
    if (list.empty()) return true;
    std::vector<tNavigator_API_RMA_inj_phase_t> phases;
    for (int index : list) {
        const WellData& well = wells[static_cast<std::size_t>(index)];
        int phase = kPhaseWater;
        if (well.target.AnyRateSet()) {
            phase = well.target.RatePhase();
            if (phase == kPhaseNone) {
                return Report(requester,
                              FormatText("Target operating point for injection well[%d] did not specify a "
                                         "single injection phase",
                                         index),
                              error);
            }
        } else if (well.vaneRateControl == kControlOil) {
            phase = kPhaseOil;
        } else if (well.vaneRateControl == kControlGas) {
            phase = kPhaseGas;
        }
        phases.push_back(static_cast<tNavigator_API_RMA_inj_phase_t>(phase));
    }
    try {
        apilog::Call(requester.Log, "set_injector_phases(int*, int, inj_phase_t*)");
        apilog::Array(requester.Log, "int", list);
        apilog::Count(requester.Log, CountOf(list));
        apilog::Array(requester.Log, "inj_phase_t", phases);
        const Error result =
            requester.Requester->set_injector_phases(list.data(), CountOf(list), phases.data(), nullptr);
        if (result.id() != 0) return requester.Fail("Error when setting injector phases: %s", result, error);
    } catch (...) {
        return Report(requester, "An exception was thrown when setting injector phases", error);
    }
    return true;
}

// The injection temperature of thermal water injectors that have one; temperature is the only parameter.
bool SendInjectorTemperatures(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                              std::string& error) {
    std::vector<int> list;
    std::vector<double> temperatures;
    for (int index : injectors) {
        const WellData& well = wells[static_cast<std::size_t>(index)];
        const bool thermal = well.fluid != nullptr && well.fluid->IsThermal();
        if (thermal && well.target.RatePhase() == kPhaseWater &&
            well.target.Temperature < TNavUnitSystem::kNoValueThreshold) {
            list.push_back(index);
            temperatures.push_back(well.target.Temperature);
        }
    }
    if (list.empty()) return true;
    const tNavigator_API_RMA_therm_inj_param_t params[1] = {TNAV_THERM_INJ_TEMPERATURE};
    try {
        apilog::Call(requester.Log,
                     "set_injector_thermal_parameters(int*, int, therm_inj_param_t*, int, double*)");
        apilog::Array(requester.Log, "int", list);
        apilog::Count(requester.Log, CountOf(list));
        apilog::Array(requester.Log, "therm_inj_param_t", params, 1);
        apilog::Count(requester.Log, 1);
        apilog::Array(requester.Log, "double", temperatures);
        const Error result = requester.Requester->set_injector_thermal_parameters(
            list.data(), CountOf(list), params, 1, temperatures.data(), nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when setting temperatures on injectors: %s", result, error);
    } catch (...) {
        return Report(requester, "An exception was thrown when setting temperatures on injectors.", error);
    }
    return true;
}

// The mole fractions of the gas that open gas injectors inject; only for a model whose first well has
// hydrocarbon components.
bool SendInjectedGasComposition(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                                std::string& error) {
    if (wells[0].composition.hcCount <= 0) return true;
    std::vector<int> list;
    std::vector<double> fractions;
    for (int index : injectors) {
        const WellData& well = wells[static_cast<std::size_t>(index)];
        const bool open =
            well.targetStatus == kStatusOpenProducer || well.targetStatus == kStatusOpenInjector;
        if (!open || well.target.RatePhase() != kPhaseGas) continue;
        list.push_back(index);
        const std::vector<double>& rates = well.composition.rateFractions;
        // A short array of fractions is sent with zeros for what it lacks.
        for (std::size_t k = 0; k < static_cast<std::size_t>(well.composition.hcCount); ++k)
            fractions.push_back(k < rates.size() ? rates[k] : 0.0);
    }
    if (list.empty()) return true;
    try {
        apilog::Call(requester.Log, "set_injected_gas_composition(int*, int, double*)");
        apilog::Array(requester.Log, "int", list);
        apilog::Count(requester.Log, CountOf(list));
        apilog::Array(requester.Log, "double", fractions);
        const Error result = requester.Requester->set_injected_gas_composition(list.data(), CountOf(list),
                                                                               fractions.data(), nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when setting injected gas composition: %s", result, error);
    } catch (...) {
        return Report(requester, "An exception was thrown when setting injected gas composition.", error);
    }
    return true;
}

// Not guarded: an exception here reaches the caller.
bool CheckNewControls(WellRequester& requester, std::string& error) {
    apilog::Call(requester.Log, "check_new_controls()");
    const Error result = requester.Requester->check_new_controls(nullptr);
    if (result.id() != 0) return requester.Fail("Error after setting new well targets: %s", result, error);
    return true;
}

}  // namespace

bool ApplyWellTargets(WellRequester& requester, WellList& wells, const TNavUnitSystem& units,
                      std::int32_t unconnectedState, std::string& error) {
    apilog::Text(requester.Log, "\n*** ApplyWellTargets ***\n");
    if (wells.Size() < 1) return true;
    if (requester.Requester == nullptr) {
        error = "No well data requester is available to send the well targets.";
        return false;
    }
    const TargetLists lists = SortWells(wells, unconnectedState);
    return SendStatuses(requester, wells, lists.statuses, error) &&
           SendEfficiencies(requester, wells, lists.efficiencies, error) &&
           SendInjectorPhases(requester, wells, lists.phases, error) &&
           SendInjectorTargets(requester, wells, lists.injectors, error) &&
           SendInjectorTemperatures(requester, wells, lists.injectors, error) &&
           SendInjectedGasComposition(requester, wells, lists.injectors, error) &&
           SendProducerTargets(requester, wells, units, lists.producers, error) &&
           CheckNewControls(requester, error);
}

}  // namespace rivulet
