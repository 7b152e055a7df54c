#include <gtest/gtest.h>

#include "standin/Fluid.h"

namespace rivulet::standin {
namespace {

// Two saturated nodes; only the upper one has an undersaturated branch, 5 % shrinkage over 100 units.
FluidRegion LiveOil() {
    FluidRegion f;
    f.live_oil = true;
    f.oil.rs = {10.0, 20.0};
    f.oil.p_sat = {100.0, 200.0};
    f.oil.bo_sat = {1.1, 1.2};
    f.oil.mu_sat = {2.0, 1.0};
    f.oil.undersat = {Table{{100.0}, {{1.1}, {2.0}}}, Table{{200.0, 300.0}, {{1.2, 1.14}, {1.0, 1.2}}}};
    f.gas = Table{{100.0, 200.0}, {{0.02, 0.01}, {0.01, 0.02}}};
    f.water = {150.0, 1.01, 1e-3, 0.5, 0.0};
    f.rock_p_ref = 150.0;
    f.rock_compressibility = 1e-3;
    return f;
}

TEST(Fluid, LiveOilFollowsTheBubblePointCurveAndShrinksAboveIt) {
    const FluidRegion f = LiveOil();
    const OilProps sat = Oil(f, 150.0, 99.0);  // more gas than the oil can hold
    EXPECT_DOUBLE_EQ(sat.rs, 15.0);
    EXPECT_DOUBLE_EQ(sat.bo, 1.15);
    EXPECT_DOUBLE_EQ(sat.mu, 1.5);
    const OilProps us = Oil(f, 250.0, 15.0);  // bubble point 150, 100 above it
    EXPECT_NEAR(us.bo, 1.15 * 0.95, 1e-12);
    EXPECT_NEAR(us.mu, 1.5 * 1.2, 1e-12);
    EXPECT_LT(Oil(f, 300.0, 15.0).bo, us.bo);
}

TEST(Fluid, GasWaterAndRock) {
    FluidRegion f = LiveOil();
    EXPECT_NEAR(Gas(f, 150.0).b, 1.0 / 75.0, 1e-12);  // 1/Bg halfway between 50 and 100
    EXPECT_NEAR(Gas(f, 200.0).mu, 0.02, 1e-12);
    EXPECT_DOUBLE_EQ(Water(f, 150.0).b, 1.01);
    EXPECT_DOUBLE_EQ(Water(f, 150.0).mu, 0.5);
    EXPECT_LT(Water(f, 250.0).b, 1.01);
    EXPECT_NEAR(PoreVolumeMultiplier(f, 250.0), 1.0 + 0.1 + 0.005, 1e-12);
    // Only wet gas carries oil.
    EXPECT_EQ(SaturatedRv(f, 150.0), 0.0);
    f.wet_gas = true;
    f.vaporized = Table{{100.0, 200.0}, {{1e-4, 3e-4}}};
    EXPECT_NEAR(SaturatedRv(f, 150.0), 2e-4, 1e-15);
    EXPECT_NEAR(SaturatedRv(f, 900.0), 3e-4, 1e-15);
}

TEST(Fluid, DeadOilReadsItsTable) {
    FluidRegion f;
    f.dead_oil = Table{{100.0, 300.0}, {{1.05, 1.03}, {1.0, 1.1}}};
    const OilProps o = Oil(f, 200.0, 5.0);
    EXPECT_DOUBLE_EQ(o.rs, 0.0);
    EXPECT_NEAR(o.bo, 1.04, 1e-12);
    EXPECT_NEAR(o.mu, 1.05, 1e-12);
}

TEST(RelativePermeability, WeightsTheTwoPhaseOilCurves) {
    RelPerm kr;
    kr.swof = Table{{0.2, 1.0}, {{0.0, 1.0}, {0.8, 0.0}}};
    kr.sgof = Table{{0.0, 0.8}, {{0.0, 0.8}, {0.8, 0.0}}};
    EXPECT_DOUBLE_EQ(RelativePermeability(kr, 0.2, 0.0).kro, 0.8);  // no displacement: krow
    const RelPermValues gas = RelativePermeability(kr, 0.2, 0.4);
    EXPECT_DOUBLE_EQ(gas.krg, 0.4);
    EXPECT_DOUBLE_EQ(gas.kro, 0.4);  // all the displacement is by gas: krog
    const RelPermValues mixed = RelativePermeability(kr, 0.6, 0.4);
    EXPECT_NEAR(mixed.kro, 0.5 * 0.4 + 0.5 * 0.4, 1e-12);
    EXPECT_DOUBLE_EQ(RelativePermeability(kr, 1.5, 0.0).krw, 1.0);  // clamped outside the table
}

}  // namespace
}  // namespace rivulet::standin
