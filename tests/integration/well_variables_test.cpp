// A host script's view of the wells of SPE1 on the stand-in simulator: every well read by access string
// (command 96) agrees with the node results (command 58) and the deck, and a target written by access
// string (command 97) reaches the simulator at the next step (command 98 runs it).
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

const std::string kSpe1 = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";

// SPE1 is a FIELD model: gas in Mscf against the host's MMscf, pressure in psia against psig.
constexpr double kMscfPerMMscf = 1000.0;
constexpr double kAtmosphere = 14.6959;

// Node result rows of a well.
enum Row : int {
    kOil = 0,
    kGas = 1,
    kWater = 2,
    kLiquid = 3,
    kCumOil = 4,
    kCumGas = 5,
    kCumWater = 6,
    kCumLiquid = 7,
    kGasInjected = 8,
    kWaterInjected = 9,
    kCumGasInjected = 10,
    kCumWaterInjected = 11,
    kBhp = 12
};

// The six significant digits of an access string's value.
void ExpectClose(double actual, double expected, const std::string& what) {
    EXPECT_NEAR(actual, expected, 2e-6 * std::max(1.0, std::fabs(expected))) << what;
}

class WellVariables : public StandinTest {
  protected:
    void Start() {
        Configure();
        LocalCase(kSpe1);
        ASSERT_EQ(Cmd(23), 0) << Message(err_);
        wells_ = QueryWells();
        ASSERT_EQ(wells_.size(), 2u);
    }
    std::string Text(const std::string& well, const std::string& variable) {
        return Get("TNAVIGATOR.WELL[{" + well + "}]." + variable);
    }
    double Value(const std::string& well, const std::string& variable) {
        return std::stod(Text(well, variable));
    }
    std::int32_t SetWell(const std::string& well, const std::string& variable, const std::string& value) {
        return Set("TNAVIGATOR.WELL[{" + well + "}]." + variable, value);
    }
    double NodeResult(std::size_t well, int row) {
        host::Buffer result(208);
        result.Put<std::int32_t>(4, 12 + 14 * static_cast<std::int32_t>(well) + row);
        EXPECT_EQ(Cmd(58, result.Address()), 1) << Message(err_);
        return result.Get<double>(96);
    }
    std::int32_t RunToDay(int day) {
        const std::string command = "TNAVIGATOR.RunToTime(" + std::to_string(day) + ")";
        return Cmd(98, Arg(command.c_str()));
    }

    std::vector<std::pair<std::string, std::int32_t>> wells_;
};

