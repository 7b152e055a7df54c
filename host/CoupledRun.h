// A coupled reservoir-network run through the plug-in, as Conflux drives one: the case and its settings,
// the simulator's start, the wells connected to the network, then at each step the inflow tables, the
// network's solve, the operating points, the simulator's step and the results.
#pragma once

#include <functional>
#include <ostream>
#include <vector>

#include "host/Plugin.h"
#include "host/Scenario.h"
#include "host/StepRecord.h"

namespace host {

class ModelClient;

// The dates the run steps to: every `stepDays` from the start, or the scenario's list, up to its end.
std::vector<CalendarDate> StepDates(const Scenario& scenario, CalendarDate start);

// Hands the model the scenario's case and settings (and cluster) by access string.
void SetScenarioCase(ModelClient& model, const Scenario& scenario);
// Sets the scenario's case as SetScenarioCase does and starts the simulator on it.
void StartScenarioCase(ModelClient& model, const Scenario& scenario, std::ostream& progress);

class CoupledRun {
  public:
    // `onStep` sees each step as soon as it is done; `progress` receives one-line notes.
    CoupledRun(Plugin& plugin, const Scenario& scenario, std::function<void(const StepRecord&)> onStep,
               std::ostream& progress);

    // Runs to the scenario's end and returns every step. A failure the driver reports throws RunError with
    // its text, after the simulator has been stopped; the steps done so far stay in Steps().
    void Run();
    const std::vector<StepRecord>& Steps() const { return steps_; }

  private:
    Plugin& plugin_;
    const Scenario& scenario_;
    std::function<void(const StepRecord&)> onStep_;
    std::ostream& progress_;
    std::vector<StepRecord> steps_;
};

}  // namespace host
