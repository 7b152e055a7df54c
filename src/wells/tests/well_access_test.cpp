// A well's variables by access string: what each read answers, and the rules and texts of every write.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"
#include "wells/WellData.h"

namespace rivulet {
namespace {

struct Answer {
    std::int32_t recognised;
    std::string value, error;
};

// `path` is what follows the well's key, such as "TARGET.Status".
Answer Access(WellData& well, const std::string& path, const char* setValue = nullptr) {
    char buffer[128];
    auto tag = setValue == nullptr ? CExtDataServerTag::ForGet(path.c_str(), buffer, sizeof buffer)
                                   : CExtDataServerTag::ForSet(path.c_str(), setValue);
    const std::int32_t recognised = well.ProcessAccessString(tag);
    return {recognised, setValue == nullptr ? buffer : "", tag.GetErrorText()};
}

// Isothermal compositional, two EOS regions, components C1 and CO2; property p of region r and component c
// holds 100 r + 10 p + c. PVT region 1 has a water density of 64.49.
FluidProperties Compositional() {
    FluidProperties fluid;
    fluid.SetModelType(3);
    fluid.eosRegionCount = 2;
    fluid.eosNames = {"PR", "PR"};
    fluid.SetHcNames({"C1", "CO2"});
    fluid.waterDensities = {64.49};
    const int perRegion = 2 * fluid.propertyCount;
    for (int k = 0; k < 2 * perRegion; ++k)
        fluid.componentProperties[static_cast<std::size_t>(k)] =
            100 * (k / perRegion + 1) + 10 * (k % perRegion / 2) + k % 2;
    return fluid;
}

const FluidProperties kFluid = Compositional();

// 'U' a well of no type whose stream has not been read; 'P' an open producer asked for 800 STB/day at 1500
// psia at least; 'I' an open injector asked for 500 of water; 'V' the producer under the network.
WellData Well(char kind) {
    WellData well(&kFluid);
    well.name = "P-1";
    if (kind == 'U') return well;
    well.SetWellStatus(kind == 'I' ? kStatusOpenInjector : kStatusOpenProducer);
    well.eosRegion = 2, well.pvtRegion = 1, well.vaneRateControl = kControlLiquid;
    WellRateRecord& r = kind == 'I' ? well.injectionRecord : well.productionRecord;
    r[WellRateRecord::kWater] = -4.0;  // a negative rate reads as none
    r[WellRateRecord::kOil] = 1500.0, r[WellRateRecord::kRcLiquid] = 1700.0;
    r[WellRateRecord::kCumWater] = 300.0, r[WellRateRecord::kCumOil] = 9000.0;
    r[WellRateRecord::kOilDensity] = 50.0;  // the well's own density comes first
    well.composition.SetWaterCount(1);
    well.composition.SetHcCount(2);
    // Blocks of water, C1, CO2: liquid rate, gas rate, cumulative liquid, cumulative gas.
    well.composition.componentParams = {0, 1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8};
    well.composition.rateFractions = {0.3, 0.7};
    well.composition.cumFractions = {0.4, 0.6};
    if (kind == 'I') well.target.WaterRate = 500.0;
    if (kind != 'I') well.target.OilRate = 800.0, well.target.Bhp = 1500.0;
    std::string warning;
    if (kind == 'V') well.SetUnderVaneControl(warning);
    return well;
}

TEST(WellAccess, ReadsAnswerInTheModelsUnitsWithTheirWordsAndMessages) {
    // The well's kind, the path, whether it was recognised, the value and the error.
    using Row = std::tuple<char, const char*, std::int32_t, const char*, const char*>;
    const Row rows[] = {
        {'P', "IsOpen", 1, "1", ""},
        {'I', "isinjector", 1, "1", ""},  // names ignore case
        {'P', "LiquidRate", 1, "1500", ""},
        {'P', "RcLiquidRate", 1, "1700", ""},
        {'I', "CumLiquid", 1, "9300", ""},
        {'P', "Temperature", 1, "3.4e+35", ""},  // an isothermal model keeps none
        {'P', "OilDensity", 1, "50", ""},
        {'I', "WaterDensity", 1, "64.49", ""},
        {'U', "Status", 1, "Undefined", ""},
        {'I', "WellType", 1, "Injector", ""},
        {'U', "TARGET.Status", 1, "Undefined", ""},
        {'P', "Target.Status", 1, "Open", ""},
        {'P', "TARGET.Bhp", 1, "1500", ""},
        {'P', "VaneRateControl", 1, "2", ""},
        {'P', "HcComponent[0].CriticalTemperature", 1, "200", ""},  // the well's EOS region 2
        {'P', "HCCOMPONENT[{CO2}].Name", 1, "CO2", ""},
        {'P', "HcComponent[0].LiquidMolarRate", 1, "1", ""},
        {'P', "HcComponent[1].GasMolarRate", 1, "4", ""},
        {'P', "HcComponent[1].CumGasMoles", 1, "8", ""},
        {'P', "HcComponent[1].HcMoleFraction", 1, "0.7", ""},
        {'P', "HcComponent[0].CumHcMoleFraction", 1, "0.4", ""},
        {'P', "HcComponent[1].EosRegion", 1, "2", ""},  // the well's own, behind the component
        {'P', "HcComponent[2].Name", 1, "", "Index 2 exceeds the number of Hydrocarbon components (2)."},
        {'P', "HcComponent.Name", 1, "", "An index is required to access a component array variable"},
        {'P', "HcComponent[{N2}].Name", 1, "", "Hydrocarbon component name N2 was not recognised."},
        {'P', "SetWellType", 0, "", ""},  // a name for writes only
        {'P', "HcComponent[0].Bhp", 0, "", ""},
    };
    for (const auto& [kind, path, recognised, value, error] : rows) {
        WellData well = Well(kind);
        const Answer answer = Access(well, path);
        EXPECT_EQ(std::tie(answer.recognised, answer.value, answer.error),
                  std::tuple(recognised, value, error))
            << path;
    }
    WellData bare;
    EXPECT_EQ(Access(bare, "HcComponent[0].Name").error,
              "No compositional fluid description been assigned to this well.");
}

TEST(WellAccess, WritesFollowTheirRulesAndTakeTheWellFromTheNetworkOnlyWhenTheyHold) {
    // The well's kind, the path and value written, whether it was recognised, the error, and a variable
    // that shows what the write did with its value after it.
    using Row =
        std::tuple<char, const char*, const char*, std::int32_t, const char*, const char*, const char*>;
    const Row rows[] = {
        {'U', "SetWellType", "producer", 1, "", "WellType", "Producer"},
        {'I', "SETWELLTYPE", "Producer", 1, "A well type can only be changed if currently Undefined.",
         "WellType", "Injector"},
        {'P', "SetWellType", "Producer", 1, "", "OilRate", "1500"},  // the results stay
        {'P', "SetWellType", "Observer", 1, "Unrecognised value: must be Injector or Producer.", "WellType",
         "Producer"},
        {'U', "TARGET.Bhp", "1", 1, "Well must be defined as an Injector or Producer before calling Target.",
         "TARGET.Bhp", "-1"},
        {'P', "TARGET.Status", "SHUT", 1, "", "TARGET.Status", "Shut"},
        {'P', "Target.Status", "Closed", 1, "Unrecognised value: must be Open; Shut or Stop.",
         "TARGET.Status", "Open"},
        {'I', "TARGET.GasRate", "1200", 1, "", "TARGET.WaterRate", "-1"},  // one phase at a time
        {'I', "TARGET.OilRate", "0", 1,
         "tNavigator injectors only support single-phase gas or water control.", "TARGET.OilRate", "-1"},
        {'I', "TARGET.LiquidRate", "-1", 1, "", "TARGET.WaterRate", "500"},  // not set: let be
        {'I', "TARGET.Temperature", "150", 1, "Could not set unrecognised target point.",
         "TARGET.Temperature", "-1"},
        {'I', "TARGET.Thp", "300", 1, "", "TARGET.WaterRate", "500"},
        {'P', "TARGET.Bhp", "1200", 1, "", "TARGET.OilRate", "800"},
        {'P', "TARGET.GasRate", "-7", 1, "", "TARGET.GasRate", "-1"},
        {'P', "TARGET.Temperature", "180", 1, "", "TARGET.Temperature", "180"},
        {'P', "TARGET.Pressure", "1", 0, "", "TARGET.Bhp", "1500"},
        {'P', "Bhp", "1", 0, "", "TARGET.Bhp", "1500"},  // read variables are not written
        {'V', "TARGET.Bhp", "3000", 1, "Cannot apply TapServer control to a well under VANE control.",
         "TARGET.Bhp", "1500"},
        // A fraction given as "MoleFraction" is read and not kept, and the host hears of no write; any
        // other name behind the component stores a fraction of 0.
        {'P', "HcComponent[{CO2}].MoleFraction", "0.2", 0, "", "HcComponent[1].HcMoleFraction", "0.7"},
        {'P', "HcComponent[1].HcMoleFraction", "0.2", 1, "", "HcComponent[1].HcMoleFraction", "0"},
        {'U', "HcComponent[1].X", "0", 1, "iHcComponentIndex 1  exceeds the HcComponentCount (0).", "IsOpen",
         "0"},
    };
    for (const auto& [kind, path, value, recognised, error, readBack, readValue] : rows) {
        WellData well = Well(kind);
        const Answer answer = Access(well, path, value);
        EXPECT_EQ(std::tie(answer.recognised, answer.error), std::tuple(recognised, error)) << path;
        EXPECT_EQ(Access(well, readBack).value, readValue) << path;
        EXPECT_EQ(well.underTapServerControl, recognised == 1 && *error == '\0') << path;
    }

    WellData injector = Well('U');
    Access(injector, "SetWellType", "Injector");
    Access(injector, "TARGET.Status", "Open");
    EXPECT_EQ(injector.targetStatus, kStatusOpenInjector);

    std::string error;
    EXPECT_FALSE(injector.SetHcMoleFraction(-1, 0.5, error));
    EXPECT_EQ(error, "iHcComponentIndex cannot be negative.");
    WellData producer = Well('P');
    EXPECT_FALSE(producer.SetHcMoleFraction(0, 1.5, error));
    EXPECT_EQ(error, "Mole Fraction value (1.5) must lie in the range 0.0 to 1.0 (inclusive).");
}

}  // namespace
}  // namespace rivulet
