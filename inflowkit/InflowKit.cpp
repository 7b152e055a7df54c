// Exported C entry points. Each one turns the opaque handle back into an IprModel and keeps every
// exception on this side of the C boundary.

#include "inflowkit/InflowKit.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "IprModel.h"

using inflowkit::IprModel;

namespace {

IprModel* asModel(void* model) {
    return static_cast<IprModel*>(model);
}

// Runs `body` on the model; a null model or any exception yields `fallback`.
template <typename Result, typename Body>
Result guarded(void* model, Result fallback, Body&& body) noexcept {
    if (model == nullptr) return fallback;
    try {
        return std::forward<Body>(body)(*asModel(model));
    } catch (...) {
        return fallback;
    }
}

template <typename Body>
void guardedVoid(void* model, Body&& body) noexcept {
    if (model == nullptr) return;
    try {
        std::forward<Body>(body)(*asModel(model));
    } catch (...) {
    }
}

constexpr int32_t kOk = 0;
constexpr int32_t kFailed = 1;

int fileDescriptor(void* file) {
    return static_cast<int>(reinterpret_cast<intptr_t>(file));
}

}  // namespace

extern "C" {

void* CreateIPRModel(void* context) {
    return new (std::nothrow) IprModel(context);
}

void SetIPRCallbacks(void* model, IPRElapsedTimeCallback elapsedTime,
                     IPRInitialiseForSimCalcCallback initialise, IPRSetWellCtrlForSimCalcCallback setWellCtrl,
                     IPRRunToForSimCalcCallback runTo, IPRGetWellBlockIPRForSimCalcCallback getWellBlockIpr,
                     IPRGetWellRatesForSimCalcCallback getWellRates) {
    guardedVoid(model, [&](IprModel& m) {
        m.setCallbacks({elapsedTime, initialise, setWellCtrl, runTo, getWellBlockIpr, getWellRates});
    });
}

void DestroyIPRModel(void* model) {
    delete asModel(model);
}

void StartIPRAddWell(void* model) {
    guardedVoid(model, [](IprModel& m) { m.startWellList(); });
}

void AddIPRWell(void* model, int32_t index, const char* name, bool producer, bool liquid) {
    guardedVoid(model, [&](IprModel& m) { m.addWell({index, name ? name : "", producer, liquid}); });
}

void EndIPRAddWell(void* model) {
    guardedVoid(model, [](IprModel& m) { m.endWellList(); });
}

int32_t SetupIPR(uint64_t parentWindow, void* model) {
    return guarded(model, kFailed, [&](IprModel& m) { return m.setup(parentWindow) ? kOk : kFailed; });
}

int32_t HasDoneScalingCalculation(void* model) {
    return guarded(model, int32_t{0}, [](IprModel& m) { return m.hasDoneScalingCalculation() ? 1 : 0; });
}

int32_t TransformIPR(void* model, const char* wellName, const _tGetSetData* present, _tGetSetData* table) {
    return guarded(model, kFailed,
                   [&](IprModel& m) { return m.transform(wellName, present, table) ? kOk : kFailed; });
}

int32_t SaveIPR(void* model, void* file) {
    return guarded(model, kFailed, [&](IprModel& m) { return m.save(fileDescriptor(file)) ? kOk : kFailed; });
}

int32_t LoadIPR(void* model, void* file) {
    return guarded(model, kFailed, [&](IprModel& m) { return m.load(fileDescriptor(file)) ? kOk : kFailed; });
}

int32_t InflowKitInspectWellCount(void* model) {
    return guarded(model, int32_t{0}, [](IprModel& m) { return static_cast<int32_t>(m.wells().size()); });
}

int32_t InflowKitInspectWell(void* model, int32_t i, int32_t* index, const char** name, bool* producer,
                             bool* liquid) {
    return guarded(model, int32_t{0}, [&](IprModel& m) {
        if (i < 0 || static_cast<std::size_t>(i) >= m.wells().size()) return 0;
        const inflowkit::IprWell& well = m.wells()[static_cast<std::size_t>(i)];
        if (index) *index = well.index;
        if (name) *name = well.name.c_str();
        if (producer) *producer = well.producer;
        if (liquid) *liquid = well.liquid;
        return 1;
    });
}

int32_t InflowKitInspectWellListState(void* model) {
    return guarded(model, int32_t{0}, [](IprModel& m) { return static_cast<int32_t>(m.wellListState()); });
}

void* InflowKitInspectContext(void* model) {
    return guarded(model, static_cast<void*>(nullptr), [](IprModel& m) { return m.context(); });
}

int32_t InflowKitInspectCallbacks(void* model, IPRElapsedTimeCallback* elapsedTime,
                                  IPRInitialiseForSimCalcCallback* initialise,
                                  IPRSetWellCtrlForSimCalcCallback* setWellCtrl,
                                  IPRRunToForSimCalcCallback* runTo,
                                  IPRGetWellBlockIPRForSimCalcCallback* getWellBlockIpr,
                                  IPRGetWellRatesForSimCalcCallback* getWellRates) {
    return guarded(model, int32_t{0}, [&](IprModel& m) {
        const inflowkit::IprCallbacks& c = m.callbacks();
        if (elapsedTime) *elapsedTime = c.elapsedTime;
        if (initialise) *initialise = c.initialise;
        if (setWellCtrl) *setWellCtrl = c.setWellCtrl;
        if (runTo) *runTo = c.runTo;
        if (getWellBlockIpr) *getWellBlockIpr = c.getWellBlockIpr;
        if (getWellRates) *getWellRates = c.getWellRates;
        return 1;
    });
}

int32_t InflowKitInspectFactor(void* model, const char* wellName, double* factor) {
    return guarded(model, int32_t{0}, [&](IprModel& m) {
        const inflowkit::IprFactor* found = wellName ? m.factorFor(wellName) : nullptr;
        if (found == nullptr) return 0;
        if (factor) *factor = found->factor;
        return 1;
    });
}

const char* InflowKitInspectLastError(void* model) {
    return guarded(model, "", [](IprModel& m) { return m.lastError().c_str(); });
}

}  // extern "C"
