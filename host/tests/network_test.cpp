#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "host/Network.h"

namespace host {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

InflowTable Table(std::vector<double> oil, std::vector<double> water, std::vector<double> gas,
                  std::vector<double> pressure) {
    return InflowTable{std::move(oil), std::move(water), std::move(gas), std::move(pressure)};
}

// A producer: liquid rates 0, 1000, 2000 (60% oil) with the pressure falling from 3000 to 1000 psig.
const InflowTable kProducer = Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, 1000});

OperatingPoint Shut() {
    OperatingPoint point;
    point.shut = true;
    return point;
}

OperatingPoint Flowing(double oil, double water, double gas, double pressure) {
    return OperatingPoint{false, oil, water, gas, pressure};
}

void ExpectPoint(const OperatingPoint& actual, const OperatingPoint& expected, const std::string& name) {
    EXPECT_EQ(actual.shut, expected.shut) << name;
    EXPECT_NEAR(actual.oil, expected.oil, 1e-6) << name;
    EXPECT_NEAR(actual.water, expected.water, 1e-6) << name;
    EXPECT_NEAR(actual.gas, expected.gas, 1e-9) << name;
    EXPECT_NEAR(actual.pressure, expected.pressure, 1e-6) << name;
}

TEST(NetworkTest, ControlledRateByPhase) {
    const InflowTable gasOnly = Table({0, 0}, {0, 0}, {3, 5}, {2000, 1000});
    const InflowTable waterOnly = Table({0, 0}, {4, 6}, {3, 5}, {2000, 1000});
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kWater, 1), 400);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kLiquid, 1), 1000);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kGas, 1), 1);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kDefault, 1), 1000);
    EXPECT_EQ(ControlledRate(gasOnly, NetworkPhase::kDefault, 1), 5);
    EXPECT_EQ(ControlledRate(waterOnly, NetworkPhase::kDefault, 1), 6);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kLiquid, 7), 0);
}

TEST(NetworkTest, SolveWellOnHandMadeTables) {
    struct Case {
        std::string name;
        InflowTable table;
        NetworkPhase phase;
        TubingCurve tubing;
        double manifold;
        bool injector;
        OperatingPoint expected;
    };
    const std::vector<Case> cases = {
        // IPR p = 3000 - q; tubing 275 + 1000 + 1e-4 q^2. f(q) = 1725 - q - 1e-4 q^2: f(1000) = 625,
        // f(2000) = -675, and f(1500) = 1725 - 1500 - 225 = 0, halfway along the second segment.
        {"root", kProducer, NetworkPhase::kLiquid, {1000, 1e-4}, 275, false, Flowing(900, 600, 1.5, 1500)},
        // The same table with a repeated point: the flat step is passed over.
        {"flat step",
         Table({0, 600, 600, 1200}, {0, 400, 400, 800}, {0, 1, 1, 2}, {3000, 2000, 1900, 1000}),
         NetworkPhase::kLiquid,
         {1000, 1e-4},
         275,
         false,
         Flowing(900, 600, 1.5, 1500)},
        // The last point at atmospheric pressure, a rounding error below zero gauge, still counts. On the
        // second segment p = 2000 - 2 (q - 1000), so f(q) = 2725 - 2q - 1e-4 q^2 = 0 at
        // q = -10000 + sqrt(1.2725e8) = 1280.514..., 28.05% along it.
        {"last point at atmospheric",
         Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, -2.8e-13}),
         NetworkPhase::kLiquid,
         {1000, 1e-4},
         275,
         false,
         Flowing(768.3085036, 512.2056691, 1.28051417268, 1438.9716546)},
        // f(0) = 3000 - 2000 - 1000 = 0: no flow against the manifold.
        {"cannot flow", kProducer, NetworkPhase::kLiquid, {1000, 0}, 2000, false, Shut()},
        // f(2000) = 1000 - 100 - 4e-5 * 2000^2 = 740 > 0: held at the last point.
        {"past the end",
         kProducer,
         NetworkPhase::kLiquid,
         {0, 4e-5},
         100,
         false,
         Flowing(1200, 800, 2, 1000)},
        // Water alone: p = 3000 - 2.5 q, f(q) = 3000 - 2.5 q - 140 - 1000 - 1e-3 q^2 = 1860 - 2.5 q - 1e-3
        // q^2,
        // zero at q = 600 (1860 - 1500 - 360), halfway along the second segment.
        {"water phase",
         kProducer,
         NetworkPhase::kWater,
         {1000, 1e-3},
         140,
         false,
         Flowing(900, 600, 1.5, 1500)},
        // Gas alone under the default phase: p = 3000 - 100 q, f(q) = 1725 - 100 q - q^2, zero at q = 15.
        {"default gas",
         Table({0, 0, 0}, {0, 0, 0}, {0, 10, 20}, {3000, 2000, 1000}),
         NetworkPhase::kDefault,
         {775, 1},
         500,
         false,
         Flowing(0, 0, 15, 1500)},
        // Injector: p = 3000 + q, g(q) = 3725 + 1000 - 1e-4 q^2 - 3000 - q = 1725 - q - 1e-4 q^2, zero at
        // 1500.
        {"injector",
         Table({0, 0, 0}, {0, 1000, 2000}, {0, 0, 0}, {3000, 4000, 5000}),
         NetworkPhase::kWater,
         {1000, 1e-4},
         3725,
         true,
         Flowing(0, 1500, 0, 4500)},
        // g(0) = 2000 + 1000 - 3000 = 0: the header cannot push water in.
        {"injector shut",
         Table({0, 0, 0}, {0, 1000, 2000}, {0, 0, 0}, {3000, 4000, 5000}),
         NetworkPhase::kWater,
         {1000, 1e-4},
         2000,
         true,
         Shut()},
        {"empty", InflowTable{}, NetworkPhase::kLiquid, {0, 0}, 100, false, Shut()},
        {"one point", Table({100}, {0}, {0}, {2000}), NetworkPhase::kLiquid, {0, 0}, 100, false, Shut()},
        {"short vector",
         Table({0, 600, 1200}, {0, 400}, {0, 1, 2}, {3000, 2000, 1000}),
         NetworkPhase::kLiquid,
         {0, 0},
         100,
         false,
         Shut()},
        {"NaN pressure",
         Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, kNaN, 1000}),
         NetworkPhase::kLiquid,
         {0, 0},
         100,
         false,
         Shut()},
        {"negative rate",
         Table({0, -600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, 1000}),
         NetworkPhase::kLiquid,
         {0, 0},
         100,
         false,
         Shut()},
        {"no rate rises",
         Table({0, 600, 1200}, {50, 50, 50}, {0, 1, 2}, {3000, 2000, 1000}),
         NetworkPhase::kWater,
         {0, 0},
         100,
         false,
         Shut()},
    };
    for (const Case& c : cases) {
        ExpectPoint(SolveWell(c.table, c.phase, c.tubing, c.manifold, c.injector), c.expected, c.name);
    }
}

