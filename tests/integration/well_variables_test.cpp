// A host script's view of SPE1's wells on the stand-in simulator: reads by access string (command 96) agree
// with the node results (command 58) and the deck, and a target written by access string (command 97)
// reaches the simulator at the next step (command 98 runs it).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

// The six significant digits of an access string's value.
void ExpectClose(double actual, double expected, const std::string& what) {
    EXPECT_NEAR(actual, expected, 2e-6 * std::max(1.0, std::fabs(expected))) << what;
}

class WellVariables : public StandinTest {
  protected:
    double Value(const std::string& well, const std::string& variable) {
        return std::stod(Get("TNAVIGATOR.WELL[{" + well + "}]." + variable));
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
};

TEST_F(WellVariables, ReadsAgreeWithNodeResultsAndTheDeckAndWrittenTargetsReachTheSimulator) {
    Configure();
    LocalCase(std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA");
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    const auto wells = QueryWells();
    ASSERT_EQ(wells.size(), 2u);
    // The deck's DENSITY: a producer's from its own stream, an injector's from the fluid's table.
    for (const auto& [name, type] : wells) {
        ExpectClose(Value(name, "OilDensity"), 53.66, name + " oil density");
        ExpectClose(Value(name, "WaterDensity"), 64.49, name + " water density");
        ExpectClose(Value(name, "GasDensity"), 0.0533, name + " gas density");
    }
    ASSERT_EQ(RunToDay(31), 0) << Message(err_);

    // Node result rows against variables, in FIELD units: gas in Mscf against MMscf, psia against psig. The
    // rows of liquid are the sums of oil and water.
    struct Pair {
        int row;
        const char* variable;
        double factor;
    };
    const Pair producerRows[] = {{0, "OilRate", 1.0},    {1, "GasRate", 1e-3}, {2, "WaterRate", 1.0},
                                 {3, "LiquidRate", 1.0}, {4, "CumOil", 1.0},   {5, "CumGas", 1e-3},
                                 {6, "CumWater", 1.0},   {7, "CumLiquid", 1.0}};
    const Pair injectorRows[] = {{8, "GasRate", 1e-3}, {9, "WaterRate", 1.0}, {10, "CumGas", 1e-3}};
    std::size_t producer = 0;
    double fieldGas = 0.0;
    for (std::size_t k = 0; k < wells.size(); ++k) {
        const std::string& name = wells[k].first;
        const bool injector = wells[k].second == 2;
        for (const Pair& pair :
             injector ? std::span<const Pair>(injectorRows) : std::span<const Pair>(producerRows))
            ExpectClose(Value(name, pair.variable) * pair.factor, NodeResult(k, pair.row),
                        name + " " + pair.variable);
        ExpectClose(Value(name, "Bhp") - 14.6959, NodeResult(k, 12), name + " BHP");
        EXPECT_EQ(Get("TNAVIGATOR.Well[" + std::to_string(k) + "].WellType"),
                  injector ? "Injector" : "Producer");
        if (!injector) {
            producer = k;
            fieldGas += Value(name, "GasRate") * 1e-3;
        }
    }
    ExpectClose(std::stod(Get("TNAVIGATOR.FIELD.GasProductionRate")), fieldGas, "field gas");

    // A BHP above what the deck lets the producer draw down to holds it back.
    const std::string name = wells[producer].first;
    const double freeRate = Value(name, "OilRate");
    ASSERT_EQ(Set("TNAVIGATOR.WELL[{" + name + "}].TARGET.Bhp", "4200"), 0) << Message(err_);
    ASSERT_EQ(RunToDay(90), 0) << Message(err_);
    ExpectClose(Value(name, "Bhp"), 4200.0, "BHP under the written target");
    EXPECT_LT(Value(name, "OilRate"), 0.9 * freeRate);

    EXPECT_EQ(Set("TNAVIGATOR.WELL[{" + name + "}].SetWellType", "Injector"), 1);
    EXPECT_EQ(Message(err_), "A well type can only be changed if currently Undefined.");
    Get("TNAVIGATOR.WELL[{prod}].Bhp", 1);  // keys are exact
    EXPECT_TRUE(IsBlank(err_));
}

}  // namespace
}  // namespace rivulet::it
