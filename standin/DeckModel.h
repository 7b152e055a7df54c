// Plain description of a reservoir deck as the stand-in engine needs it. Every quantity is in SI units
// (Pa, m3, m3/s at surface conditions, kg/m3, Pa.s, seconds); UnitScales converts to the deck's own units.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace rivulet::standin {

using Seconds = std::int64_t;  // seconds since 1970-01-01 00:00:00 UTC

inline constexpr double kNoLimit = std::numeric_limits<double>::infinity();

enum class UnitKind { kMetric, kField, kLab, kPvtM };

// SI value of one deck unit of each measure.
struct UnitScales {
    double pressure = 1.0;
    double liquid_rate = 1.0;     // surface liquid volume per day
    double gas_rate = 1.0;        // surface gas volume per day
    double reservoir_rate = 1.0;  // reservoir volume per day
    double liquid_volume = 1.0;
    double gas_volume = 1.0;
    double length = 1.0;
    double density = 1.0;
};

enum class Phase { kOil, kWater, kGas, kLiquid, kReservoir };

// One-argument table with any number of value columns, sorted by the argument.
struct Table {
    std::vector<double> x;
    std::vector<std::vector<double>> y;  // y[column][row]
};

// Live oil: saturated curve by Rs, with an undersaturated branch per node (pressure, Bo, viscosity).
struct LiveOilPvt {
    std::vector<double> rs;       // dissolved gas-oil ratio at saturation
    std::vector<double> p_sat;    // bubble point of each node
    std::vector<double> bo_sat;   // formation volume factor at the bubble point
    std::vector<double> mu_sat;   // viscosity at the bubble point
    std::vector<Table> undersat;  // per node: x = pressure, y = {Bo, viscosity}; may hold one row only
};

struct WaterPvt {
    double p_ref = 1e5;
    double bw_ref = 1.0;
    double compressibility = 0.0;
    double mu_ref = 1e-3;
    double viscosibility = 0.0;
};

struct FluidRegion {
    bool live_oil = false;
    LiveOilPvt oil;  // used when live_oil
    Table dead_oil;  // x = pressure, y = {Bo, viscosity}
    Table gas;       // x = pressure, y = {Bg, viscosity}
    bool wet_gas = false;
    Table vaporized;  // used when wet_gas: x = pressure, y = {Rv of saturated gas}
    WaterPvt water;
    double rock_p_ref = 1e5;
    double rock_compressibility = 0.0;
    double oil_density = 800.0;  // surface densities
    double water_density = 1000.0;
    double gas_density = 1.0;
};

struct RelPerm {
    Table swof;  // x = Sw, y = {krw, krow}
    Table sgof;  // x = Sg, y = {krg, krog}
};

// One material-balance tank: the pore space of one PVT region.
struct TankData {
    int region = 0;            // PVT region index (0-based)
    double pore_volume = 0.0;  // at the rock reference pressure
    double datum_depth = 0.0;
    double initial_pressure = 0.0;  // at the datum
    double initial_sw = 0.0;
    double initial_sg = 0.0;
    double initial_rs = 0.0;
    int cells = 0;
};

enum class WellType { kProducer, kInjector };
enum class WellStatus { kOpen, kStop, kShut };
enum class ControlMode { kNone, kOrat, kWrat, kGrat, kLrat, kResv, kBhp, kRate };

struct Connection {
    int i = 0, j = 0, k = 0;  // 0-based cell indices
    double factor = 0.0;      // connection transmissibility factor
    double depth = 0.0;
    bool open = true;
};

struct WellData {
    std::string name;
    double ref_depth = 0.0;
    int tank = 0;
    std::vector<Connection> connections;
};

// The controls of one well for one report step, as the deck sets them.
struct WellControls {
    WellType type = WellType::kProducer;
    WellStatus status = WellStatus::kShut;
    ControlMode mode = ControlMode::kNone;
    double oil_limit = kNoLimit;
    double water_limit = kNoLimit;
    double gas_limit = kNoLimit;
    double liquid_limit = kNoLimit;
    double resv_limit = kNoLimit;
    double bhp_limit = 101325.0;        // producers: lowest BHP; injectors: highest BHP
    Phase injected = Phase::kWater;     // injectors only: kWater, kGas or kOil
    double injection_limit = kNoLimit;  // surface rate of the injected phase
    double efficiency = 1.0;
    bool defined = false;  // false until the deck introduces the well

    bool operator==(const WellControls&) const = default;
};

struct DeckModel {
    std::string path;
    std::string title;
    UnitKind units = UnitKind::kMetric;
    UnitScales scales;
    Seconds start = 0;
    std::vector<Seconds> report_dates;  // end of each report step; the last is the end of the run
    std::vector<FluidRegion> fluids;    // per PVT region
    std::vector<RelPerm> relperm;       // per saturation region
    std::vector<TankData> tanks;
    bool rs_can_rise = true;  // false when the deck forbids free gas from dissolving (DRSDT 0)
    std::vector<WellData> wells;
    std::vector<std::vector<WellControls>> controls;  // [report step][well]

    Seconds End() const { return report_dates.empty() ? start : report_dates.back(); }
};

}  // namespace rivulet::standin
