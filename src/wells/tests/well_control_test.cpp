// Who controls a well, and the targets an operating point from the network gives it.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "ScriptedApi.h"
#include "ScriptedObjects.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/WellRequester.h"
#include "wells/WellControl.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

using tnavscripted::Script;

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
        Script().Reset();
        Script().state.wells.resize(3);
        wells_.Add(Well("P1", kWellProducer));
        wells_.Add(Well("I1", kWellInjector));
        wells_.Add(Well("U1", kWellUndefined));
    }
    bool Connect(int index, int type, int phase) {
        return ConnectWellToVaneCtrl(wells_, &requester_, index, type, phase, error_);
    }

    WellList wells_;
    tnavscripted::ScriptedWellRequester scripted_;
    WellRequester requester_{&scripted_, nullptr};
    std::string error_;
};

TEST_F(WellConnection, ThePhaseGivesTheControlAndANetworkInjectorIsOpenedUnlessItIsOneAlready) {
    const std::pair<int, int> table[] = {{0, kControlDefault}, {1, kControlWater}, {2, kControlLiquid},
                                         {3, kControlLiquid},  {4, kControlGas},   {5, kControlGas}};
    for (const auto& [phase, control] : table) {
        ASSERT_TRUE(Connect(0, kNetworkProducer, phase)) << error_;
        EXPECT_EQ(wells_[0].vaneRateControl, control) << "phase " << phase;
    }
    EXPECT_TRUE(Connect(1, kNetworkInjector, 1));  // already an injector
    EXPECT_TRUE(Connect(3, kNetworkProducer, 1));  // one past the last well connects nothing
    EXPECT_TRUE(Script().Calls().empty());

    ASSERT_TRUE(Connect(2, kNetworkInjector, 4)) << error_;  // opened as a water injector
    EXPECT_EQ(Script().LastArgs("set_injector_phases"), "2|0");
}

TEST_F(WellConnection, RefusalsNameTheIndexOrTheWell) {
    const std::tuple<int, int, int, const char*> cases[] = {
        {-1, kNetworkProducer, 1, "The well index -1 does not exist (function connectWellToVaneCtrl)."},
        {4, kNetworkProducer, 1, "The well index 4 does not exist (function connectWellToVaneCtrl)."},
        {0, kNetworkProducer, 6, "Unrecognised VANE phase <6> for well <P1>."},
        {1, kNetworkProducer, 1,
         "The well <I1> has a producer/injector mismatch between VANE and tNavigator."},
        // Fails only after the producer was opened as an injector.
        {0, kNetworkInjector, 1,
         "The well <P1> has a producer/injector mismatch between VANE and tNavigator."},
    };
    for (const auto& [index, type, phase, message] : cases) {
        EXPECT_FALSE(Connect(index, type, phase));
        EXPECT_EQ(error_, message);
    }
    EXPECT_EQ(wells_[0].status, kStatusOpenInjector);
    EXPECT_TRUE(Connect(2, kNetworkProducer, 2));  // an untyped well may be a producer
    EXPECT_FALSE(ConnectWellToVaneCtrl(wells_, nullptr, 2, kNetworkInjector, 1, error_));
    EXPECT_EQ(error_, "The well <U1> cannot be opened as an injector: there is no simulator connection.");
}

