// Inflow table generation: rate grids, the simulator's BHP samples and their compaction to one pressure axis.
//
// A pass samples each (well, phase) of the wells under the network's control at `pointCount` rates between a
// small rate and the maximum, has the simulator fill one BHP per rate, and then gives every well a table of
// a few points on one pressure axis with the rate of each phase at each pressure, in field units. Nothing
// here talks to the simulator.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace rivulet {

class TNavUnitSystem;
class WellList;

// One triple per well in index order, by phase: [0] water, [1] oil, [2] gas; simulator units.
using PhaseRateTable = std::vector<std::array<double, 3>>;

// Rates sampled per row, and points of a compacted table.
constexpr int kIprSamplePoints = 15;
constexpr int kIprTablePoints = 10;

// The working object of one pass. Rows are (well, phase) pairs, in well order and gas, oil, water within a
// well; `rates` and `bhps` hold `pointCount` values per row.
struct IprSampleSet {
    // Caps of 100 MMscf/day and 100,000 STB/day in the units of `units`.
    IprSampleSet(double spacing, const TNavUnitSystem& units);

    int RowCount() const { return static_cast<int>(rowWells.size()); }
    // Adds a row for each phase of each well with a positive maximum: `pointCount` rates from its minimum
    // to its maximum limited by the cap. The tables must be of one length.
    bool AddRows(const PhaseRateTable& maxRates, const PhaseRateTable& minRates, std::string& error);
    // The maximum of a phase (0 water, 1 oil, 2 gas) before the caps; 0 for a well never recorded.
    double MaxRate(int well, int phase) const;

    std::vector<std::int32_t> rowWells;
    std::vector<std::int32_t> rowPhases;
    std::vector<double> rates;
    std::vector<double> bhps;
    std::int32_t pointCount = kIprSamplePoints;
    double alpha;
    double gasCap;
    double liquidCap;
    std::vector<double> maxGas;
    std::vector<double> maxOil;
    std::vector<double> maxWater;
};

// One well of a sample set: where the first row of each phase starts in `rates`, or -1.
struct IprWellRows {
    const IprSampleSet* set = nullptr;
    int well = -1;
    int gas = -1;
    int oil = -1;
    int water = -1;

    // The views of wells 0 to wellCount - 1, in one pass over the rows.
    static std::vector<IprWellRows> ForWells(const IprSampleSet& set, int wellCount);
    bool HasRows() const { return gas >= 0 || oil >= 0 || water >= 0; }
    int Position(int phase) const;
    // The rate of a phase at a BHP, interpolated on its row and not below 0; 0 without that row.
    double RateAt(int phase, double pressure) const;
};

// Appends n rates from lo to hi whose steps grow by `alpha`; with ten points or more the first step is at
// most (hi - lo) / n. False, appending nothing, for n below 2 or alpha not positive.
bool GeometricRates(int n, double alpha, double lo, double hi, std::vector<double>& out);

// The y of q on the curve of n points (x, y), x ascending or descending: straight between the two points
// around q, extended through the two end points beyond either end, the mean of two points closer than 1e-5
// in x. -1.0 for no points.
double InterpolateCurve(const double* y, const double* x, int n, double q);

// The smallest rates of the rows: half the maximum, at most `gasCapMin` for gas and `liquidCapMin` for oil
// and water; an injector only for its largest phase, a well whose maxima are all tiny for none.
bool SetMinRates(const WellList& wells, const PhaseRateTable& maxRates, PhaseRateTable& minRates,
                 double gasCapMin, double liquidCapMin, std::string& error);

// The phase (0 water, 1 oil, 2 gas, 3 none) that spans a well's pressure axis, from its true maxima in field
// units: gas alone, or gas at 0.01123 MMscf per STB of liquid or more, else the larger liquid.
int ChooseControlPhase(const IprSampleSet& set, int well, const TNavUnitSystem& units);

// The BHPs of `points` rates spread along the well's row of `phase`, highest pressure first; false when the
// row is missing or a BHP is below zero.
bool BuildPressureAxis(const IprWellRows& rows, int phase, int points, std::vector<double>& axis);

// Gives every well its table of `points` points, field units, from the sampled BHPs; a well without rows an
// empty table. Stops at the first well whose axis fails, leaving its table zero.
bool CompactIprTables(const IprSampleSet& set, const TNavUnitSystem& units, WellList& wells, int points);

// Every point of every well's table takes the well's temperature in field units.
void FillIprTemperatures(WellList& wells, const TNavUnitSystem& units);

}  // namespace rivulet
