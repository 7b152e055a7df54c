// Client API of the tNavigator remote-access library (tNavigator_API_RMA).
//
// Conventions of every operation below:
//  - Nearly every operation returns a tNavigator_API_RMA_error_t by value; id() 0 is success, any other
//    value a failure whose description() is text for the user. Outputs of a failed call are unspecified.
//  - The last argument of most job and requester operations is a tNavigator_API_RMA_request_t*. Null (the
//    default) makes the call synchronous: it returns when its result is there.
//  - Well operations address wells by their zero-based index; (wells, n) is an array of n indices, and every
//    per-entry array runs in step with it. Output arrays are allocated by the caller at the size the
//    operation states. Values are in the model's own unit system (see unit_system()).
//  - Managers, jobs and requesters are interfaces: the remote client library and in-process
//    implementations both provide them. Managers and jobs are freed with tnav_free_manager and
//    tnav_free_job; requester pointers stay owned by their job.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#if defined(_WIN32)
#define TNAVIGATOR_API_RMA_EXPORT
#else
#define TNAVIGATOR_API_RMA_EXPORT __attribute__((visibility("default")))
#endif

// ---------------------------------------------------------------------------------------------------------
// Enumerations. Values are fixed; an enumeration may be given a value it does not name.
// ---------------------------------------------------------------------------------------------------------

// State of a job. Only an opening or paused job can be told to run.
enum tNavigator_API_RMA_job_state_t : int {
    TNAV_JOB_STATE_OPENING = 0,   // the case is being loaded
    TNAV_JOB_STATE_PAUSED = 1,    // stands at a date, waiting for run()
    TNAV_JOB_STATE_RUNNING = 2,   // between run() and the next stop
    TNAV_JOB_STATE_FINISHED = 3,  // reached the end of its schedule or was stopped
    TNAV_JOB_STATE_FAILED = 4,    // ended on an error
};

enum tNavigator_API_RMA_month_t : int {
    TNAV_JANUARY = 1,
    TNAV_FEBRUARY = 2,
    TNAV_MARCH = 3,
    TNAV_APRIL = 4,
    TNAV_MAY = 5,
    TNAV_JUNE = 6,
    TNAV_JULY = 7,
    TNAV_AUGUST = 8,
    TNAV_SEPTEMBER = 9,
    TNAV_OCTOBER = 10,
    TNAV_NOVEMBER = 11,
    TNAV_DECEMBER = 12,
};

// Which date get_time_moment gives.
enum tNavigator_API_RMA_time_moment_request_type_t : int {
    TNAV_TIME_MOMENT_MODEL_START = 0,    // start date of the model
    TNAV_TIME_MOMENT_MODEL_END = 1,      // end date of the deck's schedule
    TNAV_TIME_MOMENT_CURRENT = 2,        // current date of the job
    TNAV_TIME_MOMENT_NEXT_SCHEDULE = 3,  // next date at which the schedule stops; invalid once it is done
};

enum tNavigator_API_RMA_unit_system_t : int {
    TNAV_UNIT_SYSTEM_SI = 0,
    TNAV_UNIT_SYSTEM_METRIC = 1,
    TNAV_UNIT_SYSTEM_FIELD = 2,
    TNAV_UNIT_SYSTEM_LAB = 3,
};

enum tNavigator_API_RMA_math_model_type_t : int {
    TNAV_MATH_MODEL_ISOTHERMAL_BLACK_OIL = 0,
    TNAV_MATH_MODEL_THERMAL_BLACK_OIL = 1,
    TNAV_MATH_MODEL_COMPOSITIONAL = 2,
    TNAV_MATH_MODEL_THERMAL_COMPOSITIONAL = 3,
};

// Equation of state of an EOS region.
enum tNavigator_API_RMA_eos_type_t : int {
    TNAV_EOS_PR = 0,   // Peng-Robinson
    TNAV_EOS_RK = 1,   // Redlich-Kwong
    TNAV_EOS_SRK = 2,  // Soave-Redlich-Kwong
    TNAV_EOS_ZJ = 3,   // Zudkevitch-Joffe
};

