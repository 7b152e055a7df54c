#include "client/Requesters.h"

#include <cstdint>
#include <string>
#include <utility>

namespace tnavclient {

namespace {

using Stub = tnavapi::TNavigatorDispatcher::Stub;
using Connection_ = std::shared_ptr<Connection>;

std::string str(const char* text) {
    return std::string(text);
}

Error negativeCount(const char* call, const char* name, long long count) {
    return invalidArgument(call, str(name) + " must not be negative (got " + std::to_string(count) + ")");
}

// Null is allowed for an input array only when it has no entries.
bool missing(const void* array, long long count) {
    return count > 0 && array == nullptr;
}

Error nullInput(const char* call, const char* name, long long count) {
    return invalidArgument(
        call, "the " + str(name) + " array is null but " + std::to_string(count) + " entries were given");
}

Error nullOutput(const char* call, const char* name) {
    return invalidArgument(call, "the " + str(name) + " output array is null");
}

template <class T>
void putInts(google::protobuf::RepeatedField<std::int32_t>* field, const T* values, long long count) {
    field->Reserve(static_cast<int>(count));
    for (long long i = 0; i < count; ++i) field->Add(static_cast<std::int32_t>(values[i]));
}

void putDoubles(google::protobuf::RepeatedField<double>* field, const double* values, long long count) {
    field->Reserve(static_cast<int>(count));
    for (long long i = 0; i < count; ++i) field->Add(values[i]);
}

// Copies a reply's array into the caller's; expected < 0 takes whatever size the dispatcher gave.
template <class Field, class T>
Error copyOut(const char* call, const Field& field, T* out, long long expected) {
    if (expected >= 0 && field.size() != expected)
        return makeError(kBadReply, str(call) + ": the dispatcher gave " + std::to_string(field.size()) +
                                        " values where " + std::to_string(expected) + " were expected");
    if (field.size() > 0 && out == nullptr) return nullOutput(call, "result");
    for (int i = 0; i < field.size(); ++i) out[i] = static_cast<T>(field.Get(i));
    return {};
}

Error copyNames(const char* call, const google::protobuf::RepeatedPtrField<std::string>& field,
                tNavigator_API_RMA_string* out) {
    if (field.size() > 0 && out == nullptr) return nullOutput(call, "names");
    for (int i = 0; i < field.size(); ++i) out[i] = field.Get(i).c_str();
    return {};
}

// A job call with no arguments that gives one int.
template <class T, class Method>
Error intRead(const Connection_& connection, int jobId, const char* call, Method method, T* out,
              Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    if (out == nullptr) return invalidArgument(call, "the output is null");
    tnavapi::JobRequest message;
    message.set_job_id(jobId);
    tnavapi::IntReply reply;
    Error error = invoke(connection, call, method, message, reply);
    if (error.id() == 0) *out = static_cast<T>(reply.value());
    return error;
}

// A job call with no arguments that gives an array of the dispatcher's size.
template <class Reply, class T, class Method>
Error arrayRead(const Connection_& connection, int jobId, const char* call, Method method, T* out,
                Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    tnavapi::JobRequest message;
    message.set_job_id(jobId);
    Reply reply;
    Error error = invoke(connection, call, method, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), out, -1);
}

template <class Method>
Error namesRead(const Connection_& connection, int jobId, const char* call, Method method,
                tNavigator_API_RMA_string* out, Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    tnavapi::JobRequest message;
    message.set_job_id(jobId);
    tnavapi::StringArrayReply reply;
    Error error = invoke(connection, call, method, message, reply);
    if (error.id() != 0) return error;
    return copyNames(call, reply.values(), out);
}

// A call on (wells, n) that gives perWell values per well.
template <class Reply, class T, class Method>
Error wellsRead(const Connection_& connection, int jobId, const char* call, Method method, const int* wells,
                int n, T* out, Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (n > 0 && out == nullptr) return nullOutput(call, "result");
    tnavapi::WellsRequest message;
    message.set_job_id(jobId);
    putInts(message.mutable_wells(), wells, n);
    Reply reply;
    Error error = invoke(connection, call, method, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), out, n);
}

