// A well's variables by access string: what each read answers, and the rules and texts of every write.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"
#include "wells/WellData.h"

namespace rivulet {
namespace {

struct Answer {
    std::int32_t recognised;
    std::string value;
    std::string error;
};

// `path` is what follows the well's key, such as "TARGET.Status".
Answer Get(WellData& well, const std::string& path) {
    char buffer[128];
    auto tag = CExtDataServerTag::ForGet(path.c_str(), buffer, sizeof buffer);
    const std::int32_t recognised = well.ProcessAccessString(tag);
    return {recognised, buffer, tag.GetErrorText()};
}

Answer Set(WellData& well, const std::string& path, const std::string& value) {
    auto tag = CExtDataServerTag::ForSet(path.c_str(), value.c_str());
    const std::int32_t recognised = well.ProcessAccessString(tag);
    return {recognised, "", tag.GetErrorText()};
}

// Black oil with one PVT region: water 64.49, oil 53.66, gas 0.0533.
FluidProperties BlackOil() {
    FluidProperties fluid;
    fluid.SetModelType(1);
    fluid.SetPvtRegionCount(1);
    fluid.blackOilDensities = {64.49, 53.66, 0.0533};
    return fluid;
}

// Isothermal compositional, two EOS regions, components C1 and CO2; property p of region r, component c
// holds 100 r + 10 p + c.
FluidProperties Compositional() {
    FluidProperties fluid;
    fluid.SetModelType(3);
    fluid.SetPvtRegionCount(1);
    fluid.eosRegionCount = 2;
    fluid.eosNames = {"PR", "PR"};
    fluid.SetHcNames({"C1", "CO2"});
    for (int r = 1; r <= 2; ++r)
        for (int p = 0; p < fluid.propertyCount; ++p)
            for (int c = 0; c < 2; ++c)
                fluid.componentProperties[static_cast<std::size_t>(2 * (r - 1) * fluid.propertyCount + 2 * p +
                                                                   c)] = 100 * r + 10 * p + c;
    return fluid;
}

class WellReads : public ::testing::Test {
  protected:
    void SetUp() override {
        producer_.name = "P-1";
        producer_.SetWellStatus(kStatusOpenProducer);
        producer_.vaneRateControl = kControlLiquid;
        producer_.pvtRegion = 1;
        producer_.eosRegion = 2;
        WellRateRecord& r = producer_.productionRecord;
        r[WellRateRecord::kWater] = -4.0;  // a negative rate reads as none
        r[WellRateRecord::kOil] = 1500.0;
        r[WellRateRecord::kRcLiquid] = 1700.0;
        r[WellRateRecord::kGas] = 2500.0;
        r[WellRateRecord::kCumWater] = 300.0;
        r[WellRateRecord::kCumOil] = 9000.0;
        r[WellRateRecord::kCumRcLiquid] = 9900.0;
        r[WellRateRecord::kCumGas] = 12000.0;
        r[WellRateRecord::kBhp] = 3200.5;
        r[WellRateRecord::kThp] = 400.0;
        r[WellRateRecord::kEfficiency] = 0.9;
        r[WellRateRecord::kOilDensity] = 50.0;  // the well's own, ahead of the fluid's
        r[WellRateRecord::kGasDensity] = -1.0;
        producer_.target.Bhp = 1000.0;
    }

    FluidProperties blackOil_ = BlackOil();
    WellData producer_{&blackOil_};
};

TEST_F(WellReads, EachVariableAnswersInTheModelsUnits) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"IsOpen", "1"},
        {"IsShut", "0"},
        {"IsStop", "0"},
        {"IsInjector", "0"},
        {"IsProducer", "1"},
        {"Bhp", "3200.5"},
        {"Thp", "400"},
        {"GasRate", "2500"},
        {"OilRate", "1500"},
        {"LiquidRate", "1500"},  // the negative water rate adds nothing
        {"RcLiquidRate", "1700"},
        {"WaterRate", "0"},
        {"CumGas", "12000"},
        {"CumOil", "9000"},
        {"CumLiquid", "9300"},
        {"CumRcLiquid", "9900"},
        {"CumWater", "300"},
        {"Temperature", "3.4e+35"},  // an isothermal model keeps no temperature
        {"Efficiency", "0.9"},
        {"GasDensity", "0.0533"},
        {"OilDensity", "50"},
        {"WaterDensity", "64.49"},
        {"Status", "Open"},
        {"WellType", "Producer"},
        {"TARGET.Status", "Open"},
        {"Target.Bhp", "1000"},
        {"TARGET.GasRate", "-1"},
        {"Name", "P-1"},
        {"Label", "P-1"},
        {"VaneRateControl", "2"},
        {"EosRegion", "2"},
        {"gasRATE", "2500"},  // names ignore case
    };
    for (const auto& [path, value] : rows) {
        const Answer answer = Get(producer_, path);
        EXPECT_EQ(answer.recognised, 1) << path;
        EXPECT_EQ(answer.value, value) << path;
        EXPECT_EQ(answer.error, "") << path;
    }
}

