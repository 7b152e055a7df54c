#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inflowkit/InflowKit.h"

namespace inflowkit {

struct IprCallbacks {
    IPRElapsedTimeCallback elapsedTime = nullptr;
    IPRInitialiseForSimCalcCallback initialise = nullptr;
    IPRSetWellCtrlForSimCalcCallback setWellCtrl = nullptr;
    IPRRunToForSimCalcCallback runTo = nullptr;
    IPRGetWellBlockIPRForSimCalcCallback getWellBlockIpr = nullptr;
    IPRGetWellRatesForSimCalcCallback getWellRates = nullptr;
};

struct IprWell {
    int32_t index = 0;
    std::string name;
    bool producer = false;
    bool liquid = false;
};

// Calibration result for one well: the factor applied to its IPR table.
struct IprFactor {
    std::string wellName;
    double factor = 1.0;
};

enum class WellListState : int32_t { kNeverStarted = 0, kOpen = 1, kClosed = 2 };

// One IPR correction model: what the simulator registered (context, callbacks, wells) and the
// per-well factors a calibration produced or a saved block restored.
class IprModel {
  public:
    explicit IprModel(void* context) : context_(context) {}

    void* context() const { return context_; }

    void setCallbacks(const IprCallbacks& callbacks) { callbacks_ = callbacks; }
    const IprCallbacks& callbacks() const { return callbacks_; }

    void startWellList();
    void addWell(IprWell well);
    void endWellList();
    const std::vector<IprWell>& wells() const { return wells_; }
    WellListState wellListState() const { return wellListState_; }

    // Runs a calibration through the callbacks (see IprCalibration). On success the factors are
    // replaced and the model counts as calibrated; on failure the reason is kept in lastError()
    // and the factors and calibrated state stay as they were.
    bool setup(uint64_t parentWindow);
    bool hasDoneScalingCalculation() const { return scalingDone_; }
    // Why the last failed calculation stopped; "" if none has failed.
    const std::string& lastError() const { return lastError_; }

    // Scales the oil, water, gas and mass rates in the rows of `table` in use by the well's factor;
    // a well without a factor keeps its table. False for a null name or table.
    bool transform(const char* wellName, const _tGetSetData* present, _tGetSetData* table) const;

    const std::vector<IprFactor>& factors() const { return factors_; }
    const IprFactor* factorFor(const std::string& wellName) const;

    bool save(int fd) const;
    // Replaces the factors with the block read from `fd`; a block with factors counts as a done
    // calculation. On failure the model is unchanged.
    bool load(int fd);

  private:
    void* context_;
    IprCallbacks callbacks_;
    std::vector<IprWell> wells_;
    WellListState wellListState_ = WellListState::kNeverStarted;
    std::vector<IprFactor> factors_;
    bool scalingDone_ = false;
    std::string lastError_;
    bool calculating_ = false;  // a callback may call back in; one calculation at a time
};

}  // namespace inflowkit