// Fills a WellCodesRequest from (wells, n) and one code per well.
template <class Code>
Error codesMessage(const char* call, int jobId, const int* wells, int n, const Code* codes,
                   const char* codesName, tnavapi::WellCodesRequest& message) {
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(codes, n)) return nullInput(call, codesName, n);
    message.set_job_id(jobId);
    putInts(message.mutable_wells(), wells, n);
    putInts(message.mutable_codes(), codes, n);
    return {};
}

// A write of one code per well.
template <class Code, class Method>
Error codesWrite(const Connection_& connection, int jobId, const char* call, Method method, const int* wells,
                 int n, const Code* codes, const char* codesName, Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    tnavapi::WellCodesRequest message;
    if (Error error = codesMessage(call, jobId, wells, n, codes, codesName, message); error.id() != 0)
        return error;
    tnavapi::StatusReply reply;
    return invoke(connection, call, method, message, reply);
}

// A read of one double per (well, phase) entry.
template <class Code, class Method>
Error codesRead(const Connection_& connection, int jobId, const char* call, Method method, const int* wells,
                int n, const Code* codes, double* out, long long perEntry, Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    tnavapi::WellCodesRequest message;
    if (Error error = codesMessage(call, jobId, wells, n, codes, "phases", message); error.id() != 0)
        return error;
    if (n > 0 && perEntry > 0 && out == nullptr) return nullOutput(call, "result");
    tnavapi::DoubleArrayReply reply;
    Error error = invoke(connection, call, method, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), out, n * perEntry);
}

// A write of the same kinds for every well with kindCount values per well.
template <class Kind, class Method>
Error limitsWrite(const Connection_& connection, int jobId, const char* call, Method method, const int* wells,
                  int n, const Kind* kinds, int kindCount, const double* values, const char* kindsName,
                  Request* request) {
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (kindCount < 0) return negativeCount(call, "the count of kinds", kindCount);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(kinds, kindCount)) return nullInput(call, kindsName, kindCount);
    const long long valueCount = static_cast<long long>(n) * kindCount;
    if (missing(values, valueCount)) return nullInput(call, "values", valueCount);
    tnavapi::WellLimitsRequest message;
    message.set_job_id(jobId);
    putInts(message.mutable_wells(), wells, n);
    putInts(message.mutable_kinds(), kinds, kindCount);
    putDoubles(message.mutable_values(), values, valueCount);
    tnavapi::StatusReply reply;
    return invoke(connection, call, method, message, reply);
}

}  // namespace

// --- Static data requester ---

StaticDataRequester::StaticDataRequester(std::shared_ptr<Connection> connection, int jobId)
    : connection_(std::move(connection)), jobId_(jobId) {}

Error StaticDataRequester::get_math_model_type(tNavigator_API_RMA_math_model_type_t* type, Request* request) {
    return intRead(connection_, jobId_, "get_math_model_type", &Stub::GetMathModelType, type, request);
}

Error StaticDataRequester::unit_system(tNavigator_API_RMA_unit_system_t* units, Request* request) {
    return intRead(connection_, jobId_, "unit_system", &Stub::UnitSystem, units, request);
}

Error StaticDataRequester::get_number_of_pvt_regions(int* count, Request* request) {
    return intRead(connection_, jobId_, "get_number_of_pvt_regions", &Stub::GetNumberOfPvtRegions, count,
                   request);
}

Error StaticDataRequester::black_oil__get_sc_densities(double* densities, Request* request) {
    return arrayRead<tnavapi::DoubleArrayReply>(connection_, jobId_, "black_oil__get_sc_densities",
                                                &Stub::BlackOilGetScDensities, densities, request);
}