// Hydrocarbon component property.
enum tNavigator_API_RMA_component_property_t : int {
    TNAV_COMPONENT_CRITICAL_TEMPERATURE = 0,
    TNAV_COMPONENT_CRITICAL_PRESSURE = 1,
    TNAV_COMPONENT_MOLECULAR_WEIGHT = 2,
    TNAV_COMPONENT_ACENTRIC_FACTOR = 3,
    TNAV_COMPONENT_OMEGA_A = 4,
    TNAV_COMPONENT_OMEGA_B = 5,
    TNAV_COMPONENT_CRITICAL_VOLUME = 6,
    TNAV_COMPONENT_CRITICAL_VOLUME_FOR_VISCOSITY = 7,
    TNAV_COMPONENT_SHIFT = 8,
    TNAV_COMPONENT_PARACHOR = 9,
};

enum tNavigator_API_RMA_well_status_t : int {
    TNAV_WELL_STATUS_NONE = 0,
    TNAV_WELL_STATUS_OPEN_PRODUCER = 1,
    TNAV_WELL_STATUS_OPEN_INJECTOR = 2,
    TNAV_WELL_STATUS_SHUT = 3,
    TNAV_WELL_STATUS_STOP = 4,
    TNAV_WELL_STATUS_UNKNOWN = 5,
};

enum tNavigator_API_RMA_phase_t : int {
    TNAV_PHASE_WATER = 0,
    TNAV_PHASE_OIL = 1,
    TNAV_PHASE_GAS = 2,
};
// The phase of an IPR question and the injected phase are phases as above.
using tNavigator_API_RMA_ipr_rate_phase_t = tNavigator_API_RMA_phase_t;
using tNavigator_API_RMA_inj_phase_t = tNavigator_API_RMA_phase_t;

// Well quantities read by get_well_params. Rates are surface rates unless "RC" (reservoir conditions);
// "ACCUM" values are cumulatives; densities are at surface conditions.
enum tNavigator_API_RMA_well_parameter_t : int {
    TNAV_WELL_WATER_RATE = 0,
    TNAV_WELL_OIL_RATE = 1,
    TNAV_WELL_RC_LIQUID_RATE = 2,
    TNAV_WELL_GAS_RATE = 3,
    TNAV_WELL_WATER_INJ = 4,
    TNAV_WELL_OIL_INJ = 5,
    TNAV_WELL_RC_LIQUID_INJ = 6,
    TNAV_WELL_GAS_INJ = 7,
    TNAV_WELL_ACCUM_WATER_RATE = 8,
    TNAV_WELL_ACCUM_OIL_RATE = 9,
    TNAV_WELL_ACCUM_RC_LIQUID_RATE = 10,
    TNAV_WELL_ACCUM_GAS_RATE = 11,
    TNAV_WELL_ACCUM_WATER_INJ = 12,
    TNAV_WELL_ACCUM_OIL_INJ = 13,
    TNAV_WELL_ACCUM_RC_LIQUID_INJ = 14,
    TNAV_WELL_ACCUM_GAS_INJ = 15,
    TNAV_WELL_BHP = 16,
    TNAV_WELL_THP = 17,
    TNAV_WELL_TEMPERATURE = 18,
    TNAV_WELL_WATER_DENSITY = 19,
    TNAV_WELL_OIL_DENSITY = 20,
    TNAV_WELL_GAS_DENSITY = 21,
};

// Per-component well quantities read by get_component_well_params.
enum tNavigator_API_RMA_component_well_parameter_t : int {
    TNAV_COMPONENT_WELL_LIQUID_MOLAR_RATE = 0,
    TNAV_COMPONENT_WELL_GAS_MOLAR_RATE = 1,
    TNAV_COMPONENT_WELL_ACCUM_LIQUID_MOLES = 2,
    TNAV_COMPONENT_WELL_ACCUM_GAS_MOLES = 3,
};

