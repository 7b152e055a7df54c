// The well's stream form: what a current stream gives back, how older streams load, and what is left out.
// The target and the inflow table stream themselves; their own tests cover their forms.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/FluidProperties.h"
#include "wells/WellData.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::int32_t kCurrent = 5;

template <typename Write>
Bytes Written(Write write) {
    Bytes buffer(8192);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    write(archive);
    buffer.resize(archive.Position());
    return buffer;
}

Bytes Store(WellData& well, std::int32_t version = kCurrent) {
    return Written([&](BinaryArchive& archive) { EXPECT_EQ(well.StreamData(&archive, version), 0); });
}

// Loads and checks that the whole stream was read.
void Load(WellData& well, const Bytes& bytes, std::int32_t version = kCurrent) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_EQ(well.StreamData(&archive, version), 0);
    EXPECT_EQ(archive.Position(), bytes.size());
}

WellData RoundTrip(WellData& well, const FluidProperties* fluid = nullptr) {
    WellData loaded(fluid);
    Load(loaded, Store(well));
    return loaded;
}

// Writes the stream of an older file by hand, item by item.
struct OldStream {
    Bytes bytes = Written([](BinaryArchive&) {});
    template <typename T>
    OldStream& Put(T value) {
        Bytes item = Written([&](BinaryArchive& archive) { archive.Transfer(value); });
        bytes.insert(bytes.end(), item.begin() + BinaryArchive::kHeaderSize, item.end());
        return *this;
    }
    OldStream& Byte(int value) { return Put(static_cast<std::uint8_t>(value)); }
};

WellComposition Composition(std::vector<double> params) {
    WellComposition c;
    c.SetWaterCount(1);
    c.SetHcCount(2);
    c.componentParams = std::move(params);
    c.RecomputeFractions();
    return c;
}

WellData FullWell() {
    WellData well;
    well.name = "INJ-7";
    well.underTapServerControl = true;
    well.status = kStatusOpenInjector;
    well.targetStatus = kStatusStop;
    well.injectionPhase = kPhaseGas;
    well.wellType = kWellInjector;
    well.vaneRateControl = kControlGas;
    for (int k = 0; k < WellRateRecord::kSize; ++k) well.injectionRecord[k] = 100.0 + k;
    well.auxRecord = {0.0, 2.5, 0.0, -3.0};
    well.target.GasRate = -0.5;    // below the bound: -1
    well.target.OilRate = -1e-15;  // on the bound: 0
    well.target.Bhp = 2200.0;
    well.target.Efficiency = 1.5;  // outside [0, 1): 1.0
    well.ipr.Pressures = {1000.0, 2000.0};
    well.ipr.MassFlows = {7.0, 3.0};
    well.eosRegion = 2;
    well.pvtRegion = 3;
    // One water and two hydrocarbon components: liquid rates, gas rates, cumulative liquid, cumulative gas.
    well.composition = Composition({9, 1, 3, 9, 0, 1, 9, 4, 4, 9, 2, 6});
    return well;
}

TEST(WellStream, CurrentVersionGivesEveryFieldBackWithTheLoadersFluid) {
    WellData well = FullWell();
    FluidProperties fluid;
    WellData loaded = RoundTrip(well, &fluid);
    EXPECT_EQ(Store(loaded), Store(well));
    EXPECT_EQ(loaded.fluid, &fluid);
    const OperatingPoint& t = loaded.target;
    EXPECT_EQ(std::tuple(t.GasRate, t.OilRate, t.Bhp, t.Efficiency), std::tuple(-1.0, 0.0, 2200.0, 1.0));

    // A well that comes back under the network's control is taken from the tap server.
    well.underVaneControl = true;
    loaded = RoundTrip(well);
    EXPECT_TRUE(loaded.underVaneControl);
    EXPECT_FALSE(loaded.underTapServerControl);
}

TEST(WellStream, ConstructedWellIsFlagsAndCountsOnlyAndLoadsOverEverything) {
    WellData well;
    const Bytes bytes = Store(well);
    // Header, empty name, two flags, five codes, two record flags, the spare record's flag, the target's
    // mask with nothing after it, then an empty inflow table, the regions and the two counts.
    Bytes expected = {1, 0, 0, 0, 0x1A, 0xD2, 0x5F, 0x38, 0, 0, 0,    0,
                      0, 0, 5, 5, 3,    0,    0,    1,    1, 1, 0x1F, 0x2C};
    expected.resize(expected.size() + 5 * 4, 0);
    EXPECT_EQ(bytes, expected);

    WellData loaded = FullWell();
    Load(loaded, bytes);
    EXPECT_EQ(Store(loaded), bytes);
}

