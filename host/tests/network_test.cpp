#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "host/Network.h"

namespace host {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr NetworkPhase kLiquid = NetworkPhase::kLiquid, kWater = NetworkPhase::kWater;

InflowTable Table(std::vector<double> oil, std::vector<double> water, std::vector<double> gas,
                  std::vector<double> pressure) {
    return InflowTable{std::move(oil), std::move(water), std::move(gas), std::move(pressure)};
}

// A producer: liquid rates 0, 1000, 2000 (60% oil) with the pressure falling from 3000 to 1000 psig; a water
// injector whose pressure rises from 3000 to 5000 psig over 0 to 2000 STB/d.
const InflowTable kProducer = Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, 1000});
const InflowTable kInjector = Table({0, 0, 0}, {0, 1000, 2000}, {0, 0, 0}, {3000, 4000, 5000});
const OperatingPoint kShut{true};

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
    EXPECT_EQ(ControlledRate(kProducer, kWater, 1), 400);
    EXPECT_EQ(ControlledRate(kProducer, kLiquid, 1), 1000);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kGas, 1), 1);
    EXPECT_EQ(ControlledRate(kProducer, NetworkPhase::kDefault, 1), 1000);
    EXPECT_EQ(ControlledRate(Table({0, 0}, {0, 0}, {3, 5}, {2000, 1000}), NetworkPhase::kDefault, 1), 5);
    EXPECT_EQ(ControlledRate(Table({0, 0}, {4, 6}, {3, 5}, {2000, 1000}), NetworkPhase::kDefault, 1), 6);
    EXPECT_EQ(ControlledRate(kProducer, kLiquid, 7), 0);
}

TEST(NetworkTest, SolveWellOnHandMadeTables) {
    struct Case {
        const char* name;
        InflowTable table;
        NetworkPhase phase;
        double hydrostatic, friction, manifold;
        bool injector;
        OperatingPoint expected;
    };
    const Case cases[] = {
        // IPR p = 3000 - q; tubing 275 + 1000 + 1e-4 q^2. f(q) = 1725 - q - 1e-4 q^2: f(1000) = 625,
        // f(2000) = -675, and f(1500) = 1725 - 1500 - 225 = 0, halfway along the second segment.
        {"root", kProducer, kLiquid, 1000, 1e-4, 275, false, Flowing(900, 600, 1.5, 1500)},
        // The same table with a repeated point: the flat step is passed over.
        {"flat step", Table({0, 600, 600, 1200}, {0, 400, 400, 800}, {0, 1, 1, 2}, {3000, 2000, 1900, 1000}),
         kLiquid, 1000, 1e-4, 275, false, Flowing(900, 600, 1.5, 1500)},
        // The last point at atmospheric pressure, a rounding error below zero gauge, still counts. On the
        // second segment p = 2000 - 2 (q - 1000), so f(q) = 2725 - 2q - 1e-4 q^2 = 0 at
        // q = -10000 + sqrt(1.2725e8) = 1280.514..., 28.05% along it.
        {"last point at atmospheric", Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, -2.8e-13}),
         kLiquid, 1000, 1e-4, 275, false, Flowing(768.3085036, 512.2056691, 1.28051417268, 1438.9716546)},
        // f(0) = 3000 - 2000 - 1000 = 0: no flow against the manifold.
        {"cannot flow", kProducer, kLiquid, 1000, 0, 2000, false, kShut},
        // f(2000) = 1000 - 100 - 4e-5 * 2000^2 = 740 > 0: held at the last point.
        {"past the end", kProducer, kLiquid, 0, 4e-5, 100, false, Flowing(1200, 800, 2, 1000)},
        // Water alone: p = 3000 - 2.5 q, f(q) = 1860 - 2.5 q - 1e-3 q^2, zero at q = 600, halfway along the
        // second segment.
        {"water phase", kProducer, kWater, 1000, 1e-3, 140, false, Flowing(900, 600, 1.5, 1500)},
        // Gas alone under the default phase: p = 3000 - 100 q, f(q) = 1725 - 100 q - q^2, zero at q = 15.
        {"default gas", Table({0, 0, 0}, {0, 0, 0}, {0, 10, 20}, {3000, 2000, 1000}), NetworkPhase::kDefault,
         775, 1, 500, false, Flowing(0, 0, 15, 1500)},
        // Injector: p = 3000 + q, g(q) = 3725 + 1000 - 1e-4 q^2 - 3000 - q, zero at 1500.
        {"injector", kInjector, kWater, 1000, 1e-4, 3725, true, Flowing(0, 1500, 0, 4500)},
        // g(0) = 2000 + 1000 - 3000 = 0: the header cannot push water in.
        {"injector shut", kInjector, kWater, 1000, 1e-4, 2000, true, kShut},
        {"empty", InflowTable{}, kLiquid, 0, 0, 100, false, kShut},
        {"one point", Table({100}, {0}, {0}, {2000}), kLiquid, 0, 0, 100, false, kShut},
        {"short vector", Table({0, 600, 1200}, {0, 400}, {0, 1, 2}, {3000, 2000, 1000}), kLiquid, 0, 0, 100,
         false, kShut},
        {"NaN pressure", Table({0, 600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, kNaN, 1000}), kLiquid, 0, 0,
         100, false, kShut},
        {"negative rate", Table({0, -600, 1200}, {0, 400, 800}, {0, 1, 2}, {3000, 2000, 1000}), kLiquid, 0, 0,
         100, false, kShut},
        {"no rate rises", Table({0, 600, 1200}, {50, 50, 50}, {0, 1, 2}, {3000, 2000, 1000}), kWater, 0, 0,
         100, false, kShut},
    };
    for (const Case& c : cases) {
        ExpectPoint(SolveWell(c.table, c.phase, {c.hydrostatic, c.friction}, c.manifold, c.injector),
                    c.expected, c.name);
    }
}

