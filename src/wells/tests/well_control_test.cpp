// Who controls a well, and the targets an operating point from the network gives it.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ScriptedApi.h"
#include "ScriptedObjects.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/WellRequester.h"
#include "wells/WellControl.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

WellData Well(const std::string& name, std::int32_t type, std::int32_t control = kControlUnset) {
    WellData well;
    well.name = name;
    well.wellType = type;
    well.vaneRateControl = control;
    return well;
}

class WellConnection : public ::testing::Test {
  protected:
    void SetUp() override {
        tnavscripted::Script().Reset();
        tnavscripted::Script().state.wells.resize(3);
        wells_.Add(Well("P1", kWellProducer));
        wells_.Add(Well("I1", kWellInjector));
        wells_.Add(Well("U1", kWellUndefined));
    }
    bool Connect(int index, int type, int phase) {
        error_.clear();
        return ConnectWellToVaneCtrl(wells_, &requester_, index, type, phase, error_);
    }

    WellList wells_;
    tnavscripted::ScriptedWellRequester scripted_;
    WellRequester requester_{&scripted_, nullptr};
    std::string error_;
};

TEST_F(WellConnection, TheNetworkPhaseGivesTheRateControl) {
    const std::vector<std::pair<int, int>> table = {{0, kControlDefault}, {1, kControlWater},
                                                    {2, kControlLiquid},  {3, kControlLiquid},
                                                    {4, kControlGas},     {5, kControlGas}};
    for (const auto& [phase, control] : table) {
        ASSERT_TRUE(Connect(0, kNetworkProducer, phase)) << error_;
        EXPECT_EQ(wells_[0].vaneRateControl, control) << "phase " << phase;
    }
    EXPECT_FALSE(Connect(0, kNetworkProducer, 6));
    EXPECT_EQ(error_, "Unrecognised VANE phase <6> for well <P1>.");
    EXPECT_TRUE(tnavscripted::Script().Calls().empty());
}

TEST_F(WellConnection, IndicesAreCheckedAgainstTheCountWithOneToSpare) {
    EXPECT_FALSE(Connect(-1, kNetworkProducer, 1));
    EXPECT_EQ(error_, "The well index -1 does not exist (function connectWellToVaneCtrl).");
    EXPECT_FALSE(Connect(4, kNetworkProducer, 1));
    EXPECT_EQ(error_, "The well index 4 does not exist (function connectWellToVaneCtrl).");
    EXPECT_TRUE(Connect(3, kNetworkProducer, 1));  // one past the last well passes and connects nothing
}

TEST_F(WellConnection, ANetworkInjectorIsOpenedAsAWaterInjectorUnlessItIsOneAlready) {
    ASSERT_TRUE(Connect(2, kNetworkInjector, 4)) << error_;
    EXPECT_EQ(wells_[2].wellType, kWellInjector);
    EXPECT_EQ(wells_[2].status, kStatusOpenInjector);
    EXPECT_EQ(wells_[2].vaneRateControl, kControlGas);
    EXPECT_EQ(tnavscripted::Script().LastArgs("set_injector_phases"), "2|0");

    tnavscripted::Script().ClearCalls();
    ASSERT_TRUE(Connect(1, kNetworkInjector, 1)) << error_;
    EXPECT_TRUE(tnavscripted::Script().Calls().empty());

    EXPECT_FALSE(ConnectWellToVaneCtrl(wells_, nullptr, 0, kNetworkInjector, 1, error_));
    EXPECT_EQ(error_, "The well <P1> cannot be opened as an injector: there is no simulator connection.");
}

TEST_F(WellConnection, ATypeMismatchFailsAfterTheProducerWasOpenedAsInjector) {
    EXPECT_FALSE(Connect(0, kNetworkInjector, 1));
    EXPECT_EQ(error_, "The well <P1> has a producer/injector mismatch between VANE and tNavigator.");
    EXPECT_EQ(wells_[0].status, kStatusOpenInjector);
    EXPECT_EQ(wells_[0].wellType, kWellProducer);

    EXPECT_FALSE(Connect(1, kNetworkProducer, 1));
    EXPECT_EQ(error_, "The well <I1> has a producer/injector mismatch between VANE and tNavigator.");
    // An untyped well that the network calls a producer stays as it is.
    EXPECT_TRUE(Connect(2, kNetworkProducer, 2));
}

