#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "IprModel.h"

namespace inflowkit {

// What one calibration produced: the fitted factors, or the reason it stopped.
struct CalibrationOutcome {
    std::vector<IprFactor> factors;  // one per well name that gave usable samples
    std::string error;               // empty on success
};

// Calibrates the inflow tables against the simulator itself.
//
// The run is restarted from the deck's start, then every well whose block table shows flow is put
// on a rate control at fixed fractions of its largest table rate, one short period per fraction.
// After each period the rate the well delivered is compared with the rate its table promised, just
// before the period, at the bottom-hole pressure the well ended on. The factor is the least-squares
// slope through the origin of delivered against promised rate, kept within [kMinFactor, kMaxFactor].
//
// Rates are compared on the well's own phase: gas for gas wells, oil plus water for liquid
// producers, water for liquid injectors, all as magnitudes.
//
// The well list is read after the simulator's initialise returns, because the simulator registers
// its wells anew while it restarts. Any callback failure, or no usable sample at all, ends the
// calculation with `error` set.
class IprCalibration {
  public:
    static constexpr double kPassFractions[] = {0.5, 0.8};
    static constexpr double kPassDays = 30.0;
    // The periods together never carry the run further than this past its restart.
    static constexpr double kMaxDays = 360.0;
    static constexpr double kMinFactor = 0.05;
    static constexpr double kMaxFactor = 20.0;
    // Size of the zeroed message buffer handed to the callbacks.
    static constexpr std::size_t kErrorBufferSize = 4096;

    // `wells` is the model's live list, which initialise may rewrite. Failures come back in the
    // outcome; only running out of memory escapes as an exception.
    static CalibrationOutcome run(void* context, IprCallbacks callbacks, const std::vector<IprWell>& wells);
};

}  // namespace inflowkit