TEST(NetworkTest, FieldLimitRaisesTheManifold) {
    // Both producers without tubing losses flow where their table's pressure meets the manifold M:
    // A: q = 3000 - M up to 2000; B (table below): q = 2500 - M up to 1000. At M = 1000 the field makes
    // q = 3000 (oil 1800, water 1200, gas 3). A limit at 1900 / 3000 of that needs 5500 - 2M = 1900, M = 1800
    // (which halving from 1000 and 3000 never meets exactly). Oil held at zero shuts both: M = 3000.
    const NetworkWell a{"A", kLiquid, {0, 0}}, b{"B", kLiquid, {0, 0}}, injector{"I", kWater, {1000, 1e-4}};
    const std::vector<WellInflow> wells = {
        {&a, false, kProducer},
        {&b, false, Table({0, 300, 600}, {0, 200, 400}, {0, 0.5, 1}, {2500, 2000, 1500})},
        {&injector, true, kInjector},
        {nullptr, false, kProducer},
    };
    // The name, the limits, whether limited, the field's oil (to within 0.1% below it) and the manifold (to
    // within what 0.1% of the rate makes: 0.95 psi).
    using Case = std::tuple<std::string, FieldLimits, bool, double, double>;
    const Case cases[] = {
        {"no limit", {}, false, 1800, 1000},
        {"within tolerance", {1799, std::nullopt, std::nullopt}, false, 1800, 1000},
        {"oil", {1140, std::nullopt, std::nullopt}, true, 1140, 1800},
        {"gas", {std::nullopt, 1.9, std::nullopt}, true, 1140, 1800},
        {"water", {std::nullopt, std::nullopt, 760}, true, 1140, 1800},
        {"no oil", {0, std::nullopt, std::nullopt}, true, 0, 3000},
    };
    for (const auto& [name, limits, limited, fieldOil, manifold] : cases) {
        Scenario scenario;
        scenario.manifoldPressure = 1000;
        scenario.injectionPressure = 3725;
        scenario.limits = limits;
        const NetworkSolution solution = SolveNetwork(wells, scenario);
        ASSERT_EQ(solution.points.size(), wells.size()) << name;
        EXPECT_EQ(solution.limited, limited) << name;
        const double oil = solution.points[0].oil + solution.points[1].oil;
        EXPECT_LE(oil, fieldOil) << name;
        EXPECT_GE(oil, fieldOil * 0.999) << name;
        EXPECT_NEAR(solution.manifoldPressure, manifold, 0.95) << name;
        // The producers' points are those at the manifold reported.
        for (std::size_t k : {0, 1}) {
            ExpectPoint(solution.points[k],
                        SolveWell(wells[k].table, kLiquid, {0, 0}, solution.manifoldPressure, false), name);
        }
        // The injector stays at its header's root whatever the producers do; the well without an entry shuts.
        ExpectPoint(solution.points[2], Flowing(0, 1500, 0, 4500), name + " injector");
        EXPECT_TRUE(solution.points[3].shut) << name;
    }
}

}  // namespace
}  // namespace host
