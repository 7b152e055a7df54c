// Dates between the driver's automation dates and the simulator's calendar moments.
#pragma once

#include "platform/OleDate.h"
#include "tNavigator_API_RMA.h"

namespace rivulet {

// Each field is kept in 16 bits, as the platform's system time keeps it; the date is valid only when the
// fields name a real moment and come back unchanged from the date (31 April is invalid, not 1 May).
OleDate DateFromMoment(const tNavigator_API_RMA_time_moment_t& moment);

// The date's fields rounded to the nearest second; a date that is not valid gives -1 in every field.
tNavigator_API_RMA_time_moment_t MomentFromDate(const OleDate& date);

}  // namespace rivulet