// Producer limits; a limit named as target is the one the well is controlled by.
enum tNavigator_API_RMA_prod_limit_t : int {
    TNAV_PROD_LIMIT_GAS_RATE = 0,
    TNAV_PROD_LIMIT_OIL_RATE = 1,
    TNAV_PROD_LIMIT_WATER_RATE = 2,
    TNAV_PROD_LIMIT_LIQUID_RATE = 3,
    TNAV_PROD_LIMIT_BHP = 5,
    TNAV_PROD_LIMIT_THP = 6,
};

// Injector limits; the rate is a surface rate of the well's injected phase.
enum tNavigator_API_RMA_inj_limit_t : int {
    TNAV_INJ_LIMIT_RATE = 0,
    TNAV_INJ_LIMIT_BHP = 2,
    TNAV_INJ_LIMIT_THP = 3,
};

// Thermal parameters of injected fluid.
enum tNavigator_API_RMA_therm_inj_param_t : int {
    TNAV_THERM_INJ_STEAM_QUALITY = 0,
    TNAV_THERM_INJ_TEMPERATURE = 1,
    TNAV_THERM_INJ_PRESSURE = 2,
    TNAV_THERM_INJ_ENTHALPY = 3,
};

// ---------------------------------------------------------------------------------------------------------
// Value classes
// ---------------------------------------------------------------------------------------------------------

// Asynchronous request handle. Callers that want synchronous calls pass null.
class tNavigator_API_RMA_request_t;

// Result of an operation: id 0 is success; otherwise description() tells what failed.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_error_t {
  public:
    tNavigator_API_RMA_error_t() = default;  // success
    tNavigator_API_RMA_error_t(int id, const char* description);
    tNavigator_API_RMA_error_t(int id, std::string description);

    int id() const { return id_; }
    // Valid while this object lives unchanged; never null.
    const char* description() const { return description_.c_str(); }

  private:
    int id_ = 0;
    std::string description_;
};

// An owned NUL-terminated text. Its one member is the pointer to the characters, null for no text.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_string {
  public:
    tNavigator_API_RMA_string() = default;
    tNavigator_API_RMA_string(const char* text);  // copies text; null gives no text
    tNavigator_API_RMA_string(const tNavigator_API_RMA_string& other);
    tNavigator_API_RMA_string(tNavigator_API_RMA_string&& other) noexcept;
    tNavigator_API_RMA_string& operator=(const tNavigator_API_RMA_string& other);
    tNavigator_API_RMA_string& operator=(tNavigator_API_RMA_string&& other) noexcept;
    tNavigator_API_RMA_string& operator=(const char* text);
    ~tNavigator_API_RMA_string();

    // The text, or "" when there is none.
    const char* c_str() const { return str != nullptr ? str : ""; }

    char* str = nullptr;
};
static_assert(sizeof(tNavigator_API_RMA_string) == sizeof(char*));

// A calendar date and time of day. Fields are stored as given; is_valid() tells whether they form a
// real moment.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_time_moment_t {
  public:
    // Year 0, month 13, day 0: a moment not yet filled in, which is_valid() rejects.
    tNavigator_API_RMA_time_moment_t();
    tNavigator_API_RMA_time_moment_t(int year, tNavigator_API_RMA_month_t month, int day);

    void set_year(int year) { year_ = year; }
    void set_month(tNavigator_API_RMA_month_t month) { month_ = month; }
    void set_day(int day) { day_ = day; }
    void set_hour(int hour) { hour_ = hour; }
    void set_minute(int minute) { minute_ = minute; }
    void set_second(int second) { second_ = second; }

    int get_year() const { return year_; }
    tNavigator_API_RMA_month_t get_month() const { return month_; }
    int get_day() const { return day_; }
    int get_hour() const { return hour_; }
    int get_minute() const { return minute_; }
    int get_second() const { return second_; }

    // id 0 for a date of the Gregorian calendar in years 1 to 9999 with a time of day from 00:00:00 to
    // 23:59:59; otherwise an error that names the bad field.
    tNavigator_API_RMA_error_t is_valid() const;

  private:
    int year_;
    tNavigator_API_RMA_month_t month_;
    int day_;
    int hour_ = 0;
    int minute_ = 0;
    int second_ = 0;
};