TEST(WellStream, RecordHoldsEfficiencyAfterTheDensities) {
    WellData well;
    for (int k = 0; k < WellRateRecord::kSize; ++k) well.productionRecord[k] = 10.0 + k;
    const Bytes bytes = Store(well);
    // Name (4), flags and codes (7), the injection record's flag (1), then the production record.
    const std::size_t at = BinaryArchive::kHeaderSize + 4 + 7 + 1;
    ASSERT_EQ(bytes[at], 0);
    std::vector<double> order(15);
    std::memcpy(order.data(), &bytes[at + 1], 15 * sizeof(double));
    EXPECT_EQ(order, (std::vector<double>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 22, 23, 24, 21}));

    well.productionRecord = WellRateRecord();
    well.productionRecord[WellRateRecord::kEfficiency] = 0.0;  // not the constructed value
    EXPECT_EQ(RoundTrip(well).productionRecord[WellRateRecord::kEfficiency], 0.0);
}

TEST(WellStream, OlderVersionsHoldNoRecordEfficiencyBeforeThreeAndNoPressuresBeforeFive) {
    for (const std::int32_t version : {2, 3, 4}) {
        SCOPED_TRACE(version);
        OldStream s;
        s.Put(std::string("P1")).Byte(1).Byte(0);
        s.Byte(kStatusOpenProducer).Byte(kStatusShut).Byte(kPhaseNone).Byte(kWellProducer).Byte(kControlOil);
        s.Byte(0);  // injection record: eleven values and the densities, then the efficiency from version 3
        for (int k = 0; k < 14; ++k) s.Put(1.0 + k);
        if (version >= 3) s.Put(0.5);
        s.Byte(1).Byte(1);  // production record and spare record at zero
        // Target: the gas rate stored, efficiency 1.0, the Bhp zero by its flag and the other values unset.
        s.Put(std::uint16_t{2 | 4 | 8 | 16 | 0x400 | 0x1000 | 0x2000 | 0x4000}).Put(6.5);
        s.Put(std::int32_t{0}).Put(std::int32_t{1}).Put(std::int32_t{4});  // empty table, regions
        s.Put(std::int32_t{0}).Put(std::int32_t{0});
        WellData loaded = FullWell();
        Load(loaded, s.bytes, version);

        EXPECT_TRUE(loaded.underVaneControl);
        EXPECT_EQ(loaded.vaneRateControl, kControlOil);
        EXPECT_EQ(loaded.injectionRecord[WellRateRecord::kTemperature], 11.0);
        EXPECT_EQ(loaded.injectionRecord[WellRateRecord::kGasDensity], 14.0);
        EXPECT_EQ(loaded.injectionRecord[WellRateRecord::kEfficiency], version >= 3 ? 0.5 : 1.0);
        EXPECT_EQ(loaded.target.GasRate, 6.5);
        EXPECT_EQ(loaded.target.Bhp, version >= 3 ? 0.0 : -1.0);
        EXPECT_EQ(loaded.target.Thp, -1.0);
        EXPECT_EQ(loaded.pvtRegion, 4);
    }
}

TEST(WellStream, RateFractionsTravelOnlyWhileTheRatesStillGiveThem) {
    WellData well = FullWell();
    const std::vector<double> computed = well.composition.rateFractions;  // 1 + 0 against 3 + 1
    ASSERT_NEAR(computed[0], 0.2, 1e-12);
    const std::size_t withFractions = Store(well).size();

    // Fractions that the rates no longer give are not written; the loaded well has the recomputed ones.
    well.composition.rateFractions = {0.9, 0.1};
    EXPECT_EQ(Store(well).size(), withFractions - 2 * sizeof(double));
    EXPECT_EQ(RoundTrip(well).composition.rateFractions, computed);

    // A difference within the tolerance keeps the stored values themselves.
    well.composition.rateFractions = {computed[0] + 5e-10, computed[1] - 5e-10};
    EXPECT_EQ(RoundTrip(well).composition.rateFractions, well.composition.rateFractions);

    // With no rates there is nothing to keep, not even the zero fractions the rates give.
    well.composition = Composition({9, 0, 0, 9, 0, 0, 9, 4, 4, 9, 2, 6});
    well.composition.rateFractions = {0.0, 0.0};
    EXPECT_EQ(Store(well).size(), withFractions - 2 * sizeof(double));
    const WellData loaded = RoundTrip(well);
    EXPECT_EQ(loaded.composition.rateFractions, (std::vector<double>{0.0, 0.0}));
    EXPECT_NEAR(loaded.composition.cumFractions[0], 0.375, 1e-12);
}

TEST(WellStream, ShortStreamLeavesTheWellAsItWas) {
    WellData well = FullWell();
    Bytes bytes = Store(well);
    bytes.resize(bytes.size() - 3);
    WellData target;
    target.name = "KEEP";
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_THROW(target.StreamData(&archive, kCurrent), ArchiveException);
    EXPECT_EQ(target.name, "KEEP");
    EXPECT_EQ(target.StreamData(nullptr, kCurrent), 1);
}

}  // namespace
}  // namespace rivulet
