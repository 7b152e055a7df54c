#include <gtest/gtest.h>

#include "dataserver/TNavUnitSystem.h"

namespace rivulet {
namespace {

TNavUnitSystem Units(const char* name) {
    TNavUnitSystem units;
    units.SetUp(name);
    return units;
}

TEST(TNavUnitSystem, ConvertsModelValuesToOilfieldUnitsAndBack) {
    const TNavUnitSystem metric = Units("METRIC");
    EXPECT_NEAR(metric.toFieldGasRate(100.0), 0.003531466, 1e-12);
    EXPECT_NEAR(metric.toFieldLiquidRate(100.0), 628.9811, 1e-9);
    EXPECT_NEAR(metric.toFieldPressure(1.0), -0.19213, 1e-9);
    EXPECT_NEAR(metric.fromFieldPressure(metric.toFieldPressure(250.0)), 250.0, 1e-9);
    EXPECT_NEAR(metric.fromFieldGasRate(0.003531466), 100.0, 1e-9);
    EXPECT_NEAR(Units("SI").toFieldTemperature(300.0), 80.33, 1e-9);
    EXPECT_NEAR(Units("SI").fromFieldTemperature(80.33), 300.0, 1e-9);
    EXPECT_DOUBLE_EQ(Units("FIELD").toFieldTemperature(100.0), 100.0);
    EXPECT_DOUBLE_EQ(metric.toFieldTemperatureDifference(10.0), 18.0);
    EXPECT_NEAR(Units("LAB").toFieldPressure(1.0), 0.0, 1e-12);  // one atmosphere is zero gauge
}

TEST(TNavUnitSystem, NoValuePassesThroughEveryConversion) {
    for (const char* name : {"FIELD", "METRIC", "SI", "LAB"}) {
        const TNavUnitSystem u = Units(name);
        for (double (TNavUnitSystem::*convert)(double) const :
             {&TNavUnitSystem::toFieldGasRate, &TNavUnitSystem::fromFieldGasRate,
              &TNavUnitSystem::toFieldLiquidRate, &TNavUnitSystem::fromFieldLiquidRate,
              &TNavUnitSystem::toFieldPressure, &TNavUnitSystem::fromFieldPressure,
              &TNavUnitSystem::toFieldTemperature, &TNavUnitSystem::fromFieldTemperature,
              &TNavUnitSystem::toFieldMass, &TNavUnitSystem::toFieldGasDensity,
              &TNavUnitSystem::toFieldLiquidDensity}) {
            EXPECT_EQ((u.*convert)(3.3e35), 3.4e35) << name;
        }
        EXPECT_NE(u.toFieldPressure(3.1e35), 3.4e35) << name;
    }
}

TEST(TNavUnitSystem, DensitiesAndReferenceValuesFollowTheSystem) {
    EXPECT_DOUBLE_EQ(Units("FIELD").toFieldGasDensity(0.05), 50000.0);
    EXPECT_DOUBLE_EQ(Units("FIELD").toFieldLiquidDensity(62.4), 62.4 * 5.61458341);
    EXPECT_NEAR(Units("METRIC").toFieldLiquidDensity(1000.0), 2204.6 / 6.289811, 1e-9);
    EXPECT_NEAR(Units("LAB").toFieldMass(1000.0), 2.2046, 1e-12);
    EXPECT_DOUBLE_EQ(Units("LAB").WaterDensity(), 0.9991026);
    EXPECT_DOUBLE_EQ(Units("SI").AirDensity(), 1.225);
    EXPECT_DOUBLE_EQ(Units("FIELD").AirDensity(), 0.07636);
}

TEST(TNavUnitSystem, NamesSetUpTheTablesAndAnythingElseLeavesItUnset) {
    TNavUnitSystem field = Units(" field ");
    EXPECT_EQ(field.name, "FIELD");
    EXPECT_EQ(field.temperature, "F");
    EXPECT_EQ(field.gasRate, "Mscf/day");
    EXPECT_EQ(Units("LAB").reservoirRate, "rcc/hr");
    EXPECT_EQ(Units("SI").pressure, "Pa");
    EXPECT_EQ(Units("SI").MolarRateWord(), "moles/s");
    EXPECT_EQ(field.CriticalVolumeWord(), "Mscf/lb.mole");
    EXPECT_EQ(Units("METRIC").CriticalVolumeWord(), "m3/kg.mole");

    TNavUnitSystem unknown = Units("IMPERIAL");
    EXPECT_FALSE(unknown.IsSet());
    EXPECT_EQ(unknown.name, "");
    EXPECT_EQ(unknown.pressureOffset, -1.0);
    double lower = 0, upper = 0;
    unknown.PressureLimits(lower, upper);
    EXPECT_EQ(lower, 0.0);
    EXPECT_EQ(upper, 1.46959e7);
    Units("METRIC").PressureLimits(lower, upper);
    EXPECT_NEAR(lower, 14.6959 / 14.50377, 1e-12);

    // Assignment sets the copy up again by name.
    unknown = field;
    EXPECT_EQ(unknown.pressureOffset, -14.6959);
    std::string name;
    EXPECT_TRUE(TNavUnitSystem::NameOfSimulatorValue(1, name));
    EXPECT_EQ(name, "METRIC");
    EXPECT_FALSE(TNavUnitSystem::NameOfSimulatorValue(4, name));
}

}  // namespace
}  // namespace rivulet
