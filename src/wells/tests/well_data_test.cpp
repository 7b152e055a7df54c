// A well's identity, status and results, its stream form, and the restart check of a well list. The target
// and the inflow table stream themselves; their own tests cover their forms.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/FluidProperties.h"
#include "wells/WellConsistency.h"
#include "wells/WellData.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;
using Record = WellRateRecord;
constexpr std::int32_t kCurrent = 5;

WellData Typed(const std::string& name, std::int32_t type) {
    WellData well;
    well.name = name;
    well.wellType = type;
    return well;
}

// One water and two hydrocarbon components: liquid rates, gas rates, cumulative liquid, cumulative gas.
WellComposition Composition(std::vector<double> params) {
    WellComposition c;
    c.SetWaterCount(1);
    c.SetHcCount(2);
    EXPECT_EQ(c.componentParams.size(), 12u);
    c.componentParams = std::move(params);
    c.RecomputeFractions();
    return c;
}

TEST(WellData, NamesLoseOnePairOfEqualQuotes) {
    for (const auto& [raw, clean] : {std::pair{"  \"P1\"\t", "P1"},
                                     {"'P 2'", "P 2"},
                                     {"''P3''", "'P3'"},
                                     {"'P4\"", "'P4\""},
                                     {"'", "'"}})
        EXPECT_EQ(WellData::CleanWellName(raw), clean) << raw;
}

TEST(WellData, TheFirstOpenStatusGivesTheTypeAndAChangeZeroesTheRecords) {
    WellData well;
    well.SetWellStatus(kStatusShut);
    EXPECT_EQ(well.wellType, kWellUndefined);
    well.SetWellStatus(kStatusOpenProducer);
    EXPECT_EQ(well.wellType, kWellProducer);
    well.productionRecord[Record::kOil] = 50.0;
    well.SetWellStatus(kStatusOpenProducer);  // no change: the records stay
    EXPECT_EQ(well.OilRate(), 50.0);
    well.SetWellStatus(kStatusOpenInjector);  // the type stays, the records go
    EXPECT_EQ(std::tuple(well.wellType, well.OilRate(), well.Efficiency(), well.targetStatus),
              std::tuple(kWellProducer, 0.0, 1.0, kStatusOpenInjector));
}

TEST(WellData, ResultsComeFromTheTypesSideAndDensitiesFallBackToTheLargerRecord) {
    WellData well;
    well.productionRecord[Record::kGas] = -3.0;
    well.productionRecord[Record::kBhp] = -7.0;
    well.injectionRecord[Record::kWater] = 12.0;
    well.injectionRecord[Record::kBhp] = -9.0;
    // Untyped: the larger of the two, rates not below zero, pressures as they are.
    EXPECT_EQ(std::tuple(well.GasRate(), well.WaterRate(), well.Bhp()), std::tuple(0.0, 12.0, -7.0));
    well.wellType = kWellProducer;
    EXPECT_EQ(std::tuple(well.WaterRate(), well.Bhp()), std::tuple(0.0, -7.0));
    well.wellType = kWellInjector;
    EXPECT_EQ(std::tuple(well.WaterRate(), well.Bhp()), std::tuple(12.0, -9.0));

    WellData producer = Typed("P", kWellProducer);
    producer.injectionRecord[Record::kGasDensity] = 0.8;
    EXPECT_EQ(producer.Density(Record::kGasDensity), 0.8);
    producer.productionRecord[Record::kGasDensity] = 0.7;
    EXPECT_EQ(producer.Density(Record::kGasDensity), 0.7);
}

TEST(WellData, FractionsAreSharesOfTheMolarRates) {
    const WellComposition c = Composition({9, 1, 3, 9, 2, -4, 0, 0, 0, 0, 0, 5});
    // (1 + 2) / 6 and 3 / 6: a negative rate counts as none.
    EXPECT_EQ(std::tuple(c.rateFractions[0], c.rateFractions[1], c.cumFractions[1]),
              std::tuple(0.5, 0.5, 1.0));
    EXPECT_EQ(c.HcParam(3, 1), 5.0);
    EXPECT_EQ(c.HcParam(4, 0), -1.0);
}