TEST_F(WellReads, WordsOfStatusAndTypeAndNamesThatAreNotReadable) {
    WellData well(&blackOil_);
    EXPECT_EQ(Get(well, "Status").value, "Undefined");
    EXPECT_EQ(Get(well, "WellType").value, "Undefined");
    EXPECT_EQ(Get(well, "TARGET.Status").value, "Undefined");
    well.SetWellStatus(kStatusStop);
    well.targetStatus = kStatusShut;
    EXPECT_EQ(Get(well, "Status").value, "Stop");
    EXPECT_EQ(Get(well, "IsStop").value, "1");
    EXPECT_EQ(Get(well, "TARGET.Status").value, "Shut");
    well.SetWellStatus(kStatusOpenInjector);
    well.pvtRegion = 1;
    EXPECT_EQ(Get(well, "WellType").value, "Injector");
    // An injector reads its injection side, and a black-oil fluid's densities for its own missing ones.
    well.injectionRecord[WellRateRecord::kGas] = 800.0;
    EXPECT_EQ(Get(well, "GasRate").value, "800");
    EXPECT_EQ(Get(well, "OilDensity").value, "53.66");

    for (const char* path : {"SetWellType", "Nothing", "TARGET.Nothing", "TARGET", ""}) {
        const Answer answer = Get(producer_, path);
        EXPECT_EQ(answer.recognised, 0) << path;
        EXPECT_EQ(answer.error, "") << path;
    }
}

TEST(WellComponentReads, ComponentVariablesAndTheirResolutionMessages) {
    const FluidProperties fluid = Compositional();
    WellData well(&fluid);
    well.eosRegion = 2;
    well.composition.SetWaterCount(1);
    well.composition.SetHcCount(2);
    // Blocks of water, C1, CO2: liquid rate, gas rate, cumulative liquid, cumulative gas.
    well.composition.componentParams = {0, 1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8};
    well.composition.rateFractions = {0.25, 0.75};
    well.composition.cumFractions = {0.4, 0.6};

    struct Row {
        const char* path;
        std::int32_t recognised;
        const char* value;
    };
    const Row rows[] = {
        {"HcComponent[0].CriticalTemperature", 1, "200"},  // the well's region 2, property 0, component 0
        {"HCCOMPONENT[{CO2}].CriticalPressure", 1, "211"},
        {"HcComponent[1].Name", 1, "CO2"},
        {"HcComponent[0].LiquidMolarRate", 1, "1"},
        {"HcComponent[1].GasMolarRate", 1, "4"},
        {"HcComponent[0].CumLiquidMoles", 1, "5"},
        {"HcComponent[1].CumGasMoles", 1, "8"},
        {"HcComponent[1].HcMoleFraction", 1, "0.75"},
        {"HcComponent[0].CumHcMoleFraction", 1, "0.4"},
        {"HcComponent[0].EosRegion", 1, "2"},  // the well's own, behind the component
        {"HcComponent[0].Bhp", 0, ""},
    };
    for (const Row& row : rows) {
        const Answer answer = Get(well, row.path);
        EXPECT_EQ(answer.recognised, row.recognised) << row.path;
        EXPECT_EQ(answer.value, row.value) << row.path;
        EXPECT_EQ(answer.error, "") << row.path;
    }

    const std::vector<std::pair<std::string, std::string>> failures = {
        {"HcComponent[2].HcMoleFraction", "Index 2 exceeds the number of Hydrocarbon components (2)."},
        {"HcComponent.HcMoleFraction", "An index is required to access a component array variable"},
        {"HcComponent[{N2}].HcMoleFraction", "Hydrocarbon component name N2 was not recognised."},
    };
    for (const auto& [path, message] : failures) {
        const Answer answer = Get(well, path);
        EXPECT_EQ(answer.recognised, 1) << path;
        EXPECT_EQ(answer.error, message) << path;
    }
    WellData bare;
    EXPECT_EQ(Get(bare, "HcComponent[0].Name").error,
              "No compositional fluid description been assigned to this well.");
}

// ---- writes ----

