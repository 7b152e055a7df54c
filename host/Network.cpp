// The network solve: each well's operating point on its inflow table, and the manifold pressure raised by
// bisection while the producers break a field limit.
#include "host/Network.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace host {

namespace {

// The default phase resolved against the table: gas when the table carries no liquid anywhere.
NetworkPhase Resolved(const InflowTable& table, NetworkPhase phase) {
    if (phase == NetworkPhase::kWater || phase == NetworkPhase::kLiquid || phase == NetworkPhase::kGas) {
        return phase;
    }
    const auto positive = [](const std::vector<double>& rates) {
        return std::any_of(rates.begin(), rates.end(), [](double rate) { return rate > 0.0; });
    };
    return positive(table.oil) || positive(table.water) ? NetworkPhase::kLiquid : NetworkPhase::kGas;
}

double At(const std::vector<double>& values, std::size_t point) {
    return point < values.size() ? values[point] : 0.0;
}

double RateOf(const InflowTable& table, NetworkPhase resolved, std::size_t point) {
    switch (resolved) {
        case NetworkPhase::kWater:
            return At(table.water, point);
        case NetworkPhase::kGas:
            return At(table.gas, point);
        default:
            return At(table.oil, point) + At(table.water, point);
    }
}

// Gauge pressures go down to a vacuum, and a table's last point often sits at atmospheric pressure, which
// comes back as a gauge pressure a rounding error either side of zero.
constexpr double kVacuumPsig = -14.6959;

// A table the solve can use: every phase at every point, no value missing or infinite, no negative rate and
// no pressure below a vacuum.
bool Usable(const InflowTable& table) {
    const std::size_t n = table.pressure.size();
    if (n < 2 || table.oil.size() != n || table.water.size() != n || table.gas.size() != n) return false;
    for (const auto* values : {&table.oil, &table.water, &table.gas, &table.pressure}) {
        const double lowest = values == &table.pressure ? kVacuumPsig : 0.0;
        for (double value : *values) {
            if (!std::isfinite(value) || value < lowest) return false;
        }
    }
    return true;
}

// The table between points `from` and `to` at the fraction `t` of the way.
OperatingPoint Between(const InflowTable& table, std::size_t from, std::size_t to, double t) {
    const auto mix = [&](const std::vector<double>& values) {
        return values[from] + t * (values[to] - values[from]);
    };
    OperatingPoint point;
    point.oil = mix(table.oil);
    point.water = mix(table.water);
    point.gas = mix(table.gas);
    point.pressure = mix(table.pressure);
    return point;
}

struct Totals {
    double oil = 0.0;
    double gas = 0.0;
    double water = 0.0;
};

// True when `test(total, limit)` holds for any limit set.
template <typename Test>
bool AnyLimit(const Totals& totals, const FieldLimits& limits, Test test) {
    const std::pair<const std::optional<double>*, double> pairs[] = {
        {&limits.oil, totals.oil}, {&limits.gas, totals.gas}, {&limits.water, totals.water}};
    for (const auto& [limit, total] : pairs) {
        if (limit->has_value() && std::isfinite(**limit) && test(total, **limit)) return true;
    }
    return false;
}

// One well at `pressure`; a well without its network entry is shut.
OperatingPoint Solve(const WellInflow& inflow, double pressure) {
    if (inflow.well == nullptr) {
        OperatingPoint shut;
        shut.shut = true;
        return shut;
    }
    return SolveWell(inflow.table, inflow.well->phase, inflow.well->tubing, pressure, inflow.injector);
}

// Solves every producer at `manifold` into `points`, leaving injectors' entries alone; returns their totals.
Totals SolveProducers(const std::vector<WellInflow>& wells, double manifold,
                      std::vector<OperatingPoint>& points) {
    Totals totals;
    for (std::size_t k = 0; k < wells.size(); ++k) {
        if (wells[k].injector) continue;
        points[k] = Solve(wells[k], manifold);
        totals.oil += points[k].oil;
        totals.gas += points[k].gas;
        totals.water += points[k].water;
    }
    return totals;
}

// The highest pressure in any producer's table: at that manifold every producer is shut.
double HighestProducerPressure(const std::vector<WellInflow>& wells, double floor) {
    double highest = floor;
    for (const WellInflow& inflow : wells) {
        if (inflow.injector) continue;
        for (double pressure : inflow.table.pressure) {
            if (std::isfinite(pressure)) highest = std::max(highest, pressure);
        }
    }
    return highest;
}

}  // namespace

