#include "IprModel.h"

#include <optional>
#include <utility>

#include "IprBlock.h"

namespace inflowkit {

void IprModel::startWellList() {
    wells_.clear();
    wellListState_ = WellListState::kOpen;
}

void IprModel::addWell(IprWell well) {
    wells_.push_back(std::move(well));
}

void IprModel::endWellList() {
    wellListState_ = WellListState::kClosed;
}

bool IprModel::setup(uint64_t /*parentWindow*/) {
    return false;
}

bool IprModel::transform(const char* /*wellName*/, const _tGetSetData* /*present*/,
                         _tGetSetData* /*table*/) const {
    // Factors restored from a block are kept for saving, but applying them needs the table
    // layout, which this build does not know; with no calculation done there is nothing to apply.
    return true;
}

bool IprModel::save(int fd) const {
    return IprBlock::write(fd, factors_);
}

bool IprModel::load(int fd) {
    std::optional<std::vector<IprFactor>> factors = IprBlock::read(fd);
    if (!factors) return false;
    factors_ = std::move(*factors);
    return true;
}

}  // namespace inflowkit
