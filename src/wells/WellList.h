// The simulator's wells in simulator index order; an access string reaches them as "Well".
#pragma once

#include "dataserver/DataServerObjectList.h"
#include "wells/WellData.h"

namespace rivulet {

class WellList : public CExcStdDataServerObjectList<WellData> {
  public:
    const char* GetTypeName() const override { return "Well"; }
};

}  // namespace rivulet