Error StaticDataRequester::compos__is_miscible_option_enabled(int* enabled, Request* request) {
    return intRead(connection_, jobId_, "compos__is_miscible_option_enabled",
                   &Stub::ComposIsMiscibleOptionEnabled, enabled, request);
}

Error StaticDataRequester::compos__get_number_of_eos_regions(int* count, Request* request) {
    return intRead(connection_, jobId_, "compos__get_number_of_eos_regions",
                   &Stub::ComposGetNumberOfEosRegions, count, request);
}

Error StaticDataRequester::isotherm_compos__get_eos_types(tNavigator_API_RMA_eos_type_t* types,
                                                          Request* request) {
    return arrayRead<tnavapi::IntArrayReply>(connection_, jobId_, "isotherm_compos__get_eos_types",
                                             &Stub::IsothermComposGetEosTypes, types, request);
}

Error StaticDataRequester::compos__get_number_of_hydrocarbon_components(int* count, Request* request) {
    return intRead(connection_, jobId_, "compos__get_number_of_hydrocarbon_components",
                   &Stub::ComposGetNumberOfHydrocarbonComponents, count, request);
}

Error StaticDataRequester::compos__get_number_of_water_components(int* count, Request* request) {
    return intRead(connection_, jobId_, "compos__get_number_of_water_components",
                   &Stub::ComposGetNumberOfWaterComponents, count, request);
}

Error StaticDataRequester::compos__get_hc_component_names(tNavigator_API_RMA_string* names,
                                                          Request* request) {
    return namesRead(connection_, jobId_, "compos__get_hc_component_names", &Stub::ComposGetHcComponentNames,
                     names, request);
}

Error StaticDataRequester::compos__get_component_properties(
    const tNavigator_API_RMA_component_property_t* properties, int count, double* values, Request* request) {
    const char* call = "compos__get_component_properties";
    if (request != nullptr) return asyncUnsupported(call);
    if (count < 0) return negativeCount(call, "count", count);
    if (missing(properties, count)) return nullInput(call, "properties", count);
    tnavapi::ComponentPropertiesRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_properties(), properties, count);
    tnavapi::DoubleArrayReply reply;
    Error error = invoke(connection_, call, &Stub::ComposGetComponentProperties, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), values, -1);
}

Error StaticDataRequester::isotherm_compos__get_component_binary_interaction_coefficients(
    double* coefficients, Request* request) {
    return arrayRead<tnavapi::DoubleArrayReply>(
        connection_, jobId_, "isotherm_compos__get_component_binary_interaction_coefficients",
        &Stub::IsothermComposGetComponentBinaryInteractionCoefficients, coefficients, request);
}

Error StaticDataRequester::compos__get_water_component_names(tNavigator_API_RMA_string* names,
                                                             Request* request) {
    return namesRead(connection_, jobId_, "compos__get_water_component_names",
                     &Stub::ComposGetWaterComponentNames, names, request);
}

Error StaticDataRequester::compos__get_water_sc_densities(double* densities, Request* request) {
    return arrayRead<tnavapi::DoubleArrayReply>(connection_, jobId_, "compos__get_water_sc_densities",
                                                &Stub::ComposGetWaterScDensities, densities, request);
}

// --- Well data requester: reads ---

WellDataRequester::WellDataRequester(std::shared_ptr<Connection> connection, int jobId)
    : connection_(std::move(connection)), jobId_(jobId) {}

Error WellDataRequester::hydrocarbonCount(const char* call, int* count) {
    Error error = intRead(connection_, jobId_, "compos__get_number_of_hydrocarbon_components",
                          &Stub::ComposGetNumberOfHydrocarbonComponents, count, nullptr);
    if (error.id() != 0)
        return makeError(error.id(), str(call) + ": the number of hydrocarbon components cannot be read: " +
                                         error.description());
    if (*count < 0)
        return makeError(kBadReply,
                         str(call) + ": the dispatcher gave a negative number of hydrocarbon components");
    return {};
}

Error WellDataRequester::get_well_count(int* count, Request* request) {
    return intRead(connection_, jobId_, "get_well_count", &Stub::GetWellCount, count, request);
}

