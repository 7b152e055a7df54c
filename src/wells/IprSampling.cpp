#include "wells/IprSampling.h"

#include <algorithm>
#include <cmath>

#include "dataserver/TNavUnitSystem.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

constexpr int kWater = 0;
constexpr int kOil = 1;
constexpr int kGas = 2;
constexpr int kNoPhase = 3;

// Below this in every phase a well's maxima count as no flow: its rows start at rate 0.
constexpr double kTinyRate = 5e-5;
// MMscf of gas per STB of liquid above which gas spans the axis: 2,000 sm3/sm3.
constexpr double kGasControlRatio = 0.01123;
// Closer than this in x, two points of a curve give the mean of their y.
constexpr double kSameX = 1e-5;
// The top of an axis moves at most this many times towards the next point.
constexpr int kMaxTopRepairs = 1000;

std::size_t At(int index) {
    return static_cast<std::size_t>(index);
}

// y at q on the straight line through points a and b, or their mean when they stand at one x.
double Line(const double* y, const double* x, int a, int b, double q) {
    if (std::fabs(x[b] - x[a]) < kSameX) return (y[a] + y[b]) / 2.0;
    return y[a] + (y[b] - y[a]) * (q - x[a]) / (x[b] - x[a]);
}

}  // namespace

IprSampleSet::IprSampleSet(double spacing, const TNavUnitSystem& units)
    : alpha(spacing), gasCap(units.fromFieldGasRate(100.0)), liquidCap(units.fromFieldLiquidRate(100000.0)) {}

bool IprSampleSet::AddRows(const PhaseRateTable& maxRates, const PhaseRateTable& minRates,
                           std::string& error) {
    if (maxRates.size() != minRates.size()) {
        error = "Internal error: there was a mismatch of max and min phase rates.";
        return false;
    }
    // Gas, then oil, then water, each with the vector its maximum is recorded in.
    const std::array<std::pair<int, std::vector<double>*>, 3> phases = {
        {{kGas, &maxGas}, {kOil, &maxOil}, {kWater, &maxWater}}};
    for (std::size_t well = 0; well < maxRates.size(); ++well) {
        for (const auto& [phase, recorded] : phases) {
            const double maximum = maxRates[well][At(phase)];
            if (!(maximum > 0.0)) continue;
            for (std::vector<double>* column : {&maxGas, &maxOil, &maxWater}) {
                if (column->size() < well + 1) column->resize(well + 1, 0.0);
            }
            (*recorded)[well] = std::max(maximum, 0.0);
            const double hi = std::min(maximum, phase == kGas ? gasCap : liquidCap);
            const double lo = minRates[well][At(phase)];
            if (hi < 0.0 || lo < 0.0) continue;
            if (!GeometricRates(pointCount, alpha, lo, hi, rates)) continue;
            rowWells.push_back(static_cast<std::int32_t>(well));
            rowPhases.push_back(phase);
            bhps.resize(bhps.size() + At(pointCount), 0.0);
        }
    }
    return true;
}

double IprSampleSet::MaxRate(int well, int phase) const {
    const std::vector<double>* column = phase == kGas ? &maxGas : phase == kOil ? &maxOil : &maxWater;
    if (phase < kWater || phase > kGas || well < 0 || At(well) >= column->size()) return 0.0;
    return (*column)[At(well)];
}

std::vector<IprWellRows> IprWellRows::ForWells(const IprSampleSet& set, int wellCount) {
    std::vector<IprWellRows> views(At(std::max(wellCount, 0)));
    for (std::size_t k = 0; k < views.size(); ++k) {
        views[k].set = &set;
        views[k].well = static_cast<int>(k);
    }
    for (int row = 0; row < set.RowCount(); ++row) {
        const int well = set.rowWells[At(row)];
        if (well < 0 || well >= wellCount) continue;
        IprWellRows& view = views[At(well)];
        const int phase = set.rowPhases[At(row)];
        int* position = phase == kGas     ? &view.gas
                        : phase == kOil   ? &view.oil
                        : phase == kWater ? &view.water
                                          : nullptr;
        if (position != nullptr && *position < 0) *position = row * set.pointCount;
    }
    return views;
}