TEST(WellControls, InjectorsWithoutControlTakeItFromTheirOnePhaseAndChangedPhasesAreListed) {
    const struct {
        std::int32_t type, control, status;
        double gas, water;
        std::int32_t settledControl, phase;
    } cases[] = {
        {kWellInjector, kControlUnset, kStatusOpenInjector, 5, 0, kControlGas, kPhaseGas},
        {kWellInjector, kControlUnset, kStatusOpenInjector, 0, 5, kControlWater, kPhaseWater},
        {kWellInjector, kControlUnset, kStatusOpenInjector, 5, 5, kControlUnset, kPhaseWater},  // two phases
        {kWellInjector, kControlUnset, kStatusShut, 5, 0, kControlUnset, kPhaseWater},  // shut: not settled
        {kWellProducer, kControlUnset, kStatusOpenProducer, 5, 0, kControlUnset, kPhaseNone},  // no change
        {kWellInjector, kControlOil, kStatusOpenInjector, 0, 5, kControlOil, kPhaseOil},
    };
    WellList wells;
    for (const auto& c : cases) {
        WellData well = Well("W", c.type, c.control);
        WellRateRecord& record = c.type == kWellProducer ? well.productionRecord : well.injectionRecord;
        record[WellRateRecord::kGas] = c.gas;
        record[WellRateRecord::kWater] = c.water;
        well.targetStatus = c.status;
        well.injectionPhase = kPhaseWater;
        wells.Add(well);
    }
    EXPECT_EQ(SettleInjectorPhases(wells), (std::vector<int>{0, 5}));
    for (std::size_t k = 0; k < std::size(cases); ++k) {
        EXPECT_EQ(wells[k].vaneRateControl, cases[k].settledControl) << k;
        EXPECT_EQ(wells[k].injectionPhase, cases[k].phase) << k;
    }
}

TEST(WellControls, RatesAreCleanedAndTheRatioLimitsAreInclusiveOnlyForGas) {
    EXPECT_EQ(SanitiseRate(-2.0) + SanitiseRate(std::nan("")) + SanitiseRate(3.4e35), 0.0);
    const double ratio = 1.0e6 / (100.0 * 5.615);  // 1 MMscf over 100 STB
    EXPECT_TRUE(GlrAtOrAbove(1.0, 100.0, ratio));
    EXPECT_FALSE(GlrBelow(1.0, 100.0, ratio));
    EXPECT_TRUE(GlrBelow(0.0, 1.0, 0.0));
}

using Limits = std::array<double, 4>;  // gas, oil, water, liquid

class OperatingPoints : public ::testing::Test {
  protected:
    void SetUp() override { field_.SetUp("FIELD"); }

    // Gas 1 MMscf/day, oil 60 and water 40 STB/day: 1781 scf per standard barrel.
    static NodeOperatingPoint Point(double gas = 1.0, double oil = 60.0, double water = 40.0) {
        return {oil, water, gas};
    }
    bool Set(WellData& well, const NodeOperatingPoint& point, int rateControl = kRateByVaneType) {
        return SetOpPtUnlocked(well, point, {rateControl, 587}, field_, false, error_);
    }
    static Limits Of(const OperatingPoint& t) { return {t.GasRate, t.OilRate, t.WaterRate, t.LiquidRate}; }

    TNavUnitSystem field_;
    std::string error_;
};

TEST_F(OperatingPoints, ThePointConnectsTheWellAndGivesItsEfficiencyAndStatus) {
    WellData well = Well("P1", kWellProducer, kControlGas);
    well.underTapServerControl = true;
    NodeOperatingPoint point = Point();
    // Downtime and efficiency; the mask and its kind, and the status they give.
    const std::tuple<double, double, bool, int, int> cases[] = {{0.25, 0.75, false, 2, kStatusOpenProducer},
                                                                {1.0, 0.0, true, 2, kStatusShut},
                                                                {1.5, 1.0, true, -1, kStatusShut},
                                                                {0.0, 1.0, true, 0, kStatusStop}};
    for (const auto& [downtime, efficiency, mask, kind, status] : cases) {
        point.downtime = downtime;
        point.maskFlag = mask;
        point.maskKind = kind;
        ASSERT_TRUE(Set(well, point)) << error_;
        EXPECT_EQ(well.target.Efficiency, efficiency) << downtime;
        EXPECT_EQ(well.targetStatus, status) << kind;
    }
    EXPECT_FALSE(well.underTapServerControl);
}

