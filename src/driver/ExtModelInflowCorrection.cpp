// The case's corrected inflow: the inflow library's calculation, started as the case dialog's button starts
// it, and whether there is a calculation to redo.
#include <array>
#include <string>
#include <vector>

#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"
#include "wells/WellControl.h"

namespace rivulet {

std::int32_t CExtModel::CalculateIprCorrection(HostWindow parent, const CaseSettings& caseSettings) {
    CaseSettings kept;
    std::vector<WellControlState> controls;
    std::array<OleDate, 5> dates;
    std::int32_t steps = 0;
    bool initialised = false;
    {
        Guard lock(Lock);
        kept = Settings;
        Settings = caseSettings;
        if (Reservoir) controls = CaptureControls(Reservoir->wells);
        dates = {StartDate, CurrentDate, EndDate, ReportDate, SpareDate};
        steps = StepCount;
        initialised = RunInitialised;
    }
    // The library drives the model back through its callbacks, each of which takes the lock itself.
    const std::int32_t result = SetupIPR(parent, IprModel);
    Stop();

    // The calculation ran the case from its start; what the user had before it comes back.
    Guard lock(Lock);
    Settings = kept;
    StartDate = dates[0];
    CurrentDate = dates[1];
    EndDate = dates[2];
    ReportDate = dates[3];
    SpareDate = dates[4];
    StepCount = steps;
    RunInitialised = initialised;
    if (Reservoir) RestoreControls(Reservoir->wells, controls);
    return result;
}

bool CExtModel::HasCalculatedIpr() const {
    Guard lock(Lock);
    return Reservoir && Reservoir->wells.Size() > 0 && HasDoneScalingCalculation(IprModel) != 0;
}

}  // namespace rivulet
