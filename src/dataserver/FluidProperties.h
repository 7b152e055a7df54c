// The fluid description of the simulator's model, read once when the reservoir is created.
#pragma once

#include <cstdint>

namespace rivulet {

class FluidProperties {
  public:
    // 1 isothermal black oil, 2 thermal black oil, 3 to 6 compositional; 0 when not set.
    std::int32_t modelType = 0;
    std::int32_t eosRegionCount = 0;

    bool IsBlackOil() const { return modelType == 1 || modelType == 2; }
};

}  // namespace rivulet
