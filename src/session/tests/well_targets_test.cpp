// Sending the wells' targets at the start of a time step: the lists, the limit groups and their calls.
#include <iterator>
#include <tuple>

#include "session/WellTargets.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

constexpr double kUnset = -1.0;

// The rates and pressures of a target; kUnset leaves one out.
OperatingPoint Point(double gas, double oil = kUnset, double water = kUnset, double liquid = kUnset,
                     double bhp = kUnset, double thp = kUnset) {
    OperatingPoint point;
    std::tie(point.GasRate, point.OilRate, point.WaterRate, point.LiquidRate, point.Bhp, point.Thp) =
        std::tuple(gas, oil, water, liquid, bhp, thp);
    return point;
}
OperatingPoint Pressure(double bhp, double thp = kUnset) {
    return Point(kUnset, kUnset, kUnset, kUnset, bhp, thp);
}

// One well in a group of its own: what its target is, and what its group's enabling and target calls carry
// (wells|limits|values and wells|targets).
struct GroupRow {
    const char* group;
    WellType type;
    OperatingPoint target;
    const char* enable;
    const char* targets;
};

// Field units: gas in Mscf, so 100 Mscf against 20 STB is 0.005 MMscf/STB, below the gas control ratio.
const GroupRow kGroups[] = {
    {"injector BHP", kWellInjector, Pressure(200), "0|2|200", "0|2"},
    {"injector pressure", kWellInjector, Pressure(200, 50), "0|2,3|200,50", "0|2"},
    {"injector rate, smallest rate", kWellInjector, Point(kUnset, kUnset, 30, 20), "0|0,2|20,400", "0|0"},
    {"injector all", kWellInjector, Point(5, kUnset, kUnset, kUnset, kUnset, 50), "0|0,2,3|5,400,50", "0|0"},
    {"BHP", kWellProducer, Pressure(150), "0|5|150", "0|5"},
    {"dual pressure", kWellProducer, Pressure(kUnset, 40), "0|5,6|14,40", "0|5"},
    {"gas", kWellProducer, Point(500), "0|0,5|500,14", "0|0"},
    {"oil", kWellProducer, Point(kUnset, 100, kUnset, kUnset, 120), "0|1,5|100,120", "0|1"},
    {"water", kWellProducer, Point(kUnset, kUnset, 80), "0|2,5|80,14", "0|2"},
    {"liquid, oil and water without a liquid rate", kWellProducer, Point(kUnset, 100, 80), "0|3,5|0,14",
     "0|3"},
    {"gas+liquid, no liquid: gas", kWellProducer, Point(500, 100), "0|0,3,5|500,0,14", "0|0"},
    {"gas+liquid, low ratio: liquid", kWellProducer, Point(100, kUnset, kUnset, 20), "0|0,3,5|100,20,14",
     "0|3"},
    {"mixed, oil", kWellProducer, Point(kUnset, 100, kUnset, kUnset, kUnset, 40), "0|1,5,6|100,14,40", "0|1"},
    {"mixed, low ratio: liquid", kWellProducer, Point(100, kUnset, kUnset, 20, 90, 40),
     "0|3,0,5,6|20,100,90,40", "0|3"},
    {"mixed, liquid unset and sent as it is: gas", kWellProducer, Point(300, 100, kUnset, kUnset, kUnset, 40),
     "0|3,0,5,6|-1,300,14,40", "0|0"},
};

class WellTargets : public RequesterTest {
  protected:
    void SetUp() override {
        RequesterTest::SetUp();
        units_.SetUp("FIELD");
        requester_.defaultInjectorBhp = 400.0;
        requester_.defaultProducerBhp = 14.0;
    }
    // An open well under the network's control, its status and injection phase already as its target
    // wants them.
    WellData& Add(WellType type, const OperatingPoint& target) {
        WellData well(&fluid_);
        well.name = (type == kWellInjector ? "I" : "P") + std::to_string(wells_.Size());
        well.wellType = type;
        well.status = well.targetStatus = type == kWellInjector ? kStatusOpenInjector : kStatusOpenProducer;
        well.target = target;
        const int phase = target.RatePhase();
        well.injectionPhase = type == kWellInjector && phase != kPhaseNone ? phase : kPhaseWater;
        well.underVaneControl = true;
        wells_.Add(well);
        Script().state.wells.resize(wells_.Count());
        return wells_[wells_.Count() - 1];
    }
    bool Apply(std::int32_t unconnected = kUnconnectedUnderDeck) {
        return ApplyWellTargets(requester_, wells_, units_, unconnected, error_);
    }
    // The limits of every enabling call, in order.
    static Names EnabledLimits() {
        Names limits;
        for (const auto& call : Script().Calls()) {
            if (call.name != "enable_injector_limits" && call.name != "enable_producer_limits") continue;
            const std::size_t from = call.args.find('|') + 1;
            limits.push_back(call.args.substr(from, call.args.find('|', from) - from));
        }
        return limits;
    }
};

