// The simulator's wells in simulator index order; an access string reaches them as "Well".
#pragma once

#include <cstdint>
#include <vector>

#include "dataserver/DataServerObjectList.h"
#include "wells/WellData.h"

namespace rivulet {

class WellList : public CExcStdDataServerObjectList<WellData> {
  public:
    const char* GetTypeName() const override { return "Well"; }

    // 0, 1, 2, ... for every well, so that a call for all wells can pass it as its index array; grown
    // when the list has grown.
    const std::vector<std::int32_t>& AllIndices() {
        while (allIndices.size() < Count())
            allIndices.push_back(static_cast<std::int32_t>(allIndices.size()));
        return allIndices;
    }
    int Size() const { return static_cast<int>(Count()); }
    WellData& operator[](std::size_t index) { return *At(static_cast<long long>(index)); }
    const WellData& operator[](std::size_t index) const { return *At(static_cast<long long>(index)); }

  private:
    std::vector<std::int32_t> allIndices;
};

}  // namespace rivulet