// Wells given as a one-letter name and a type each: P producer, I injector, U undefined.
WellList Wells(const std::string& wells) {
    WellList list;
    for (std::size_t k = 0; k + 1 < wells.size(); k += 2) {
        const char type = wells[k + 1];
        list.Add(Typed(wells.substr(k, 1), type == 'P'   ? kWellProducer
                                           : type == 'I' ? kWellInjector
                                                         : kWellUndefined));
    }
    return list;
}

TEST(WellData, RestartCheckReportsTheFirstDifference) {
    const WellList previous = Wells("APBICU");
    std::string error;
    EXPECT_EQ(CheckConsistency(previous, WellList(), error), 0);
    for (const auto& [wells, message] :
         {std::pair{"APBICU", ""},
          {"AUBUCU", ""},  // a well without a type now takes no type test
          {"AP", "The number of wells is not consistant with the previous model."},
          {"APbICU", "Well <b> was not present in the previous model."},
          {"AIBICU", "Well <A> is no longer an injector."},
          {"APBPCU", "Well <B> is no longer a producer."},
          {"BIAPCU", "The well <B> is not in the same order as it was in the previous model."}}) {
        error.clear();
        EXPECT_EQ(CheckConsistency(Wells(wells), previous, error), *message ? 1 : 0) << wells;
        EXPECT_EQ(error, message);
    }
}

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

WellData FullWell() {
    WellData well = Typed("INJ-7", kWellInjector);
    well.underTapServerControl = true;
    well.status = kStatusOpenInjector, well.targetStatus = kStatusStop;
    well.injectionPhase = kPhaseGas, well.vaneRateControl = kControlGas;
    for (int k = 0; k < Record::kSize; ++k) well.injectionRecord[k] = 100.0 + k;
    well.auxRecord = {0.0, 2.5, 0.0, -3.0};
    well.target.GasRate = -0.5;    // below the bound: -1
    well.target.OilRate = -1e-15;  // on the bound: 0
    well.target.Bhp = 2200.0;
    well.target.Efficiency = 1.5;  // outside [0, 1): 1.0
    well.ipr.Pressures = {1000.0, 2000.0};
    well.ipr.MassFlows = {7.0, 3.0};
    well.eosRegion = 2, well.pvtRegion = 3;
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
    EXPECT_TRUE(loaded.underVaneControl && !loaded.underTapServerControl);
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
    for (int k = 0; k < Record::kSize; ++k) well.productionRecord[k] = 10.0 + k;
    const Bytes bytes = Store(well);
    // Name (4), flags and codes (7), the injection record's flag (1), then the production record.
    const std::size_t at = BinaryArchive::kHeaderSize + 4 + 7 + 1;
    ASSERT_EQ(bytes[at], 0);
    std::vector<double> order(15);
    std::memcpy(order.data(), &bytes[at + 1], 15 * sizeof(double));
    EXPECT_EQ(order, (std::vector<double>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 22, 23, 24, 21}));

    well.productionRecord = Record();
    well.productionRecord[Record::kEfficiency] = 0.0;  // not the constructed value
    EXPECT_EQ(RoundTrip(well).productionRecord[Record::kEfficiency], 0.0);
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

        const WellRateRecord& r = loaded.injectionRecord;
        const OperatingPoint& t = loaded.target;
        EXPECT_EQ(std::tuple(loaded.underVaneControl, loaded.vaneRateControl, loaded.pvtRegion),
                  std::tuple(true, kControlOil, 4));
        EXPECT_EQ(std::tuple(r[Record::kTemperature], r[Record::kGasDensity], r[Record::kEfficiency]),
                  std::tuple(11.0, 14.0, version >= 3 ? 0.5 : 1.0));
        EXPECT_EQ(std::tuple(t.GasRate, t.Bhp, t.Thp), std::tuple(6.5, version >= 3 ? 0.0 : -1.0, -1.0));
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
    WellData target = Typed("KEEP", kWellUndefined);
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_THROW(target.StreamData(&archive, kCurrent), ArchiveException);
    EXPECT_EQ(target.name, "KEEP");
    EXPECT_EQ(target.StreamData(nullptr, kCurrent), 1);
}

}  // namespace
}  // namespace rivulet
