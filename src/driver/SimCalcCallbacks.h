// The six callbacks through which the inflow library drives a model by itself during its calibration.
#pragma once

namespace rivulet {

// Hands the six callbacks to the inflow library's model.
void InstallSimCalcCallbacks(void* iprModel);

}  // namespace rivulet