TEST_F(WellVariables, ReadsAgreeWithTheNodeResultsAndTheDeck) {
    ASSERT_NO_FATAL_FAILURE(Start());
    // Surface densities from the deck's DENSITY (oil, water, gas): a producer's from its own stream, an
    // injector's from the fluid's table.
    for (const auto& [name, type] : wells_) {
        ExpectClose(Value(name, "OilDensity"), 53.66, name + " oil density");
        ExpectClose(Value(name, "WaterDensity"), 64.49, name + " water density");
        ExpectClose(Value(name, "GasDensity"), 0.0533, name + " gas density");
    }

    ASSERT_EQ(RunToDay(120), 0) << Message(err_);
    double fieldOil = 0.0, fieldGas = 0.0, fieldGasInjected = 0.0;
    for (std::size_t k = 0; k < wells_.size(); ++k) {
        const std::string& name = wells_[k].first;
        const bool injector = wells_[k].second == 2;
        EXPECT_EQ(Text(name, "WellType"), injector ? "Injector" : "Producer");
        EXPECT_EQ(Text(name, "Status"), "Open");
        EXPECT_EQ(Text(name, "IsOpen"), "1");
        EXPECT_EQ(Get("TNAVIGATOR.Well[" + std::to_string(k) + "].Name"), name);

        const double oil = Value(name, "OilRate"), water = Value(name, "WaterRate");
        const double gas = Value(name, "GasRate") / kMscfPerMMscf;
        const double cumOil = Value(name, "CumOil"), cumWater = Value(name, "CumWater");
        const double cumGas = Value(name, "CumGas") / kMscfPerMMscf;
        ExpectClose(Value(name, "LiquidRate"), oil + water, name + " liquid rate");
        ExpectClose(Value(name, "CumLiquid"), cumOil + cumWater, name + " cumulative liquid");
        ExpectClose(Value(name, "Bhp") - kAtmosphere, NodeResult(k, kBhp), name + " BHP");
        if (injector) {
            EXPECT_GT(gas, 0.0) << name;
            ExpectClose(gas, NodeResult(k, kGasInjected), name + " gas injected");
            ExpectClose(water, NodeResult(k, kWaterInjected), name + " water injected");
            ExpectClose(cumGas, NodeResult(k, kCumGasInjected), name + " cumulative gas injected");
            ExpectClose(cumWater, NodeResult(k, kCumWaterInjected), name + " cumulative water injected");
            fieldGasInjected += gas;
            continue;
        }
        EXPECT_GT(oil, 0.0) << name;
        ExpectClose(oil, NodeResult(k, kOil), name + " oil");
        ExpectClose(gas, NodeResult(k, kGas), name + " gas");
        ExpectClose(water, NodeResult(k, kWater), name + " water");
        ExpectClose(oil + water, NodeResult(k, kLiquid), name + " liquid");
        ExpectClose(cumOil, NodeResult(k, kCumOil), name + " cumulative oil");
        ExpectClose(cumGas, NodeResult(k, kCumGas), name + " cumulative gas");
        ExpectClose(cumWater, NodeResult(k, kCumWater), name + " cumulative water");
        ExpectClose(cumOil + cumWater, NodeResult(k, kCumLiquid), name + " cumulative liquid");
        fieldOil += oil;
        fieldGas += gas;
    }
    // The field's totals, in the host's units, are the sums of its wells'.
    ExpectClose(std::stod(Get("TNAVIGATOR.Field.OilProductionRate")), fieldOil, "field oil");
    ExpectClose(std::stod(Get("TNAVIGATOR.FIELD.GasProductionRate")), fieldGas, "field gas");
    ExpectClose(std::stod(Get("TNAVIGATOR.Field.GasInjectionRate")), fieldGasInjected, "field gas injected");

    // Keys are exact; names are not.
    Get("TNAVIGATOR.WELL[{prod}].Bhp", 1);
    EXPECT_TRUE(IsBlank(err_));
}

TEST_F(WellVariables, ATargetWrittenByAccessStringReachesTheSimulator) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const std::string producer = wells_[0].second == 1 ? wells_[0].first : wells_[1].first;
    const std::string injector = wells_[0].second == 2 ? wells_[0].first : wells_[1].first;
    ASSERT_EQ(RunToDay(31), 0) << Message(err_);
    const double freeRate = Value(producer, "OilRate");

    // A BHP well above what the deck lets the well draw down to holds it back.
    ASSERT_EQ(SetWell(producer, "TARGET.Bhp", "4200"), 0) << Message(err_);
    EXPECT_EQ(Text(producer, "TARGET.Bhp"), "4200");
    EXPECT_EQ(Text(producer, "TARGET.OilRate"), "-1");
    ASSERT_EQ(RunToDay(90), 0) << Message(err_);
    ExpectClose(Value(producer, "Bhp"), 4200.0, "BHP under the written target");
    EXPECT_LT(Value(producer, "OilRate"), 0.9 * freeRate);

    // Refusals reach the host's error record with the well's own words.
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> refusals = {
        {producer, "SetWellType", "Injector", "A well type can only be changed if currently Undefined."},
        {producer, "TARGET.Status", "Closed", "Unrecognised value: must be Open; Shut or Stop."},
        {injector, "TARGET.OilRate", "100",
         "tNavigator injectors only support single-phase gas or water control."},
        {injector, "TARGET.Temperature", "150", "Could not set unrecognised target point."},
    };
    for (const auto& [well, variable, value, message] : refusals) {
        EXPECT_EQ(SetWell(well, variable, value), 1) << variable;
        EXPECT_EQ(Message(err_), message) << variable;
    }
    // Read-only names are not written, and say nothing.
    EXPECT_EQ(SetWell(producer, "Bhp", "1"), 1);
    EXPECT_TRUE(IsBlank(err_));
}

}  // namespace
}  // namespace rivulet::it
