// The surface network's solve for one timestep: each connected well's operating point where its inflow
// table meets its tubing curve at the manifold pressure, and the manifold pressure raised until the field
// limits hold.
#pragma once

#include <optional>
#include <vector>

#include "host/Scenario.h"

namespace host {

// A well's inflow table as GetIPR gives it, in field units, one entry per point: rates of each phase at
// each pressure. Producers' pressures fall as rates rise; injectors' rise.
struct InflowTable {
    std::vector<double> oil;       // STB/day
    std::vector<double> water;     // STB/day
    std::vector<double> gas;       // MMscf/day
    std::vector<double> pressure;  // psig
};

// What the network asks of one well. A well that cannot flow against its manifold is shut.
struct OperatingPoint {
    bool shut = false;
    double oil = 0.0;       // STB/day
    double water = 0.0;     // STB/day
    double gas = 0.0;       // MMscf/day
    double pressure = 0.0;  // BHP, psig
};

// The rate the network controls: water, oil + water, or gas by its phase; for the default phase, gas when
// the table carries no liquid, else liquid.
double ControlledRate(const InflowTable& table, NetworkPhase phase, std::size_t point);

// The operating point of one well at `manifold` (psig): the root of IPR pressure minus tubing pressure on
// the piecewise-linear table, all rates interpolated at it. A producer whose table lies below the tubing
// curve everywhere is shut; one that flows past the table's last point is held at that point. Injectors
// mirror this. An empty table, or one with a single point, shuts the well.
OperatingPoint SolveWell(const InflowTable& table, NetworkPhase phase, const TubingCurve& tubing,
                         double manifold, bool injector);

struct NetworkSolution {
    double manifoldPressure = 0.0;       // the producers' manifold pressure used, psig
    std::vector<OperatingPoint> points;  // one per well, in the order given
    bool limited = false;                // the manifold was raised to honour a field limit
};

struct WellInflow {
    const NetworkWell* well = nullptr;
    bool injector = false;
    InflowTable table;
    double correction = 1.0;  // what the driver's inflow correction made of the table's rates
};

// Every well at the scenario's manifold (producers) and injection header (injectors). When the producers'
// total oil, gas or water exceeds a field limit, the manifold pressure is raised by bisection until every
// limit holds (within 0.1% of the limit), between the scenario's pressure and the highest pressure of any
// producer's table.
NetworkSolution SolveNetwork(const std::vector<WellInflow>& wells, const Scenario& scenario);

}  // namespace host
