#include "session/WellParamBatch.h"

#include <algorithm>
#include <iterator>

#include "wells/WellList.h"

namespace rivulet {

namespace {

using Param = tNavigator_API_RMA_well_parameter_t;

// Injector lists: rates, totals and pressures, and the temperature for thermal models.
constexpr Param kInjector10[] = {TNAV_WELL_WATER_INJ,
                                 TNAV_WELL_OIL_INJ,
                                 TNAV_WELL_RC_LIQUID_INJ,
                                 TNAV_WELL_GAS_INJ,
                                 TNAV_WELL_ACCUM_WATER_INJ,
                                 TNAV_WELL_ACCUM_OIL_INJ,
                                 TNAV_WELL_ACCUM_RC_LIQUID_INJ,
                                 TNAV_WELL_ACCUM_GAS_INJ,
                                 TNAV_WELL_BHP,
                                 TNAV_WELL_THP};
constexpr Param kInjector11[] = {TNAV_WELL_WATER_INJ,
                                 TNAV_WELL_OIL_INJ,
                                 TNAV_WELL_RC_LIQUID_INJ,
                                 TNAV_WELL_GAS_INJ,
                                 TNAV_WELL_ACCUM_WATER_INJ,
                                 TNAV_WELL_ACCUM_OIL_INJ,
                                 TNAV_WELL_ACCUM_RC_LIQUID_INJ,
                                 TNAV_WELL_ACCUM_GAS_INJ,
                                 TNAV_WELL_BHP,
                                 TNAV_WELL_THP,
                                 TNAV_WELL_TEMPERATURE};
// Producer lists: the same, then the three surface densities.
constexpr Param kProducer13[] = {TNAV_WELL_WATER_RATE,
                                 TNAV_WELL_OIL_RATE,
                                 TNAV_WELL_RC_LIQUID_RATE,
                                 TNAV_WELL_GAS_RATE,
                                 TNAV_WELL_ACCUM_WATER_RATE,
                                 TNAV_WELL_ACCUM_OIL_RATE,
                                 TNAV_WELL_ACCUM_RC_LIQUID_RATE,
                                 TNAV_WELL_ACCUM_GAS_RATE,
                                 TNAV_WELL_BHP,
                                 TNAV_WELL_THP,
                                 TNAV_WELL_WATER_DENSITY,
                                 TNAV_WELL_OIL_DENSITY,
                                 TNAV_WELL_GAS_DENSITY};
constexpr Param kProducer14[] = {TNAV_WELL_WATER_RATE,
                                 TNAV_WELL_OIL_RATE,
                                 TNAV_WELL_RC_LIQUID_RATE,
                                 TNAV_WELL_GAS_RATE,
                                 TNAV_WELL_ACCUM_WATER_RATE,
                                 TNAV_WELL_ACCUM_OIL_RATE,
                                 TNAV_WELL_ACCUM_RC_LIQUID_RATE,
                                 TNAV_WELL_ACCUM_GAS_RATE,
                                 TNAV_WELL_BHP,
                                 TNAV_WELL_THP,
                                 TNAV_WELL_TEMPERATURE,
                                 TNAV_WELL_WATER_DENSITY,
                                 TNAV_WELL_OIL_DENSITY,
                                 TNAV_WELL_GAS_DENSITY};
constexpr Param kComponent4[] = {TNAV_WELL_WATER_RATE, TNAV_WELL_OIL_RATE, TNAV_WELL_RC_LIQUID_RATE,
                                 TNAV_WELL_GAS_RATE};

template <std::size_t N>
std::unique_ptr<WellParamBatch> Batch(const Param (&list)[N]) {
    return std::make_unique<WellParamBatch>(list, static_cast<std::int32_t>(N));
}

}  // namespace

void WellParamBatch::Fit() {
    const auto count = static_cast<std::int32_t>(wells.size());
    if (count != wellCount || values.size() != static_cast<std::size_t>(count) * paramCount) {
        values.assign(static_cast<std::size_t>(count) * static_cast<std::size_t>(paramCount), 0.0);
        wellCount = count;
    } else {
        std::fill(values.begin(), values.end(), 0.0);
    }
}

WellParamBatches WellParamBatches::ForFluidKind(std::int32_t kind) {
    WellParamBatches batches;
    switch (kind) {
        case 1:
        case 3:
        case 5:
            batches.injector = Batch(kInjector10);
            batches.producer = Batch(kProducer13);
            break;
        case 4:
        case 6:
            batches.third = Batch(kComponent4);
            [[fallthrough]];
        case 2:
            batches.injector = Batch(kInjector11);
            batches.producer = Batch(kProducer14);
            break;
        default:
            break;
    }
    return batches;
}

void PartitionWells(const WellList& wells, WellParamBatches& batches, bool skipUndefined, bool onlyVane) {
    WellParamBatch* all[] = {batches.injector.get(), batches.producer.get(), batches.third.get()};
    for (WellParamBatch* batch : all) {
        if (batch != nullptr) batch->wells.clear();
    }
    std::int32_t index = 0;
    for (const WellData& well : wells) {
        const std::int32_t k = index++;
        if (onlyVane && !well.underVaneControl) continue;
        const bool undefined = well.wellType == kWellUndefined;
        if (undefined && skipUndefined) continue;
        if ((well.IsInjector() || undefined) && batches.injector) batches.injector->wells.push_back(k);
        if ((well.IsProducer() || undefined) && batches.producer) batches.producer->wells.push_back(k);
    }
    for (WellParamBatch* batch : all) {
        if (batch != nullptr) batch->Fit();
    }
}

}  // namespace rivulet