TEST_F(WellTargets, EachGroupSendsItsLimitsValuesAndTargetInThreeCalls) {
    for (const GroupRow& row : kGroups) {
        SetUp();
        WellData& well = Add(row.type, row.target);
        // The dual pressure producer is the access strings'.
        if (row.target.Thp >= 0 && row.target.RateCount() == 0 && row.type == kWellProducer)
            std::tie(well.underVaneControl, well.underTapServerControl) = std::tuple(false, true);
        ASSERT_TRUE(Apply()) << row.group << ": " << error_;
        const bool injector = row.type == kWellInjector;
        const std::string enable = injector ? "enable_injector_limits" : "enable_producer_limits";
        const std::string targets = injector ? "set_injector_targets" : "set_producer_targets";
        EXPECT_EQ(Script().CallNames(), Names({"set_well_efficiency_factors", "disable_all_limits", enable,
                                               targets, "check_new_controls"}))
            << row.group;
        EXPECT_EQ(std::tuple(Args("disable_all_limits"), Args(enable), Args(targets)),
                  std::tuple("0", row.enable, row.targets))
            << row.group;
    }
}

TEST_F(WellTargets, InjectorPressureGroupsReadThePressuresOfTheWellsAtTheHeadOfTheList) {
    Add(kWellProducer, Pressure(11));
    Add(kWellProducer, Pressure(22));
    Add(kWellInjector, Pressure(300));                           // BHP
    Add(kWellInjector, Pressure(310, 50));                       // pressure
    Add(kWellInjector, Point(kUnset, kUnset, 10, kUnset, 320));  // rate
    ASSERT_TRUE(Apply()) << error_;
    const auto enabling = [](const char* name) {
        std::vector<std::string> args;
        for (const auto& call : Script().Calls())
            if (call.name == name) args.push_back(call.args);
        return args;
    };
    // Both pressure groups take well 0's BHP, and its missing THP becomes the default.
    EXPECT_EQ(enabling("enable_injector_limits"), Names({"2|2|11", "3|2,3|11,400", "4|0,2|10,320"}));
    EXPECT_EQ(enabling("enable_producer_limits"), Names({"0,1|5|11,22"}));
}

TEST_F(WellTargets, OneGroupInTheLog) {
    Add(kWellProducer, Pressure(150));
    Add(kWellProducer, Pressure(160)).target.Efficiency = 0.25;
    ASSERT_TRUE(Apply()) << error_;
    EXPECT_EQ(
        log_.str(),
        "\n*** ApplyWellTargets ***\n"
        "\nset_well_efficiency_factors(int*, int, double*)\nint[2]\n0, 1, \nint=2\ndouble[2]\n1, 0.25, \n"
        "\ndisable_all_limits(int*, int)\nint[2]\n0, 1, \nint=2\n"
        "\nenable_producer_limits(int*, int, prod_limit_t*, int, double*)\nint[2]\n0, 1, \nint=2\n"
        "prod_limit_t[1]\n5, \nint=1\ndouble[2]\n150, 160, \n"
        "\nset_producer_targets(int*, int, prod_limit_t*)\nint[2]\n0, 1, \nint=2\nprod_limit_t[2]\n5, 5, \n"
        "\ncheck_new_controls()\n");
}