int IprWellRows::Position(int phase) const {
    if (phase == kGas) return gas;
    if (phase == kOil) return oil;
    if (phase == kWater) return water;
    return -1;
}

double IprWellRows::RateAt(int phase, double pressure) const {
    const int position = Position(phase);
    if (set == nullptr || position < 0 || At(position + set->pointCount) > set->rates.size() ||
        At(position + set->pointCount) > set->bhps.size()) {
        return 0.0;
    }
    const double rate =
        InterpolateCurve(&set->rates[At(position)], &set->bhps[At(position)], set->pointCount, pressure);
    return std::max(rate, 0.0);
}

bool GeometricRates(int n, double alpha, double lo, double hi, std::vector<double>& out) {
    if (n < 2 || !(alpha > 0.0)) return false;
    double sum = 0.0;
    double term = 1.0;
    for (int k = 0; k < n - 1; ++k) {
        sum += term;
        term *= alpha;
    }
    double step = (hi - lo) / sum;
    const std::size_t first = out.size();
    double x = lo;
    out.push_back(x);
    for (int k = 0; k < n - 2; ++k) {
        x += step;
        step *= alpha;
        out.push_back(x);
    }
    out.push_back(hi);
    // A long grid keeps its first step short, whatever the spacing.
    if (n >= 10) {
        const double limit = lo + (hi - lo) / n;
        if (out[first + 1] > limit) out[first + 1] = limit;
    }
    return true;
}

double InterpolateCurve(const double* y, const double* x, int n, double q) {
    if (y == nullptr || x == nullptr || n < 1) return -1.0;
    int below = 0;
    int above = 0;
    if (n > 1) {
        if (x[n - 1] >= x[0]) {
            below = -1;
            above = n;
            for (int i = 0; i < n; ++i) {
                if (q >= x[i]) below = i;
                if (x[i] >= q) {
                    above = i;
                    break;
                }
            }
        } else {
            below = n;
            above = -1;
            for (int i = 0; i < n; ++i) {
                if (x[i] >= q) above = i;
                if (q >= x[i]) {
                    below = i;
                    break;
                }
            }
        }
    }
    if (below == above) return y[below];
    if (below >= 0 && above >= 0 && below != n && above != n) return Line(y, x, below, above, q);
    if (n < 2) return -1.0;
    // Beyond the last point, or before the first: the end's two points, extended.
    if (below == n || above == n) return Line(y, x, n - 2, n - 1, q);
    return Line(y, x, 0, 1, q);
}

bool SetMinRates(const WellList& wells, const PhaseRateTable& maxRates, PhaseRateTable& minRates,
                 double gasCapMin, double liquidCapMin, std::string& error) {
    if (maxRates.size() != minRates.size()) {
        error = "Internal error: there was a mismatch of max and min phase rates.";
        return false;
    }
    if (maxRates.size() != wells.Count()) {
        error = "Internal error: there was a mismatch of max and min phase rates to the number of wells.";
        return false;
    }
    for (std::size_t i = 0; i < maxRates.size(); ++i) {
        const std::array<double, 3>& maximum = maxRates[i];
        std::array<double, 3>& minimum = minRates[i];
        minimum = {0.0, 0.0, 0.0};
        const double g = maximum[kGas];
        const double o = maximum[kOil];
        const double w = maximum[kWater];
        if (g < kTinyRate && o < kTinyRate && w < kTinyRate) continue;
        auto half = [&](int phase) {
            const double cap = phase == kGas ? gasCapMin : liquidCapMin;
            minimum[At(phase)] = std::max(std::min(maximum[At(phase)] / 2.0, cap), 0.0);
        };
        if (wells[i].IsInjector()) {
            // Only the phase it injects most of: ties go to gas, then to oil.
            half(g >= o && g >= w ? kGas : o >= w ? kOil : kWater);
        } else {
            for (int phase : {kGas, kOil, kWater}) {
                if (maximum[At(phase)] > 0.0) half(phase);
            }
        }
    }
    return true;
}

