// The model's data objects: the fluid description, the unit system, and the inflow objects (operating point,
// inflow table and point), each streamed and reached by access string.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/IprPoint.h"
#include "dataserver/IprTable.h"
#include "dataserver/OperatingPoint.h"
#include "dataserver/TNavUnitSystem.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;

template <typename Write>
Bytes Written(Write write) {
    Bytes buffer(1024);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    write(archive);
    buffer.resize(archive.Position());
    return buffer;
}

template <typename... Items>
Bytes Raw(Items... items) {
    return Written([&](BinaryArchive& archive) { (archive.Transfer(items), ...); });
}

Bytes Store(CExtDataServerObject& object, int version) {
    return Written([&](BinaryArchive& archive) { EXPECT_EQ(object.StreamData(&archive, version), 0); });
}

// Loads `bytes`, which are to run short at the offset `failure`, or not at all for -1; the bytes read.
std::size_t Load(CExtDataServerObject& object, const Bytes& bytes, int version, long failure = -1) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    long offset = -1;
    try {
        EXPECT_EQ(object.StreamData(&archive, version), 0);
    } catch (const ArchiveException& e) {
        offset = static_cast<long>(e.Offset());
    }
    EXPECT_EQ(offset, failure) << object.GetDataServerName();
    return archive.Position();
}

// The value text of a get, or the error text when one is set; "-" goes before it when the object did not take
// the string.
std::string Get(CExtDataServerObject& object, const char* access) {
    char buf[64] = {};
    auto tag = CExtDataServerTag::ForGet(access, buf, sizeof buf);
    const std::int32_t result = object.ProcessAccessString(tag);
    return (result != 0 ? "" : "-") + (tag.HasError() ? tag.GetErrorText() : std::string(buf));
}

bool Set(CExtDataServerObject& object, const char* access, const char* value) {
    auto tag = CExtDataServerTag::ForSet(access, value);
    return object.ProcessAccessString(tag) != 0;
}

// Two PVT regions. Black oil: densities (1000, 800, 0.9) and (1010, 810, 0.8). Otherwise two EOS regions,
// components C1 and CO2, component properties numbered 0, 1, 2, ... in storage order.
FluidProperties Fluid(std::int32_t type) {
    FluidProperties fluid;
    fluid.SetModelType(type);
    fluid.SetPvtRegionCount(2);
    if (fluid.IsBlackOil()) {
        fluid.blackOilDensities = {1000, 800, 0.9, 1010, 810, 0.8};
        return fluid;
    }
    fluid.eosRegionCount = 2;
    fluid.eosNames = {"SRK", "PR"};
    fluid.SetHcNames({"C1", "CO2"});
    std::iota(fluid.componentProperties.begin(), fluid.componentProperties.end(), 0.0);
    std::iota(fluid.interactionCoefficients.begin(), fluid.interactionCoefficients.end(), 0.0);
    fluid.waterNames = {"H2O"};
    fluid.waterDensities = {1020, 1030};
    return fluid;
}

TEST(FluidModelTest, ModelTypeSetsThePropertyListAndSizesTheArrays) {
    // Each type's property list, by the simulator's numbers.
    for (const auto& [type, list] :
         {std::pair{1, ""}, {2, ""}, {3, "012345678"}, {4, "012"}, {5, "0123456789"}, {6, "0129"}}) {
        const FluidProperties fluid = Fluid(type);
        std::string numbers;
        for (int p = 0; p < fluid.propertyCount; ++p) numbers += std::to_string(fluid.propertyList[p]);
        EXPECT_EQ(numbers, list);
        EXPECT_EQ(fluid.blackOilDensities.size(), type <= 2 ? 6u : 0u) << type;
        EXPECT_EQ(fluid.componentProperties.size(), 2u * 2u * numbers.size()) << type;
        EXPECT_EQ(fluid.interactionCoefficients.size(), type > 2 ? 8u : 0u) << type;
    }

    FluidProperties fluid = Fluid(5);
    fluid.SetModelType(7);  // unknown: cleared
    EXPECT_TRUE(fluid.modelType == 0 && fluid.propertyList == nullptr && fluid.eosRegionCount == 0 &&
                fluid.hcNames.empty() && fluid.waterDensities.empty() && fluid.eosNames.empty());

    // The names the fluid reader does not read itself.
    EXPECT_EQ(std::tuple(FluidProperties::ModelTypeOf("COMPOSITIONAL", true),
                         FluidProperties::ModelTypeOf("ThermalCompositional", false),
                         FluidProperties::ModelTypeOf("IsothermalBlackOil", true),
                         FluidProperties::ModelTypeOf("", false)),
              std::tuple(5, 4, 1, 0));
}

