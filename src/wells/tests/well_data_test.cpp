// A well's identity, status and results, and the restart check of a well list.
#include <gtest/gtest.h>

#include "wells/WellConsistency.h"
#include "wells/WellData.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

WellData Typed(const std::string& name, std::int32_t type) {
    WellData well;
    well.name = name;
    well.wellType = type;
    return well;
}

TEST(WellName, OnePairOfEqualQuotesIsTakenOff) {
    EXPECT_EQ(WellData::CleanWellName("  \"P1\"\t"), "P1");
    EXPECT_EQ(WellData::CleanWellName("'P 2'"), "P 2");
    EXPECT_EQ(WellData::CleanWellName("''P3''"), "'P3'");
    EXPECT_EQ(WellData::CleanWellName("'P4\""), "'P4\"");
    EXPECT_EQ(WellData::CleanWellName("'"), "'");
}

TEST(WellStatus, TheFirstOpenStatusGivesTheTypeAndAChangeZeroesTheRecords) {
    WellData well;
    well.SetWellStatus(kStatusShut);
    EXPECT_EQ(well.wellType, kWellUndefined);
    well.SetWellStatus(kStatusOpenProducer);
    EXPECT_EQ(well.wellType, kWellProducer);
    well.productionRecord[WellRateRecord::kOil] = 50.0;
    well.SetWellStatus(kStatusOpenProducer);  // no change: the records stay
    EXPECT_DOUBLE_EQ(well.OilRate(), 50.0);
    well.SetWellStatus(kStatusOpenInjector);  // the type stays, the records go
    EXPECT_EQ(well.wellType, kWellProducer);
    EXPECT_DOUBLE_EQ(well.OilRate(), 0.0);
    EXPECT_DOUBLE_EQ(well.Efficiency(), 1.0);
    EXPECT_EQ(well.targetStatus, kStatusOpenInjector);
}

TEST(WellResults, EachTypeAnswersFromItsSide) {
    WellData well;
    well.productionRecord[WellRateRecord::kGas] = -3.0;
    well.productionRecord[WellRateRecord::kBhp] = -7.0;
    well.injectionRecord[WellRateRecord::kWater] = 12.0;
    well.injectionRecord[WellRateRecord::kBhp] = -9.0;
    // Untyped: the larger of the two, rates not below zero, pressures as they are.
    EXPECT_DOUBLE_EQ(well.GasRate(), 0.0);
    EXPECT_DOUBLE_EQ(well.WaterRate(), 12.0);
    EXPECT_DOUBLE_EQ(well.Bhp(), -7.0);
    well.wellType = kWellProducer;
    EXPECT_DOUBLE_EQ(well.WaterRate(), 0.0);
    EXPECT_DOUBLE_EQ(well.Bhp(), -7.0);
    well.wellType = kWellInjector;
    EXPECT_DOUBLE_EQ(well.WaterRate(), 12.0);
    EXPECT_DOUBLE_EQ(well.Bhp(), -9.0);
}

TEST(WellResults, ADensityFallsBackToTheLargerRecord) {
    WellData well = Typed("P", kWellProducer);
    well.injectionRecord[WellRateRecord::kGasDensity] = 0.8;
    EXPECT_DOUBLE_EQ(well.Density(WellRateRecord::kGasDensity), 0.8);
    well.productionRecord[WellRateRecord::kGasDensity] = 0.7;
    EXPECT_DOUBLE_EQ(well.Density(WellRateRecord::kGasDensity), 0.7);
}

TEST(WellComposition, FractionsAreSharesOfTheMolarRates) {
    WellComposition c;
    c.SetWaterCount(1);
    c.SetHcCount(2);
    ASSERT_EQ(c.componentParams.size(), 12u);
    // Blocks of water, hc0, hc1: liquid rate, gas rate, cumulative liquid, cumulative gas.
    c.componentParams = {9, 1, 3, 9, 2, -4, 0, 0, 0, 0, 0, 5};
    c.RecomputeFractions();
    EXPECT_DOUBLE_EQ(c.rateFractions[0], 0.5);  // (1 + 2) / 6; a negative rate counts as none
    EXPECT_DOUBLE_EQ(c.rateFractions[1], 0.5);
    EXPECT_DOUBLE_EQ(c.cumFractions[1], 1.0);
    EXPECT_DOUBLE_EQ(c.HcParam(3, 1), 5.0);
    EXPECT_DOUBLE_EQ(c.HcParam(4, 0), -1.0);
}

class Restart : public ::testing::Test {
  protected:
    void SetUp() override {
        previous_.Add(Typed("A", kWellProducer));
        previous_.Add(Typed("B", kWellInjector));
        previous_.Add(Typed("C", kWellUndefined));
    }
    int Check(std::vector<WellData> wells) {
        WellList current;
        for (WellData& well : wells) current.Add(well);
        error_.clear();
        return CheckConsistency(current, previous_, error_);
    }
    WellList previous_;
    std::string error_;
};

TEST_F(Restart, TheSameWellsInTheSameOrderPass) {
    EXPECT_EQ(Check({Typed("A", kWellProducer), Typed("B", kWellInjector), Typed("C", kWellUndefined)}), 0);
    // A well without a type now takes no type test.
    EXPECT_EQ(Check({Typed("A", kWellUndefined), Typed("B", kWellUndefined), Typed("C", kWellUndefined)}), 0);
    EXPECT_EQ(CheckConsistency(previous_, WellList(), error_), 0);
}

TEST_F(Restart, TheFirstDifferenceIsReported) {
    EXPECT_EQ(Check({Typed("A", kWellProducer)}), 1);
    EXPECT_EQ(error_, "The number of wells is not consistant with the previous model.");
    EXPECT_EQ(Check({Typed("A", kWellProducer), Typed("b", kWellInjector), Typed("C", kWellUndefined)}), 1);
    EXPECT_EQ(error_, "Well <b> was not present in the previous model.");
    EXPECT_EQ(Check({Typed("A", kWellInjector), Typed("B", kWellInjector), Typed("C", kWellUndefined)}), 1);
    EXPECT_EQ(error_, "Well <A> is no longer an injector.");
    EXPECT_EQ(Check({Typed("A", kWellProducer), Typed("B", kWellProducer), Typed("C", kWellUndefined)}), 1);
    EXPECT_EQ(error_, "Well <B> is no longer a producer.");
    EXPECT_EQ(Check({Typed("B", kWellInjector), Typed("A", kWellProducer), Typed("C", kWellUndefined)}), 1);
    EXPECT_EQ(error_, "The well <B> is not in the same order as it was in the previous model.");
}

}  // namespace
}  // namespace rivulet