double ControlledRate(const InflowTable& table, NetworkPhase phase, std::size_t point) {
    return RateOf(table, Resolved(table, phase), point);
}

OperatingPoint SolveWell(const InflowTable& table, NetworkPhase phase, const TubingCurve& tubing,
                         double manifold, bool injector) {
    OperatingPoint shut;
    shut.shut = true;
    if (!Usable(table) || !std::isfinite(tubing.hydrostatic) || !std::isfinite(tubing.friction) ||
        !std::isfinite(manifold)) {
        return shut;
    }
    const NetworkPhase resolved = Resolved(table, phase);
    // The points that raise the rate, from the first on; a point that does not is a flat step and is passed.
    std::vector<std::size_t> rising;
    for (std::size_t k = 0; k < table.pressure.size(); ++k) {
        if (rising.empty() || RateOf(table, resolved, k) > RateOf(table, resolved, rising.back())) {
            rising.push_back(k);
        }
    }
    if (rising.size() < 2) return shut;

    // The inflow's pressure over the tubing's (a producer) or the tubing's over the inflow's (an injector):
    // it falls along the table, and the operating point is where it reaches zero.
    const double sign = injector ? -1.0 : 1.0;
    const auto excess = [&](double rate, double pressure) {
        return sign * (pressure - (manifold + tubing.hydrostatic + sign * tubing.friction * rate * rate));
    };
    const auto excessAt = [&](std::size_t k) {
        return excess(RateOf(table, resolved, k), table.pressure[k]);
    };

    if (excessAt(rising.front()) <= 0.0) return shut;
    if (excessAt(rising.back()) >= 0.0) return Between(table, rising.back(), rising.back(), 0.0);
    for (std::size_t i = 0; i + 1 < rising.size(); ++i) {
        const std::size_t from = rising[i];
        const std::size_t to = rising[i + 1];
        if (excessAt(to) > 0.0) continue;
        // The root lies on this segment: the excess is above zero at `from` and not at `to`. Halve the
        // segment until it can be halved no further.
        const double q0 = RateOf(table, resolved, from);
        const double dq = RateOf(table, resolved, to) - q0;
        const double p0 = table.pressure[from];
        const double dp = table.pressure[to] - p0;
        double low = 0.0;
        double high = 1.0;
        for (int pass = 0; pass < 100; ++pass) {
            const double mid = 0.5 * (low + high);
            if (mid <= low || mid >= high) break;
            (excess(q0 + mid * dq, p0 + mid * dp) > 0.0 ? low : high) = mid;
        }
        return Between(table, from, to, 0.5 * (low + high));
    }
    return shut;
}

NetworkSolution SolveNetwork(const std::vector<WellInflow>& wells, const Scenario& scenario) {
    NetworkSolution solution;
    solution.manifoldPressure = scenario.manifoldPressure;
    solution.points.resize(wells.size());
    for (std::size_t k = 0; k < wells.size(); ++k) {
        if (wells[k].injector) solution.points[k] = Solve(wells[k], scenario.injectionPressure);
    }

    const Totals totals = SolveProducers(wells, scenario.manifoldPressure, solution.points);
    const auto broken = [](double total, double limit) { return total > limit * 1.001; };
    if (!AnyLimit(totals, scenario.limits, broken)) return solution;

    // Bisect between the scenario's manifold (too low) and the pressure where every producer shuts. The
    // answer is always taken from the high side, so every limit holds whenever the search stops.
    solution.limited = true;
    double low = scenario.manifoldPressure;
    double high = HighestProducerPressure(wells, low);
    SolveProducers(wells, high, solution.points);
    solution.manifoldPressure = high;
    const auto over = [](double total, double limit) { return total > limit; };
    const auto close = [](double total, double limit) { return total >= limit * 0.999; };
    std::vector<OperatingPoint> trial = solution.points;
    for (int pass = 0; pass < 60; ++pass) {
        const double mid = 0.5 * (low + high);
        const Totals at = SolveProducers(wells, mid, trial);
        if (AnyLimit(at, scenario.limits, over)) {
            low = mid;
            continue;
        }
        high = mid;
        solution.points = trial;
        solution.manifoldPressure = mid;
        if (AnyLimit(at, scenario.limits, close)) break;
    }
    return solution;
}

}  // namespace host
