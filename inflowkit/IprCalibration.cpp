#include "IprCalibration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "GetSetRecord.h"

namespace inflowkit {
namespace {

using getset::Column;
using getset::hasValue;

// Thrown inside a calculation to stop it; caught in IprCalibration::run.
struct Stop {
    std::string text;
};

enum class Phase { kGas, kLiquid, kWater };

Phase phaseOf(const IprWell& well) {
    if (!well.liquid) return Phase::kGas;
    return well.producer ? Phase::kLiquid : Phase::kWater;
}

// Magnitude of the well's phase rate in `row`, or nullopt if an entry it needs has no value.
std::optional<double> phaseRate(const _tGetSetData* record, int row, Phase phase) {
    const auto magnitude = [&](Column column) -> std::optional<double> {
        const double v = getset::read(record, column, row);
        if (!hasValue(v)) return std::nullopt;
        return std::fabs(v);
    };
    switch (phase) {
        case Phase::kGas:
            return magnitude(Column::kGas);
        case Phase::kWater:
            return magnitude(Column::kWater);
        case Phase::kLiquid: {
            const std::optional<double> oil = magnitude(Column::kOil);
            const std::optional<double> water = magnitude(Column::kWater);
            if (!oil || !water) return std::nullopt;
            return *oil + *water;
        }
    }
    return std::nullopt;
}

// An inflow table reduced to (pressure, phase rate) points in rising pressure; rows with an entry
// that holds no value are left out.
class PhaseTable {
  public:
    PhaseTable(const _tGetSetData* record, Phase phase) {
        for (int row = 0; row < getset::rowCount(record); ++row) {
            const double pressure = getset::read(record, Column::kPressure, row);
            const std::optional<double> rate = phaseRate(record, row, phase);
            if (hasValue(pressure) && rate) points_.emplace_back(pressure, *rate);
        }
        std::stable_sort(points_.begin(), points_.end(),
                         [](const Point& a, const Point& b) { return a.first < b.first; });
    }

    // Largest rate in the table; 0 when it shows no flow.
    double maxRate() const {
        double most = 0.0;
        for (const Point& p : points_) most = std::max(most, p.second);
        return most;
    }

    // Linear in pressure between the neighbouring points, held at the end values outside them.
    std::optional<double> rateAt(double pressure) const {
        if (points_.empty() || !hasValue(pressure)) return std::nullopt;
        if (pressure <= points_.front().first) return points_.front().second;
        if (pressure >= points_.back().first) return points_.back().second;
        const auto above = std::lower_bound(points_.begin(), points_.end(), pressure,
                                            [](const Point& p, double v) { return p.first < v; });
        const Point& hi = *above;
        const Point& lo = *(above - 1);  // lo.first < pressure <= hi.first
        return lo.second + (hi.second - lo.second) * (pressure - lo.first) / (hi.first - lo.first);
    }

  private:
    using Point = std::pair<double, double>;
    std::vector<Point> points_;
};

// The callbacks, with every nonzero answer turned into a Stop carrying the simulator's text.
class Simulator {
  public:
    Simulator(void* context, const IprCallbacks& callbacks) : context_(context), callbacks_(callbacks) {}

    void initialise() { check(callbacks_.initialise(context_, clearedError()), "initialise", nullptr); }

    double elapsedDays() {
        const double days = callbacks_.elapsedTime(context_);
        if (!hasValue(days)) throw Stop{"the elapsed-time callback answered no usable time"};
        return days;
    }

    void setWellCtrl(const IprWell& well, double rate) {
        check(callbacks_.setWellCtrl(context_, well.index, rate, clearedError()), "setWellCtrl", &well);
    }

    void runTo(double days) { check(callbacks_.runTo(context_, days, clearedError()), "runTo", nullptr); }

    const _tGetSetData* blockIpr(const IprWell& well) {
        _tGetSetData* record = record_.reset(well.index);
        check(callbacks_.getWellBlockIpr(context_, well.index, record, clearedError()), "getWellBlockIpr",
              &well);
        return record;
    }

    const _tGetSetData* rates(const IprWell& well) {
        _tGetSetData* record = record_.reset(well.index);
        check(callbacks_.getWellRates(context_, well.index, record, clearedError()), "getWellRates", &well);
        return record;
    }

  private:
    char* clearedError() {
        error_.fill('\0');
        return error_.data();
    }