Error WellDataRequester::get_well_names(tNavigator_API_RMA_string* names, Request* request) {
    return namesRead(connection_, jobId_, "get_well_names", &Stub::GetWellNames, names, request);
}

Error WellDataRequester::get_well_first_active_statuses(const int* wells, int n,
                                                        tNavigator_API_RMA_well_status_t* statuses,
                                                        Request* request) {
    return wellsRead<tnavapi::IntArrayReply>(connection_, jobId_, "get_well_first_active_statuses",
                                             &Stub::GetWellFirstActiveStatuses, wells, n, statuses, request);
}

Error WellDataRequester::get_well_eos_regions(const int* wells, int n, int* regions, Request* request) {
    return wellsRead<tnavapi::IntArrayReply>(connection_, jobId_, "get_well_eos_regions",
                                             &Stub::GetWellEosRegions, wells, n, regions, request);
}

Error WellDataRequester::get_well_pvt_regions(const int* wells, int n, int* regions, Request* request) {
    return wellsRead<tnavapi::IntArrayReply>(connection_, jobId_, "get_well_pvt_regions",
                                             &Stub::GetWellPvtRegions, wells, n, regions, request);
}

Error WellDataRequester::get_well_statuses(const int* wells, int n,
                                           tNavigator_API_RMA_well_status_t* statuses, Request* request) {
    return wellsRead<tnavapi::IntArrayReply>(connection_, jobId_, "get_well_statuses", &Stub::GetWellStatuses,
                                             wells, n, statuses, request);
}

Error WellDataRequester::get_injector_phases(const int* wells, int n, tNavigator_API_RMA_phase_t* phases,
                                             Request* request) {
    return wellsRead<tnavapi::IntArrayReply>(connection_, jobId_, "get_injector_phases",
                                             &Stub::GetInjectorPhases, wells, n, phases, request);
}

Error WellDataRequester::get_well_efficiency_factors(const int* wells, int n, double* factors,
                                                     Request* request) {
    return wellsRead<tnavapi::DoubleArrayReply>(connection_, jobId_, "get_well_efficiency_factors",
                                                &Stub::GetWellEfficiencyFactors, wells, n, factors, request);
}

Error WellDataRequester::get_well_params(const int* wells, int n,
                                         const tNavigator_API_RMA_well_parameter_t* params, int paramCount,
                                         double* values, Request* request) {
    const char* call = "get_well_params";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (paramCount < 0) return negativeCount(call, "paramCount", paramCount);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(params, paramCount)) return nullInput(call, "params", paramCount);
    const long long expected = static_cast<long long>(n) * paramCount;
    if (expected > 0 && values == nullptr) return nullOutput(call, "values");
    tnavapi::WellParamsRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    putInts(message.mutable_params(), params, paramCount);
    tnavapi::DoubleArrayReply reply;
    Error error = invoke(connection_, call, &Stub::GetWellParams, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), values, expected);
}

Error WellDataRequester::get_component_well_params(
    const int* wells, int n, const tNavigator_API_RMA_component_well_parameter_t* params,
    const int* components, int pairCount, double* values, Request* request) {
    const char* call = "get_component_well_params";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (pairCount < 0) return negativeCount(call, "pairCount", pairCount);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(params, pairCount)) return nullInput(call, "params", pairCount);
    if (missing(components, pairCount)) return nullInput(call, "components", pairCount);
    const long long expected = static_cast<long long>(n) * pairCount;
    if (expected > 0 && values == nullptr) return nullOutput(call, "values");
    tnavapi::ComponentWellParamsRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    putInts(message.mutable_params(), params, pairCount);
    putInts(message.mutable_components(), components, pairCount);
    tnavapi::DoubleArrayReply reply;
    Error error = invoke(connection_, call, &Stub::GetComponentWellParams, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), values, expected);
}

