// The simulator's wells in simulator index order.
#pragma once

#include <cstddef>
#include <vector>

#include "wells/WellData.h"

namespace rivulet {

class WellList {
  public:
    std::size_t Count() const { return wells_.size(); }
    bool IsEmpty() const { return wells_.empty(); }
    // Null for an index outside the list.
    WellData* At(long long index) {
        return index >= 0 && static_cast<std::size_t>(index) < wells_.size() ? &wells_[index] : nullptr;
    }
    const WellData* At(long long index) const {
        return index >= 0 && static_cast<std::size_t>(index) < wells_.size() ? &wells_[index] : nullptr;
    }
    void Add(WellData well) { wells_.push_back(std::move(well)); }
    void Clear() { wells_.clear(); }

    auto begin() { return wells_.begin(); }
    auto end() { return wells_.end(); }
    auto begin() const { return wells_.begin(); }
    auto end() const { return wells_.end(); }

  private:
    std::vector<WellData> wells_;
};

}  // namespace rivulet