TEST(FluidModelTest, PropertiesFollowTheRegionMajorLayoutAndDensitiesThePvtRegion) {
    // The values found are read through the access rows below; hc 2, properties 0, 1, 2.
    const FluidProperties fluid = Fluid(4);
    for (const double* none :
         {fluid.PropertyArray(0, kCriticalPressure), fluid.PropertyArray(3, kCriticalPressure),
          fluid.PropertyArray(1, kShift), Fluid(1).PropertyArray(1, kCriticalTemperature),
          fluid.InteractionCoefficients(3)})
        EXPECT_EQ(none, nullptr);
    ASSERT_NE(fluid.InteractionCoefficients(2), nullptr);
    EXPECT_EQ(fluid.InteractionCoefficients(2)[0], 4.0);

    // Water, oil and gas; oil and gas are known to black-oil models only.
    const auto densities = [](const FluidProperties& f, int region) {
        return std::array{f.WaterDensity(region), f.OilDensity(region), f.GasDensity(region)};
    };
    const std::array<double, 3> none{};
    EXPECT_EQ(densities(Fluid(2), 2), (std::array{1010.0, 810.0, 0.8}));
    EXPECT_EQ(densities(Fluid(2), 3), none);
    EXPECT_EQ(densities(Fluid(3), 2), (std::array{1030.0, 0.0, 0.0}));
    EXPECT_EQ(densities(Fluid(3), 3), none);
}

TEST(FluidAccessTest, VariablesAndTheMessagesOfEachPath) {
    const std::tuple<std::int32_t, const char*, const char*, const char*> cases[] = {
        {1, "ModelType", "ISOTHERMAL_BLACK_OIL", ""},
        {1, "EosRegionCount", "0", ""},
        {1, "EosNames[0]", "", "There are no Eos regions in this model."},
        {1, "HcNames[0]", "", "Index 0 exceeds the number of Hydrocarbon components (0)."},
        {2, "ModelType", "THERMAL_BLACK_OIL", ""},
        {4, "ModelType", "THERMAL_COMPOSITIONAL", ""},
        {4, "HcComponentCount", "2", ""},
        {4, "HcNames[{CO2}]", "CO2", ""},
        {4, "HcNames", "", "An index is required to access a component array variable"},
        {4, "HcNames[{co2}]", "", "Hydrocarbon component name co2 was not recognised."},
        {4, "HcNames[2]", "", "Index 2 exceeds the number of Hydrocarbon components (2)."},
        {4, "EosNames[1]", "PR", ""},
        {4, "EosNames[2]", "", "Index 2 exceeds the number of Eos Regions (2)."},
        {4, "EosNames", "", "An index is required to access an EosRegion."},
        {4, "EosRegion[0].HcComponent[0].CriticalPressure", "2", ""},
        {4, "EOSREGION[{PR}].HCCOMPONENT[{CO2}].MolecularWeight", "11", ""},  // 2*1*3 + 2*2 + 1
        {4, "EosRegion[1].HcComponent[1].Label", "CO2", ""},
        {4, "EosRegion[0].HcComponent[0].OmegaA", "", "OmegaA is not defined in the requested fluid."},
        {4, "EosRegion[0].HcComponent[0].Shift", "", "Shift is not defined in the requested fluid."},
        {4, "EosRegion[{ZJ}].HcComponent[0].Name", "", "EosRegion name ZJ was not recognised."},
        {4, "EosRegion[0].Name", "", "Unrecognised EosRegion data request"},
        {5, "EosRegion[1].HcComponent[0].Parachor", "38", ""},  // 2*1*10 + 2*9
    };
    for (const auto& [type, path, value, error] : cases) {
        FluidProperties fluid = Fluid(type);
        EXPECT_EQ(Get(fluid, path), *error ? error : value) << path;
    }
    FluidProperties fluid = Fluid(4);
    for (const char* path : {"Pressure", "EosRegion[0].HcComponent[0].CriticalVolumeForViscosity",
                             "EosRegion[0].HcComponent[0].Density"})
        EXPECT_EQ(Get(fluid, path), "-") << path;
    // Nor is a fluid variable given a value.
    auto set = CExtDataServerTag::ForSet("ModelType", "THERMAL_BLACK_OIL");
    EXPECT_EQ(fluid.ProcessAccessString(set), 0);
    EXPECT_TRUE(!set.HasError() && fluid.modelType == 4);

    // A component beyond the list, reached without the access path, is recognised with no value.
    char buffer[32] = "x";
    auto tag = CExtDataServerTag::ForGet("Name", buffer, sizeof buffer);
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 1, 2), 1);
    EXPECT_FALSE(tag.HasError());
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 3, 0), 1);
    EXPECT_EQ(tag.GetErrorText(),
              "Eos region 3 (index-1 based value) does not exist in the set of (2) eos regions.");
}

