// The scripted requesters: reads answer from the script's model, writes change it or are only recorded.
#include <sstream>
#include <string>

#include "ScriptedObjects.h"

namespace tnavscripted {

namespace {

using error_t = tNavigator_API_RMA_error_t;

template <class T>
std::string Join(const T* values, int n) {
    std::ostringstream out;
    for (int k = 0; values != nullptr && k < n; ++k) out << (k > 0 ? "," : "") << values[k];
    return out.str();
}

// Checks the indices and hands each addressed well to `apply` with its position.
template <class F>
error_t EachWell(const std::string& name, const int* wells, int n, const std::string& values, F apply) {
    error_t error = Script().Enter(name, Join(wells, n) + (values.empty() ? "" : "|" + values));
    if (error.id() != 0) return error;
    std::lock_guard lock(Script().mutex);
    std::vector<Well>& model = Script().state.wells;
    if (n < 0 || (n > 0 && wells == nullptr)) return {2, name + ": no well array"};
    for (int k = 0; k < n; ++k) {
        if (wells[k] < 0 || wells[k] >= static_cast<int>(model.size())) {
            return {2, name + ": well index " + std::to_string(wells[k]) + " out of range"};
        }
    }
    for (int k = 0; k < n; ++k) apply(model[static_cast<std::size_t>(wells[k])], k);
    return {};
}

double Param(const Well& well, int parameter) {
    auto it = well.params.find(parameter);
    return it != well.params.end() ? it->second : 0.0;
}

double MaxRate(const Well& well, int phase) {
    auto it = well.maxRates.find(phase);
    return it != well.maxRates.end() ? it->second : 0.0;
}

}  // namespace

// --- Static data ---

error_t ScriptedStaticRequester::get_math_model_type(tNavigator_API_RMA_math_model_type_t* type, request*) {
    error_t error = Script().Enter("get_math_model_type");
    if (error.id() == 0 && type != nullptr) *type = Script().state.mathModel;
    return error;
}

error_t ScriptedStaticRequester::unit_system(tNavigator_API_RMA_unit_system_t* units, request*) {
    error_t error = Script().Enter("unit_system");
    if (error.id() == 0 && units != nullptr) *units = Script().state.units;
    return error;
}

error_t ScriptedStaticRequester::get_number_of_pvt_regions(int* count, request*) {
    error_t error = Script().Enter("get_number_of_pvt_regions");
    if (error.id() == 0 && count != nullptr) *count = static_cast<int>(Script().state.scDensities.size() / 3);
    return error;
}

error_t ScriptedStaticRequester::black_oil__get_sc_densities(double* densities, request*) {
    error_t error = Script().Enter("black_oil__get_sc_densities");
    if (error.id() == 0 && densities != nullptr) {
        for (double value : Script().state.scDensities) *densities++ = value;
    }
    return error;
}

// The compositional reads answer from the script's compositional model; every output array is filled to
// the size that the counts the script gives call for.
error_t ScriptedStaticRequester::compos__is_miscible_option_enabled(int* enabled, request*) {
    error_t error = Script().Enter("compos__is_miscible_option_enabled");
    if (error.id() == 0 && enabled != nullptr) *enabled = Script().state.miscible ? 1 : 0;
    return error;
}

error_t ScriptedStaticRequester::compos__get_number_of_eos_regions(int* count, request*) {
    error_t error = Script().Enter("compos__get_number_of_eos_regions");
    if (error.id() == 0 && count != nullptr) *count = Script().state.eosRegionCount;
    return error;
}

error_t ScriptedStaticRequester::isotherm_compos__get_eos_types(tNavigator_API_RMA_eos_type_t* types,
                                                                request*) {
    error_t error = Script().Enter("isotherm_compos__get_eos_types");
    if (error.id() != 0 || types == nullptr) return error;
    std::lock_guard lock(Script().mutex);
    const State& state = Script().state;
    for (int r = 0; r < state.eosRegionCount; ++r) {
        types[r] = r < static_cast<int>(state.eosTypes.size()) ? state.eosTypes[static_cast<std::size_t>(r)]
                                                               : TNAV_EOS_PR;
    }
    return error;
}

error_t ScriptedStaticRequester::compos__get_number_of_hydrocarbon_components(int* count, request*) {
    error_t error = Script().Enter("compos__get_number_of_hydrocarbon_components");
    if (error.id() == 0 && count != nullptr) *count = static_cast<int>(Script().state.hcNames.size());
    return error;
}

error_t ScriptedStaticRequester::compos__get_number_of_water_components(int* count, request*) {
    error_t error = Script().Enter("compos__get_number_of_water_components");
    if (error.id() == 0 && count != nullptr) *count = static_cast<int>(Script().state.waterNames.size());
    return error;
}

error_t ScriptedStaticRequester::compos__get_hc_component_names(tNavigator_API_RMA_string* names, request*) {
    error_t error = Script().Enter("compos__get_hc_component_names");
    if (error.id() == 0 && names != nullptr) {
        for (const std::string& name : Script().state.hcNames) *names++ = name.c_str();
    }
    return error;
}

error_t ScriptedStaticRequester::compos__get_component_properties(
    const tNavigator_API_RMA_component_property_t* properties, int count, double* values, request*) {
    error_t error = Script().Enter("compos__get_component_properties", Join(properties, count));
    if (error.id() != 0 || values == nullptr || properties == nullptr) return error;
    std::lock_guard lock(Script().mutex);
    const State& state = Script().state;
    const int hc = static_cast<int>(state.hcNames.size());
    for (int r = 0; r < state.eosRegionCount; ++r) {
        for (int p = 0; p < count; ++p) {
            auto it = state.componentProperties.find(properties[p]);
            for (int c = 0; c < hc; ++c) {
                const auto at = static_cast<std::size_t>(r * hc + c);
                const bool known = it != state.componentProperties.end() && at < it->second.size();
                values[hc * count * r + hc * p + c] = known ? it->second[at] : 0.0;
            }
        }
    }
    return error;
}

error_t ScriptedStaticRequester::isotherm_compos__get_component_binary_interaction_coefficients(
    double* coefficients, request*) {
    error_t error = Script().Enter("isotherm_compos__get_component_binary_interaction_coefficients");
    if (error.id() != 0 || coefficients == nullptr) return error;
    std::lock_guard lock(Script().mutex);
    const State& state = Script().state;
    const std::size_t hc = state.hcNames.size();
    const std::size_t regions = state.eosRegionCount > 0 ? static_cast<std::size_t>(state.eosRegionCount) : 0;
    const std::size_t size = hc * hc * regions;
    for (std::size_t k = 0; k < size; ++k) {
        coefficients[k] = k < state.interactionCoefficients.size() ? state.interactionCoefficients[k] : 0.0;
    }
    return error;
}

error_t ScriptedStaticRequester::compos__get_water_component_names(tNavigator_API_RMA_string* names,
                                                                   request*) {
    error_t error = Script().Enter("compos__get_water_component_names");
    if (error.id() == 0 && names != nullptr) {
        for (const std::string& name : Script().state.waterNames) *names++ = name.c_str();
    }
    return error;
}

error_t ScriptedStaticRequester::compos__get_water_sc_densities(double* densities, request*) {
    error_t error = Script().Enter("compos__get_water_sc_densities");
    if (error.id() != 0 || densities == nullptr) return error;
    std::lock_guard lock(Script().mutex);
    const State& state = Script().state;
    const std::size_t regions = state.scDensities.size() / 3;
    for (std::size_t k = 0; k < regions; ++k) {
        densities[k] = k < state.waterScDensities.size() ? state.waterScDensities[k] : 0.0;
    }
    return error;
}

// --- Well reads ---

error_t ScriptedWellRequester::get_well_count(int* count, request*) {
    error_t error = Script().Enter("get_well_count");
    if (error.id() == 0 && count != nullptr) *count = static_cast<int>(Script().state.wells.size());
    return error;
}

error_t ScriptedWellRequester::get_well_names(tNavigator_API_RMA_string* names, request*) {
    error_t error = Script().Enter("get_well_names");
    if (error.id() == 0 && names != nullptr) {
        for (const Well& well : Script().state.wells) *names++ = well.name.c_str();
    }
    return error;
}

error_t ScriptedWellRequester::get_well_first_active_statuses(const int* wells, int n, status_t* out,
                                                              request*) {
    return EachWell("get_well_first_active_statuses", wells, n, "",
                    [&](Well& w, int k) { out[k] = w.firstActiveStatus; });
}

error_t ScriptedWellRequester::get_well_eos_regions(const int* wells, int n, int* out, request*) {
    return EachWell("get_well_eos_regions", wells, n, "", [&](Well& w, int k) { out[k] = w.eosRegion; });
}

error_t ScriptedWellRequester::get_well_pvt_regions(const int* wells, int n, int* out, request*) {
    return EachWell("get_well_pvt_regions", wells, n, "", [&](Well& w, int k) { out[k] = w.pvtRegion; });
}

error_t ScriptedWellRequester::get_well_statuses(const int* wells, int n, status_t* out, request*) {
    return EachWell("get_well_statuses", wells, n, "", [&](Well& w, int k) { out[k] = w.status; });
}

error_t ScriptedWellRequester::get_injector_phases(const int* wells, int n, phase_t* out, request*) {
    return EachWell("get_injector_phases", wells, n, "", [&](Well& w, int k) { out[k] = w.injectorPhase; });
}

error_t ScriptedWellRequester::get_well_efficiency_factors(const int* wells, int n, double* out, request*) {
    return EachWell("get_well_efficiency_factors", wells, n, "",
                    [&](Well& w, int k) { out[k] = w.efficiency; });
}

error_t ScriptedWellRequester::get_well_params(const int* wells, int n,
                                               const tNavigator_API_RMA_well_parameter_t* params, int count,
                                               double* out, request*) {
    return EachWell("get_well_params", wells, n, Join(params, count), [&](Well& w, int k) {
        for (int j = 0; j < count; ++j) out[k * count + j] = Param(w, params[j]);
    });
}

error_t ScriptedWellRequester::get_component_well_params(
    const int* wells, int n, const tNavigator_API_RMA_component_well_parameter_t* params,
    const int* components, int pairs, double* out, request*) {
    return EachWell("get_component_well_params", wells, n,
                    Join(params, pairs) + "|" + Join(components, pairs), [&](Well&, int k) {
                        for (int j = 0; j < pairs; ++j) out[k * pairs + j] = 0.0;
                    });
}

error_t ScriptedWellRequester::get_max_rates(const int* wells, int n, const phase_t* phases, double* out,
                                             request*) {
    return EachWell("get_max_rates", wells, n, Join(phases, n),
                    [&](Well& w, int k) { out[k] = MaxRate(w, phases[k]); });
}

error_t ScriptedWellRequester::get_specific_rate_bhp_ipr(const int* wells, int n, const phase_t* phases,
                                                         const double* rates, double* bhps, request*) {
    const int points = Script().state.iprPoints;
    return EachWell("get_specific_rate_bhp_ipr", wells, n, Join(phases, n), [&](Well& w, int k) {
        for (int j = 0; j < points; ++j)
            bhps[k * points + j] = w.maxBhp - w.bhpPerRate * rates[k * points + j];
    });
}

error_t ScriptedWellRequester::get_sc_densities_of_max_rates(const int* wells, int n, const phase_t* phases,
                                                             double* out, request*) {
    const std::vector<double> densities = Script().state.scDensities;
    return EachWell("get_sc_densities_of_max_rates", wells, n, Join(phases, n), [&](Well& w, int k) {
        const std::size_t at = static_cast<std::size_t>((w.pvtRegion - 1) * 3 + phases[k]);
        out[k] = at < densities.size() ? densities[at] : 0.0;
    });
}

error_t ScriptedWellRequester::get_composition_of_max_rates(const int* wells, int n, const phase_t* phases,
                                                            double* out, request*) {
    const std::size_t hc = Script().state.hcNames.size();
    return EachWell("get_composition_of_max_rates", wells, n, Join(phases, n), [&](Well& w, int k) {
        auto it = w.maxRateCompositions.find(phases[k]);
        if (it == w.maxRateCompositions.end() || out == nullptr) return;
        for (std::size_t c = 0; c < hc && c < it->second.size(); ++c)
            out[static_cast<std::size_t>(k) * hc + c] = it->second[c];
    });
}

// --- IPR settings and writes ---

error_t ScriptedWellRequester::set_number_of_ipr_points(int count, request*) {
    error_t error = Script().Enter("set_number_of_ipr_points", std::to_string(count));
    if (error.id() == 0) Script().state.iprPoints = count;
    return error;
}

error_t ScriptedWellRequester::set_inj_phases_for_ipr_shut_wells(const int* wells, int n,
                                                                 const phase_t* phases, request*) {
    return EachWell("set_inj_phases_for_ipr_shut_wells", wells, n, Join(phases, n), [](Well&, int) {});
}

error_t ScriptedWellRequester::set_new_well_statuses(const int* wells, int n, const status_t* statuses,
                                                     request*) {
    return EachWell("set_new_well_statuses", wells, n, Join(statuses, n),
                    [&](Well& w, int k) { w.status = statuses[k]; });
}

error_t ScriptedWellRequester::set_well_efficiency_factors(const int* wells, int n, const double* factors,
                                                           request*) {
    return EachWell("set_well_efficiency_factors", wells, n, Join(factors, n),
                    [&](Well& w, int k) { w.efficiency = factors[k]; });
}

error_t ScriptedWellRequester::disable_all_limits(const int* wells, int n, request*) {
    return EachWell("disable_all_limits", wells, n, "", [](Well&, int) {});
}

error_t ScriptedWellRequester::enable_producer_limits(const int* wells, int n,
                                                      const tNavigator_API_RMA_prod_limit_t* limits,
                                                      int count, const double* values, request*) {
    return EachWell("enable_producer_limits", wells, n, Join(limits, count) + "|" + Join(values, n * count),
                    [](Well&, int) {});
}

error_t ScriptedWellRequester::set_producer_targets(const int* wells, int n,
                                                    const tNavigator_API_RMA_prod_limit_t* targets,
                                                    request*) {
    return EachWell("set_producer_targets", wells, n, Join(targets, n), [](Well&, int) {});
}

error_t ScriptedWellRequester::set_injector_phases(const int* wells, int n, const phase_t* phases, request*) {
    return EachWell("set_injector_phases", wells, n, Join(phases, n),
                    [&](Well& w, int k) { w.injectorPhase = phases[k]; });
}

error_t ScriptedWellRequester::enable_injector_limits(const int* wells, int n,
                                                      const tNavigator_API_RMA_inj_limit_t* limits, int count,
                                                      const double* values, request*) {
    return EachWell("enable_injector_limits", wells, n, Join(limits, count) + "|" + Join(values, n * count),
                    [](Well&, int) {});
}

error_t ScriptedWellRequester::set_injector_targets(const int* wells, int n,
                                                    const tNavigator_API_RMA_inj_limit_t* targets, request*) {
    return EachWell("set_injector_targets", wells, n, Join(targets, n), [](Well&, int) {});
}

error_t ScriptedWellRequester::set_injector_thermal_parameters(
    const int* wells, int n, const tNavigator_API_RMA_therm_inj_param_t* params, int count,
    const double* values, request*) {
    return EachWell("set_injector_thermal_parameters", wells, n,
                    Join(params, count) + "|" + Join(values, n * count), [](Well&, int) {});
}

error_t ScriptedWellRequester::set_injected_gas_composition(const int* wells, int n, const double*,
                                                            request*) {
    return EachWell("set_injected_gas_composition", wells, n, "", [](Well&, int) {});
}

error_t ScriptedWellRequester::check_new_controls(request*) {
    return Script().Enter("check_new_controls");
}

}  // namespace tnavscripted
