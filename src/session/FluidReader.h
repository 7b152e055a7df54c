// The static reads of the simulator's model when the reservoir is created: the math model name, the unit
// system and the fluid description, in that order. Every call writes its banner to the detailed API log; a
// failed call gives its message with the simulator's description, logs it and answers false.
#pragma once

#include <string>

#include "session/Requesters.h"

namespace rivulet {

class FluidProperties;
class TNavUnitSystem;

// "IsothermalBlackOil", "ThermalBlackOil", "Compositional" or "ThermalCompositional"; the empty name for a
// value the driver does not know, which is no failure.
bool ReadMathModelName(const StaticRequester& requester, std::string& name, std::string& error);
// Sets `units` up by the model's unit system.
bool ReadUnitSystem(const StaticRequester& requester, TNavUnitSystem& units, std::string& error);
// Clears `target` and reads the fluid of a model of that math model name into it. A failure leaves the
// target partly filled.
bool GetFluid(const StaticRequester& requester, const std::string& mathModelName, FluidProperties* target,
              std::string& error);

}  // namespace rivulet