TEST_F(WellTargets, StatusEfficiencyAndPhaseListsFollowControlAndStatus) {
    const auto build = [this] {
        SetUp();
        Add(kWellProducer, Pressure(100));
        wells_[0].underVaneControl = false;  // never connected
        wells_[0].targetStatus = kStatusUnknown;
        Add(kWellProducer, Pressure(100)).targetStatus = kStatusUnknown;
        Add(kWellProducer, Pressure(100)).targetStatus = kStatusStop;
        // Open as it is: no status. An efficiency of 1 or more is sent as 1.
        Add(kWellInjector, Point(kUnset, kUnset, 10)).target.Efficiency = 1.5;
        WellData& reopened = Add(kWellInjector, Point(10));
        std::tie(reopened.status, reopened.injectionPhase) = std::tuple(kStatusShut, kPhaseWater);
        Add(kWellProducer, Pressure(100)).target.Efficiency = 0.5;
        WellData& tapped = Add(kWellProducer, Point(50));
        std::tie(tapped.underVaneControl, tapped.underTapServerControl) = std::tuple(false, true);
        std::tie(tapped.status, tapped.target.Efficiency) = std::tuple(kStatusShut, -0.2);
    };

    build();
    ASSERT_TRUE(Apply(kUnconnectedShut)) << error_;
    EXPECT_EQ(std::tuple(Args("set_new_well_statuses"), Args("set_well_efficiency_factors"),
                         Args("set_injector_phases")),
              std::tuple("0,2,4,6|3,4,2,1", "3,4,5,6|1,1,0.5,1", "4|2"));
    // Statuses change with the next read only.
    EXPECT_EQ(std::tuple(wells_[0].targetStatus, wells_[4].status), std::tuple(kStatusShut, kStatusShut));

    build();
    ASSERT_TRUE(Apply(kUnconnectedUnderDeck)) << error_;
    EXPECT_EQ(std::tuple(Args("set_new_well_statuses"), wells_[0].targetStatus),
              std::tuple("2,4,6|4,2,1", kStatusUnknown));

    // An injector asked for gas and water fits no phase: nothing of the phases goes out.
    build();
    wells_[4].target.WaterRate = 5;
    EXPECT_EQ(ErrorOf(Apply(), error_),
              "Target operating point for injection well[4] did not specify a single injection phase");
    EXPECT_EQ(Script().CallNames(), Names({"set_new_well_statuses", "set_well_efficiency_factors"}));

    // With nothing under control only the check is made; an empty list makes no call at all.
    SetUp();
    Add(kWellProducer, OperatingPoint()).underVaneControl = false;
    ASSERT_TRUE(Apply());
    EXPECT_EQ(Script().CallNames(), Names({"check_new_controls"}));
    SetUp();
    ASSERT_TRUE(Apply());
    EXPECT_TRUE(Script().Calls().empty());
    EXPECT_EQ(log_.str(), "\n*** ApplyWellTargets ***\n");
}

TEST_F(WellTargets, ThermalWaterInjectorsGetTemperatureAndGasInjectorsComposition) {
    fluid_.modelType = 4;  // thermal compositional
    Add(kWellInjector, Point(kUnset, kUnset, 10)).target.Temperature = 350;
    Add(kWellInjector, Point(20)).target.Temperature = 360;
    Add(kWellInjector, Point(kUnset, kUnset, 5)).target.Temperature = TNavUnitSystem::kNoValue;
    for (WellData& well : wells_) well.composition.SetHcCount(2);
    wells_[1].composition.rateFractions = {0.6, 0.4};
    ASSERT_TRUE(Apply()) << error_;
    EXPECT_EQ(std::tuple(Args("set_injector_thermal_parameters"), Args("set_injected_gas_composition")),
              std::tuple("0|1|350", "1"));
    EXPECT_NE(log_.str().find("\nset_injected_gas_composition(int*, int, double*)\nint[1]\n1, \nint=1\n"
                              "double[2]\n0.6, 0.4, \n"),
              std::string::npos);
    const Names names = Script().CallNames();
    EXPECT_EQ(
        Names(names.end() - 3, names.end()),
        Names({"set_injector_thermal_parameters", "set_injected_gas_composition", "check_new_controls"}));

    // The first well of the list decides whether compositions are sent at all.
    SetUp();
    Add(kWellInjector, Point(20)).composition.SetHcCount(0);
    Add(kWellInjector, Point(20)).composition.SetHcCount(2);
    ASSERT_TRUE(Apply()) << error_;
    EXPECT_EQ(Calls("set_injected_gas_composition") + Calls("set_injector_thermal_parameters"), 0);
}