// How to reach a dispatcher that runs on a cluster head node.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_connection_options_t {
  public:
    tNavigator_API_RMA_connection_options_t() = default;

    void set_port(int port) { port_ = port; }
    // Host name or address of the head node; null is taken as empty.
    void set_remote_ip(const char* remote_ip);
    // The password as encrypt_password gave it; null is taken as empty.
    void set_user_name_and_crypted_password(const char* user_name, const char* crypted_password);

    int get_port() const { return port_; }
    const std::string& get_remote_ip() const { return remote_ip_; }
    const std::string& get_user_name() const { return user_name_; }
    const std::string& get_crypted_password() const { return crypted_password_; }

  private:
    int port_ = 0;
    std::string remote_ip_;
    std::string user_name_;
    std::string crypted_password_;
};

// What launch_job starts: the case file, as the machine that runs the job sees it, and its options.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_start_params_t {
  public:
    explicit tNavigator_API_RMA_start_params_t(const char* case_file);

    void set_cluster_queue(const char* queue);
    void set_node_count(int node_count) { node_count_ = node_count; }
    // Appends count command-line words for the simulator; they are copied, so need not outlive the call.
    void add_additional_params(const char* const* params, std::size_t count);

    const std::string& get_case_file() const { return case_file_; }
    const std::string& get_cluster_queue() const { return cluster_queue_; }
    int get_node_count() const { return node_count_; }  // 0 when not set
    const std::vector<std::string>& get_additional_params() const { return additional_params_; }

  private:
    std::string case_file_;
    std::string cluster_queue_;
    int node_count_ = 0;
    std::vector<std::string> additional_params_;
};

// ---------------------------------------------------------------------------------------------------------
// Interfaces
// ---------------------------------------------------------------------------------------------------------

class tNavigator_API_RMA_job_t;

