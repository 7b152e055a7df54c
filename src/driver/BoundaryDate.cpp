#include "driver/BoundaryDate.h"

namespace rivulet {

OleDate DateFromBoundary(const tDate* date) {
    if (date == nullptr) return OleDate::Null();
    if ((date->bFlags & kDateSerialValid) != 0) return OleDate::FromDays(date->dSerial + 1.0);
    if ((date->bFlags & kDateFieldsValid) != 0) {
        return OleDate::FromCalendar({date->iYear, date->iMonth, date->iDay, 0, 0, 0});
    }
    return OleDate::Null();
}

bool DateToBoundary(const OleDate& date, tDate* out) {
    if (out == nullptr || !date.IsValid()) return false;
    out->dSerial = date.Days() - 1.0;
    out->bFlags = kDateSerialValid;
    return true;
}

}  // namespace rivulet
