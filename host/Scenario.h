// A coupled case as the host runs it, read from a TOML scenario file: the reservoir case and its settings,
// the dates of the run, and the surface network the wells produce into.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/CalendarDate.h"

namespace host {

// A scenario that cannot be run; the text names the file, the line and what was expected there.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Pressure in the tubing between the manifold and the bottom of the well: BHP = THP + hydrostatic +
// friction * q^2 for a producer, and THP + hydrostatic - friction * q^2 for an injector, where q is the
// well's controlled rate (STB/day for liquid and water, MMscf/day for gas) and pressures are psig.
struct TubingCurve {
    double hydrostatic = 0.0;  // psi
    double friction = 0.0;     // psi per (unit of rate)^2
};

// The network's phase of a well, as the driver's connection record codes it.
enum class NetworkPhase : int { kDefault = 0, kWater = 1, kLiquid = 2, kGas = 4 };

struct NetworkWell {
    std::string name;  // as the simulator names it
    NetworkPhase phase = NetworkPhase::kLiquid;
    TubingCurve tubing;
};

// Optional field limits on production, in STB/day (oil, water) and MMscf/day (gas).
struct FieldLimits {
    std::optional<double> oil;
    std::optional<double> gas;
    std::optional<double> water;
};

// A run on a cluster's dispatcher instead of the local machine.
struct ClusterTarget {
    std::string headNode;
    int port = 0;
    std::string user;
    std::string password;  // plain text; the host stores it enciphered in the run's configuration
};

struct Scenario {
    std::filesystem::path file;      // the scenario itself
    std::filesystem::path caseFile;  // absolute: relative paths are taken from the scenario's folder
    // Case settings by their access-string names under CaseDetails ("RateControl", "IprAlpha", ...), with
    // their values as text, in the order of the file.
    std::vector<std::pair<std::string, std::string>> settings;
    std::optional<CalendarDate> start;  // the deck's start when absent
    CalendarDate end;
    double stepDays = 0.0;            // a fixed step, or 0 when `dates` lists the steps
    std::vector<CalendarDate> dates;  // ascending, each after `start`
    double manifoldPressure = 0.0;    // psig, the producers' manifold
    double injectionPressure = 0.0;   // psig, the injectors' header
    FieldLimits limits;
    std::vector<NetworkWell> wells;
    std::optional<ClusterTarget> cluster;
    // The inflow tables are corrected by the driver's inflow library, calibrated on the case before the run.
    bool correctedInflow = false;
    // Well variables read by access string after every step, as they stand behind "TNAVIGATOR.WELL[{name}].":
    // "Status", "Bhp", "TARGET.Status", ...
    std::vector<std::string> wellVariables;
};

// Reads and checks a scenario; throws ScenarioError.
Scenario ReadScenario(const std::filesystem::path& file);

}  // namespace host
