// The fluid description of the simulator's model, read once when the reservoir is created.
#pragma once

#include <cstdint>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

class FluidProperties : public CExtDataServerObject {
  public:
    // 1 isothermal black oil, 2 thermal black oil, 3 to 6 compositional; 0 when not set.
    std::int32_t modelType = 0;
    std::int32_t eosRegionCount = 0;

    bool IsBlackOil() const { return modelType == 1 || modelType == 2; }

    std::string GetDataServerName() const override { return "FluidProperties"; }
    // The fluid's variables are not served by this build: every name is left unrecognised.
    std::int32_t ProcessAccessString(CExtDataServerTag&, std::uint32_t = 0) override { return 0; }
};

}  // namespace rivulet
