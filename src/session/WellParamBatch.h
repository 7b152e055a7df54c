// A group of wells read together with one parameter list: injectors, producers, or the component group of
// thermal compositional models. `values` holds one row of `paramCount` values per well of `wells`.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tNavigator_API_RMA.h"

namespace rivulet {

class WellList;

class WellParamBatch {
  public:
    WellParamBatch(const tNavigator_API_RMA_well_parameter_t* parameters, std::int32_t count)
        : params(parameters), paramCount(count) {}

    // Makes `values` fit the wells now listed, reallocating only when their number changed, and zeroes it.
    void Fit();
    double Value(int row, int column) const {
        return values[static_cast<std::size_t>(row) * static_cast<std::size_t>(paramCount) +
                      static_cast<std::size_t>(column)];
    }

    const tNavigator_API_RMA_well_parameter_t* params;
    std::int32_t paramCount;
    std::int32_t wellCount = 0;
    std::vector<double> values;
    std::vector<std::int32_t> wells;
};

// The session's batches for one fluid kind: none for an unknown kind, the third only for thermal
// compositional models.
struct WellParamBatches {
    std::unique_ptr<WellParamBatch> injector;
    std::unique_ptr<WellParamBatch> producer;
    std::unique_ptr<WellParamBatch> third;

    static WellParamBatches ForFluidKind(std::int32_t kind);
};

// Sorts the wells into the batches by type: an untyped well goes to both unless `skipUndefined`, and with
// `onlyVane` only wells under the network's control are taken. The third batch receives none.
void PartitionWells(const WellList& wells, WellParamBatches& batches, bool skipUndefined, bool onlyVane);

}  // namespace rivulet
