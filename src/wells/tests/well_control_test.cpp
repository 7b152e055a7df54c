// Who controls a well, the targets an operating point from the network gives it, and the sampling of inflow
// tables: rate grids, curve interpolation, minimum rates and the control phase.
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
#include "wells/IprSampling.h"
#include "wells/WellControl.h"
#include "wells/WellList.h"

namespace rivulet {
namespace {

using tnavscripted::Script;

TNavUnitSystem Field() {
    TNavUnitSystem units;
    units.SetUp("FIELD");
    return units;
}

// The text a call that was to fail left: its error, or "(no error)" when it succeeded.
std::string ErrorOf(bool succeeded, const std::string& error) {
    return succeeded ? "(no error)" : error;
}

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
        EXPECT_EQ(wells_[0].vaneRateControl, control) << phase;
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
        EXPECT_EQ(ErrorOf(Connect(index, type, phase), error_), message);
    }
    EXPECT_EQ(wells_[0].status, kStatusOpenInjector);
    EXPECT_TRUE(Connect(2, kNetworkProducer, 2));  // an untyped well may be a producer
    EXPECT_EQ(ErrorOf(ConnectWellToVaneCtrl(wells_, nullptr, 2, kNetworkInjector, 1, error_), error_),
              "The well <U1> cannot be opened as an injector: there is no simulator connection.");
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
        record[WellRateRecord::kGas] = c.gas, record[WellRateRecord::kWater] = c.water;
        well.targetStatus = c.status, well.injectionPhase = kPhaseWater;
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
    // Gas 1 MMscf/day, oil 60 and water 40 STB/day: 1781 scf per standard barrel.
    static NodeOperatingPoint Point(double gas = 1.0, double oil = 60.0, double water = 40.0) {
        return {oil, water, gas};
    }
    bool Set(WellData& well, const NodeOperatingPoint& point, int rateControl = kRateByVaneType) {
        return SetOpPtUnlocked(well, point, {rateControl, 587}, field_, false, error_);
    }
    static Limits Of(const OperatingPoint& t) { return {t.GasRate, t.OilRate, t.WaterRate, t.LiquidRate}; }

    const TNavUnitSystem field_ = Field();
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
        point.downtime = downtime, point.maskFlag = mask, point.maskKind = kind;
        ASSERT_TRUE(Set(well, point)) << error_;
        EXPECT_EQ(std::tuple(well.target.Efficiency, well.targetStatus), std::tuple(efficiency, status))
            << kind;
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
    EXPECT_EQ(ErrorOf(Set(unset, Point()), error_),
              "setVaneProductionTarget(): The well <P2> has not had its Vane control set.");
    WellData invalid = Well("P3", kWellProducer, 8);
    EXPECT_EQ(ErrorOf(Set(invalid, Point()), error_),
              "setVaneProductionTarget(): The well <P3> has an invalid Vane control.");
    EXPECT_EQ(ErrorOf(Set(invalid, Point(), 4), error_),
              "SetOpPt(): The well <P3> has an invalid rate control type <4>.");

    // An open well needs at least one limit. Without a unit system every conversion of a positive rate
    // comes out negative.
    WellData water = Well("P1", kWellProducer, kControlWater);
    EXPECT_EQ(ErrorOf(SetOpPtUnlocked(water, Point(), {}, TNavUnitSystem(), false, error_), error_),
              "SetOpPt(): A valid rate/pressure constraint for the well <P1> was not set.");
    water.target.Bhp = 100.0;
    EXPECT_TRUE(SetOpPtUnlocked(water, Point(), {}, TNavUnitSystem(), false, error_));
}

TEST_F(OperatingPoints, AnInjectorTakesItsOwnSinglePhaseRouteWhateverTheRateControl) {
    WellData well = Well("I1", kWellInjector, kControlWater);
    well.target.GasRate = 7.0;
    NodeOperatingPoint point = Point();
    point.temperature = 212.0;
    ASSERT_TRUE(Set(well, point, kRateByGlr)) << error_;
    EXPECT_EQ(Of(well.target), (Limits{-1, -1, 40, -1}));
    EXPECT_EQ(std::tuple(well.target.Temperature, well.targetStatus), std::tuple(212.0, kStatusOpenInjector));

    EXPECT_EQ(ErrorOf(SetOpPtGlr(well, point, 587.0, field_, error_), error_),
              "The injection well <I1> was set to GLR control; only single phase control for injectors is "
              "supported.");
    EXPECT_EQ(ErrorOf(SetOpPtCombined(well, point, field_, error_), error_),
              "The injection well <I1> was set to Combined control; only single phase control for "
              "injectors is supported.");
    const std::pair<int, const char*> refusals[] = {
        {kControlDefault,
         "The injection well <I1> has been set to use default phase control: a specific phase must be set."},
        {kControlUnset, "setVaneInjectorTarget(): The type of rate control has not be been for well <I1>."},
        {9, "setVaneInjectorTarget(): The well <I1> has an invalid Vane control."}};
    for (const auto& [control, message] : refusals) {
        well.vaneRateControl = control;
        EXPECT_EQ(ErrorOf(Set(well, point), error_), message);
    }
}