TEST(NetworkTest, FieldLimitRaisesTheManifold) {
    // Both producers without tubing losses flow where their table's pressure meets the manifold M:
    // A: q = 3000 - M up to 2000; B (table below): q = 2500 - M up to 1000. At M = 1000 the field makes
    // q = 3000 (oil 1800, water 1200, gas 3). A limit at 1900 / 3000 of that needs 5500 - 2M = 1900, M = 1800
    // (which halving from 1000 and 3000 never meets exactly). Oil held at zero shuts both: M = 3000.
    const NetworkWell a{"A", NetworkPhase::kLiquid, {0, 0}};
    const NetworkWell b{"B", NetworkPhase::kLiquid, {0, 0}};
    const NetworkWell injector{"I", NetworkPhase::kWater, {1000, 1e-4}};
    const std::vector<WellInflow> wells = {
        {&a, false, kProducer},
        {&b, false, Table({0, 300, 600}, {0, 200, 400}, {0, 0.5, 1}, {2500, 2000, 1500})},
        {&injector, true, Table({0, 0, 0}, {0, 1000, 2000}, {0, 0, 0}, {3000, 4000, 5000})},
        {nullptr, false, kProducer},
    };
    struct Case {
        std::string name;
        FieldLimits limits;
        bool limited;
        double oil;       // the field's oil, to within 0.1% below it
        double manifold;  // to within what 0.1% of the rate makes: 0.95 psi
    };
    const std::vector<Case> cases = {
        {"no limit", {}, false, 1800, 1000},
        {"within tolerance", {1799, std::nullopt, std::nullopt}, false, 1800, 1000},
        {"oil", {1140, std::nullopt, std::nullopt}, true, 1140, 1800},
        {"gas", {std::nullopt, 1.9, std::nullopt}, true, 1140, 1800},
        {"water", {std::nullopt, std::nullopt, 760}, true, 1140, 1800},
        {"no oil", {0, std::nullopt, std::nullopt}, true, 0, 3000},
    };
    for (const Case& c : cases) {
        Scenario scenario;
        scenario.manifoldPressure = 1000;
        scenario.injectionPressure = 3725;
        scenario.limits = c.limits;
        const NetworkSolution solution = SolveNetwork(wells, scenario);
        ASSERT_EQ(solution.points.size(), wells.size()) << c.name;
        EXPECT_EQ(solution.limited, c.limited) << c.name;
        const double oil = solution.points[0].oil + solution.points[1].oil;
        EXPECT_LE(oil, c.oil) << c.name;
        EXPECT_GE(oil, c.oil * 0.999) << c.name;
        EXPECT_NEAR(solution.manifoldPressure, c.manifold, 0.95) << c.name;
        // The producers' points are those at the manifold reported.
        for (std::size_t k : {0, 1}) {
            const OperatingPoint at =
                SolveWell(wells[k].table, NetworkPhase::kLiquid, {0, 0}, solution.manifoldPressure, false);
            ExpectPoint(solution.points[k], at, c.name + " " + wells[k].well->name);
        }
        // The injector stays at its header's root whatever the producers do; the well without an entry shuts.
        ExpectPoint(solution.points[2], Flowing(0, 1500, 0, 4500), c.name + " injector");
        EXPECT_TRUE(solution.points[3].shut) << c.name;
    }
}

}  // namespace
}  // namespace host