Error WellDataRequester::get_max_rates(const int* wells, int n,
                                       const tNavigator_API_RMA_ipr_rate_phase_t* phases, double* rates,
                                       Request* request) {
    return codesRead(connection_, jobId_, "get_max_rates", &Stub::GetMaxRates, wells, n, phases, rates, 1,
                     request);
}

Error WellDataRequester::get_specific_rate_bhp_ipr(const int* wells, int n,
                                                   const tNavigator_API_RMA_ipr_rate_phase_t* phases,
                                                   const double* rates, double* bhps, Request* request) {
    const char* call = "get_specific_rate_bhp_ipr";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(phases, n)) return nullInput(call, "phases", n);
    if (iprPoints_ < 0)
        return makeError(kInvalidArgument, str(call) +
                                               ": the number of IPR points is not known; call "
                                               "set_number_of_ipr_points first");
    const long long points = static_cast<long long>(n) * iprPoints_;
    if (missing(rates, points)) return nullInput(call, "rates", points);
    if (points > 0 && bhps == nullptr) return nullOutput(call, "bhps");
    tnavapi::SpecificRateBhpIprRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    putInts(message.mutable_phases(), phases, n);
    putDoubles(message.mutable_rates(), rates, points);
    tnavapi::DoubleArrayReply reply;
    Error error = invoke(connection_, call, &Stub::GetSpecificRateBhpIpr, message, reply);
    if (error.id() != 0) return error;
    return copyOut(call, reply.values(), bhps, points);
}

Error WellDataRequester::get_sc_densities_of_max_rates(const int* wells, int n,
                                                       const tNavigator_API_RMA_phase_t* phases,
                                                       double* densities, Request* request) {
    return codesRead(connection_, jobId_, "get_sc_densities_of_max_rates", &Stub::GetScDensitiesOfMaxRates,
                     wells, n, phases, densities, 1, request);
}

Error WellDataRequester::get_composition_of_max_rates(const int* wells, int n,
                                                      const tNavigator_API_RMA_ipr_rate_phase_t* phases,
                                                      double* fractions, Request* request) {
    const char* call = "get_composition_of_max_rates";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    int hc = 0;
    if (Error error = hydrocarbonCount(call, &hc); error.id() != 0) return error;
    return codesRead(connection_, jobId_, call, &Stub::GetCompositionOfMaxRates, wells, n, phases, fractions,
                     hc, request);
}

// --- Well data requester: IPR settings ---

Error WellDataRequester::set_number_of_ipr_points(int count, Request* request) {
    const char* call = "set_number_of_ipr_points";
    if (request != nullptr) return asyncUnsupported(call);
    if (count < 0) return negativeCount(call, "count", count);
    tnavapi::IprPointsRequest message;
    message.set_job_id(jobId_);
    message.set_count(count);
    tnavapi::StatusReply reply;
    Error error = invoke(connection_, call, &Stub::SetNumberOfIprPoints, message, reply);
    if (error.id() == 0) iprPoints_ = count;
    return error;
}

Error WellDataRequester::set_inj_phases_for_ipr_shut_wells(const int* wells, int n,
                                                           const tNavigator_API_RMA_inj_phase_t* phases,
                                                           Request* request) {
    return codesWrite(connection_, jobId_, "set_inj_phases_for_ipr_shut_wells",
                      &Stub::SetInjPhasesForIprShutWells, wells, n, phases, "phases", request);
}

// --- Well data requester: writes ---

Error WellDataRequester::set_new_well_statuses(const int* wells, int n,
                                               const tNavigator_API_RMA_well_status_t* statuses,
                                               Request* request) {
    return codesWrite(connection_, jobId_, "set_new_well_statuses", &Stub::SetNewWellStatuses, wells, n,
                      statuses, "statuses", request);
}