    void check(int32_t code, const char* what, const IprWell* well) const {
        if (code == 0) return;
        std::string text = std::string(what) + " failed";
        if (well) text += " for well '" + well->name + "' (index " + std::to_string(well->index) + ")";
        text += " with code " + std::to_string(code);
        const std::size_t length = strnlen(error_.data(), error_.size());
        if (length > 0) text += ": " + std::string(error_.data(), length);
        throw Stop{std::move(text)};
    }

    void* context_;
    IprCallbacks callbacks_;
    std::array<char, IprCalibration::kErrorBufferSize> error_{};
    getset::OwnedRecord record_;
};

std::string missingCallbacks(const IprCallbacks& c) {
    std::string missing;
    const auto note = [&missing](bool set, const char* name) {
        if (set) return;
        missing += missing.empty() ? "" : ", ";
        missing += name;
    };
    note(c.elapsedTime, "elapsedTime");
    note(c.initialise, "initialise");
    note(c.setWellCtrl, "setWellCtrl");
    note(c.runTo, "runTo");
    note(c.getWellBlockIpr, "getWellBlockIpr");
    note(c.getWellRates, "getWellRates");
    return missing;
}

struct Candidate {
    IprWell well;
    Phase phase;
};

// Delivered against promised rate for every period; all wells sharing a name share one factor.
class Samples {
  public:
    void add(const std::string& name, double promised, double delivered) {
        auto it = std::find_if(sums_.begin(), sums_.end(), [&](const Sums& s) { return s.name == name; });
        if (it == sums_.end()) it = sums_.insert(sums_.end(), Sums{name, 0.0, 0.0});
        it->cross += promised * delivered;
        it->square += promised * promised;
    }

    std::vector<IprFactor> fit() const {
        std::vector<IprFactor> factors;
        for (const Sums& s : sums_) {
            const double f = s.cross / s.square;
            if (!std::isfinite(f)) continue;
            factors.push_back(
                {s.name, std::clamp(f, IprCalibration::kMinFactor, IprCalibration::kMaxFactor)});
        }
        return factors;
    }

  private:
    struct Sums {
        std::string name;
        double cross;
        double square;
    };
    std::vector<Sums> sums_;
};

std::vector<IprFactor> calibrate(void* context, const IprCallbacks& callbacks,
                                 const std::vector<IprWell>& live) {
    Simulator sim(context, callbacks);
    sim.initialise();
    const std::vector<IprWell> wells = live;  // as registered by this restart
    const double start = sim.elapsedDays();

    std::vector<Candidate> candidates;
    for (const IprWell& well : wells) {
        const Phase phase = phaseOf(well);
        if (PhaseTable(sim.blockIpr(well), phase).maxRate() > 0.0) candidates.push_back({well, phase});
    }

    Samples samples;
    for (const double fraction : IprCalibration::kPassFractions) {
        const double days =
            std::min(IprCalibration::kPassDays, IprCalibration::kMaxDays - (sim.elapsedDays() - start));
        if (!(days > 0.0)) break;

        std::vector<PhaseTable> before;
        before.reserve(candidates.size());
        for (const Candidate& c : candidates) {
            before.emplace_back(sim.blockIpr(c.well), c.phase);
            const double capacity = before.back().maxRate();
            if (capacity > 0.0) sim.setWellCtrl(c.well, fraction * capacity);
        }
        sim.runTo(days);
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (!(before[i].maxRate() > 0.0)) continue;
            const Candidate& c = candidates[i];
            const _tGetSetData* now = sim.rates(c.well);
            const double pressure = getset::read(now, Column::kPressure, 0);
            const std::optional<double> delivered = phaseRate(now, 0, c.phase);
            if (!hasValue(pressure) || !delivered) continue;
            const std::optional<double> promised = before[i].rateAt(pressure);
            if (promised && *promised > 0.0) samples.add(c.well.name, *promised, *delivered);
        }
    }

    std::vector<IprFactor> factors = samples.fit();
    if (factors.empty()) throw Stop{"no well gave a usable sample: nothing was calibrated"};
    return factors;
}

}  // namespace

CalibrationOutcome IprCalibration::run(void* context, IprCallbacks callbacks,
                                       const std::vector<IprWell>& wells) {
    try {
        if (std::string missing = missingCallbacks(callbacks); !missing.empty()) {
            return {{}, "callbacks not set: " + missing};
        }
        return {calibrate(context, callbacks, wells), {}};
    } catch (Stop& stop) {
        return {{}, std::move(stop.text)};
    } catch (const std::exception& e) {
        return {{}, std::string("calculation failed: ") + e.what()};
    } catch (...) {
        return {{}, "calculation failed"};
    }
}

}  // namespace inflowkit
