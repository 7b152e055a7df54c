// The simulator calls behind the inflow tables of the wells under the network's control: the phase of an
// injector without flow, the maximum rates, and the BHPs of the sampled rates. All wells share each call.
// Every stage returns true without a call when it has nothing to ask, and never retries.
#pragma once

#include <string>
#include <vector>

#include "wells/IprSampling.h"

namespace rivulet {

class TNavUnitSystem;
class WellList;
class WellRequester;

// Tells the simulator which phase each listed injector that does not flow is to be treated as: its
// injection phase, or the phase of its rate control when it has none.
bool SetZeroFlowInjectionPhases(WellRequester& requester, const WellList& wells,
                                const std::vector<int>& injectors, std::string& error);

// The maximum gas, oil and water rates of each listed producer into `maxRates`, not below zero.
bool ReadProducerMaxRates(WellRequester& requester, const WellList& wells, const std::vector<int>& producers,
                          PhaseRateTable& maxRates, std::string& error);

// The maximum rate of the one phase of each listed injector: gas or water by its injection phase, else by
// its rate control. An injector of oil, or of neither, is not asked for.
bool ReadInjectorMaxRates(WellRequester& requester, const WellList& wells, const std::vector<int>& injectors,
                          PhaseRateTable& maxRates, std::string& error);

// Samples every phase with a positive maximum between its minimum and maximum rate, with steps spaced by
// `alpha`, has the simulator give the BHPs, and compacts them into each well's table in field units. With
// nothing to sample every table is emptied and the simulator is not asked.
bool getIprTables(WellRequester& requester, WellList& wells, const PhaseRateTable* maxRates,
                  const PhaseRateTable* minRates, const TNavUnitSystem& units, double alpha,
                  std::string& error);

// The whole refresh of the tables, in order: zero-flow phases, maximum rates of producers and injectors,
// minimum rates, then getIprTables. The rate tables must hold one triple per well.
bool ReadIprTables(WellRequester& requester, WellList& wells, const std::vector<int>& injectors,
                   const std::vector<int>& producers, const TNavUnitSystem& units, double alpha,
                   PhaseRateTable& maxRates, PhaseRateTable& minRates, std::string& error);

}  // namespace rivulet
