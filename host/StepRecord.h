// What one coupled timestep left behind: the network's answer and what the reservoir delivered.
#pragma once

#include <string>
#include <vector>

#include "host/CalendarDate.h"
#include "host/Network.h"

namespace host {

struct WellStep {
    std::string name;
    bool injector = false;
    NetworkPhase phase = NetworkPhase::kLiquid;
    InflowTable table;  // the table the network solved on, at the start of the step
    // The driver's correction of that table: its rates over the simulator's own, 1 when uncorrected.
    double correction = 1.0;
    OperatingPoint asked;  // what the network asked of the well
    // What the well delivered over the step, from the driver's node results (STB/day, MMscf/day, psig);
    // for an injector the injected water and gas.
    double oil = 0.0;
    double water = 0.0;
    double gas = 0.0;
    double bhp = 0.0;
    // The scenario's well variables as the driver gave them after the step, in the scenario's order.
    std::vector<std::string> variables;
};

struct StepRecord {
    CalendarDate date;              // the date the step reached
    double days = 0.0;              // days since the run's start
    double manifoldPressure = 0.0;  // psig
    bool limited = false;           // the manifold was raised for a field limit
    // Field totals from the driver's node results, STB/day and MMscf/day.
    double oil = 0.0;
    double water = 0.0;
    double gas = 0.0;
    double waterInjection = 0.0;
    double gasInjection = 0.0;
    std::vector<WellStep> wells;
};

}  // namespace host
