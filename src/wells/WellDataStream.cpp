// The well's stream form: identity, flags, statuses, the two result records, the spare record, the target,
// the inflow table, the regions and the composition.
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/BinaryArchive.h"
#include "wells/WellData.h"

namespace rivulet {

namespace {

// Streams before version 3 hold no efficiency in the records.
constexpr std::int32_t kFirstVersionWithEfficiency = 3;
// Stored rate fractions further than this from those the rates give are not kept.
constexpr double kFractionTolerance = 1e-9;
// The most components a loaded composition may name.
constexpr std::size_t kMaxHcComponents = 10'000;
constexpr std::size_t kMaxWaterComponents = 100;

// A bool is one byte; any nonzero byte reads as true.
void TransferBool(BinaryArchive& archive, bool& value) {
    std::uint8_t byte = value ? 1 : 0;
    archive.Transfer(byte);
    value = byte != 0;
}

// Statuses, phase, type and rate control are small codes held in one byte each.
void TransferByte(BinaryArchive& archive, std::int32_t& value) {
    auto byte = static_cast<std::uint8_t>(value);
    archive.Transfer(byte);
    value = byte;
}

// A flag for a record at its constructed values, else the values 0 to 10, the densities, then the
// efficiency, which older streams do not hold.
void TransferRecord(BinaryArchive& archive, WellRateRecord& record, std::int32_t version) {
    bool isDefault = archive.IsStoring() && record.IsDefault();
    TransferBool(archive, isDefault);
    if (!archive.IsStoring()) record.Reset();
    if (isDefault) return;
    for (int k = WellRateRecord::kWater; k <= WellRateRecord::kTemperature; ++k) archive.Transfer(record[k]);
    for (int k = WellRateRecord::kWaterDensity; k <= WellRateRecord::kGasDensity; ++k) {
        archive.Transfer(record[k]);
    }
    if (version >= kFirstVersionWithEfficiency) archive.Transfer(record[WellRateRecord::kEfficiency]);
}

void TransferAux(BinaryArchive& archive, std::array<double, 4>& aux) {
    bool allZero = true;
    if (archive.IsStoring()) {
        for (const double value : aux) allZero = allZero && value == 0.0;
    }
    TransferBool(archive, allZero);
    if (!archive.IsStoring()) aux.fill(0.0);
    if (allZero) return;
    for (double& value : aux) archive.Transfer(value);
}

// An i32 count and that many doubles; a loaded count the stream cannot hold fails before any is read.
void TransferDoubles(BinaryArchive& archive, std::vector<double>& values) {
    auto count = static_cast<std::int32_t>(values.size());
    archive.TransferCount(count, sizeof(double), BinaryArchive::kMaxElements);
    if (archive.IsStoring()) {
        for (double& value : values) archive.Transfer(value);
        return;
    }
    std::vector<double> loaded;
    for (std::int32_t i = 0; i < count; ++i) {
        double value = 0.0;
        archive.Transfer(value);
        loaded.push_back(value);
    }
    values = std::move(loaded);
}

bool RatesAllZero(const WellComposition& composition) {
    for (int k = 0; k < composition.hcCount; ++k) {
        if (composition.HcParam(0, k) != 0.0 || composition.HcParam(1, k) != 0.0) return false;
    }
    return true;
}

// The stored rate fractions are written only while the rates still give them and there are rates.
std::vector<double> FractionsToStore(const WellComposition& composition) {
    if (RatesAllZero(composition)) return {};
    const std::vector<double> computed = composition.ComputedRateFractions();
    if (computed.size() != composition.rateFractions.size()) return {};
    for (std::size_t k = 0; k < computed.size(); ++k) {
        if (std::fabs(computed[k] - composition.rateFractions[k]) > kFractionTolerance) return {};
    }
    return composition.rateFractions;
}

void StoreComposition(BinaryArchive& archive, const WellComposition& composition) {
    std::int32_t hcCount = composition.hcCount;
    std::int32_t waterCount = composition.waterCount;
    archive.Transfer(hcCount);
    archive.Transfer(waterCount);
    if (hcCount <= 0) return;
    std::vector<double> params = composition.componentParams;
    TransferDoubles(archive, params);
    std::vector<double> fractions = FractionsToStore(composition);
    TransferDoubles(archive, fractions);
}

void LoadComposition(BinaryArchive& archive, WellComposition& composition) {
    // Setting the counts sizes the parameters, so both are checked first: hydrocarbon components are followed
    // by at least a double each, and water components alone bring nothing more.
    const auto hcCount = static_cast<std::int32_t>(archive.ReadCount(sizeof(double), kMaxHcComponents));
    const auto waterCount = static_cast<std::int32_t>(archive.ReadCount(0, kMaxWaterComponents));
    composition.SetWaterCount(waterCount);
    composition.SetHcCount(hcCount);
    if (hcCount <= 0) return;
    TransferDoubles(archive, composition.componentParams);
    std::vector<double> stored;
    TransferDoubles(archive, stored);
    composition.RecomputeFractions();
    if (!stored.empty()) composition.rateFractions = std::move(stored);
}

}  // namespace

std::int32_t WellData::StreamData(BinaryArchive* archive, std::int32_t version) {
    if (archive == nullptr) return 1;
    BinaryArchive& ar = *archive;
    const bool storing = ar.IsStoring();
    // A load fills a fresh well and takes it over only once the stream has held out.
    WellData loaded(fluid);
    WellData& well = storing ? *this : loaded;

    ar.Transfer(well.name);
    bool vane = well.underVaneControl;
    bool tapServer = well.underTapServerControl;
    TransferBool(ar, vane);
    TransferBool(ar, tapServer);
    TransferByte(ar, well.status);
    TransferByte(ar, well.targetStatus);
    TransferByte(ar, well.injectionPhase);
    TransferByte(ar, well.wellType);
    TransferByte(ar, well.vaneRateControl);
    TransferRecord(ar, well.injectionRecord, version);
    TransferRecord(ar, well.productionRecord, version);
    TransferAux(ar, well.auxRecord);
    well.target.StreamData(archive, version);
    well.ipr.StreamData(archive, version);
    ar.Transfer(well.eosRegion);
    ar.Transfer(well.pvtRegion);
    if (storing) {
        StoreComposition(ar, well.composition);
        return 0;
    }
    LoadComposition(ar, well.composition);

    // A well that comes back under the network's control is given to it as a connection would: the tap
    // server loses it.
    well.underTapServerControl = tapServer;
    if (vane) {
        std::string dropped;
        well.SetUnderVaneControl(dropped);
    }
    *this = std::move(loaded);
    return 0;
}

}  // namespace rivulet
