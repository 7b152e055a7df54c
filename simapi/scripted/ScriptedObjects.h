// The scripted manager, job and requesters; each answers from Script().
#pragma once

#include "ScriptedApi.h"

namespace tnavscripted {

class ScriptedStaticRequester : public tNavigator_API_RMA_static_data_requester_t {
  public:
    using request = tNavigator_API_RMA_request_t;
    tNavigator_API_RMA_error_t get_math_model_type(tNavigator_API_RMA_math_model_type_t* type,
                                                   request*) override;
    tNavigator_API_RMA_error_t unit_system(tNavigator_API_RMA_unit_system_t* units, request*) override;
    tNavigator_API_RMA_error_t get_number_of_pvt_regions(int* count, request*) override;
    tNavigator_API_RMA_error_t black_oil__get_sc_densities(double* densities, request*) override;
    tNavigator_API_RMA_error_t compos__is_miscible_option_enabled(int* enabled, request*) override;
    tNavigator_API_RMA_error_t compos__get_number_of_eos_regions(int* count, request*) override;
    tNavigator_API_RMA_error_t isotherm_compos__get_eos_types(tNavigator_API_RMA_eos_type_t* types,
                                                              request*) override;
    tNavigator_API_RMA_error_t compos__get_number_of_hydrocarbon_components(int* count, request*) override;
    tNavigator_API_RMA_error_t compos__get_number_of_water_components(int* count, request*) override;
    tNavigator_API_RMA_error_t compos__get_hc_component_names(tNavigator_API_RMA_string* names,
                                                              request*) override;
    tNavigator_API_RMA_error_t compos__get_component_properties(
        const tNavigator_API_RMA_component_property_t* properties, int count, double* values,
        request*) override;
    tNavigator_API_RMA_error_t isotherm_compos__get_component_binary_interaction_coefficients(
        double* coefficients, request*) override;
    tNavigator_API_RMA_error_t compos__get_water_component_names(tNavigator_API_RMA_string* names,
                                                                 request*) override;
    tNavigator_API_RMA_error_t compos__get_water_sc_densities(double* densities, request*) override;
};

class ScriptedWellRequester : public tNavigator_API_RMA_well_data_requester_t {
  public:
    using request = tNavigator_API_RMA_request_t;
    using status_t = tNavigator_API_RMA_well_status_t;
    using phase_t = tNavigator_API_RMA_phase_t;
    tNavigator_API_RMA_error_t get_well_count(int* count, request*) override;
    tNavigator_API_RMA_error_t get_well_names(tNavigator_API_RMA_string* names, request*) override;
    tNavigator_API_RMA_error_t get_well_first_active_statuses(const int* wells, int n, status_t* statuses,
                                                              request*) override;
    tNavigator_API_RMA_error_t get_well_eos_regions(const int* wells, int n, int* regions, request*) override;
    tNavigator_API_RMA_error_t get_well_pvt_regions(const int* wells, int n, int* regions, request*) override;
    tNavigator_API_RMA_error_t get_well_statuses(const int* wells, int n, status_t* statuses,
                                                 request*) override;
    tNavigator_API_RMA_error_t get_injector_phases(const int* wells, int n, phase_t* phases,
                                                   request*) override;
    tNavigator_API_RMA_error_t get_well_efficiency_factors(const int* wells, int n, double* factors,
                                                           request*) override;
    tNavigator_API_RMA_error_t get_well_params(const int* wells, int n,
                                               const tNavigator_API_RMA_well_parameter_t* params,
                                               int paramCount, double* values, request*) override;
    tNavigator_API_RMA_error_t get_component_well_params(
        const int* wells, int n, const tNavigator_API_RMA_component_well_parameter_t* params,
        const int* components, int pairCount, double* values, request*) override;
    tNavigator_API_RMA_error_t get_max_rates(const int* wells, int n, const phase_t* phases, double* rates,
                                             request*) override;
    tNavigator_API_RMA_error_t get_specific_rate_bhp_ipr(const int* wells, int n, const phase_t* phases,
                                                         const double* rates, double* bhps,
                                                         request*) override;
    tNavigator_API_RMA_error_t get_sc_densities_of_max_rates(const int* wells, int n, const phase_t* phases,
                                                             double* densities, request*) override;
    tNavigator_API_RMA_error_t get_composition_of_max_rates(const int* wells, int n, const phase_t* phases,
                                                            double* fractions, request*) override;
    tNavigator_API_RMA_error_t set_number_of_ipr_points(int count, request*) override;
    tNavigator_API_RMA_error_t set_inj_phases_for_ipr_shut_wells(const int* wells, int n,
                                                                 const phase_t* phases, request*) override;
    tNavigator_API_RMA_error_t set_new_well_statuses(const int* wells, int n, const status_t* statuses,
                                                     request*) override;
    tNavigator_API_RMA_error_t set_well_efficiency_factors(const int* wells, int n, const double* factors,
                                                           request*) override;
    tNavigator_API_RMA_error_t disable_all_limits(const int* wells, int n, request*) override;
    tNavigator_API_RMA_error_t enable_producer_limits(const int* wells, int n,
                                                      const tNavigator_API_RMA_prod_limit_t* limits,
                                                      int limitCount, const double* values,
                                                      request*) override;
    tNavigator_API_RMA_error_t set_producer_targets(const int* wells, int n,
                                                    const tNavigator_API_RMA_prod_limit_t* targets,
                                                    request*) override;
    tNavigator_API_RMA_error_t set_injector_phases(const int* wells, int n, const phase_t* phases,
                                                   request*) override;
    tNavigator_API_RMA_error_t enable_injector_limits(const int* wells, int n,
                                                      const tNavigator_API_RMA_inj_limit_t* limits,
                                                      int limitCount, const double* values,
                                                      request*) override;
    tNavigator_API_RMA_error_t set_injector_targets(const int* wells, int n,
                                                    const tNavigator_API_RMA_inj_limit_t* targets,
                                                    request*) override;
    tNavigator_API_RMA_error_t set_injector_thermal_parameters(
        const int* wells, int n, const tNavigator_API_RMA_therm_inj_param_t* params, int paramCount,
        const double* values, request*) override;
    tNavigator_API_RMA_error_t set_injected_gas_composition(const int* wells, int n, const double* fractions,
                                                            request*) override;
    tNavigator_API_RMA_error_t check_new_controls(request*) override;
};

class ScriptedJob : public tNavigator_API_RMA_job_t {
  public:
    tNavigator_API_RMA_error_t wait_for_start() override;
    tNavigator_API_RMA_error_t wait_for_state(tNavigator_API_RMA_job_state_t state) override;
    tNavigator_API_RMA_error_t state(tNavigator_API_RMA_job_state_t* state,
                                     tNavigator_API_RMA_request_t* request) override;
    int is_job_started() override;
    int is_job_ended() override;
    tNavigator_API_RMA_error_t check_compatibility() override;
    tNavigator_API_RMA_error_t get_tnav_version(tNavigator_API_RMA_string* version,
                                                tNavigator_API_RMA_request_t* request) override;
    tNavigator_API_RMA_error_t get_time_moment(tNavigator_API_RMA_time_moment_request_type_t type,
                                               tNavigator_API_RMA_time_moment_t* moment,
                                               tNavigator_API_RMA_request_t* request) override;
    tNavigator_API_RMA_error_t run(const tNavigator_API_RMA_time_moment_t& moment,
                                   tNavigator_API_RMA_request_t* request) override;
    tNavigator_API_RMA_error_t stop(tNavigator_API_RMA_request_t* request) override;
    tNavigator_API_RMA_static_data_requester_t* get_static_data_requester() override;
    tNavigator_API_RMA_well_data_requester_t* get_well_data_requester() override;

  private:
    ScriptedStaticRequester static_;
    ScriptedWellRequester wells_;
};

class ScriptedManager : public tNavigator_API_RMA_manager_t {
  public:
    tNavigator_API_RMA_error_t create_local_dispatcher__force_ports(const char* executable,
                                                                    const char* debug_file,
                                                                    int port) override;
    tNavigator_API_RMA_error_t connect_to_dispatcher(
        const tNavigator_API_RMA_connection_options_t& options) override;
    int is_connected() const override;
    void disconnect() override;
    tNavigator_API_RMA_error_t launch_job(const tNavigator_API_RMA_start_params_t& params, int* job_id,
                                          tNavigator_API_RMA_request_t* request) override;
    tNavigator_API_RMA_error_t get_job_by_id(int job_id, tNavigator_API_RMA_job_t*& job) override;
};

}  // namespace tnavscripted
