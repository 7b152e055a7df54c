// The driver's side of the simulator's well data requester: one wrapper per batched call, each writing
// its banner, arguments and failures to the detailed API log, and the default limits of the job's wells.
// Every wrapper returns true without a call for an empty list, and never retries.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tNavigator_API_RMA.h"

namespace rivulet {

class FluidProperties;
class WellData;
class WellList;

class WellRequester {
  public:
    WellRequester(tNavigator_API_RMA_well_data_requester_t* requester, std::ostream* log)
        : Requester(requester), Log(log) {}

    // --- Identity reads, once per job ---

    // Appends that many wells, each bound to `fluid`.
    bool ReadWellCount(WellList& wells, const FluidProperties* fluid, std::string& error);
    bool ReadWellNames(WellList& wells, std::string& error);
    bool ReadFirstActiveStatuses(WellList& wells, std::string& error);
    // Nothing is read for a black-oil model.
    bool ReadEosRegions(bool blackOil, WellList& wells, std::string& error);
    bool ReadPvtRegions(WellList& wells, std::string& error);

    // --- State reads, at every refresh ---

    bool ReadStatuses(WellList& wells, std::string& error);
    bool ReadInjectorPhases(WellList& wells, std::string& error);
    bool ReadEfficiencies(const std::vector<int>& wells, std::vector<double>& factors, std::string& error);
    bool ReadParams(const std::vector<int>& wells, const tNavigator_API_RMA_well_parameter_t* params,
                    int paramCount, double* values, std::string& error);
    // The four molar parameters of every water and hydrocarbon component of every well.
    bool ReadComponentParams(int waterCount, int hcCount, WellList& wells, std::string& error);

    // --- Writes that act at once ---

    // Opens the well as an injector of `phase` (0 water, 1 oil, 2 gas): status, phase, the phase for
    // inflow tables when shut, and the initial limits of an injector under the network.
    bool SetWellAsVaneInjector(int phase, int index, WellData& well, std::string& error);
    // Sends the injection phase of each listed well again.
    bool ResetInjectorPhases(WellList& wells, const int* indices, int count, std::string& error);

    tNavigator_API_RMA_well_data_requester_t* Requester;
    double defaultInjectorBhp = 1.47e7;
    double defaultProducerBhp = 0.0;
    double minGasRateCap = 0.0;
    double minLiquidRateCap = 0.0;
    std::ostream* Log;

    // For every wrapper of the requester, here and in the reads and writes built on it:
    // Formats `format` with the simulator's description, logs it between newlines and stores it in error.
    bool Fail(const char* format, const tNavigator_API_RMA_error_t& result, std::string& error) const;
    bool Thrown(const char* text, std::string& error) const;
};

}  // namespace rivulet