// Fluid and model description of a job's case. Counts are read first; the arrays that follow are sized
// by them.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_static_data_requester_t {
  public:
    virtual ~tNavigator_API_RMA_static_data_requester_t() = default;

    // The model's mathematical model.
    virtual tNavigator_API_RMA_error_t get_math_model_type(
        tNavigator_API_RMA_math_model_type_t* type, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The unit system of all values of this job.
    virtual tNavigator_API_RMA_error_t unit_system(tNavigator_API_RMA_unit_system_t* units,
                                                   tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Number of PVT regions of the model.
    virtual tNavigator_API_RMA_error_t get_number_of_pvt_regions(
        int* count, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Black-oil models: surface densities, three per PVT region (water, oil, gas).
    virtual tNavigator_API_RMA_error_t black_oil__get_sc_densities(
        double* densities, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Compositional models: non-zero when the miscible option is on.
    virtual tNavigator_API_RMA_error_t compos__is_miscible_option_enabled(
        int* enabled, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Compositional models: number of EOS regions.
    virtual tNavigator_API_RMA_error_t compos__get_number_of_eos_regions(
        int* count, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One equation of state per EOS region.
    virtual tNavigator_API_RMA_error_t isotherm_compos__get_eos_types(
        tNavigator_API_RMA_eos_type_t* types, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Compositional models: number of hydrocarbon components.
    virtual tNavigator_API_RMA_error_t compos__get_number_of_hydrocarbon_components(
        int* count, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Compositional models: number of water components.
    virtual tNavigator_API_RMA_error_t compos__get_number_of_water_components(
        int* count, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One name per hydrocarbon component.
    virtual tNavigator_API_RMA_error_t compos__get_hc_component_names(
        tNavigator_API_RMA_string* names, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // For each EOS region r (0-based), each listed property p and component c: values at
    // hc * count * r + hc * p + c, where hc is the hydrocarbon component count.
    virtual tNavigator_API_RMA_error_t compos__get_component_properties(
        const tNavigator_API_RMA_component_property_t* properties, int count, double* values,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One hc x hc square per EOS region.
    virtual tNavigator_API_RMA_error_t isotherm_compos__get_component_binary_interaction_coefficients(
        double* coefficients, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One name per water component.
    virtual tNavigator_API_RMA_error_t compos__get_water_component_names(
        tNavigator_API_RMA_string* names, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Compositional models: water surface density, one per PVT region.
    virtual tNavigator_API_RMA_error_t compos__get_water_sc_densities(
        double* densities, tNavigator_API_RMA_request_t* request = nullptr) = 0;
};

// Batched reads and writes of a job's wells. Writes of statuses, phases, efficiencies, limits and targets
// take effect at check_new_controls().
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_well_data_requester_t {
  public:
    virtual ~tNavigator_API_RMA_well_data_requester_t() = default;

    // --- Reads ---

    // Number of wells of the model; wells are indexed 0 to count - 1.
    virtual tNavigator_API_RMA_error_t get_well_count(int* count,
                                                      tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One name per well, all wells in index order.
    virtual tNavigator_API_RMA_error_t get_well_names(tNavigator_API_RMA_string* names,
                                                      tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The status each well had when it was first opened (open producer or open injector), else none.
    virtual tNavigator_API_RMA_error_t get_well_first_active_statuses(
        const int* wells, int n, tNavigator_API_RMA_well_status_t* statuses,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // EOS region of each well, 1-based.
    virtual tNavigator_API_RMA_error_t get_well_eos_regions(
        const int* wells, int n, int* regions, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // PVT region of each well, 1-based.
    virtual tNavigator_API_RMA_error_t get_well_pvt_regions(
        const int* wells, int n, int* regions, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Current status of each well.
    virtual tNavigator_API_RMA_error_t get_well_statuses(const int* wells, int n,
                                                         tNavigator_API_RMA_well_status_t* statuses,
                                                         tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The phase each well injects or would inject.
    virtual tNavigator_API_RMA_error_t get_injector_phases(
        const int* wells, int n, tNavigator_API_RMA_phase_t* phases,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Efficiency factor of each well, 1 for a well that is on all the time.
    virtual tNavigator_API_RMA_error_t get_well_efficiency_factors(
        const int* wells, int n, double* factors, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // paramCount values per well, row by well: values[k * paramCount + j] is params[j] of wells[k].
    virtual tNavigator_API_RMA_error_t get_well_params(const int* wells, int n,
                                                       const tNavigator_API_RMA_well_parameter_t* params,
                                                       int paramCount, double* values,
                                                       tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // pairCount (parameter, component) pairs; pairCount values per well, row by well. Components count
    // water components first, then hydrocarbon components.
    virtual tNavigator_API_RMA_error_t get_component_well_params(
        const int* wells, int n, const tNavigator_API_RMA_component_well_parameter_t* params,
        const int* components, int pairCount, double* values,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Surface rate of each (well, phase) entry at the well's lowest allowed BHP; a well may stand several
    // times.
    virtual tNavigator_API_RMA_error_t get_max_rates(const int* wells, int n,
                                                     const tNavigator_API_RMA_ipr_rate_phase_t* phases,
                                                     double* rates,
                                                     tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // BHP at which each (well, phase) entry flows each of its rates: rates and bhps hold, per entry, as many
    // points as set_number_of_ipr_points last set.
    virtual tNavigator_API_RMA_error_t get_specific_rate_bhp_ipr(
        const int* wells, int n, const tNavigator_API_RMA_ipr_rate_phase_t* phases, const double* rates,
        double* bhps, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Surface density of the phase of each (well, phase) entry when flowing at its maximum rate.
    virtual tNavigator_API_RMA_error_t get_sc_densities_of_max_rates(
        const int* wells, int n, const tNavigator_API_RMA_phase_t* phases, double* densities,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Hydrocarbon mole fractions of each (well, phase) entry at its maximum rate: one run of hc count
    // values per entry.
    virtual tNavigator_API_RMA_error_t get_composition_of_max_rates(
        const int* wells, int n, const tNavigator_API_RMA_ipr_rate_phase_t* phases, double* fractions,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;

    // --- IPR settings ---

    // Points per entry of the next get_specific_rate_bhp_ipr.
    virtual tNavigator_API_RMA_error_t set_number_of_ipr_points(
        int count, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The phase a well without injection flow is taken to inject when its IPR is asked for.
    virtual tNavigator_API_RMA_error_t set_inj_phases_for_ipr_shut_wells(
        const int* wells, int n, const tNavigator_API_RMA_inj_phase_t* phases,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;

    // --- Writes ---

    // New status of each well.
    virtual tNavigator_API_RMA_error_t set_new_well_statuses(
        const int* wells, int n, const tNavigator_API_RMA_well_status_t* statuses,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // New efficiency factor of each well.
    virtual tNavigator_API_RMA_error_t set_well_efficiency_factors(
        const int* wells, int n, const double* factors, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Removes every limit of each well.
    virtual tNavigator_API_RMA_error_t disable_all_limits(
        const int* wells, int n, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The same limitCount limits for every well, with limitCount values per well, in well order.
    virtual tNavigator_API_RMA_error_t enable_producer_limits(
        const int* wells, int n, const tNavigator_API_RMA_prod_limit_t* limits, int limitCount,
        const double* values, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // One enabled limit per well that becomes its target.
    virtual tNavigator_API_RMA_error_t set_producer_targets(
        const int* wells, int n, const tNavigator_API_RMA_prod_limit_t* targets,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The phase each injector injects.
    virtual tNavigator_API_RMA_error_t set_injector_phases(
        const int* wells, int n, const tNavigator_API_RMA_inj_phase_t* phases,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // As enable_producer_limits, with injector limits.
    virtual tNavigator_API_RMA_error_t enable_injector_limits(
        const int* wells, int n, const tNavigator_API_RMA_inj_limit_t* limits, int limitCount,
        const double* values, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // As set_producer_targets, with injector limits.
    virtual tNavigator_API_RMA_error_t set_injector_targets(
        const int* wells, int n, const tNavigator_API_RMA_inj_limit_t* targets,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // The same paramCount parameters for every well, paramCount values per well, in well order.
    virtual tNavigator_API_RMA_error_t set_injector_thermal_parameters(
        const int* wells, int n, const tNavigator_API_RMA_therm_inj_param_t* params, int paramCount,
        const double* values, tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Hydrocarbon mole fractions of the injected gas, one run of hc count values per well.
    virtual tNavigator_API_RMA_error_t set_injected_gas_composition(
        const int* wells, int n, const double* fractions,
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Applies the writes made since the last call.
    virtual tNavigator_API_RMA_error_t check_new_controls(
        tNavigator_API_RMA_request_t* request = nullptr) = 0;
};

// One simulation run. Free with tNavigator_API_RMA::tnav_free_job.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_job_t {
  public:
    virtual ~tNavigator_API_RMA_job_t() = default;

    // Returns when the job has begun.
    virtual tNavigator_API_RMA_error_t wait_for_start() = 0;
    // Blocks until the job is in that state; fails when it can no longer get there.
    virtual tNavigator_API_RMA_error_t wait_for_state(tNavigator_API_RMA_job_state_t state) = 0;
    // Current state of the job.
    virtual tNavigator_API_RMA_error_t state(tNavigator_API_RMA_job_state_t* state,
                                             tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // 1 once the job has begun, else 0.
    virtual int is_job_started() = 0;
    // 1 once the job has ended, else 0.
    virtual int is_job_ended() = 0;
    // Fails when this client library and the simulator cannot work together.
    virtual tNavigator_API_RMA_error_t check_compatibility() = 0;
    // Simulator version text, such as "v4.2.4".
    virtual tNavigator_API_RMA_error_t get_tnav_version(tNavigator_API_RMA_string* version,
                                                        tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Fills the moment; a filled moment may fail is_valid() (no next schedule date once it is done).
    virtual tNavigator_API_RMA_error_t get_time_moment(tNavigator_API_RMA_time_moment_request_type_t type,
                                                       tNavigator_API_RMA_time_moment_t* moment,
                                                       tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Lets an opening or paused job run up to that moment; wait_for_state(paused) then waits for it.
    virtual tNavigator_API_RMA_error_t run(const tNavigator_API_RMA_time_moment_t& moment,
                                           tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Ends the job; harmless on a job that has ended.
    virtual tNavigator_API_RMA_error_t stop(tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // Null on failure; the requesters stay owned by the job.
    virtual tNavigator_API_RMA_static_data_requester_t* get_static_data_requester() = 0;
    virtual tNavigator_API_RMA_well_data_requester_t* get_well_data_requester() = 0;
};

// A connection to one dispatcher. Free with tNavigator_API_RMA::tnav_free_manager, after disconnect().
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA_manager_t {
  public:
    virtual ~tNavigator_API_RMA_manager_t() = default;

    // Starts a dispatcher of that simulator executable on this machine on exactly that port and connects
    // to it. With a debug file (null for none) the library logs its side of every call there.
    virtual tNavigator_API_RMA_error_t create_local_dispatcher__force_ports(const char* executable,
                                                                            const char* debug_file,
                                                                            int port) = 0;
    // Connects to a running dispatcher, such as one on a cluster head node.
    virtual tNavigator_API_RMA_error_t connect_to_dispatcher(
        const tNavigator_API_RMA_connection_options_t& options) = 0;
    // Non-zero while the dispatcher can be reached.
    virtual int is_connected() const = 0;
    // Ends the connection; a local dispatcher then ends too.
    virtual void disconnect() = 0;
    // Starts a job and gives its id.
    virtual tNavigator_API_RMA_error_t launch_job(const tNavigator_API_RMA_start_params_t& params,
                                                  int* job_id,
                                                  tNavigator_API_RMA_request_t* request = nullptr) = 0;
    // A new job object for that id, owned by the caller.
    virtual tNavigator_API_RMA_error_t get_job_by_id(int job_id, tNavigator_API_RMA_job_t*& job) = 0;
};

// Library-wide operations. Provided by the implementation the program links with.
class TNAVIGATOR_API_RMA_EXPORT tNavigator_API_RMA {
  public:
    tNavigator_API_RMA() = delete;

    // Sets the library up; called before each tnav_create_manager, may be called repeatedly.
    static void init();
    // Fills manager with a new, unconnected manager (null on failure).
    static tNavigator_API_RMA_error_t tnav_create_manager(tNavigator_API_RMA_manager_t** manager);
    // Frees a manager that tnav_create_manager gave; null is ignored.
    static void tnav_free_manager(tNavigator_API_RMA_manager_t* manager);
    // Frees a job that get_job_by_id gave; null is ignored.
    static void tnav_free_job(tNavigator_API_RMA_job_t* job);
    // The crypted form of a plain-text password, as set_user_name_and_crypted_password takes it.
    static tNavigator_API_RMA_error_t encrypt_password(const tNavigator_API_RMA_string& password,
                                                       tNavigator_API_RMA_string& crypted);
};
