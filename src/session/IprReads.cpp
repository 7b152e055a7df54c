// The requester's calls for the inflow tables.
#include "session/IprReads.h"

#include <algorithm>
#include <utility>

#include "dataserver/TNavUnitSystem.h"
#include "session/ApiLog.h"
#include "session/WellRequester.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using Error = tNavigator_API_RMA_error_t;
using Phase = tNavigator_API_RMA_phase_t;

// Logs the message between newlines and keeps it as the error; always false.
bool Report(std::ostream* log, std::string text, std::string& error) {
    error = std::move(text);
    apilog::Error(log, error.c_str());
    return false;
}

// Every listed well exists, and has its triple when a table is given.
bool ListedWellsExist(const WellList& wells, const std::vector<int>& listed, const PhaseRateTable* table) {
    return std::all_of(listed.begin(), listed.end(), [&](int well) {
        return well >= 0 && well < wells.Size() &&
               (table == nullptr || static_cast<std::size_t>(well) < table->size());
    });
}

constexpr const char* kBadIndex = "A well index given for the inflow tables is out of range.";

const WellData& WellAt(const WellList& wells, int index) {
    return wells[static_cast<std::size_t>(index)];
}

// One get_max_rates for all the pairs; each answer, not below zero, goes to its well and phase.
bool ReadMaxRates(WellRequester& requester, const std::vector<int>& wells, const std::vector<Phase>& phases,
                  const char* heading, PhaseRateTable& maxRates, std::string& error) {
    const int n = static_cast<int>(wells.size());
    if (n < 1) return true;
    std::vector<double> results(wells.size(), 0.0);
    std::ostream* log = requester.Log;
    try {
        apilog::Call(log, "get_max_rates(int*, int, ipr_rate_phase_t*, double*)");
        apilog::Array(log, "int", wells);
        apilog::Count(log, n);
        apilog::Array(log, "ipr_rate_phase_t", phases);
        apilog::OutputSize(log, "double", n);
        const Error result =
            requester.Requester->get_max_rates(wells.data(), n, phases.data(), results.data(), nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when reading a subset of well max rates: <%s>", result, error);
    } catch (...) {
        return requester.Thrown("An exception was thrown when reading a subset of well max rates", error);
    }
    if (log != nullptr) {
        *log << heading;
        apilog::Array(log, "double", results);
        *log << '\n';
    }
    for (std::size_t k = 0; k < wells.size(); ++k) {
        maxRates[static_cast<std::size_t>(wells[k])][static_cast<std::size_t>(phases[k])] =
            std::max(results[k], 0.0);
    }
    return true;
}

}  // namespace