auto Fields(const FluidProperties& f) {
    return std::tie(f.modelType, f.propertyCount, f.pvtRegionCount, f.eosRegionCount, f.blackOilDensities,
                    f.eosNames, f.waterNames, f.waterDensities, f.hcNames, f.componentProperties,
                    f.interactionCoefficients);
}

TEST(FluidStreamTest, EachModelRoundTripsAndAShortStreamChangesNothing) {
    for (const std::int32_t type : {2, 6}) {
        FluidProperties fluid = Fluid(type), loaded;
        const Bytes bytes = Store(fluid, 1);
        EXPECT_EQ(Load(loaded, bytes, 1), bytes.size());
        EXPECT_EQ(bytes[BinaryArchive::kHeaderSize], type);
        EXPECT_EQ(Fields(loaded), Fields(fluid)) << type;
    }
    // Black oil: the type byte, region count, density count and six reals.
    FluidProperties kept = Fluid(1), compositional = Fluid(6);
    EXPECT_EQ(Store(kept, 1).size(), BinaryArchive::kHeaderSize + 1 + 4 + 4 + 6 * 8);

    Bytes cut = Store(compositional, 1);
    cut.resize(cut.size() - 4);
    BinaryArchive archive(cut.data(), cut.size(), ArchiveDirection::Load);
    EXPECT_THROW(kept.StreamData(&archive, 1), ArchiveException);
    EXPECT_EQ(kept.modelType, 1);
}

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
    // Densities and reference values follow the system.
    EXPECT_DOUBLE_EQ(Units("FIELD").toFieldGasDensity(0.05), 50000.0);
    EXPECT_DOUBLE_EQ(Units("FIELD").toFieldLiquidDensity(62.4), 62.4 * 5.61458341);
    EXPECT_NEAR(Units("METRIC").toFieldLiquidDensity(1000.0), 2204.6 / 6.289811, 1e-9);
    EXPECT_NEAR(Units("LAB").toFieldMass(1000.0), 2.2046, 1e-12);
    EXPECT_DOUBLE_EQ(Units("LAB").WaterDensity(), 0.9991026);
    EXPECT_DOUBLE_EQ(Units("SI").AirDensity(), 1.225);
    EXPECT_DOUBLE_EQ(Units("FIELD").AirDensity(), 0.07636);
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