WellData Typed(std::int32_t type) {
    WellData well;
    well.name = "W";
    if (type == kWellProducer) well.SetWellStatus(kStatusOpenProducer);
    if (type == kWellInjector) well.SetWellStatus(kStatusOpenInjector);
    return well;
}

TEST(WellWrites, WellTypeChangesOnlyFromUndefined) {
    struct Row {
        std::int32_t type;
        const char* value;
        const char* error;
        std::int32_t typeAfter;
    };
    const Row rows[] = {
        {kWellUndefined, "producer", "", kWellProducer},
        {kWellUndefined, "INJECTOR", "", kWellInjector},
        {kWellProducer, "Producer", "", kWellProducer},
        {kWellInjector, "Injector", "", kWellInjector},
        {kWellInjector, "Producer", "A well type can only be changed if currently Undefined.", kWellInjector},
        {kWellProducer, "Injector", "A well type can only be changed if currently Undefined.", kWellProducer},
        {kWellUndefined, "Observer", "Unrecognised value: must be Injector or Producer.", kWellUndefined},
    };
    for (const Row& row : rows) {
        WellData well = Typed(row.type);
        well.productionRecord[WellRateRecord::kOil] = 10.0;
        const Answer answer = Set(well, "SETWELLTYPE", row.value);
        EXPECT_EQ(answer.recognised, 1) << row.value;
        EXPECT_EQ(answer.error, row.error) << row.value;
        EXPECT_EQ(well.wellType, row.typeAfter) << row.value;
        EXPECT_EQ(well.underTapServerControl, *row.error == '\0') << row.value;
        // Keeping the type keeps the results; a new type comes with an open status of its kind.
        if (row.type != kWellUndefined) {
            EXPECT_EQ(well.productionRecord[WellRateRecord::kOil], 10.0);
        }
    }
    WellData made = Typed(kWellUndefined);
    Set(made, "SetWellType", "Injector");
    EXPECT_EQ(made.status, kStatusOpenInjector);
    EXPECT_EQ(made.targetStatus, kStatusOpenInjector);
}

TEST(WellWrites, TargetStatusTakesTheWellsOpenKind) {
    const std::vector<std::tuple<std::int32_t, const char*, std::int32_t, const char*>> rows = {
        {kWellInjector, "open", kStatusOpenInjector, ""},
        {kWellProducer, "Open", kStatusOpenProducer, ""},
        {kWellProducer, "SHUT", kStatusShut, ""},
        {kWellInjector, "Stop", kStatusStop, ""},
        {kWellProducer, "Closed", kStatusOpenProducer, "Unrecognised value: must be Open; Shut or Stop."},
        {kWellUndefined, "Open", kStatusUnknown,
         "Well must be defined as an Injector or Producer before calling Target."},
    };
    for (const auto& [type, value, statusAfter, error] : rows) {
        WellData well = Typed(type);
        const Answer answer = Set(well, "Target.Status", value);
        EXPECT_EQ(answer.recognised, 1) << value;
        EXPECT_EQ(answer.error, error) << value;
        EXPECT_EQ(well.targetStatus, statusAfter) << value;
        EXPECT_EQ(well.underTapServerControl, *error == '\0') << value;
    }
}

TEST(WellWrites, InjectorTargetsAreSinglePhase) {
    WellData well = Typed(kWellInjector);
    ASSERT_EQ(Set(well, "TARGET.WaterRate", "500").recognised, 1);
    ASSERT_EQ(Set(well, "TARGET.Bhp", "4000").recognised, 1);
    EXPECT_EQ(well.target.WaterRate, 500.0);
    EXPECT_TRUE(well.underTapServerControl);

    // A gas rate replaces the water rate and leaves the pressure.
    EXPECT_EQ(Set(well, "TARGET.GasRate", "1200").error, "");
    EXPECT_EQ(well.target.GasRate, 1200.0);
    EXPECT_EQ(well.target.WaterRate, -1.0);
    EXPECT_EQ(well.target.Bhp, 4000.0);

    const std::vector<std::pair<std::string, std::string>> rows = {
        {"OilRate=0", "tNavigator injectors only support single-phase gas or water control."},
        {"LiquidRate=25", "tNavigator injectors only support single-phase gas or water control."},
        {"OilRate=-1", ""},  // a rate that is not set is let be
        {"Temperature=150", "Could not set unrecognised target point."},
        {"Thp=300", ""},
        {"Efficiency=0.5", ""},
    };
    for (const auto& [write, error] : rows) {
        const std::size_t equals = write.find('=');
        const Answer answer = Set(well, "TARGET." + write.substr(0, equals), write.substr(equals + 1));
        EXPECT_EQ(answer.recognised, 1) << write;
        EXPECT_EQ(answer.error, error) << write;
    }
    EXPECT_EQ(well.target.GasRate, 1200.0);
    EXPECT_EQ(well.target.OilRate, -1.0);
    EXPECT_EQ(well.target.Temperature, -1.0);
    EXPECT_EQ(well.target.Thp, 300.0);
    EXPECT_EQ(well.target.Efficiency, 0.5);
    EXPECT_EQ(Set(well, "TARGET.Pressure", "1").recognised, 0);
}