Error WellDataRequester::set_well_efficiency_factors(const int* wells, int n, const double* factors,
                                                     Request* request) {
    const char* call = "set_well_efficiency_factors";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    if (missing(factors, n)) return nullInput(call, "factors", n);
    tnavapi::WellValuesRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    putDoubles(message.mutable_values(), factors, n);
    tnavapi::StatusReply reply;
    return invoke(connection_, call, &Stub::SetWellEfficiencyFactors, message, reply);
}

Error WellDataRequester::disable_all_limits(const int* wells, int n, Request* request) {
    const char* call = "disable_all_limits";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    tnavapi::WellsRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    tnavapi::StatusReply reply;
    return invoke(connection_, call, &Stub::DisableAllLimits, message, reply);
}

Error WellDataRequester::enable_producer_limits(const int* wells, int n,
                                                const tNavigator_API_RMA_prod_limit_t* limits, int limitCount,
                                                const double* values, Request* request) {
    return limitsWrite(connection_, jobId_, "enable_producer_limits", &Stub::EnableProducerLimits, wells, n,
                       limits, limitCount, values, "limits", request);
}

Error WellDataRequester::set_producer_targets(const int* wells, int n,
                                              const tNavigator_API_RMA_prod_limit_t* targets,
                                              Request* request) {
    return codesWrite(connection_, jobId_, "set_producer_targets", &Stub::SetProducerTargets, wells, n,
                      targets, "targets", request);
}

Error WellDataRequester::set_injector_phases(const int* wells, int n,
                                             const tNavigator_API_RMA_inj_phase_t* phases, Request* request) {
    return codesWrite(connection_, jobId_, "set_injector_phases", &Stub::SetInjectorPhases, wells, n, phases,
                      "phases", request);
}

Error WellDataRequester::enable_injector_limits(const int* wells, int n,
                                                const tNavigator_API_RMA_inj_limit_t* limits, int limitCount,
                                                const double* values, Request* request) {
    return limitsWrite(connection_, jobId_, "enable_injector_limits", &Stub::EnableInjectorLimits, wells, n,
                       limits, limitCount, values, "limits", request);
}

Error WellDataRequester::set_injector_targets(const int* wells, int n,
                                              const tNavigator_API_RMA_inj_limit_t* targets,
                                              Request* request) {
    return codesWrite(connection_, jobId_, "set_injector_targets", &Stub::SetInjectorTargets, wells, n,
                      targets, "targets", request);
}

Error WellDataRequester::set_injector_thermal_parameters(const int* wells, int n,
                                                         const tNavigator_API_RMA_therm_inj_param_t* params,
                                                         int paramCount, const double* values,
                                                         Request* request) {
    return limitsWrite(connection_, jobId_, "set_injector_thermal_parameters",
                       &Stub::SetInjectorThermalParameters, wells, n, params, paramCount, values, "params",
                       request);
}

Error WellDataRequester::set_injected_gas_composition(const int* wells, int n, const double* fractions,
                                                      Request* request) {
    const char* call = "set_injected_gas_composition";
    if (request != nullptr) return asyncUnsupported(call);
    if (n < 0) return negativeCount(call, "n", n);
    if (missing(wells, n)) return nullInput(call, "wells", n);
    int hc = 0;
    if (Error error = hydrocarbonCount(call, &hc); error.id() != 0) return error;
    const long long count = static_cast<long long>(n) * hc;
    if (missing(fractions, count)) return nullInput(call, "fractions", count);
    tnavapi::WellValuesRequest message;
    message.set_job_id(jobId_);
    putInts(message.mutable_wells(), wells, n);
    putDoubles(message.mutable_values(), fractions, count);
    tnavapi::StatusReply reply;
    return invoke(connection_, call, &Stub::SetInjectedGasComposition, message, reply);
}

Error WellDataRequester::check_new_controls(Request* request) {
    const char* call = "check_new_controls";
    if (request != nullptr) return asyncUnsupported(call);
    tnavapi::JobRequest message;
    message.set_job_id(jobId_);
    tnavapi::StatusReply reply;
    return invoke(connection_, call, &Stub::CheckNewControls, message, reply);
}

}  // namespace tnavclient
