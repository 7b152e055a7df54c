// What the driver knows of the simulator's model: fluid, unit system and wells. Made afresh whenever the
// simulator's model is read; whoever replaces it empties the well list first.
#pragma once

#include <vector>

#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"
#include "wells/WellList.h"

namespace rivulet {

struct ReservoirData {
    FluidProperties fluid;
    TNavUnitSystem units;
    WellList wells;
    std::vector<int> spare;  // a further list, always empty

    ~ReservoirData() { wells.Clear(); }
};

}  // namespace rivulet