TEST(TNavUnitSystem, NamesSetUpTheTablesAndAnythingElseLeavesItUnset) {
    TNavUnitSystem field = Units(" field ");
    EXPECT_EQ(std::tie(field.name, field.temperature, field.gasRate), std::tuple("FIELD", "F", "Mscf/day"));
    EXPECT_EQ(Units("LAB").reservoirRate, "rcc/hr");
    EXPECT_EQ(Units("SI").pressure, "Pa");
    EXPECT_EQ(Units("SI").MolarRateWord(), "moles/s");
    EXPECT_EQ(field.CriticalVolumeWord(), "Mscf/lb.mole");
    EXPECT_EQ(Units("METRIC").CriticalVolumeWord(), "m3/kg.mole");

    TNavUnitSystem unknown = Units("IMPERIAL");
    EXPECT_FALSE(unknown.IsSet());
    EXPECT_EQ(std::tie(unknown.name, unknown.pressureOffset), std::tuple("", -1.0));
    double lower = 0, upper = 0;
    unknown.PressureLimits(lower, upper);
    EXPECT_EQ(std::tuple(lower, upper), std::tuple(0.0, 1.46959e7));
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

OperatingPoint Point(double gas, double oil, double water, double liquid, double temperature = -1,
                     double bhp = -1, double thp = -1, double efficiency = 1) {
    OperatingPoint point;
    point.GasRate = gas, point.OilRate = oil, point.WaterRate = water, point.LiquidRate = liquid;
    point.Temperature = temperature, point.Bhp = bhp, point.Thp = thp, point.Efficiency = efficiency;
    return point;
}

std::vector<double> Fields(const OperatingPoint& p) {
    return {p.GasRate, p.OilRate, p.WaterRate, p.LiquidRate, p.Efficiency, p.Bhp, p.Thp, p.Temperature};
}

IprTable Table(std::vector<double> gas, std::vector<double> oil, std::vector<double> water,
               std::vector<double> pressures, std::vector<double> temperatures = {},
               std::vector<double> mass = {}) {
    IprTable table;
    table.GasRates = gas, table.OilRates = oil, table.WaterRates = water;
    table.Pressures = pressures, table.Temperatures = temperatures, table.MassFlows = mass;
    return table;
}

IprPoint NamedPoint(const char* name, double gas, double oil, double water, double pressure) {
    IprPoint point(name);
    point.GasRate = gas, point.OilRate = oil, point.WaterRate = water, point.Pressure = pressure;
    point.Temperature = 5, point.MassFlow = 6;
    return point;
}

const IprTable kTable = Table({1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12});
const IprPoint kPoint = NamedPoint("P1", 1, 2, 3, 4);

TEST(InflowStreamTest, StoredLayout) {
    using F = std::uint16_t;
    OperatingPoint flagged = Point(-0.5, 0, 3, -1e-16, 50, -1, 0, 1.0), unset = Point(-1, -1, -1, -1);
    OperatingPoint half = Point(-1, -1, -1, -1, -1, -1, -1, 0.5), full = Point(1, 2, 3, 4, 5, 6, 7, 0);
    IprTable table = kTable;
    IprPoint point = kPoint;
    const std::pair<CExtDataServerObject*, Bytes> cases[] = {
        {&flagged, Raw(F{0x4D41}, 3.0, 50.0)},  // -0.5 and -1 flagged negative, 0 and -1e-16 zero
        {&unset, Raw(F{0x2C1F})},               // efficiency 1.0 is not stored
        {&half, Raw(F{0x281F}, 0.5)},
        {&full, Raw(F{0}, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 0.0)},
        {&table, Raw(std::int32_t{2}, 7.0, 1.0, 3.0, 5.0, 9.0, 11.0, 8.0, 2.0, 4.0, 6.0, 10.0, 12.0)},
        {&point, Raw(std::string("P1"), 4.0, 1.0, 2.0, 3.0, 5.0, 6.0)}};
    for (const auto& [object, expected] : cases)
        EXPECT_EQ(Store(*object, 5), expected) << object->GetDataServerName();
}

TEST(InflowStreamTest, RoundTripsKeepWhatEachVersionHolds) {
    // Versions 3 and 4 keep a zero pressure through its flag only; before 3 there is no efficiency.
    // Each row: the version, the Bhp, Thp and efficiency loaded, and the stored size.
    using C = std::tuple<int, double, double, double, std::size_t>;
    for (const auto& [version, bhp, thp, efficiency, size] :
         {C{1, -1, -1, 1.0, 34}, C{2, -1, -1, 1.0, 34}, C{3, 0, -1, 0.5, 42}, C{4, 0, -1, 0.5, 42},
          C{5, 0, 150, 0.5, 50}}) {
        SCOPED_TRACE(version);
        OperatingPoint target = Point(100, 0, -0.5, 20, 60, 0, 150, 0.5), loaded;
        const Bytes bytes = Store(target, version);
        EXPECT_EQ(bytes.size(), size);
        Load(loaded, bytes, version);
        EXPECT_EQ(Fields(loaded), Fields(Point(100, 0, -1, 20, 60, bhp, thp, efficiency)));

        IprTable table = kTable, tableBack;
        IprPoint point = kPoint, pointBack("other");
        Load(tableBack, Store(table, version), version);
        Load(pointBack, Store(point, version), version);
        EXPECT_EQ(Store(tableBack, version), Store(table, version));
        EXPECT_EQ(Store(pointBack, version), Store(point, version));
    }
}

TEST(InflowStreamTest, ShortOrBadStreamLeavesObjectAsItWas) {
    OperatingPoint target = Point(1, 2, 3, 4, 5, 6, 7, 0.5);
    IprTable table = Table({1}, {2}, {3}, {4}, {5}, {6});
    IprPoint point = kPoint;
    for (CExtDataServerObject* object : std::vector<CExtDataServerObject*>{&target, &table, &point}) {
        const Bytes before = Store(*object, 5);
        // The last real is the one that does not fit.
        Load(*object, Bytes(before.begin(), before.end() - 1), 5, static_cast<long>(before.size()) - 8);
        EXPECT_EQ(Store(*object, 5), before);
        EXPECT_EQ(object->StreamData(nullptr, 5), 1);
    }

    // The count is not trusted: a huge one fails at the end of the data, and one below 1 empties the table.
    Load(table, Raw(std::int32_t{INT32_MAX}, 1.0), 5, 20);
    EXPECT_EQ(table.Length(), 1u);
    Load(table, Raw(std::int32_t{-3}, 1.0), 5);
    EXPECT_EQ(table.Length(), 0u);
}

TEST(IprTableTest, GasRatioFlatnessAndZeroRows) {
    // Liquid sum at most 1.0; ratio at the limit and just above it; a negative gas sum counts as 0.
    using C = std::tuple<std::vector<double>, std::vector<double>, std::vector<double>, double, bool>;
    for (const auto& [gas, oil, water, limit, above] :
         {C{{0}, {0.5}, {0.5}, 1e12, true}, C{{1}, {1}, {1}, 5e5, false}, C{{1}, {1}, {1}, 4.99e5, true},
          C{{-3, 1}, {2}, {0}, -1, true}}) {
        const IprTable table = Table(gas, oil, water, {});
        EXPECT_EQ(table.IsGasRatioAbove(limit), above) << limit;
    }

    EXPECT_TRUE(IprTable().IsFlat());
    EXPECT_TRUE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 8}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 1e-9}).IsFlat());

    IprTable rows = Table({4e-5, 5e-5}, {0, 0}, {0, 0}, {1, 2});
    EXPECT_EQ((std::vector<bool>{rows.IsRowZero(0), rows.IsRowZero(1), rows.IsRowZero(2)}),
              (std::vector<bool>{true, false, false}));
    rows.FillFromPoint(NamedPoint("P", 0, 0, 2, 3), 3);  // a count other than the length rebuilds the table
    EXPECT_EQ(rows.Pressures, std::vector<double>(3, 3));
    EXPECT_EQ(rows.GasRates, std::vector<double>(3, 0));
    EXPECT_TRUE(rows.HasLiquid());
    rows.Zero();
    EXPECT_EQ(rows.WaterRates, std::vector<double>(3, 0));
}

