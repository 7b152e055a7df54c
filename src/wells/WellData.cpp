#include "wells/WellData.h"

#include <algorithm>
#include <cmath>

#include "common/Trim.h"
#include "dataserver/FluidProperties.h"

namespace rivulet {

namespace {

constexpr double kNoValue = 3.4e35;

}  // namespace

void WellRateRecord::Reset() {
    values.fill(0.0);
    values[kEfficiency] = 1.0;
}

bool WellRateRecord::IsDefault() const {
    for (int k = 0; k < kSize; ++k) {
        if (values[static_cast<std::size_t>(k)] != (k == kEfficiency ? 1.0 : 0.0)) return false;
    }
    return true;
}

void WellComposition::SizeParams() {
    // Only hydrocarbon components' parameters are ever read: water components alone need no room.
    componentParams.assign(hcCount > 0 ? static_cast<std::size_t>(hcCount + waterCount) * 4 : 0, 0.0);
}

void WellComposition::SetHcCount(std::int32_t count) {
    hcCount = std::max(count, 0);
    cumFractions.assign(static_cast<std::size_t>(hcCount), 0.0);
    rateFractions.assign(static_cast<std::size_t>(hcCount), 0.0);
    SizeParams();
}

void WellComposition::SetWaterCount(std::int32_t count) {
    waterCount = std::max(count, 0);
    SizeParams();
}

double WellComposition::HcParam(int block, int component) const {
    const long long at = static_cast<long long>(waterCount + hcCount) * block + waterCount + component;
    if (component < 0 || at < 0 || at >= static_cast<long long>(componentParams.size())) return -1.0;
    return componentParams[static_cast<std::size_t>(at)];
}

namespace {

// Each component's share of the sum of two of its molar parameters, each clamped at 0.
std::vector<double> Shares(const WellComposition& c, int liquidBlock, int gasBlock) {
    std::vector<double> shares(static_cast<std::size_t>(c.hcCount), 0.0);
    double sum = 0.0;
    for (int k = 0; k < c.hcCount; ++k) {
        const double moles = std::max(c.HcParam(liquidBlock, k), 0.0) + std::max(c.HcParam(gasBlock, k), 0.0);
        shares[static_cast<std::size_t>(k)] = moles;
        sum += moles;
    }
    if (sum > 0.0) {
        for (double& share : shares) share /= sum;
    } else {
        std::fill(shares.begin(), shares.end(), 0.0);
    }
    return shares;
}

}  // namespace

std::vector<double> WellComposition::ComputedRateFractions() const {
    return Shares(*this, 0, 1);
}

void WellComposition::RecomputeFractions() {
    if (!rateFractions.empty()) rateFractions = Shares(*this, 0, 1);
    if (!cumFractions.empty()) cumFractions = Shares(*this, 2, 3);
}

std::string WellData::CleanWellName(const std::string& raw) {
    std::string text = Trimmed(raw);
    if (text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'')) {
        text = text.substr(1, text.size() - 2);
    }
    return text;
}

const char* WellData::StatusText(std::int32_t status) {
    switch (status) {
        case kStatusOpenProducer:
        case kStatusOpenInjector:
            return "Open";
        case kStatusShut:
            return "Shut";
        case kStatusStop:
            return "Stop";
        default:
            return "";
    }
}

const char* WellData::TypeText(std::int32_t type) {
    if (type == kWellInjector) return "Injector";
    if (type == kWellProducer) return "Producer";
    return "";
}

const char* WellData::PhaseText(std::int32_t phase) {
    if (phase == kPhaseWater) return "Water";
    if (phase == kPhaseOil) return "Oil";
    if (phase == kPhaseGas) return "Gas";
    return "";
}

void WellData::SetWellStatus(std::int32_t newStatus) {
    targetStatus = newStatus;
    if (status == newStatus) return;
    // A well takes its type from the first open status it is given, and keeps it.
    if (wellType == kWellUndefined) {
        if (newStatus == kStatusOpenInjector) wellType = kWellInjector;
        if (newStatus == kStatusOpenProducer) wellType = kWellProducer;
    }
    status = newStatus;
    injectionRecord.Reset();
    productionRecord.Reset();
    auxRecord.fill(0.0);
}

bool WellData::SetUnderVaneControl(std::string& warning) {
    if (underTapServerControl) warning = "Well has reverted from TapServer to VANE control.";
    underVaneControl = true;
    underTapServerControl = false;
    return true;
}

bool WellData::SetUnderTapServerControl(std::string& error) {
    if (underVaneControl) {
        error = "Cannot apply TapServer control to a well under VANE control.";
        return false;
    }
    underTapServerControl = true;
    return true;
}

double WellData::Result(int index) const {
    double value = 0.0;
    if (wellType == kWellProducer) {
        value = productionRecord[index];
    } else if (wellType == kWellInjector) {
        value = injectionRecord[index];
    } else {
        value = std::max(productionRecord[index], injectionRecord[index]);
    }
    const bool rateOrTotal = index >= WellRateRecord::kWater && index <= WellRateRecord::kCumGas;
    return rateOrTotal ? std::max(value, 0.0) : value;
}

double WellData::Temperature() const {
    if (fluid != nullptr && !fluid->IsThermal()) return kNoValue;
    return Result(WellRateRecord::kTemperature);
}

double WellData::Density(int index) const {
    if (wellType == kWellInjector && injectionRecord[index] > 0.0) return injectionRecord[index];
    if (wellType == kWellProducer && productionRecord[index] > 0.0) return productionRecord[index];
    if (fluid != nullptr) {
        if (index == WellRateRecord::kWaterDensity) return fluid->WaterDensity(pvtRegion);
        if (fluid->IsBlackOil()) {
            return index == WellRateRecord::kOilDensity ? fluid->OilDensity(pvtRegion)
                                                        : fluid->GasDensity(pvtRegion);
        }
    }
    return std::max({productionRecord[index], injectionRecord[index], 0.0});
}

}  // namespace rivulet
