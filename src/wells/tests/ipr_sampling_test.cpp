// Rate grids, curve interpolation, minimum rates and the control phase of inflow tables.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
#include <vector>

#include "dataserver/TNavUnitSystem.h"
#include "wells/IprSampling.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

TNavUnitSystem Field() {
    TNavUnitSystem units;
    units.SetUp("FIELD");
    return units;
}

TEST(InterpolateCurve, BracketsExtendsAndAveragesInEitherDirection) {
    const double up[] = {0.0, 10.0, 20.0};
    const double upY[] = {100.0, 80.0, 40.0};
    const double down[] = {20.0, 10.0, 0.0};
    const double downY[] = {40.0, 80.0, 100.0};
    const double close[] = {0.0, 1.0, 1.000001, 2.0};
    const double closeY[] = {0.0, 10.0, 30.0, 40.0};
    const double one[] = {5.0};
    const double oneY[] = {7.0};
    // y, x, n, q, answer
    const std::tuple<const double*, const double*, int, double, double> cases[] = {
        {upY, up, 3, 5.0, 90.0},      {upY, up, 3, 10.0, 80.0},
        {upY, up, 3, 25.0, 20.0},     {upY, up, 3, -5.0, 110.0},  // beyond the last, before the first
        {downY, down, 3, 15.0, 60.0}, {downY, down, 3, -5.0, 110.0},
        {downY, down, 3, 25.0, 20.0}, {closeY, close, 4, 1.0000005, 20.0},  // x closer than 1e-5: mean
        {oneY, one, 1, 42.0, 7.0},    {oneY, one, 0, 5.0, -1.0},
        {nullptr, one, 1, 5.0, -1.0},
    };
    for (const auto& [y, x, n, q, answer] : cases) {
        EXPECT_NEAR(InterpolateCurve(y, x, n, q), answer, 1e-9) << "n " << n << " q " << q;
    }
}

TEST(GeometricRates, StepsGrowByAlphaAndALongGridKeepsAShortFirstStep) {
    std::vector<double> rates = {-1.0};
    ASSERT_TRUE(GeometricRates(3, 2.0, 0.0, 30.0, rates));  // steps 10 and 20, appended
    EXPECT_EQ(rates, (std::vector<double>{-1.0, 0.0, 10.0, 30.0}));
    EXPECT_FALSE(GeometricRates(1, 1.0, 0.0, 1.0, rates));
    EXPECT_FALSE(GeometricRates(15, 0.0, 0.0, 1.0, rates));
    EXPECT_EQ(rates.size(), 4u);
}

// IprAlpha 3 (equal spacing) over 0.1 to 1500.1 Mscf/day: the steps are 1500 / 14, but the first is
// 1500 / 15 = 100, so the second rate is 100.1 and the third 0.1 + 3000 / 14 = 214.385714...
TEST(IprSampleSet, RowsRunFromTheMinimumToTheCappedMaximumGasOilWater) {
    IprSampleSet set(1.0, Field());
    EXPECT_DOUBLE_EQ(set.gasCap, 100000.0);  // 100 MMscf/day in Mscf/day
    EXPECT_DOUBLE_EQ(set.liquidCap, 100000.0);
    const PhaseRateTable maxRates = {{0.0, 0.0, 1500.1}, {50.0, 250000.0, 0.0}, {0.0, 0.0, 0.0}};
    const PhaseRateTable minRates = {{0.0, 0.0, 0.1}, {10.0, 10.0, 0.0}, {0.0, 0.0, 0.0}};
    std::string error;
    ASSERT_TRUE(set.AddRows(maxRates, minRates, error)) << error;

    EXPECT_EQ(set.rowWells, (std::vector<std::int32_t>{0, 1, 1}));
    EXPECT_EQ(set.rowPhases, (std::vector<std::int32_t>{2, 1, 0}));
    ASSERT_EQ(set.rates.size(), 45u);
    EXPECT_EQ(set.bhps, std::vector<double>(45, 0.0));
    EXPECT_DOUBLE_EQ(set.rates[0], 0.1);
    EXPECT_NEAR(set.rates[1], 100.1, 1e-9);
    EXPECT_NEAR(set.rates[2], 214.3857142857143, 1e-9);
    EXPECT_DOUBLE_EQ(set.rates[14], 1500.1);
    EXPECT_DOUBLE_EQ(set.rates[15], 10.0);
    EXPECT_DOUBLE_EQ(set.rates[29], 100000.0);  // the oil grid ends at the cap
    EXPECT_DOUBLE_EQ(set.rates[44], 50.0);
    // The maxima stay as they were, for the control phase; a well without flow adds no entry.
    EXPECT_EQ(set.maxOil, (std::vector<double>{0.0, 250000.0}));
    EXPECT_EQ(set.maxGas.size(), 2u);

    EXPECT_FALSE(set.AddRows(maxRates, PhaseRateTable(2), error));
    EXPECT_EQ(error, "Internal error: there was a mismatch of max and min phase rates.");
}

TEST(SetMinRates, HalfTheMaximumCappedForEveryPhaseOrTheInjectedOneOnly) {
    WellList wells;
    for (std::int32_t type : {kWellProducer, kWellInjector, kWellInjector, kWellUndefined}) {
        WellData well;
        well.wellType = type;
        wells.Add(well);
    }
    // Caps: 0.1 Mscf/day of gas, 10 STB/day of liquid.
    const PhaseRateTable maxRates = {{30.0, 4.0, 0.15},   // producer: each phase
                                     {50.0, 50.0, 50.0},  // injector: ties go to gas
                                     {50.0, 50.0, 10.0},  // then to oil
                                     {4e-5, 0.0, 3e-5}};  // all tiny: none
    PhaseRateTable minRates(4, {-1.0, -1.0, -1.0});
    std::string error;
    ASSERT_TRUE(SetMinRates(wells, maxRates, minRates, 0.1, 10.0, error)) << error;
    const PhaseRateTable expected = {{10.0, 2.0, 0.075}, {0.0, 0.0, 0.1}, {0.0, 10.0, 0.0}, {0.0, 0.0, 0.0}};
    EXPECT_EQ(minRates, expected);

    PhaseRateTable three(3);
    EXPECT_FALSE(SetMinRates(wells, maxRates, three, 0.1, 10.0, error));
    EXPECT_EQ(error, "Internal error: there was a mismatch of max and min phase rates.");
    EXPECT_FALSE(SetMinRates(wells, three, three, 0.1, 10.0, error));
    EXPECT_EQ(error,
              "Internal error: there was a mismatch of max and min phase rates to the number of wells.");
    PhaseRateTable none;
    EXPECT_TRUE(SetMinRates(WellList(), none, none, 0.1, 10.0, error));
}

TEST(ChooseControlPhase, GasAloneOrAboveTheRatioElseTheLargerLiquid) {
    IprSampleSet set(1.6, Field());
    // Mscf/day of gas and STB/day of oil and water per well; gas to liquid 0.012 and 0.011 MMscf/STB
    // fall either side of 0.01123.
    set.maxGas = {0.0, 5000.0, 12000.0, 11000.0, 0.0, 0.0};
    set.maxOil = {0.0, 0.0, 1000.0, 1000.0, 100.0, 99.0};
    set.maxWater = {0.0, 0.0, 0.0, 0.0, 100.0, 100.0};
    const int expected[] = {3, 2, 2, 1, 1, 0, 3};  // the last well has no entry
    for (int well = 0; well < 7; ++well) {
        EXPECT_EQ(ChooseControlPhase(set, well, Field()), expected[well]) << "well " << well;
    }
}

}  // namespace
}  // namespace rivulet
