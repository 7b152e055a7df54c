#include "wells/WellData.h"

namespace rivulet {

std::int32_t WellData::ProcessAccessString(CExtDataServerTag&, std::uint32_t) {
    return 0;
}

bool WellData::SetUnderVaneControl(std::string& warning) {
    const bool reverted = underTapServerControl;
    underTapServerControl = false;
    underVaneControl = true;
    if (reverted) warning = "Well has reverted from TapServer to VANE control.";
    return reverted;
}

}  // namespace rivulet