TEST_F(OperatingPoints, AGasInjectorOfACompositionalModelTakesTheInjectedComposition) {
    WellData well = Well("I1", kWellInjector, kControlGas);
    well.composition.SetHcCount(3);
    const std::vector<double> none(3, 0.0);
    const double fractions[] = {0.7, 0.2, 0.1};
    NodeOperatingPoint point = Point();
    point.moleFractions = fractions, point.componentCount = 3;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_EQ(well.composition.rateFractions, (std::vector<double>{0.7, 0.2, 0.1}));

    // A black-oil model and a zero gas rate (still a limit) leave the fractions cleared.
    EXPECT_TRUE(SetOpPtUnlocked(well, point, {}, field_, true, error_));
    EXPECT_EQ(well.composition.rateFractions, none);
    point.gasRate = 0.0;
    ASSERT_TRUE(Set(well, point)) << error_;
    EXPECT_EQ(well.composition.rateFractions, none);

    point.gasRate = 1.0, point.componentCount = 4;
    EXPECT_EQ(ErrorOf(Set(well, point), error_), "iHcComponentIndex 3  exceeds the HcComponentCount (3).");
    const double bad[] = {0.5, 1.5, 0.0};
    point.moleFractions = bad, point.componentCount = 3;
    EXPECT_EQ(ErrorOf(Set(well, point), error_),
              "Mole Fraction value (1.5) must lie in the range 0.0 to 1.0 (inclusive).");

    // The target and the composition both run: a failed target still clears the fractions.
    point.moleFractions = fractions;
    ASSERT_TRUE(Set(well, point));
    well.vaneRateControl = kControlDefault;
    EXPECT_FALSE(Set(well, point));
    EXPECT_EQ(well.composition.rateFractions, none);
}

TEST(InterpolateCurve, BracketsExtendsAndAveragesInEitherDirection) {
    const double up[] = {0.0, 10.0, 20.0}, upY[] = {100.0, 80.0, 40.0};
    const double down[] = {20.0, 10.0, 0.0}, downY[] = {40.0, 80.0, 100.0};
    const double close[] = {0.0, 1.0, 1.000001, 2.0}, closeY[] = {0.0, 10.0, 30.0, 40.0};
    const double one[] = {5.0}, oneY[] = {7.0};
    // y, x, n, q, answer
    const std::tuple<const double*, const double*, int, double, double> cases[] = {
        {upY, up, 3, 5.0, 90.0},      {upY, up, 3, 10.0, 80.0},
        {upY, up, 3, 25.0, 20.0},     {upY, up, 3, -5.0, 110.0},  // beyond the last, before the first
        {downY, down, 3, 15.0, 60.0}, {downY, down, 3, -5.0, 110.0},
        {downY, down, 3, 25.0, 20.0}, {closeY, close, 4, 1.0000005, 20.0},  // x closer than 1e-5: mean
        {oneY, one, 1, 42.0, 7.0},    {oneY, one, 0, 5.0, -1.0},
        {nullptr, one, 1, 5.0, -1.0},
    };
    for (const auto& [y, x, n, q, answer] : cases)
        EXPECT_NEAR(InterpolateCurve(y, x, n, q), answer, 1e-9) << "n " << n << " q " << q;
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
    // Rows of 15: the gas grid, the oil grid ending at the cap, the gas grid of the second well.
    const std::size_t at[] = {0, 1, 2, 14, 15, 29, 44};
    const double rate[] = {0.1, 100.1, 214.3857142857143, 1500.1, 10.0, 100000.0, 50.0};
    for (int k = 0; k < 7; ++k) EXPECT_NEAR(set.rates[at[k]], rate[k], 1e-9) << at[k];
    // The maxima stay as they were, for the control phase; a well without flow adds no entry.
    EXPECT_EQ(set.maxOil, (std::vector<double>{0.0, 250000.0}));
    EXPECT_EQ(set.maxGas.size(), 2u);

    EXPECT_EQ(ErrorOf(set.AddRows(maxRates, PhaseRateTable(2), error), error),
              "Internal error: there was a mismatch of max and min phase rates.");
}

TEST(SetMinRates, HalfTheMaximumCappedForEveryPhaseOrTheInjectedOneOnly) {
    WellList wells;
    for (std::int32_t type : {kWellProducer, kWellInjector, kWellInjector, kWellUndefined}) {
        wells.Add(WellData());
        wells[wells.Count() - 1].wellType = type;
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
    EXPECT_EQ(ErrorOf(SetMinRates(wells, maxRates, three, 0.1, 10.0, error), error),
              "Internal error: there was a mismatch of max and min phase rates.");
    EXPECT_EQ(ErrorOf(SetMinRates(wells, three, three, 0.1, 10.0, error), error),
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
    for (int well = 0; well < 7; ++well)
        EXPECT_EQ(ChooseControlPhase(set, well, Field()), expected[well]) << well;
}

}  // namespace
}  // namespace rivulet