int ChooseControlPhase(const IprSampleSet& set, int well, const TNavUnitSystem& units) {
    const double g = units.toFieldGasRate(set.MaxRate(well, kGas));
    const double o = units.toFieldLiquidRate(set.MaxRate(well, kOil));
    const double w = units.toFieldLiquidRate(set.MaxRate(well, kWater));
    const double l = std::max(o, w);
    if (g <= 0.0 && l <= 0.0) return kNoPhase;
    if (g > 0.0 && l <= 0.0) return kGas;
    if (g / l >= kGasControlRatio) return kGas;
    return o >= w ? kOil : kWater;
}

bool BuildPressureAxis(const IprWellRows& rows, int phase, int points, std::vector<double>& axis) {
    axis.clear();
    const IprSampleSet* set = rows.set;
    const int position = rows.Position(phase);
    if (set == nullptr || position < 0 || set->pointCount < 1) return false;
    const int n = set->pointCount;
    if (At(position + n) > set->rates.size() || At(position + n) > set->bhps.size()) return false;
    const double* rates = &set->rates[At(position)];
    const double* bhps = &set->bhps[At(position)];

    const double cap = phase == kGas ? set->gasCap : set->liquidCap;
    const double lo = std::min(cap, rates[0]);
    const double hi = std::min(cap, rates[n - 1]);
    if (!GeometricRates(points, set->alpha, lo, hi, axis)) return false;
    for (double& value : axis) {
        value = InterpolateCurve(bhps, rates, n, value);
        if (value < 0.0) return false;
    }

    // A row that starts at no flow would put the top of the axis at the shut-in pressure: move it towards
    // the next point until the phase flows there.
    if (rates[n - 1] > 0.0) {
        for (int k = 0; k < kMaxTopRepairs; ++k) {
            const double r0 = rows.RateAt(phase, axis[0]);
            const double r1 = rows.RateAt(phase, axis[1]);
            if (!(r0 <= 0.0 && r1 > 0.0)) break;
            axis[0] += (axis[1] - axis[0]) / 10.0;
        }
    }
    return true;
}

bool CompactIprTables(const IprSampleSet& set, const TNavUnitSystem& units, WellList& wells, int points) {
    if (points < 2) return false;
    const std::vector<IprWellRows> views = IprWellRows::ForWells(set, wells.Size());
    std::vector<double> axis;
    for (const IprWellRows& rows : views) {
        IprTable& table = wells[At(rows.well)].ipr;
        if (!rows.HasRows()) {
            table.Clear();
            continue;
        }
        const int phase = ChooseControlPhase(set, rows.well, units);
        for (std::vector<double>* column : {&table.GasRates, &table.OilRates, &table.WaterRates,
                                            &table.Pressures, &table.Temperatures, &table.MassFlows}) {
            column->assign(At(points), 0.0);
        }
        if (!BuildPressureAxis(rows, phase, points, axis)) return false;
        for (std::size_t k = 0; k < axis.size(); ++k) {
            table.Pressures[k] = units.toFieldPressure(axis[k]);
            if (rows.gas >= 0) table.GasRates[k] = units.toFieldGasRate(rows.RateAt(kGas, axis[k]));
            if (rows.oil >= 0) table.OilRates[k] = units.toFieldLiquidRate(rows.RateAt(kOil, axis[k]));
            if (rows.water >= 0) table.WaterRates[k] = units.toFieldLiquidRate(rows.RateAt(kWater, axis[k]));
        }
    }
    return true;
}

void FillIprTemperatures(WellList& wells, const TNavUnitSystem& units) {
    for (WellData& well : wells) {
        const double temperature = units.toFieldTemperature(well.Temperature());
        std::fill(well.ipr.Temperatures.begin(), well.ipr.Temperatures.end(), temperature);
    }
}

}  // namespace rivulet
