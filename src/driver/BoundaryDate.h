// Dates across the boundary: the host's serial number is the automation date minus one.
#pragma once

#include "driver/ExtRecords.h"
#include "platform/OleDate.h"

namespace rivulet {

// A null record gives a null date; flag bit 0 the serial number plus one; flag bit 1 that day at midnight
// (invalid if the calendar fields do not name a real day); otherwise a null date.
OleDate DateFromBoundary(const tDate* date);

// Stores the number less one and sets the flags to 1. A date that is not valid writes nothing: false.
bool DateToBoundary(const OleDate& date, tDate* out);

}  // namespace rivulet