TEST(OperatingPointTest, PhasesAndCounts) {
    using C = std::tuple<OperatingPoint, int, const char*, bool, bool, int, int>;
    for (const auto& [point, phase, fits, nothingSet, zeroRate, rates, pressures] : {
             // point, phase, fits phases 0 to 3, nothing set, zero rate, rates and pressures not below 0
             C{Point(2, 0, -0.5, -1, -1, 0, 0), 2, "0010", false, false, 2, 2},
             C{Point(-1, 5, 0, -1), 1, "0100", false, false, 2, 0},
             C{Point(-1, -1, 5, -1), 0, "1000", false, false, 1, 0},
             C{Point(-1, -1, -1, 5), 0, "1000", false, false, 1, 0},
             C{Point(0, -1, 5, 5), 0, "1000", false, false, 3, 0},
             C{Point(5, 5, -1, -1), 3, "0000", false, false, 2, 0},
             C{Point(-1, 5, -1, 5), 3, "0000", false, false, 2, 0},
             C{Point(-1, 0, -1, -1), 3, "1111", false, true, 1, 0},
             C{Point(-1, -1, -1, -1, -1, 0), 3, "1111", false, false, 0, 1},
             C{Point(-1, -1, -1, -1), 3, "1111", true, false, 0, 0},
         }) {
        std::string fitting;
        for (int p = 0; p < 4; ++p) fitting += point.FitsPhase(p) ? '1' : '0';
        EXPECT_EQ(std::tuple(point.RatePhase(), fitting, point.IsNothingSet(), point.IsZeroRate(),
                             point.RateCount(), point.PressureCount()),
                  std::tuple(phase, std::string(fits), nothingSet, zeroRate, rates, pressures))
            << testing::PrintToString(Fields(point));
    }
}

