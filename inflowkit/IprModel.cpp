#include "IprModel.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "GetSetRecord.h"
#include "IprBlock.h"
#include "IprCalibration.h"

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
    if (calculating_) {
        lastError_ = "a calculation is already running on this model";
        return false;
    }
    struct Running {
        bool& flag;
        explicit Running(bool& f) : flag(f) { flag = true; }
        ~Running() { flag = false; }
    } running(calculating_);

    CalibrationOutcome outcome = IprCalibration::run(context_, callbacks_, wells_);
    if (!outcome.error.empty()) {
        lastError_ = std::move(outcome.error);
        return false;
    }
    factors_ = std::move(outcome.factors);
    scalingDone_ = true;
    return true;
}

const IprFactor* IprModel::factorFor(const std::string& wellName) const {
    const auto it = std::find_if(factors_.begin(), factors_.end(),
                                 [&](const IprFactor& f) { return f.wellName == wellName; });
    return it == factors_.end() ? nullptr : &*it;
}

bool IprModel::transform(const char* wellName, const _tGetSetData* /*present*/, _tGetSetData* table) const {
    if (wellName == nullptr || table == nullptr) return false;
    const IprFactor* factor = factorFor(wellName);
    if (factor == nullptr) return true;
    using getset::Column;
    const int rows = getset::rowCount(table);
    for (const Column column : {Column::kOil, Column::kWater, Column::kGas, Column::kMass}) {
        for (int row = 0; row < rows; ++row) {
            const double v = getset::read(table, column, row);
            if (getset::hasValue(v)) getset::write(table, column, row, v * factor->factor);
        }
    }
    return true;
}

bool IprModel::save(int fd) const {
    return IprBlock::write(fd, factors_);
}

bool IprModel::load(int fd) {
    std::optional<std::vector<IprFactor>> factors = IprBlock::read(fd);
    if (!factors) return false;
    factors_ = std::move(*factors);
    scalingDone_ = !factors_.empty();
    return true;
}

}  // namespace inflowkit
