// The static data and well data requesters of a client job: one RPC per call, arrays copied whole.
#pragma once

#include <memory>

#include "client/Connection.h"
#include "tNavigator_API_RMA.h"

namespace tnavclient {

using Request = tNavigator_API_RMA_request_t;
using Error = tNavigator_API_RMA_error_t;

class StaticDataRequester final : public tNavigator_API_RMA_static_data_requester_t {
  public:
    StaticDataRequester(std::shared_ptr<Connection> connection, int jobId);

    Error get_math_model_type(tNavigator_API_RMA_math_model_type_t* type,
                              Request* request = nullptr) override;
    Error unit_system(tNavigator_API_RMA_unit_system_t* units, Request* request = nullptr) override;
    Error get_number_of_pvt_regions(int* count, Request* request = nullptr) override;
    Error black_oil__get_sc_densities(double* densities, Request* request = nullptr) override;
    Error compos__is_miscible_option_enabled(int* enabled, Request* request = nullptr) override;
    Error compos__get_number_of_eos_regions(int* count, Request* request = nullptr) override;
    Error isotherm_compos__get_eos_types(tNavigator_API_RMA_eos_type_t* types,
                                         Request* request = nullptr) override;
    Error compos__get_number_of_hydrocarbon_components(int* count, Request* request = nullptr) override;
    Error compos__get_number_of_water_components(int* count, Request* request = nullptr) override;
    Error compos__get_hc_component_names(tNavigator_API_RMA_string* names,
                                         Request* request = nullptr) override;
    Error compos__get_component_properties(const tNavigator_API_RMA_component_property_t* properties,
                                           int count, double* values, Request* request = nullptr) override;
    Error isotherm_compos__get_component_binary_interaction_coefficients(double* coefficients,
                                                                         Request* request = nullptr) override;
    Error compos__get_water_component_names(tNavigator_API_RMA_string* names,
                                            Request* request = nullptr) override;
    Error compos__get_water_sc_densities(double* densities, Request* request = nullptr) override;

  private:
    std::shared_ptr<Connection> connection_;
    int jobId_;
};

class WellDataRequester final : public tNavigator_API_RMA_well_data_requester_t {
  public:
    WellDataRequester(std::shared_ptr<Connection> connection, int jobId);

    Error get_well_count(int* count, Request* request = nullptr) override;
    Error get_well_names(tNavigator_API_RMA_string* names, Request* request = nullptr) override;
    Error get_well_first_active_statuses(const int* wells, int n, tNavigator_API_RMA_well_status_t* statuses,
                                         Request* request = nullptr) override;
    Error get_well_eos_regions(const int* wells, int n, int* regions, Request* request = nullptr) override;
    Error get_well_pvt_regions(const int* wells, int n, int* regions, Request* request = nullptr) override;
    Error get_well_statuses(const int* wells, int n, tNavigator_API_RMA_well_status_t* statuses,
                            Request* request = nullptr) override;
    Error get_injector_phases(const int* wells, int n, tNavigator_API_RMA_phase_t* phases,
                              Request* request = nullptr) override;
    Error get_well_efficiency_factors(const int* wells, int n, double* factors,
                                      Request* request = nullptr) override;
    Error get_well_params(const int* wells, int n, const tNavigator_API_RMA_well_parameter_t* params,
                          int paramCount, double* values, Request* request = nullptr) override;
    Error get_component_well_params(const int* wells, int n,
                                    const tNavigator_API_RMA_component_well_parameter_t* params,
                                    const int* components, int pairCount, double* values,
                                    Request* request = nullptr) override;
    Error get_max_rates(const int* wells, int n, const tNavigator_API_RMA_ipr_rate_phase_t* phases,
                        double* rates, Request* request = nullptr) override;
    Error get_specific_rate_bhp_ipr(const int* wells, int n,
                                    const tNavigator_API_RMA_ipr_rate_phase_t* phases, const double* rates,
                                    double* bhps, Request* request = nullptr) override;
    Error get_sc_densities_of_max_rates(const int* wells, int n, const tNavigator_API_RMA_phase_t* phases,
                                        double* densities, Request* request = nullptr) override;
    Error get_composition_of_max_rates(const int* wells, int n,
                                       const tNavigator_API_RMA_ipr_rate_phase_t* phases, double* fractions,
                                       Request* request = nullptr) override;
    Error set_number_of_ipr_points(int count, Request* request = nullptr) override;
    Error set_inj_phases_for_ipr_shut_wells(const int* wells, int n,
                                            const tNavigator_API_RMA_inj_phase_t* phases,
                                            Request* request = nullptr) override;
    Error set_new_well_statuses(const int* wells, int n, const tNavigator_API_RMA_well_status_t* statuses,
                                Request* request = nullptr) override;
    Error set_well_efficiency_factors(const int* wells, int n, const double* factors,
                                      Request* request = nullptr) override;
    Error disable_all_limits(const int* wells, int n, Request* request = nullptr) override;
    Error enable_producer_limits(const int* wells, int n, const tNavigator_API_RMA_prod_limit_t* limits,
                                 int limitCount, const double* values, Request* request = nullptr) override;
    Error set_producer_targets(const int* wells, int n, const tNavigator_API_RMA_prod_limit_t* targets,
                               Request* request = nullptr) override;
    Error set_injector_phases(const int* wells, int n, const tNavigator_API_RMA_inj_phase_t* phases,
                              Request* request = nullptr) override;
    Error enable_injector_limits(const int* wells, int n, const tNavigator_API_RMA_inj_limit_t* limits,
                                 int limitCount, const double* values, Request* request = nullptr) override;
    Error set_injector_targets(const int* wells, int n, const tNavigator_API_RMA_inj_limit_t* targets,
                               Request* request = nullptr) override;
    Error set_injector_thermal_parameters(const int* wells, int n,
                                          const tNavigator_API_RMA_therm_inj_param_t* params, int paramCount,
                                          const double* values, Request* request = nullptr) override;
    Error set_injected_gas_composition(const int* wells, int n, const double* fractions,
                                       Request* request = nullptr) override;
    Error check_new_controls(Request* request = nullptr) override;

  private:
    // The number of hydrocarbon components, asked of the dispatcher.
    Error hydrocarbonCount(const char* call, int* count);

    std::shared_ptr<Connection> connection_;
    int jobId_;
    int iprPoints_ = -1;  // as the last successful set_number_of_ipr_points set it; -1 before
};

}  // namespace tnavclient