TEST_F(WellTargets, EachFailureStopsTheSendWithItsMessageInTheLog) {
    // Every kind of call in one send: statuses, efficiencies, a phase, the four injector groups, a
    // temperature, a composition, then a mixed control producer and two producer groups.
    const auto build = [this] {
        SetUp();
        fluid_.modelType = 2;  // thermal black oil
        Add(kWellInjector, Pressure(200)).status = kStatusShut;
        Add(kWellInjector, Pressure(200, 50));
        WellData& water = Add(kWellInjector, Point(kUnset, kUnset, 10));
        std::tie(water.injectionPhase, water.target.Temperature) = std::tuple(kPhaseGas, 350.0);
        Add(kWellInjector, Point(20, kUnset, kUnset, kUnset, kUnset, 50)).composition.SetHcCount(1);
        wells_[0].composition.SetHcCount(1);
        Add(kWellProducer, Point(kUnset, 100, kUnset, kUnset, kUnset, 40));
        Add(kWellProducer, Pressure(150));
        Add(kWellProducer, Point(500, 100));
    };
    const std::tuple<const char*, int, const char*> cases[] = {
        {"set_new_well_statuses", 1, "Error when setting well statuses"},
        {"set_well_efficiency_factors", 1, "Error when setting well efficiencies"},
        {"set_injector_phases", 1, "Error when setting injector phases"},
        {"disable_all_limits", 1, "Error when disabling all limits on injectors"},
        {"enable_injector_limits", 1, "Error when enabling bhp limits on injectors"},
        {"set_injector_targets", 2, "Error when setting pressure targets on injectors"},
        {"enable_injector_limits", 3, "Error when enabling limits on injectors"},
        {"set_injector_targets", 4, "Error when setting all targets on injectors"},
        {"set_injector_thermal_parameters", 1, "Error when setting temperatures on injectors"},
        {"set_injected_gas_composition", 1, "Error when setting injected gas composition"},
        {"disable_all_limits", 5, "Error when disabling all limits on a mixed control producer (P4)"},
        {"enable_producer_limits", 2, "Error when enabling limits on BHP controlled producers"},
        {"set_producer_targets", 3, "Error when setting targets on gas+liquid controlled producers"},
        {"check_new_controls", 1, "Error after setting new well targets"},
    };
    for (const auto& [call, nth, text] : cases) {
        build();
        Script().Fail(call, 4, "refused", nth);
        EXPECT_EQ(ErrorOf(Apply(), error_), std::string(text) + ": refused");
        EXPECT_EQ(Script().CallNames().back(), call) << text;
        EXPECT_TRUE(EndsWithLine(log_.str(), error_)) << log_.str();
    }

    const std::tuple<const char*, int, const char*> thrown[] = {
        {"set_new_well_statuses", 0, "An exception was thrown when setting well statuses"},
        {"enable_producer_limits", 4,
         "An exception was thrown when setting targets on a mixed control producer (P4)."},
        {"enable_producer_limits", 6,
         "An exception was thrown when setting targets on gas+liquid controlled producers."},
    };
    for (const auto& [call, only, text] : thrown) {
        build();
        for (int k = 0; k < 7; ++k)
            if (k != only && wells_[k].IsProducer()) wells_[k].underVaneControl = false;
        Script().state.throwIn = call;
        EXPECT_EQ(ErrorOf(Apply(), error_), text);
    }

    // A well under the network with nothing to control it by stops the send; under access strings it is
    // skipped.
    SetUp();
    Add(kWellInjector, OperatingPoint());
    EXPECT_EQ(ErrorOf(Apply(), error_), "There are no phase contraints for the Vane controlled well I0");
    std::tie(wells_[0].underVaneControl, wells_[0].underTapServerControl) = std::tuple(false, true);
    EXPECT_TRUE(Apply()) << error_;
    EXPECT_EQ(ErrorOf(SendMixedControl(requester_, wells_, 1, &units_, error_), error_),
              "Invalid well index sent when setting producer mixed control targets");
}

TEST_F(WellTargets, CallsDoNotGrowWithTheWellCountButForMixedControlProducers) {
    // Every group but mixed control, once and then spread over a thousand wells.
    const auto send = [this](int count, int mixed) {
        SetUp();
        const int kinds = static_cast<int>(std::size(kGroups)) - 3;
        for (int k = 0; k < count; ++k) {
            // Every well's status and every injector's phase is to be sent.
            WellData& well = Add(kGroups[k % kinds].type, kGroups[k % kinds].target);
            std::tie(well.status, well.injectionPhase) = std::tuple(kStatusShut, kPhaseNone);
        }
        for (int k = 0; k < mixed; ++k) Add(kWellProducer, kGroups[kinds].target);
        EXPECT_TRUE(Apply()) << error_;
        return Script().Calls().size();
    };
    const std::size_t few = send(12, 0);
    EXPECT_EQ(few, 3u + 4 * 3 + 7 * 3 + 1);  // statuses, efficiencies, phases, the groups, the check
    EXPECT_EQ(send(1000, 0), few);
    EXPECT_EQ(send(1000, 2), few + 2 * 3);
    // Mixed control producers go first, the groups then in their order.
    EXPECT_EQ(EnabledLimits(), Names({"2", "2,3", "0,2", "0,2,3", "1,5,6", "1,5,6", "5", "5,6", "0,5", "1,5",
                                      "2,5", "3,5", "0,3,5"}));
}

}  // namespace
}  // namespace rivulet
