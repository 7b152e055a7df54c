// An in-process implementation of the simulator client API whose answers a test sets up call by call.
//
// Every operation of every object records itself in the script (its name and its arguments as text), then
// fails if the script says so, and otherwise answers from the script's job and model. A program links this
// library instead of libtnavapi.so; there is one script per process, reached through Script().
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "tNavigator_API_RMA.h"

namespace tnavscripted {

// One call that reached the library: its name and its arguments written out, separated by "|".
struct Call {
    std::string name;
    std::string args;
};

// A calendar moment as the scripted job keeps it.
struct Moment {
    int year = 0;
    int month = 13;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;

    static Moment From(const tNavigator_API_RMA_time_moment_t& moment);
    tNavigator_API_RMA_time_moment_t ToApi() const;
    bool operator<(const Moment& other) const;
    bool operator==(const Moment& other) const;
};

// A well of the scripted model; every read answers from these fields.
struct Well {
    std::string name;
    tNavigator_API_RMA_well_status_t status = TNAV_WELL_STATUS_OPEN_PRODUCER;
    tNavigator_API_RMA_well_status_t firstActiveStatus = TNAV_WELL_STATUS_OPEN_PRODUCER;
    tNavigator_API_RMA_phase_t injectorPhase = TNAV_PHASE_WATER;
    int pvtRegion = 1;
    int eosRegion = 1;
    double efficiency = 1.0;
    std::map<int, double> params;    // by tNavigator_API_RMA_well_parameter_t; others read 0
    std::map<int, double> maxRates;  // by phase
    double bhpPerRate = 0.01;        // the IPR answer: bhp = maxBhp - bhpPerRate * rate
    double maxBhp = 300.0;
    // By phase: the hydrocarbon fractions that get_composition_of_max_rates answers, one run of the model's
    // hydrocarbon count per asked phase; a phase not given leaves its run as the caller had it.
    std::map<int, std::vector<double>> maxRateCompositions;
};

// Everything the scripted library answers with. Tests change it freely between calls.
struct State {
    // Library
    bool createManagerFails = false;
    // Manager
    bool connected = false;
    bool connectionLost = false;  // is_connected answers 0 while this is set
    int nextJobId = 7;
    // Job
    bool jobStarted = false;
    bool jobEnded = false;
    tNavigator_API_RMA_job_state_t jobState = TNAV_JOB_STATE_OPENING;
    std::string version = "v23.4";
    Moment start{2015, 1, 1};
    Moment end{2016, 1, 1};
    Moment current{2015, 1, 1};
    Moment nextSchedule{2015, 2, 1};
    bool nextScheduleValid = true;
    // How run() moves the clock: it stops at the first of `stops` after the current date (the deck's own
    // report dates), at the target, or at the end, where the job ends. A stuck job stays where it is; an
    // overshoot passes the target by that many minutes.
    std::vector<Moment> stops;
    bool stuck = false;
    int overshootMinutes = 0;
    std::string throwIn;  // the next call of this name throws, as a misbehaving library might
    bool nullStaticRequester = false;
    bool nullWellRequester = false;
    // Model
    tNavigator_API_RMA_math_model_type_t mathModel = TNAV_MATH_MODEL_ISOTHERMAL_BLACK_OIL;
    tNavigator_API_RMA_unit_system_t units = TNAV_UNIT_SYSTEM_METRIC;
    std::vector<double> scDensities{1000.0, 800.0, 0.9};  // water, oil, gas per PVT region
    // Compositional model; by default it has no regions and no components. The PVT region count stays that
    // of scDensities.
    bool miscible = false;
    int eosRegionCount = 0;
    std::vector<tNavigator_API_RMA_eos_type_t> eosTypes;  // one per EOS region; a missing one reads as PR
    std::vector<std::string> hcNames;
    std::vector<std::string> waterNames;
    // By property: for each EOS region in turn, one value per hydrocarbon component; missing values read 0.
    std::map<int, std::vector<double>> componentProperties;
    std::vector<double> interactionCoefficients;  // hc by hc per EOS region; missing values read 0
    std::vector<double> waterScDensities;         // one per PVT region; missing values read 0
    std::vector<Well> wells;
    int iprPoints = 0;
};

class ScriptedLibrary {
  public:
    // Back to a fresh state: no calls, no failures, default answers.
    void Reset();

    // The n-th call (1-based, counted from now) of `name` fails with that id and text; `times` calls in a
    // row from there, or every later one with times < 0.
    void Fail(const std::string& name, int id = 1, const std::string& description = "scripted failure",
              int nth = 1, int times = 1);

    std::vector<Call> Calls() const;
    std::vector<std::string> CallNames() const;
    int Count(const std::string& name) const;
    // The arguments of the last call of that name; empty when there was none.
    std::string LastArgs(const std::string& name) const;
    void ClearCalls();

    // Used by the scripted objects: records the call and gives the scripted error, if any.
    tNavigator_API_RMA_error_t Enter(const std::string& name, const std::string& args = std::string());

    State state;
    mutable std::recursive_mutex mutex;  // held by every operation while it reads or writes the state

  private:
    struct Failure {
        int skip;
        int times;
        int id;
        std::string description;
    };
    std::vector<Call> calls_;
    std::multimap<std::string, Failure> failures_;
};

ScriptedLibrary& Script();

}  // namespace tnavscripted
