// What a producer that is not flowing cannot report by itself: the surface densities and the hydrocarbon
// composition of the fluid it would produce at its maximum rates. Both reads fill only what the ordinary
// well reads could not give.
#pragma once

#include <string>

#include "wells/IprSampling.h"

namespace rivulet {

class TNavUnitSystem;
class WellList;
class WellRequester;

// For each producer with a maximum rate of at least 5e-5 in some phase that is not flowing, the surface
// density of each phase with a positive maximum that its production record lacks, in one call. The answers
// go to the density slots of the production record.
bool ReadDensitiesOfMaxRates(WellRequester& requester, WellList& wells, const PhaseRateTable& maxRates,
                             std::string& error);

// For the same producers, the composition of the gas and the oil that carry a mass worth counting at their
// maximum rates, in one call. A well with one such phase takes that phase's fractions; a well with two takes
// their molar mix by the component weights of its EOS region. False when a mix has no molar weight or a
// fraction is refused by the well's checked setter, with the setter's text.
bool ReadCompositionOfMaxRates(WellRequester& requester, int hcCount, WellList& wells,
                               const PhaseRateTable& maxRates, const TNavUnitSystem& units,
                               std::string& error);

}  // namespace rivulet