TEST(WellControls, InjectorsWithoutControlTakeItFromTheirOnePhaseAndChangedPhasesAreListed) {
    WellList wells;
    wells.Add(Well("gas", kWellInjector));
    wells.Add(Well("water", kWellInjector));
    wells.Add(Well("both", kWellInjector));
    wells.Add(Well("shut", kWellInjector));
    wells.Add(Well("prod", kWellProducer));
    wells.Add(Well("set", kWellInjector, kControlOil));
    wells[0].injectionRecord[WellRateRecord::kGas] = 5.0;
    wells[1].injectionRecord[WellRateRecord::kWater] = 5.0;
    wells[2].injectionRecord[WellRateRecord::kGas] = 5.0;
    wells[2].injectionRecord[WellRateRecord::kWater] = 5.0;
    wells[3].injectionRecord[WellRateRecord::kGas] = 5.0;
    wells[4].productionRecord[WellRateRecord::kGas] = 5.0;
    wells[5].injectionRecord[WellRateRecord::kWater] = 5.0;
    const std::int32_t statuses[] = {kStatusOpenInjector, kStatusOpenInjector, kStatusOpenInjector,
                                     kStatusShut,         kStatusOpenProducer, kStatusOpenInjector};
    for (int k = 0; k < 6; ++k) {
        wells[static_cast<std::size_t>(k)].targetStatus = statuses[k];
        wells[static_cast<std::size_t>(k)].injectionPhase = kPhaseWater;
    }

    EXPECT_EQ(SettleInjectorPhases(wells), (std::vector<int>{0, 5}));
    EXPECT_EQ(wells[0].vaneRateControl, kControlGas);
    EXPECT_EQ(wells[1].vaneRateControl, kControlWater);
    EXPECT_EQ(wells[2].vaneRateControl, kControlUnset);
    EXPECT_EQ(wells[3].vaneRateControl, kControlUnset);
    EXPECT_EQ(wells[4].vaneRateControl, kControlUnset);
    EXPECT_EQ(wells[0].injectionPhase, kPhaseGas);
    EXPECT_EQ(wells[2].injectionPhase, kPhaseWater);  // no control leaves the phase
    EXPECT_EQ(wells[3].injectionPhase, kPhaseWater);  // a shut well is not settled
    EXPECT_EQ(wells[4].injectionPhase, kPhaseNone);   // a producer injects nothing, and that is no change
    EXPECT_EQ(wells[5].injectionPhase, kPhaseOil);
}

TEST(WellControls, RatesAreCleanedAndTheRatioLimitsAreInclusiveOnlyForGas) {
    EXPECT_EQ(SanitiseRate(-2.0) + SanitiseRate(std::nan("")) + SanitiseRate(3.4e35), 0.0);
    EXPECT_EQ(SanitiseRate(3.3e35), 3.3e35);
    const double ratio = 1.0e6 / (100.0 * 5.615);  // 1 MMscf over 100 STB
    EXPECT_TRUE(GlrAtOrAbove(1.0, 100.0, ratio));
    EXPECT_FALSE(GlrBelow(1.0, 100.0, ratio));
    EXPECT_TRUE(GlrAtOrAbove(1.0, 0.0, 1e9));
    EXPECT_TRUE(GlrBelow(0.0, 1.0, 0.0));
}

class OperatingPoints : public ::testing::Test {
  protected:
    void SetUp() override { field_.SetUp("FIELD"); }

    // Gas 1 MMscf/day, oil 60 and water 40 STB/day: 1781 scf per standard barrel.
    static NodeOperatingPoint Point() {
        NodeOperatingPoint point;
        point.gasRate = 1.0;
        point.oilRate = 60.0;
        point.waterRate = 40.0;
        return point;
    }
    bool Set(WellData& well, const NodeOperatingPoint& point, int rateControl = kRateByVaneType) {
        error_.clear();
        return SetOpPtUnlocked(well, point, {rateControl, 587}, field_, false, error_);
    }

    TNavUnitSystem field_;
    std::string error_;
};

TEST_F(OperatingPoints, TheFirstPointConnectsTheWellAndSetsItsEfficiency) {
    WellData well = Well("P1", kWellProducer, kControlGas);
    well.underTapServerControl = true;
    NodeOperatingPoint point = Point();
    point.downtime = 0.25;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_TRUE(well.underVaneControl);
    EXPECT_FALSE(well.underTapServerControl);
    EXPECT_EQ(well.target.Efficiency, 0.75);
    point.downtime = 1.0;
    ASSERT_TRUE(Set(well, point));
    EXPECT_EQ(well.target.Efficiency, 0.0);
    point.downtime = 1.5;
    ASSERT_TRUE(Set(well, point));
    EXPECT_EQ(well.target.Efficiency, 1.0);
}

