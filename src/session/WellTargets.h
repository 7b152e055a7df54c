// Sending the wells' targets to the simulator at the start of each time step. The wells are sorted into
// groups that take the same calls; each group goes out in one batch: all its limits removed, its limits set
// with their values, then the target limit of each well. A rate well always keeps a BHP limit. Every call is
// logged to the detailed API log first, and the first failure ends the whole send.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rivulet {

class TNavUnitSystem;
class WellList;
class WellRequester;

// `UnconnectedState` of the case: what becomes of a well that neither the network nor an access string
// controls.
enum UnconnectedWellState : std::int32_t { kUnconnectedUnderDeck = 0, kUnconnectedShut = 1 };

// Statuses, efficiencies, injection phases, injector limits and targets, injector temperatures, the
// injected gas composition and producer limits and targets, then check_new_controls. An empty list sends
// nothing. Only the `targetStatus` of a well shut as unconnected is changed.
bool ApplyWellTargets(WellRequester& requester, WellList& wells, const TNavUnitSystem& units,
                      std::int32_t unconnectedState, std::string& error);

// The limits and targets of the listed injectors, in the groups BHP, pressure, rate and all. The BHP and
// pressure groups take their pressures from the wells at the head of the whole list, position for position.
bool SendInjectorTargets(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                         std::string& error);

// The limits and targets of the listed producers. A producer with a rate and a THP is sent at once, on its
// own, while the others are sorted; then the groups BHP, dual pressure, gas, oil, water, liquid and
// gas+liquid.
bool SendProducerTargets(WellRequester& requester, WellList& wells, const TNavUnitSystem& units,
                         const std::vector<int>& producers, std::string& error);

// One producer with its own list of limits: its liquid (or single oil or water) rate, its gas rate, a BHP
// and its THP. With both a liquid and a gas rate the target follows their ratio, in field units when
// `units` is given.
bool SendMixedControl(WellRequester& requester, WellList& wells, int index, const TNavUnitSystem* units,
                      std::string& error);

}  // namespace rivulet
