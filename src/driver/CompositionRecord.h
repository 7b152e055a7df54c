// The host's composition record filled from one EOS region of the fluid: names, the component properties in
// the host's units, the interaction coefficients and the equation of state.
#pragma once

#include <cstdint>
#include <string>

#include "driver/ExtRecords.h"

namespace rivulet {

class FluidProperties;
class TNavUnitSystem;

// Fills `record` from the 1-based `eosRegion`. A null record or fluid, a black-oil fluid or a region below 1
// writes nothing and succeeds. False, with the text in `error`, for a component count the record cannot
// hold. The record's size field is left alone.
bool FillCompositionRecord(tCompositionData* record, const FluidProperties* fluid, std::int32_t eosRegion,
                           const TNavUnitSystem& units, std::string& error);

}  // namespace rivulet