TEST_F(OperatingPoints, TheWellTypeRouteWritesOnlyTheRateItsControlNames) {
    struct Case {
        int control;
        double OperatingPoint::*field;
        double value;
    };
    const Case cases[] = {{kControlWater, &OperatingPoint::WaterRate, 40.0},
                          {kControlLiquid, &OperatingPoint::LiquidRate, 100.0},
                          {kControlOil, &OperatingPoint::OilRate, 60.0},
                          {kControlGas, &OperatingPoint::GasRate, 1000.0}};
    for (const Case& c : cases) {
        WellData well = Well("P1", kWellProducer, c.control);
        ASSERT_TRUE(Set(well, Point())) << error_;
        OperatingPoint expected;
        expected.*c.field = c.value;
        expected.Efficiency = 1.0;
        EXPECT_EQ(well.target.GasRate, expected.GasRate) << c.control;
        EXPECT_EQ(well.target.OilRate, expected.OilRate) << c.control;
        EXPECT_EQ(well.target.WaterRate, expected.WaterRate) << c.control;
        EXPECT_EQ(well.target.LiquidRate, expected.LiquidRate) << c.control;
        EXPECT_EQ(well.targetStatus, kStatusOpenProducer);
    }

    WellData unset = Well("P2", kWellProducer);
    EXPECT_FALSE(Set(unset, Point()));
    EXPECT_EQ(error_, "setVaneProductionTarget(): The well <P2> has not had its Vane control set.");
    WellData invalid = Well("P3", kWellProducer, 8);
    EXPECT_FALSE(Set(invalid, Point()));
    EXPECT_EQ(error_, "setVaneProductionTarget(): The well <P3> has an invalid Vane control.");
    EXPECT_FALSE(Set(invalid, Point(), 4));
    EXPECT_EQ(error_, "SetOpPt(): The well <P3> has an invalid rate control type <4>.");
}

TEST_F(OperatingPoints, DefaultPhaseControlTakesTheCombinedRouteWithItsFixedRatios) {
    // 1781 scf per barrel: gas control by a threshold of 587, but two limits between 58.7 and 5870.
    WellData well = Well("P1", kWellProducer, kControlDefault);
    ASSERT_TRUE(Set(well, Point())) << error_;
    EXPECT_EQ(well.target.GasRate, 1000.0);
    EXPECT_EQ(well.target.LiquidRate, 100.0);

    NodeOperatingPoint gassy = Point();
    gassy.gasRate = 10.0;  // 17809 scf per barrel
    ASSERT_TRUE(Set(well, gassy, kRateCombined));
    EXPECT_EQ(well.target.GasRate, 10000.0);
    EXPECT_EQ(well.target.LiquidRate, -1.0);

    NodeOperatingPoint wet = Point();
    wet.gasRate = 0.01;  // 17.8 scf per barrel
    ASSERT_TRUE(Set(well, wet, kRateCombined));
    EXPECT_EQ(well.target.GasRate, -1.0);
    EXPECT_EQ(well.target.LiquidRate, 100.0);

    NodeOperatingPoint dry = Point();
    dry.gasRate = TNavUnitSystem::kNoValue;  // an unset rate counts as zero
    ASSERT_TRUE(Set(well, dry, kRateCombined));
    EXPECT_EQ(well.target.GasRate, 0.0);
    EXPECT_EQ(well.target.LiquidRate, 100.0);
    EXPECT_EQ(well.target.OilRate, -1.0);
    EXPECT_EQ(well.target.WaterRate, -1.0);
}

TEST_F(OperatingPoints, GlrControlChoosesOneTargetByTheThreshold) {
    WellData well = Well("P1", kWellProducer);
    ASSERT_TRUE(Set(well, Point(), kRateByGlr)) << error_;  // 1781 against 587: gas
    EXPECT_EQ(well.target.GasRate, 1000.0);
    EXPECT_EQ(well.target.LiquidRate, -1.0);

    NodeOperatingPoint wet = Point();
    wet.gasRate = 0.1;  // 178 scf per barrel
    ASSERT_TRUE(Set(well, wet, kRateByGlr));
    EXPECT_EQ(well.target.GasRate, -1.0);
    EXPECT_EQ(well.target.LiquidRate, 100.0);

    NodeOperatingPoint none;
    ASSERT_TRUE(Set(well, none, kRateByGlr));
    EXPECT_EQ(well.target.GasRate, 0.0);
    EXPECT_EQ(well.target.LiquidRate, 0.0);

    NodeOperatingPoint gasOnly;
    gasOnly.gasRate = 1e-6;
    ASSERT_TRUE(Set(well, gasOnly, kRateByGlr));
    EXPECT_NEAR(well.target.GasRate, 1e-3, 1e-12);
    EXPECT_EQ(well.target.LiquidRate, -1.0);

    // The liquid of a well of no type is its water alone: 0.1 MMscf over 40 STB is 445 scf per barrel.
    WellData untyped = Well("U1", kWellUndefined);
    ASSERT_TRUE(SetOpPtUnlocked(untyped, wet, {kRateByGlr, 400}, field_, false, error_));
    EXPECT_EQ(untyped.target.GasRate, 100.0);
    EXPECT_EQ(untyped.target.LiquidRate, -1.0);
}

