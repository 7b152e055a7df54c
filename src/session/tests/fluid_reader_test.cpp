#include <tuple>

#include "session/FluidReader.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

class FluidReaderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Script().Reset();
        // Two PVT regions, two EOS regions, three hydrocarbon components and one water component.
        tnavscripted::State& sim = Script().state;
        sim.scDensities = {1000, 800, 0.9, 1010, 810, 0.8};
        sim.eosRegionCount = 2;
        sim.eosTypes = {TNAV_EOS_SRK, TNAV_EOS_ZJ};
        sim.hcNames = {"C1", "CO2", "C7"};
        sim.waterNames = {"H2O"};
        sim.componentProperties[TNAV_COMPONENT_CRITICAL_PRESSURE] = {45, 73, 30, 46, 74, 31};
        sim.interactionCoefficients = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
        sim.waterScDensities = {1020, 1030};
    }
    bool Read(const std::string& mathModel) {
        Script().ClearCalls();
        log_.str("");
        return GetFluid(requester_, mathModel, &fluid_, error_);
    }

    tnavscripted::ScriptedStaticRequester simulator_;
    std::ostringstream log_;
    StaticRequester requester_{&simulator_, &log_};
    FluidProperties fluid_;
    std::string error_;
};

TEST_F(FluidReaderTest, CompositionalModelReadsEveryPartButTheEosTypes) {
    ASSERT_TRUE(Read("Compositional")) << error_;
    EXPECT_EQ(Script().CallNames(),
              (Names{"compos__is_miscible_option_enabled", "get_number_of_pvt_regions",
                     "compos__get_number_of_eos_regions", "compos__get_number_of_hydrocarbon_components",
                     "compos__get_number_of_water_components", "compos__get_hc_component_names",
                     "compos__get_component_properties",
                     "isotherm_compos__get_component_binary_interaction_coefficients",
                     "compos__get_water_component_names", "compos__get_water_sc_densities"}));
    EXPECT_EQ(Args("compos__get_component_properties"), "0,1,2,3,4,5,6,7,8");
    EXPECT_EQ(std::tie(fluid_.eosNames, fluid_.hcNames, fluid_.waterNames),
              std::tuple(Names{"PR", "PR"}, Names{"C1", "CO2", "C7"}, Names{"H2O"}));
    EXPECT_EQ(std::tuple(fluid_.PropertyArray(2, kCriticalPressure)[2], fluid_.InteractionCoefficients(2)[1],
                         fluid_.WaterDensity(2)),
              std::tuple(31.0, 10.0, 1030.0));
    // The properties' call logs its arguments by hand.
    EXPECT_NE(log_.str().find("double*)\ncomponent_property_t*\nint = 9\ndouble*\n\nisotherm_"),
              std::string::npos);
}

TEST_F(FluidReaderTest, ThermalMiscibleModelReadsEosTypesButNamesNoEquation) {
    Script().state.miscible = true;
    ASSERT_TRUE(Read(" thermalcompositional ")) << error_;
    EXPECT_EQ(std::tuple(Calls("isotherm_compos__get_eos_types"),
                         Calls("isotherm_compos__get_component_binary_interaction_coefficients"),
                         Args("compos__get_component_properties"), fluid_.modelType, fluid_.eosNames),
              std::tuple(1, 0, "0,1,2,9", 6, Names{"", ""}));
}

TEST_F(FluidReaderTest, BlackOilModelReadsRegionsAndDensitiesOnly) {
    ASSERT_TRUE(Read("ThermalBlackOil")) << error_;
    EXPECT_EQ(log_.str(), "\nget_number_of_pvt_regions(int*)\n\nblack_oil__get_sc_densities(double*)\n");
    EXPECT_EQ(std::tuple(fluid_.modelType, fluid_.GasDensity(2)), std::tuple(2, 0.8));
}

TEST_F(FluidReaderTest, EachFailureStopsTheReadWithItsMessage) {
    const char *comp = "Compositional", *thermal = "ThermalCompositional", *blackOil = "IsothermalBlackOil";
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"compos__is_miscible_option_enabled", comp, "Error when reading the miscible option"},
        {"get_number_of_pvt_regions", blackOil, "Error when reading the number of PVT regions"},
        {"black_oil__get_sc_densities", blackOil, "Error when reading black oil densities"},
        {"compos__get_number_of_eos_regions", comp, "Error when reading the number of EOS regions"},
        {"isotherm_compos__get_eos_types", thermal, "Error when reading EOS types"},
        {"compos__get_number_of_hydrocarbon_components", comp,
         "Error when reading the number of hydrocarbon components"},
        {"compos__get_number_of_water_components", comp, "Error when reading the number of water components"},
        {"compos__get_hc_component_names", comp, "Error when reading hydrocarbon names"},
        {"compos__get_component_properties", thermal, "Error when reading hydrocarbon properties"},
        {"isotherm_compos__get_component_binary_interaction_coefficients", comp,
         "Error when reading hydrocarbon binary interaction coefficients"},
        {"compos__get_water_component_names", comp, "Error when reading water names"},
        {"compos__get_water_sc_densities", comp, "Error when reading water densities"},
    };
    for (const auto& [call, model, text] : cases) {
        Script().Fail(call, 4, "lost");
        EXPECT_FALSE(Read(model)) << call;
        const std::string message = std::string(text) + ": <lost>";
        EXPECT_EQ(error_, message);
        EXPECT_TRUE(EndsWithLine(log_.str(), message)) << log_.str();
    }

    // A model without PVT regions has no array to fill.
    Script().state.scDensities.clear();
    EXPECT_EQ(ErrorOf(Read("IsothermalBlackOil"), error_),
              "GetBlackOilDensities() was passed a null output array");
    EXPECT_EQ(Calls("black_oil__get_sc_densities"), 0);
    EXPECT_EQ(ErrorOf(GetFluid(requester_, "IsothermalBlackOil", nullptr, error_), error_),
              "A null FluidProperties object was passed to GetFluid()");
}

TEST_F(FluidReaderTest, MathModelAndUnitSystem) {
    const char* const names[] = {"IsothermalBlackOil", "ThermalBlackOil", "Compositional",
                                 "ThermalCompositional", ""};
    std::string name;
    for (int value = 0; value < 5; ++value) {
        Script().state.mathModel = static_cast<tNavigator_API_RMA_math_model_type_t>(value);
        EXPECT_TRUE(ReadMathModelName(requester_, name, error_));
        EXPECT_EQ(name, names[value]);
    }
    Script().Fail("get_math_model_type", 2, "gone");
    EXPECT_EQ(ErrorOf(ReadMathModelName(requester_, name, error_), error_),
              "Error when reading mathematical model: <gone>");

    log_.str("");
    Script().state.units = TNAV_UNIT_SYSTEM_FIELD;
    TNavUnitSystem units;
    ASSERT_TRUE(ReadUnitSystem(requester_, units, error_));
    EXPECT_EQ(units.name, "FIELD");
    EXPECT_EQ(log_.str(), "\ncompos__get_water_sc_densities(unit_system_t*)\n");
    Script().state.units = static_cast<tNavigator_API_RMA_unit_system_t>(4);
    EXPECT_EQ(ErrorOf(ReadUnitSystem(requester_, units, error_), error_), "Invalid unit system");
    Script().Fail("unit_system", 3, "late");
    EXPECT_EQ(ErrorOf(ReadUnitSystem(requester_, units, error_), error_),
              "Error when reading unit system: <late>");
}

}  // namespace
}  // namespace rivulet
