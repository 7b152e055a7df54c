// The read wrappers of the well data requester.
#include "session/WellRequester.h"

#include <memory>

#include "common/FormatText.h"
#include "dataserver/FluidProperties.h"
#include "session/ApiLog.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using Error = tNavigator_API_RMA_error_t;

int CountOf(const std::vector<int>& wells) {
    return static_cast<int>(wells.size());
}

}  // namespace

bool WellRequester::Fail(const char* format, const Error& result, std::string& error) const {
    error = FormatText(format, result.description());
    apilog::Error(Log, error.c_str());
    return false;
}

bool WellRequester::Thrown(const char* text, std::string& error) const {
    error = text;
    apilog::Error(Log, text);
    return false;
}

bool WellRequester::ReadWellCount(WellList& wells, const FluidProperties* fluid, std::string& error) {
    apilog::Call(Log, "get_well_count(int*)");
    int count = 0;
    const Error result = Requester->get_well_count(&count, nullptr);
    if (result.id() != 0) return Fail("Error when reading number of wells: <%s>", result, error);
    for (int k = 0; k < count; ++k) wells.Add(WellData(fluid));
    return true;
}

bool WellRequester::ReadWellNames(WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (n < 1) return true;
    try {
        apilog::Call(Log, "get_well_names(string*)");
        apilog::OutputSize(Log, "tNavigator_API_RMA_string", n);
        auto names = std::make_unique<tNavigator_API_RMA_string[]>(static_cast<std::size_t>(n));
        const Error result = Requester->get_well_names(names.get(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well names: <%s>", result, error);
        for (int k = 0; k < n; ++k) wells[k].name = WellData::CleanWellName(names[k].c_str());
    } catch (...) {
        return Thrown("An exception was thrown when reading well names", error);
    }
    if (Log != nullptr) {
        *Log << "\n*** For info: mapping of well indices to well names ***\n";
        for (int k = 0; k < n; ++k) *Log << k << "    " << wells[k].name << '\n';
        *Log << '\n';
    }
    return true;
}

bool WellRequester::ReadFirstActiveStatuses(WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (n < 1) return true;
    try {
        const std::vector<int>& all = wells.AllIndices();
        apilog::Call(Log, "get_well_first_active_statuses(int*, int, well_status_t*)");
        apilog::Array(Log, "int", all.data(), n);
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "well_status_t", n);
        std::vector<tNavigator_API_RMA_well_status_t> statuses(static_cast<std::size_t>(n),
                                                               TNAV_WELL_STATUS_NONE);
        const Error result =
            Requester->get_well_first_active_statuses(all.data(), n, statuses.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading first well types: <%s>", result, error);
        for (int k = 0; k < n; ++k) {
            const int status = statuses[static_cast<std::size_t>(k)];
            if (status == kStatusOpenProducer || status == kStatusOpenInjector)
                wells[k].SetWellStatus(status);
        }
    } catch (...) {
        return Thrown("An exception was thrown when reading first well types", error);
    }
    return true;
}

bool WellRequester::ReadEosRegions(bool blackOil, WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (blackOil || n < 1) return true;
    try {
        const std::vector<int>& all = wells.AllIndices();
        apilog::Call(Log, "get_well_eos_regions(int*, int, int*)");
        apilog::Array(Log, "int", all.data(), n);
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "int", n);
        std::vector<int> regions(static_cast<std::size_t>(n), 0);
        const Error result = Requester->get_well_eos_regions(all.data(), n, regions.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well EOS regions: <%s>", result, error);
        for (int k = 0; k < n; ++k) wells[k].eosRegion = regions[static_cast<std::size_t>(k)];
    } catch (...) {
        return Thrown("An exception was thrown when reading well EOS regions", error);
    }
    return true;
}

bool WellRequester::ReadPvtRegions(WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (n < 1) return true;
    try {
        const std::vector<int>& all = wells.AllIndices();
        // The regions are logged under the status type, as the log has always shown them.
        apilog::Call(Log, "get_well_pvt_regions(int*, int, well_status_t*)");
        apilog::Array(Log, "int", all.data(), n);
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "well_status_t", n);
        std::vector<int> regions(static_cast<std::size_t>(n), 0);
        const Error result = Requester->get_well_pvt_regions(all.data(), n, regions.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well pvt regions: <%s>", result, error);
        for (int k = 0; k < n; ++k) wells[k].pvtRegion = regions[static_cast<std::size_t>(k)];
    } catch (...) {
        return Thrown("An exception was thrown when reading well pvt regions", error);
    }
    return true;
}

bool WellRequester::ReadStatuses(WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (n < 1) return true;
    std::vector<tNavigator_API_RMA_well_status_t> statuses(static_cast<std::size_t>(n),
                                                           TNAV_WELL_STATUS_NONE);
    try {
        const std::vector<int>& all = wells.AllIndices();
        apilog::Call(Log, "get_well_statuses(int*, int, well_status_t*)");
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "well_status_t", n);
        const Error result = Requester->get_well_statuses(all.data(), n, statuses.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well statuses: <%s>", result, error);
        for (int k = 0; k < n; ++k) wells[k].SetWellStatus(statuses[static_cast<std::size_t>(k)]);
    } catch (...) {
        return Thrown("An exception was thrown when reading well statuses", error);
    }
    if (Log != nullptr) {
        *Log << "\n*** For info: results from get_well_statuses ***\n";
        apilog::Array(Log, "well_status_t", statuses);
        *Log << '\n';
    }
    return true;
}

bool WellRequester::ReadInjectorPhases(WellList& wells, std::string& error) {
    const int n = wells.Size();
    if (n < 1) return true;
    try {
        const std::vector<int>& all = wells.AllIndices();
        apilog::Call(Log, "get_injector_phases(int*, int, phase_t*)");
        apilog::Array(Log, "int", all.data(), n);
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "phase_t", n);
        std::vector<tNavigator_API_RMA_phase_t> phases(static_cast<std::size_t>(n), TNAV_PHASE_WATER);
        const Error result = Requester->get_injector_phases(all.data(), n, phases.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well inj phases: <%s>", result, error);
        for (int k = 0; k < n; ++k) wells[k].injectionPhase = phases[static_cast<std::size_t>(k)];
    } catch (...) {
        return Thrown("An exception was thrown when reading well inj phases", error);
    }
    return true;
}

bool WellRequester::ReadEfficiencies(const std::vector<int>& wells, std::vector<double>& factors,
                                     std::string& error) {
    const int n = CountOf(wells);
    factors.assign(wells.size(), 1.0);
    if (n < 1) return true;
    try {
        apilog::Call(Log, "get_well_efficiency_factors(int*, int, double*)");
        apilog::Array(Log, "int", wells);
        apilog::Count(Log, n);
        apilog::OutputSize(Log, "double", n);
        const Error result = Requester->get_well_efficiency_factors(wells.data(), n, factors.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading well efficiencies: <%s>", result, error);
    } catch (...) {
        return Thrown("An exception was thrown when reading well efficiencies", error);
    }
    return true;
}

bool WellRequester::ReadParams(const std::vector<int>& wells,
                               const tNavigator_API_RMA_well_parameter_t* params, int paramCount,
                               double* values, std::string& error) {
    const int n = CountOf(wells);
    if (n < 1) return true;
    try {
        apilog::Call(Log, "get_well_params(int*, int, well_parameter_t*, int, double*)");
        apilog::Array(Log, "int", wells);
        apilog::Count(Log, n);
        apilog::Array(Log, "well_parameter_t", params, paramCount);
        apilog::Count(Log, paramCount);
        apilog::OutputSize(Log, "double", n * paramCount);
        const Error result = Requester->get_well_params(wells.data(), n, params, paramCount, values, nullptr);
        if (result.id() != 0)
            return Fail("Error when reading a subset of the well parameters: <%s>", result, error);
    } catch (...) {
        return Thrown("An exception was thrown when reading a subset of the well parameters", error);
    }
    return true;
}

bool WellRequester::ReadComponentParams(int waterCount, int hcCount, WellList& wells, std::string& error) {
    if (waterCount < 0 || hcCount < 0) return false;
    const int components = waterCount + hcCount;
    const int n = wells.Size();
    if (hcCount < 1) {
        // Only hydrocarbon components have parameters worth reading.
        for (int k = 0; k < n; ++k) {
            wells[k].composition.SetWaterCount(waterCount);
            wells[k].composition.SetHcCount(hcCount);
        }
        return true;
    }
    if (n < 1) return true;
    std::vector<tNavigator_API_RMA_component_well_parameter_t> params;
    std::vector<int> indices;
    for (int p = 0; p < 4; ++p) {
        for (int c = 0; c < components; ++c) {
            params.push_back(static_cast<tNavigator_API_RMA_component_well_parameter_t>(p));
            indices.push_back(c);
        }
    }
    const int pairs = static_cast<int>(params.size());
    std::vector<double> values(static_cast<std::size_t>(pairs) * static_cast<std::size_t>(n), 0.0);
    try {
        const std::vector<int>& all = wells.AllIndices();
        apilog::Call(Log,
                     "get_component_well_params(int*, int, component_well_param_t*, int*, int, double*)");
        apilog::Array(Log, "int", all.data(), n);
        apilog::Count(Log, n);
        apilog::Array(Log, "component_well_param_t", params);
        apilog::Array(Log, "int", indices);
        apilog::Count(Log, pairs);
        apilog::OutputSize(Log, "double", pairs * n);
        const Error result = Requester->get_component_well_params(
            all.data(), n, params.data(), indices.data(), pairs, values.data(), nullptr);
        if (result.id() != 0) return Fail("Error when reading component rates: <%s>", result, error);
    } catch (...) {
        return Thrown("An exception was thrown when reading component rates", error);
    }
    for (int k = 0; k < n; ++k) {
        WellComposition& composition = wells[k].composition;
        composition.SetWaterCount(waterCount);
        composition.SetHcCount(hcCount);
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(k) * pairs;
        std::copy(first, first + pairs, composition.componentParams.begin());
        composition.RecomputeFractions();
    }
    return true;
}

}  // namespace rivulet