TEST(WellWrites, ProducerTargetsKeepWhatWasSet) {
    WellData well = Typed(kWellProducer);
    Set(well, "TARGET.OilRate", "800");
    Set(well, "TARGET.Bhp", "1500");
    Set(well, "TARGET.GasRate", "-7");
    Set(well, "TARGET.Temperature", "180");
    EXPECT_EQ(well.target.OilRate, 800.0);
    EXPECT_EQ(well.target.Bhp, 1500.0);
    EXPECT_EQ(well.target.GasRate, -1.0);  // every negative rate is "not set"
    EXPECT_EQ(well.target.Temperature, 180.0);
    EXPECT_TRUE(well.underTapServerControl);
    EXPECT_EQ(Get(well, "TARGET.OilRate").value, "800");

    WellData other = Typed(kWellProducer);
    EXPECT_EQ(Set(other, "TARGET.Pressure", "1").recognised, 0);
    EXPECT_FALSE(other.underTapServerControl);
    // Only targets, the type and component fractions are written; read variables are not recognised.
    for (const char* path : {"Name", "Status", "Bhp", "VaneRateControl", "IsOpen"})
        EXPECT_EQ(Set(other, path, "1").recognised, 0) << path;
}

TEST(WellWrites, AWellUnderTheNetworkTakesNoWrite) {
    WellData well = Typed(kWellProducer);
    std::string warning;
    well.SetUnderVaneControl(warning);
    for (const char* path : {"TARGET.Bhp", "SetWellType", "Name"}) {
        const Answer answer = Set(well, path, "Producer");
        EXPECT_EQ(answer.recognised, 1) << path;
        EXPECT_EQ(answer.error, "Cannot apply TapServer control to a well under VANE control.") << path;
    }
    EXPECT_EQ(well.target.Bhp, -1.0);
    EXPECT_FALSE(well.underTapServerControl);
}

TEST(WellWrites, MoleFractions) {
    const FluidProperties fluid = Compositional();
    WellData well(&fluid);
    well.wellType = kWellInjector;
    well.composition.SetHcCount(2);
    well.composition.rateFractions = {0.3, 0.7};

    // "MoleFraction" is read, not kept, and the host hears of no write.
    Answer answer = Set(well, "HcComponent[{CO2}].MoleFraction", "0.2");
    EXPECT_EQ(answer.recognised, 0);
    EXPECT_EQ(answer.error, "");
    EXPECT_EQ(well.composition.rateFractions[1], 0.7);
    EXPECT_FALSE(well.underTapServerControl);

    // Any other name behind a component stores a fraction of 0.
    answer = Set(well, "HcComponent[1].HcMoleFraction", "0.2");
    EXPECT_EQ(answer.recognised, 1);
    EXPECT_EQ(well.composition.rateFractions[1], 0.0);
    EXPECT_TRUE(well.underTapServerControl);

    EXPECT_EQ(Set(well, "HcComponent[3].X", "0").error,
              "Index 3 exceeds the number of Hydrocarbon components (2).");
    WellData bare;
    bare.wellType = kWellProducer;
    EXPECT_EQ(Set(bare, "HCCOMPONENT[0].X", "0").error,
              "No compositional fluid description been assigned to this well.");
    // A well whose stream has not been read holds no fractions yet.
    WellData unread(&fluid);
    EXPECT_EQ(Set(unread, "HcComponent[1].X", "0").error,
              "iHcComponentIndex 1  exceeds the HcComponentCount (0).");

    std::string error;
    EXPECT_FALSE(well.SetHcMoleFraction(-1, 0.5, error));
    EXPECT_EQ(error, "iHcComponentIndex cannot be negative.");
    EXPECT_FALSE(well.SetHcMoleFraction(0, 1.5, error));
    EXPECT_EQ(error, "Mole Fraction value (1.5) must lie in the range 0.0 to 1.0 (inclusive).");
    EXPECT_TRUE(well.SetHcMoleFraction(0, 1.0, error));
    EXPECT_EQ(well.composition.rateFractions[0], 1.0);
}

}  // namespace
}  // namespace rivulet