bool SetZeroFlowInjectionPhases(WellRequester& requester, const WellList& wells,
                                const std::vector<int>& injectors, std::string& error) {
    if (!ListedWellsExist(wells, injectors, nullptr)) return Report(requester.Log, kBadIndex, error);
    std::vector<int> listed;
    std::vector<Phase> phases;
    for (int index : injectors) {
        const WellData& well = WellAt(wells, index);
        int phase = -1;
        if (well.injectionPhase == kPhaseGas) {
            if (!(well.GasRate() > 0.0)) phase = kPhaseGas;
        } else if (well.injectionPhase == kPhaseWater) {
            if (!(well.WaterRate() > 0.0)) phase = kPhaseWater;
        } else if (well.vaneRateControl == kControlGas) {
            if (well.GasRate() <= 0.0) phase = kPhaseGas;
        } else if (well.vaneRateControl == kControlWater) {
            if (well.WaterRate() <= 0.0) phase = kPhaseWater;
        }
        if (phase < 0) continue;
        listed.push_back(index);
        phases.push_back(static_cast<Phase>(phase));
    }
    const int n = static_cast<int>(listed.size());
    if (n < 1) return true;
    std::ostream* log = requester.Log;
    try {
        apilog::Call(log, "set_inj_phases_for_ipr_shut_wells(int*, int, inj_phase_t*)");
        apilog::Array(log, "int", listed);
        apilog::Count(log, n);
        apilog::Array(log, "inj_phase_t", phases);
        const Error result =
            requester.Requester->set_inj_phases_for_ipr_shut_wells(listed.data(), n, phases.data(), nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when setting zero flow injection phases: <%s>", result, error);
    } catch (...) {
        return requester.Thrown("An exception was thrown when setting zero flow injection phases", error);
    }
    return true;
}

bool ReadProducerMaxRates(WellRequester& requester, const WellList& wells, const std::vector<int>& producers,
                          PhaseRateTable& maxRates, std::string& error) {
    if (!ListedWellsExist(wells, producers, &maxRates)) return Report(requester.Log, kBadIndex, error);
    std::vector<int> listed;
    std::vector<Phase> phases;
    for (int index : producers) {
        for (Phase phase : {TNAV_PHASE_GAS, TNAV_PHASE_OIL, TNAV_PHASE_WATER}) {
            listed.push_back(index);
            phases.push_back(phase);
        }
    }
    return ReadMaxRates(requester, listed, phases,
                        "\n*** For info: results from get_max_rates for producers ***\n", maxRates, error);
}

bool ReadInjectorMaxRates(WellRequester& requester, const WellList& wells, const std::vector<int>& injectors,
                          PhaseRateTable& maxRates, std::string& error) {
    if (!ListedWellsExist(wells, injectors, &maxRates)) return Report(requester.Log, kBadIndex, error);
    std::vector<int> listed;
    std::vector<Phase> phases;
    for (int index : injectors) {
        const WellData& well = WellAt(wells, index);
        int phase = -1;
        if (well.injectionPhase == kPhaseGas || well.injectionPhase == kPhaseWater) {
            phase = well.injectionPhase;
        } else if (well.vaneRateControl == kControlGas) {
            phase = kPhaseGas;
        } else if (well.vaneRateControl == kControlWater) {
            phase = kPhaseWater;
        }
        if (phase < 0) continue;
        listed.push_back(index);
        phases.push_back(static_cast<Phase>(phase));
    }
    return ReadMaxRates(requester, listed, phases,
                        "\n*** For info: results from get_max_rates for injectors ***\n", maxRates, error);
}

bool getIprTables(WellRequester& requester, WellList& wells, const PhaseRateTable* maxRates,
                  const PhaseRateTable* minRates, const TNavUnitSystem& units, double alpha,
                  std::string& error) {
    std::ostream* log = requester.Log;
    if (maxRates == nullptr || minRates == nullptr)
        return Report(log, "Cannot create an ipr table with null max and/or min rates.", error);
    apilog::Text(log, "\n*** getIprTables ***\n");
    IprSampleSet set(alpha, units);
    if (!set.AddRows(*maxRates, *minRates, error)) return Report(log, error, error);
    const int rows = set.RowCount();
    if (rows < 1) {
        for (WellData& well : wells) well.ipr.Clear();
        return true;
    }

    std::vector<Phase> phases;
    for (std::int32_t phase : set.rowPhases) phases.push_back(static_cast<Phase>(phase));
    const int points = rows * set.pointCount;
    try {
        apilog::Call(log, "set_number_of_ipr_points(int)");
        apilog::Count(log, set.pointCount);
        Error result = requester.Requester->set_number_of_ipr_points(set.pointCount, nullptr);
        if (result.id() != 0)
            return requester.Fail("Error when setting the number of IPR points: <%s>", result, error);
    } catch (...) {
        return requester.Thrown("An exception was thrown when setting the number of IPR points", error);
    }
    try {
        apilog::Call(log, "get_specific_rate_bhp_ipr(int*, int, ipr_rate_phase_t*, double*, double*)");
        apilog::Array(log, "int", set.rowWells);
        apilog::Count(log, rows);
        apilog::Array(log, "ipr_rate_phase_t", phases);
        apilog::Array(log, "double", set.rates);
        apilog::OutputSize(log, "double", points);
        const Error result = requester.Requester->get_specific_rate_bhp_ipr(
            set.rowWells.data(), rows, phases.data(), set.rates.data(), set.bhps.data(), nullptr);
        if (result.id() != 0) return requester.Fail("Error when reading well IPR: <%s>", result, error);
    } catch (...) {
        return requester.Thrown("An exception was thrown when reading well IPR", error);
    }
    if (log != nullptr) {
        *log << "\n*** For info: BHP results from get_specific_rate_bhp_ipr ***\n";
        apilog::Array(log, "double", set.bhps);
        *log << '\n';
    }

    if (!CompactIprTables(set, units, wells, kIprTablePoints))
        return Report(log, "Failed to compact ipr table.", error);
    FillIprTemperatures(wells, units);
    return true;
}

bool ReadIprTables(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                   const std::vector<int>& producers, const TNavUnitSystem& units, double alpha,
                   PhaseRateTable& maxRates, PhaseRateTable& minRates, std::string& error) {
    if (!SetZeroFlowInjectionPhases(requester, wells, injectors, error)) return false;
    if (!ReadProducerMaxRates(requester, wells, producers, maxRates, error)) return false;
    if (!ReadInjectorMaxRates(requester, wells, injectors, maxRates, error)) return false;
    if (!SetMinRates(wells, maxRates, minRates, requester.minGasRateCap, requester.minLiquidRateCap, error))
        return Report(requester.Log, error, error);
    return getIprTables(requester, wells, &maxRates, &minRates, units, alpha, error);
}

}  // namespace rivulet
