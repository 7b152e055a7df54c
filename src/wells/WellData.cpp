#include "wells/WellData.h"

namespace rivulet {

bool WellData::SetUnderVaneControl(std::string& warning) {
    const bool reverted = underTapServerControl;
    underTapServerControl = false;
    underVaneControl = true;
    if (reverted) warning = "Well has reverted from TapServer to VANE control.";
    return reverted;
}

}  // namespace rivulet