TEST_F(OperatingPoints, AnInjectorTakesItsOwnRouteWhateverTheRateControl) {
    WellData well = Well("I1", kWellInjector, kControlWater);
    well.target.GasRate = 7.0;
    NodeOperatingPoint point = Point();
    point.temperature = 212.0;
    ASSERT_TRUE(Set(well, point, kRateByGlr)) << error_;
    EXPECT_EQ(well.target.WaterRate, 40.0);
    EXPECT_EQ(well.target.GasRate, -1.0);
    EXPECT_EQ(well.target.Temperature, 212.0);
    EXPECT_EQ(well.targetStatus, kStatusOpenInjector);

    // The GLR and combined operations refuse an injector all the same.
    EXPECT_FALSE(SetOpPtGlr(well, point, 587.0, field_, error_));
    EXPECT_EQ(error_,
              "The injection well <I1> was set to GLR control; only single phase control for injectors is "
              "supported.");
    EXPECT_FALSE(SetOpPtCombined(well, point, field_, error_));
    EXPECT_EQ(
        error_,
        "The injection well <I1> was set to Combined control; only single phase control for injectors is "
        "supported.");

    well.vaneRateControl = kControlDefault;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(
        error_,
        "The injection well <I1> has been set to use default phase control: a specific phase must be set.");
    well.vaneRateControl = kControlUnset;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(error_, "setVaneInjectorTarget(): The type of rate control has not be been for well <I1>.");
    well.vaneRateControl = 9;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(error_, "setVaneInjectorTarget(): The well <I1> has an invalid Vane control.");
}

TEST_F(OperatingPoints, TheMaskShutsOrStopsTheWell) {
    WellData well = Well("P1", kWellProducer, kControlGas);
    NodeOperatingPoint point = Point();
    point.maskFlag = true;
    const std::vector<std::pair<int, int>> kinds = {{2, kStatusShut}, {-1, kStatusShut}, {0, kStatusStop}};
    for (const auto& [kind, status] : kinds) {
        point.maskKind = kind;
        ASSERT_TRUE(Set(well, point)) << error_;
        EXPECT_EQ(well.targetStatus, status) << "kind " << kind;
    }
}

TEST_F(OperatingPoints, AnOpenWellNeedsAtLeastOneLimit) {
    // Without a unit system every conversion of a positive rate comes out negative.
    WellData well = Well("P1", kWellProducer, kControlWater);
    EXPECT_FALSE(SetOpPtUnlocked(well, Point(), {}, TNavUnitSystem(), false, error_));
    EXPECT_EQ(error_, "SetOpPt(): A valid rate/pressure constraint for the well <P1> was not set.");

    well.target.Bhp = 100.0;
    EXPECT_TRUE(SetOpPtUnlocked(well, Point(), {}, TNavUnitSystem(), false, error_));
}

TEST_F(OperatingPoints, AGasInjectorOfACompositionalModelTakesTheInjectedComposition) {
    WellData well = Well("I1", kWellInjector, kControlGas);
    well.composition.SetHcCount(3);
    const double fractions[] = {0.7, 0.2, 0.1};
    NodeOperatingPoint point = Point();
    point.moleFractions = fractions;
    point.componentCount = 3;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.7, 0.2, 0.1}));

    // A black-oil model and a zero gas rate leave the fractions cleared.
    EXPECT_TRUE(SetOpPtUnlocked(well, point, {}, field_, true, error_));
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.0, 0.0, 0.0}));
    point.gasRate = 0.0;
    ASSERT_TRUE(Set(well, point)) << error_;  // a zero gas target is still a limit
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.0, 0.0, 0.0}));

    point.gasRate = 1.0;
    point.componentCount = 4;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(error_, "iHcComponentIndex 3  exceeds the HcComponentCount (3).");
    const double bad[] = {0.5, 1.5, 0.0};
    point.moleFractions = bad;
    point.componentCount = 3;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(error_, "Mole Fraction value (1.5) must lie in the range 0.0 to 1.0 (inclusive).");

    // The target and the composition both run: a failed target still clears the fractions.
    point.moleFractions = fractions;
    ASSERT_TRUE(Set(well, point));
    well.vaneRateControl = kControlDefault;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.0, 0.0, 0.0}));
}

}  // namespace
}  // namespace rivulet