TEST(InflowAccessTest, VariablesThroughTheCursor) {
    IprTable table = Table({1, 2}, {0, 0}, {0, 0}, {100, 200}, {0, 0}, {0, 0});
    IprPoint point = NamedPoint("P1", 0, 2, 3, 0);
    OperatingPoint target;
    EXPECT_TRUE(Set(table, "iprtable.MassFlows[0]", "7.5"));
    EXPECT_TRUE(Set(point, "P1.LiquidRate", "40"));  // taken, but lost
    EXPECT_TRUE(Set(point, "P1.BHP", "150.5"));
    std::string name;
    auto thp = CExtDataServerTag::ForSet("thp", "30");
    EXPECT_EQ(target.ProcessAccessString(thp, &name), 1);
    EXPECT_EQ(name, "Thp");

    using C = std::tuple<CExtDataServerObject*, const char*, const char*>;
    for (const auto& [object, access, expected] :
         {C{&table, "IprTable.Pressures[1]", "200"}, C{&table, "IprTable.MassFlows[0]", "7.5"},
          C{&table, "IprTable.GasRates[2]", "-Index out of range"}, C{&table, "IprPoint.GasRates[0]", "-"},
          C{&point, "P1.LiquidRate", "5"}, C{&point, "p1.bhp", "150.5"}, C{&point, "P1.MassFlow", "6"},
          C{&point, "P2.BHP", "-"}, C{&target, "Thp", "30"}, C{&target, "Efficiency", "1"},
          C{&target, "OperatingPoint.GasRate", "-"}}) {
        EXPECT_EQ(Get(*object, access), expected) << access;
    }
}

}  // namespace
}  // namespace rivulet