TEST_F(OperatingPoints, EachRouteWritesOnlyTheLimitsItChooses) {
    const std::tuple<std::int32_t, std::int32_t, std::int32_t, NodeOperatingPoint, Limits> cases[] = {
        // The well type route writes the one rate its control names.
        {kWellProducer, kControlWater, kRateByVaneType, Point(), {-1, -1, 40, -1}},
        {kWellProducer, kControlLiquid, kRateByVaneType, Point(), {-1, -1, -1, 100}},
        {kWellProducer, kControlOil, kRateByVaneType, Point(), {-1, 60, -1, -1}},
        {kWellProducer, kControlGas, kRateByVaneType, Point(), {1000, -1, -1, -1}},
        // Default control is the combined route: two limits between 58.7 and 5870 scf per barrel.
        {kWellProducer, kControlDefault, kRateByVaneType, Point(), {1000, -1, -1, 100}},
        {kWellProducer, kControlDefault, kRateCombined, Point(10.0), {10000, -1, -1, -1}},
        {kWellProducer, kControlDefault, kRateCombined, Point(0.01), {-1, -1, -1, 100}},
        {kWellProducer, kControlDefault, kRateCombined, Point(TNavUnitSystem::kNoValue), {0, -1, -1, 100}},
        // GLR control chooses one limit by the threshold of 587.
        {kWellProducer, kControlUnset, kRateByGlr, Point(), {1000, -1, -1, -1}},
        {kWellProducer, kControlUnset, kRateByGlr, Point(0.25), {-1, -1, -1, 100}},  // 445
        {kWellProducer, kControlUnset, kRateByGlr, Point(0.0, 0.0, 0.0), {0, -1, -1, 0}},
        // The liquid of a well of no type is its water alone: 1113 scf per barrel.
        {kWellUndefined, kControlUnset, kRateByGlr, Point(0.25), {250, -1, -1, -1}},
    };
    for (const auto& [type, control, route, point, expected] : cases) {
        WellData well = Well("P1", type, control);
        ASSERT_TRUE(Set(well, point, route)) << error_;
        EXPECT_EQ(Of(well.target), expected) << control << " by " << route << " gas " << point.gasRate;
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

TEST_F(OperatingPoints, AnInjectorTakesItsOwnSinglePhaseRouteWhateverTheRateControl) {
    WellData well = Well("I1", kWellInjector, kControlWater);
    well.target.GasRate = 7.0;
    NodeOperatingPoint point = Point();
    point.temperature = 212.0;
    ASSERT_TRUE(Set(well, point, kRateByGlr)) << error_;
    EXPECT_EQ(Of(well.target), (Limits{-1, -1, 40, -1}));
    EXPECT_EQ(well.target.Temperature, 212.0);
    EXPECT_EQ(well.targetStatus, kStatusOpenInjector);

    EXPECT_FALSE(SetOpPtGlr(well, point, 587.0, field_, error_));
    EXPECT_EQ(error_,
              "The injection well <I1> was set to GLR control; only single phase control for injectors is "
              "supported.");
    EXPECT_FALSE(SetOpPtCombined(well, point, field_, error_));
    EXPECT_EQ(error_,
              "The injection well <I1> was set to Combined control; only single phase control for "
              "injectors is supported.");
    const std::pair<int, const char*> refusals[] = {
        {kControlDefault,
         "The injection well <I1> has been set to use default phase control: a specific phase must be set."},
        {kControlUnset, "setVaneInjectorTarget(): The type of rate control has not be been for well <I1>."},
        {9, "setVaneInjectorTarget(): The well <I1> has an invalid Vane control."}};
    for (const auto& [control, message] : refusals) {
        well.vaneRateControl = control;
        EXPECT_FALSE(Set(well, point));
        EXPECT_EQ(error_, message);
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
    const std::vector<double> none(3, 0.0);
    const double fractions[] = {0.7, 0.2, 0.1};
    NodeOperatingPoint point = Point();
    point.moleFractions = fractions;
    point.componentCount = 3;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.7, 0.2, 0.1}));

    // A black-oil model and a zero gas rate (still a limit) leave the fractions cleared.
    EXPECT_TRUE(SetOpPtUnlocked(well, point, {}, field_, true, error_));
    EXPECT_EQ(well.composition.rateFractions, none);
    point.gasRate = 0.0;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_EQ(well.composition.rateFractions, none);

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
    EXPECT_EQ(well.composition.rateFractions, none);
}

}  // namespace
}  // namespace rivulet
