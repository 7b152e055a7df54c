// The host's dates and the coupled timestep.
#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"

namespace rivulet {

std::int32_t CExtModel::Timestep(tTimestepData* step, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (step == nullptr) {
        WriteText(err, "Timestep() called with a null pstTimestep.");
        return 1;
    }
    Guard lock(Lock);
    if (!IsConnected()) {
        WriteText(err, "Timestep() called when the simulation process is not running.");
        return 1;
    }
    if (!Reservoir) {
        WriteText(err, "Timestep() was called before reservoir data was created.");
        return 1;
    }
    // Stepping needs a session that reaches a simulator; no session of this build is ever connected.
    WriteText(err, "The simulator cannot be stepped by this build of the driver.");
    return 1;
}

std::int32_t CExtModel::GetStartDate(tDate* date, tErrorRecord* err) {
    if (date == nullptr) {
        WriteText(err, "A null data item was provided to GetStartDate().");
        return 1;
    }
    // The current date comes first, so the answer moves on with the run.
    if (DateToBoundary(CurrentDate, date) || DateToBoundary(StartDate, date)) return 0;
    WriteText(err, "The start date has not been set.");
    return 1;
}

std::int32_t CExtModel::GetNextEvent(tDate* date, tErrorRecord* err) {
    if (date == nullptr) {
        WriteText(err, "A null data item was provided to GetNextEvent().");
        return 1;
    }
    Guard lock(Lock);
    if (!Reservoir) return 1;
    // Without a session the next event is the deck's end.
    const OleDate next = EndDate;
    if (!next.IsValid()) return 1;
    if (CurrentDate.IsValid() && (CurrentDate > next || CurrentDate == next)) return 1;
    return DateToBoundary(next, date) ? 0 : 1;
}

bool CExtModel::CheckEndDate(const tDate* target, tErrorRecord*) const {
    // The deck's end date is the session's; with no session the check fails without a message.
    (void)target;
    return false;
}

}  // namespace rivulet
