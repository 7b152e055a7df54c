#include "dataserver/OperatingPoint.h"

#include <array>
#include <utility>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"

namespace rivulet {
namespace {

// A value this far below 0 is "not set"; anything closer to 0 counts as 0.
constexpr double kNegativeBound = -1e-15;
constexpr std::uint16_t kEfficiencyFlag = 0x400;

// The negative and zero flags of one value that the flag word can settle.
struct ValueFlags {
    std::uint16_t negative;
    std::uint16_t zero;
};

constexpr ValueFlags kGasFlags{0x1, 0x20};
constexpr ValueFlags kOilFlags{0x2, 0x40};
constexpr ValueFlags kWaterFlags{0x4, 0x80};
constexpr ValueFlags kLiquidFlags{0x8, 0x100};
constexpr ValueFlags kTemperatureFlags{0x10, 0x200};
constexpr ValueFlags kBhpFlags{0x800, 0x1000};
constexpr ValueFlags kThpFlags{0x2000, 0x4000};

std::uint16_t FlagFor(double value, ValueFlags flags) {
    if (value > 0.0) return 0;
    return value < kNegativeBound ? flags.negative : flags.zero;
}

// Moves one value through the archive unless the flag word settles it: -1 for the negative flag, 0 for
// the zero flag.
void TransferValue(BinaryArchive& archive, std::uint16_t word, ValueFlags flags, double& value) {
    if (word & flags.negative) {
        value = -1.0;
    } else if (word & flags.zero) {
        value = 0.0;
    } else {
        archive.Transfer(value);
    }
}

bool EfficiencyFlagged(double efficiency) {
    return efficiency < 0.0 || efficiency >= 1.0;
}

}  // namespace

OperatingPoint& OperatingPoint::CopyFrom(const OperatingPoint& other) {
    *this = other;
    return *this;
}

int OperatingPoint::RatePhase() const {
    const bool gas = GasRate > 0.0;
    const bool oil = OilRate > 0.0;
    const bool water = WaterRate > 0.0 || LiquidRate > 0.0;
    if (gas && !oil && !water) return kGas;
    if (oil && !gas && !water) return kOil;
    if (water && !gas && !oil) return kWater;
    return kNone;
}

bool OperatingPoint::AnyRateSet() const {
    return GasRate > 0.0 || OilRate > 0.0 || WaterRate > 0.0 || LiquidRate > 0.0;
}

bool OperatingPoint::FitsPhase(int phase) const {
    const bool gasFits = GasRate <= 0.0 || phase == kGas;
    const bool oilFits = OilRate <= 0.0 || phase == kOil;
    const bool waterFits = (WaterRate <= 0.0 && LiquidRate <= 0.0) || phase == kWater;
    return gasFits && oilFits && waterFits;
}

bool OperatingPoint::IsNothingSet() const {
    return GasRate < 0.0 && OilRate < 0.0 && WaterRate < 0.0 && LiquidRate < 0.0 && Bhp < 0.0 && Thp < 0.0;
}

bool OperatingPoint::IsZeroRate() const {
    return !AnyRateSet() && (GasRate == 0.0 || OilRate == 0.0 || WaterRate == 0.0 || LiquidRate == 0.0);
}

int OperatingPoint::RateCount() const {
    return (GasRate >= 0.0) + (OilRate >= 0.0) + (WaterRate >= 0.0) + (LiquidRate >= 0.0);
}

int OperatingPoint::PressureCount() const {
    return (Bhp >= 0.0) + (Thp >= 0.0);
}

void OperatingPoint::Normalise() {
    for (double* rate : {&GasRate, &OilRate, &WaterRate, &LiquidRate}) {
        if (*rate < 0.0) *rate = -1.0;
    }
}

void OperatingPoint::ClearRates() {
    GasRate = OilRate = WaterRate = LiquidRate = -1.0;
}

void OperatingPoint::ClearRatesAndPressures() {
    ClearRates();
    Bhp = Thp = -1.0;
}

void OperatingPoint::Clear() {
    ClearRatesAndPressures();
    Temperature = -1.0;
    Efficiency = 1.0;
}

std::int32_t OperatingPoint::StreamData(BinaryArchive* archive, std::int32_t version) {
    if (archive == nullptr) return 1;
    // One path stores and loads; a load fills a clear point and keeps it only once the stream has held out.
    const bool storing = archive->IsStoring();
    OperatingPoint point;
    std::uint16_t word = 0;
    if (storing) {
        point = *this;
        word = static_cast<std::uint16_t>(
            FlagFor(GasRate, kGasFlags) | FlagFor(OilRate, kOilFlags) | FlagFor(WaterRate, kWaterFlags) |
            FlagFor(LiquidRate, kLiquidFlags) | FlagFor(Temperature, kTemperatureFlags) |
            FlagFor(Bhp, kBhpFlags) | FlagFor(Thp, kThpFlags) |
            (EfficiencyFlagged(Efficiency) ? kEfficiencyFlag : 0));
    }
    archive->Transfer(word);
    TransferValue(*archive, word, kGasFlags, point.GasRate);
    TransferValue(*archive, word, kOilFlags, point.OilRate);
    TransferValue(*archive, word, kWaterFlags, point.WaterRate);
    TransferValue(*archive, word, kLiquidFlags, point.LiquidRate);
    TransferValue(*archive, word, kTemperatureFlags, point.Temperature);
    if (version >= 5) {
        TransferValue(*archive, word, kBhpFlags, point.Bhp);
        TransferValue(*archive, word, kThpFlags, point.Thp);
    } else if (version >= 3) {
        // Pressures are not held; the flags still tell a zero pressure from an unset one.
        point.Bhp = (word & kBhpFlags.zero) && !(word & kBhpFlags.negative) ? 0.0 : -1.0;
        point.Thp = (word & kThpFlags.zero) && !(word & kThpFlags.negative) ? 0.0 : -1.0;
    }
    if (version >= 3) {
        if (word & kEfficiencyFlag) {
            point.Efficiency = 1.0;
        } else {
            archive->Transfer(point.Efficiency);
        }
    }
    if (!storing) *this = point;
    return 0;
}

std::int32_t OperatingPoint::ProcessAccessString(CExtDataServerTag& tag, std::string* nameOut) {
    const std::array<std::pair<const char*, double*>, 8> variables = {{
        {"GasRate", &GasRate},
        {"OilRate", &OilRate},
        {"LiquidRate", &LiquidRate},
        {"WaterRate", &WaterRate},
        {"Efficiency", &Efficiency},
        {"Bhp", &Bhp},
        {"Thp", &Thp},
        {"Temperature", &Temperature},
    }};
    for (const auto& [name, value] : variables) {
        if (tag.BindDouble(name, *value)) {
            if (nameOut != nullptr) *nameOut = name;
            return 1;
        }
    }
    return 0;
}

std::int32_t OperatingPoint::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t /*unused*/) {
    return ProcessAccessString(tag, nullptr);
}

}  // namespace rivulet
