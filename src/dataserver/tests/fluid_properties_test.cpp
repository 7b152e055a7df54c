#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"

namespace rivulet {
namespace {

struct Access {
    std::int32_t recognised;
    std::string value;
    std::string error;
};

Access Get(FluidProperties& fluid, const std::string& path) {
    char buffer[256];
    auto tag = CExtDataServerTag::ForGet(("TNAVIGATOR." + path).c_str(), buffer, sizeof buffer);
    EXPECT_TRUE(tag.MatchName("tNavigator"));
    const std::int32_t recognised = fluid.ProcessAccessString(tag);
    return {recognised, buffer, tag.GetErrorText()};
}

// Two PVT regions: (1000, 800, 0.9) and (1010, 810, 0.8).
FluidProperties BlackOil(std::int32_t type) {
    FluidProperties fluid;
    fluid.SetModelType(type);
    fluid.SetPvtRegionCount(2);
    fluid.blackOilDensities = {1000, 800, 0.9, 1010, 810, 0.8};
    return fluid;
}

// Two EOS regions, components C1 and CO2; component properties numbered 0, 1, 2, ... in storage order.
FluidProperties Compositional(std::int32_t type) {
    FluidProperties fluid;
    fluid.SetModelType(type);
    fluid.SetPvtRegionCount(2);
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
    const struct {
        std::int32_t type;
        std::vector<ComponentProperty> properties;
    } cases[] = {
        {1, {}},
        {2, {}},
        {3,
         {kCriticalTemperature, kCriticalPressure, kMolecularWeight, kAcentricFactor, kOmegaA, kOmegaB,
          kCriticalVolume, kCriticalVolumeForViscosity, kShift}},
        {4, {kCriticalTemperature, kCriticalPressure, kMolecularWeight}},
        {5,
         {kCriticalTemperature, kCriticalPressure, kMolecularWeight, kAcentricFactor, kOmegaA, kOmegaB,
          kCriticalVolume, kCriticalVolumeForViscosity, kShift, kParachor}},
        {6, {kCriticalTemperature, kCriticalPressure, kMolecularWeight, kParachor}},
    };
    for (const auto& c : cases) {
        FluidProperties fluid = c.type > 2 ? Compositional(c.type) : BlackOil(c.type);
        const std::vector<ComponentProperty> list(fluid.propertyList,
                                                  fluid.propertyList + fluid.propertyCount);
        EXPECT_EQ(list, c.properties) << c.type;
        EXPECT_EQ(fluid.blackOilDensities.size(), c.type <= 2 ? 6u : 0u) << c.type;
        EXPECT_EQ(fluid.componentProperties.size(), 2u * 2u * c.properties.size()) << c.type;
        EXPECT_EQ(fluid.interactionCoefficients.size(), c.type > 2 ? 8u : 0u) << c.type;
    }

    FluidProperties fluid = Compositional(5);
    fluid.SetModelType(7);
    EXPECT_EQ(fluid.modelType, 0);
    EXPECT_EQ(fluid.eosRegionCount, 0);
    EXPECT_EQ(fluid.propertyList, nullptr);
    EXPECT_TRUE(fluid.hcNames.empty() && fluid.waterDensities.empty() && fluid.eosNames.empty());

    EXPECT_EQ(FluidProperties::ModelTypeOf(" thermalcompositional ", true), 6);
    EXPECT_EQ(FluidProperties::ModelTypeOf("COMPOSITIONAL", false), 3);
    EXPECT_EQ(FluidProperties::ModelTypeOf("ThermalBlackOil", true), 2);
    EXPECT_EQ(FluidProperties::ModelTypeOf("", false), 0);
}

TEST(FluidModelTest, PropertyLookupFollowsTheRegionMajorLayout) {
    FluidProperties fluid = Compositional(4);  // hc 2, properties 0, 1, 2
    ASSERT_NE(fluid.PropertyArray(2, kMolecularWeight), nullptr);
    EXPECT_EQ(fluid.PropertyArray(2, kMolecularWeight)[1], 11.0);  // 2*1*3 + 2*2 + 1
    EXPECT_EQ(fluid.PropertyArray(1, kCriticalPressure)[0], 2.0);
    EXPECT_EQ(fluid.PropertyArray(0, kCriticalPressure), nullptr);
    EXPECT_EQ(fluid.PropertyArray(3, kCriticalPressure), nullptr);
    EXPECT_EQ(fluid.PropertyArray(1, kShift), nullptr);
    EXPECT_EQ(BlackOil(1).PropertyArray(1, kCriticalTemperature), nullptr);

    ASSERT_NE(fluid.InteractionCoefficients(2), nullptr);
    EXPECT_EQ(fluid.InteractionCoefficients(2)[0], 4.0);
    EXPECT_EQ(fluid.InteractionCoefficients(3), nullptr);
}

TEST(FluidModelTest, SurfaceDensitiesByPvtRegion) {
    const FluidProperties blackOil = BlackOil(2);
    EXPECT_EQ(blackOil.WaterDensity(2), 1010.0);
    EXPECT_EQ(blackOil.OilDensity(2), 810.0);
    EXPECT_EQ(blackOil.GasDensity(1), 0.9);
    EXPECT_EQ(blackOil.GasDensity(3), 0.0);
    EXPECT_EQ(blackOil.OilDensity(0), 0.0);

    const FluidProperties compositional = Compositional(3);
    EXPECT_EQ(compositional.WaterDensity(2), 1030.0);
    EXPECT_EQ(compositional.WaterDensity(3), 0.0);
    EXPECT_EQ(compositional.OilDensity(1), 0.0);
    EXPECT_EQ(compositional.GasDensity(1), 0.0);
}

TEST(FluidAccessTest, BlackOilModelHasNoComponentsOrRegions) {
    FluidProperties fluid = BlackOil(1);
    EXPECT_EQ(Get(fluid, "ModelType").value, "ISOTHERMAL_BLACK_OIL");
    EXPECT_EQ(Get(fluid, "HcComponentCount").value, "0");
    EXPECT_EQ(Get(fluid, "EosRegionCount").value, "0");
    const Access names = Get(fluid, "EosNames[0]");
    EXPECT_EQ(names.recognised, 1);
    EXPECT_EQ(names.error, "There are no Eos regions in this model.");
    EXPECT_EQ(Get(fluid, "HcNames[0]").error, "Index 0 exceeds the number of Hydrocarbon components (0).");
    fluid = BlackOil(2);
    EXPECT_EQ(Get(fluid, "ModelType").value, "THERMAL_BLACK_OIL");
    FluidProperties empty;
    EXPECT_EQ(Get(empty, "ModelType").value, "");
}

TEST(FluidAccessTest, ComponentVariablesFollowTheModelsPropertyList) {
    FluidProperties fluid = Compositional(4);
    EXPECT_EQ(Get(fluid, "ModelType").value, "THERMAL_COMPOSITIONAL");
    EXPECT_EQ(Get(fluid, "EosRegion[0].HcComponent[0].CriticalPressure").value, "2");
    EXPECT_EQ(Get(fluid, "EOSREGION[{PR}].HCCOMPONENT[{CO2}].MolecularWeight").value, "11");
    EXPECT_EQ(Get(fluid, "EosRegion[1].HcComponent[1].Label").value, "CO2");
    const Access omega = Get(fluid, "EosRegion[0].HcComponent[0].OmegaA");
    EXPECT_EQ(omega.recognised, 1);
    EXPECT_EQ(omega.error, "OmegaA is not defined in the requested fluid.");
    EXPECT_EQ(Get(fluid, "EosRegion[0].HcComponent[0].Shift").error,
              "Shift is not defined in the requested fluid.");
    EXPECT_EQ(Get(fluid, "EosRegion[0].HcComponent[0].CriticalVolumeForViscosity").recognised, 0);
    EXPECT_EQ(Get(fluid, "EosRegion[0].HcComponent[0].Density").recognised, 0);

    fluid = Compositional(5);
    EXPECT_EQ(Get(fluid, "EosRegion[1].HcComponent[0].Parachor").value, "38");  // 2*1*10 + 2*9

    // A component beyond the list, reached without the access path, is recognised with no value.
    char buffer[32] = "x";
    auto tag = CExtDataServerTag::ForGet("Name", buffer, sizeof buffer);
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 1, 2), 1);
    EXPECT_FALSE(tag.HasError());
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 3, 0), 1);
    EXPECT_EQ(tag.GetErrorText(),
              "Eos region 3 (index-1 based value) does not exist in the set of (2) eos regions.");
}

TEST(FluidAccessTest, IndexesAndKeysOfComponentsAndRegions) {
    FluidProperties fluid = Compositional(4);
    EXPECT_EQ(Get(fluid, "HcComponentCount").value, "2");
    EXPECT_EQ(Get(fluid, "HcNames[{CO2}]").value, "CO2");
    EXPECT_EQ(Get(fluid, "HcNames").error, "An index is required to access a component array variable");
    EXPECT_EQ(Get(fluid, "HcNames[{co2}]").error, "Hydrocarbon component name co2 was not recognised.");
    EXPECT_EQ(Get(fluid, "HcNames[2]").error, "Index 2 exceeds the number of Hydrocarbon components (2).");
    EXPECT_EQ(Get(fluid, "EosNames[1]").value, "PR");
    EXPECT_EQ(Get(fluid, "EosNames[2]").error, "Index 2 exceeds the number of Eos Regions (2).");
    EXPECT_EQ(Get(fluid, "EosNames").error, "An index is required to access an EosRegion.");
    EXPECT_EQ(Get(fluid, "EosRegion[{ZJ}].HcComponent[0].Name").error,
              "EosRegion name ZJ was not recognised.");
    EXPECT_EQ(Get(fluid, "EosRegion[0].Name").error, "Unrecognised EosRegion data request");
    EXPECT_EQ(Get(fluid, "EosRegion[0].HcComponent.Name").error,
              "An index is required to access a component array variable");

    // Regions of a model read as thermal carry the empty EOS name.
    fluid.eosNames = {"", ""};
    const Access name = Get(fluid, "EosNames[0]");
    EXPECT_EQ(name.recognised, 1);
    EXPECT_EQ(name.value, "");
    EXPECT_EQ(name.error, "");
}

TEST(FluidAccessTest, SettingAFluidVariableIsNotRecognised) {
    FluidProperties fluid = Compositional(3);
    auto tag = CExtDataServerTag::ForSet("TNAVIGATOR.ModelType", "THERMAL_BLACK_OIL");
    ASSERT_TRUE(tag.MatchName("tNavigator"));
    EXPECT_EQ(fluid.ProcessAccessString(tag), 0);
    EXPECT_FALSE(tag.HasError());
    EXPECT_EQ(fluid.modelType, 3);
    EXPECT_EQ(Get(fluid, "Pressure").recognised, 0);
}

std::vector<unsigned char> Stored(FluidProperties& fluid) {
    std::vector<unsigned char> bytes(4096);
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Store);
    EXPECT_EQ(fluid.StreamData(&archive, 1), 0);
    bytes.resize(archive.Position());
    return bytes;
}

FluidProperties Loaded(const std::vector<unsigned char>& bytes) {
    FluidProperties fluid;
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_EQ(fluid.StreamData(&archive, 1), 0);
    EXPECT_EQ(archive.Position(), bytes.size());
    return fluid;
}

TEST(FluidStreamTest, BlackOilStreamsTypeRegionsAndDensities) {
    FluidProperties fluid = BlackOil(2);
    const std::vector<unsigned char> bytes = Stored(fluid);
    // Header, type byte, region count, density count and six reals.
    EXPECT_EQ(bytes.size(), BinaryArchive::kHeaderSize + 1 + 4 + 4 + 6 * 8);
    EXPECT_EQ(bytes[BinaryArchive::kHeaderSize], 2);

    const FluidProperties loaded = Loaded(bytes);
    EXPECT_EQ(loaded.modelType, 2);
    EXPECT_EQ(loaded.pvtRegionCount, 2);
    EXPECT_EQ(loaded.blackOilDensities, fluid.blackOilDensities);
}

TEST(FluidStreamTest, CompositionalRoundTripAndShortStream) {
    FluidProperties fluid = Compositional(6);
    const std::vector<unsigned char> bytes = Stored(fluid);
    const FluidProperties loaded = Loaded(bytes);
    EXPECT_EQ(loaded.modelType, 6);
    EXPECT_EQ(loaded.propertyCount, 4);
    EXPECT_EQ(loaded.eosRegionCount, 2);
    EXPECT_EQ(loaded.pvtRegionCount, 2);
    EXPECT_EQ(loaded.eosNames, fluid.eosNames);
    EXPECT_EQ(loaded.waterNames, fluid.waterNames);
    EXPECT_EQ(loaded.waterDensities, fluid.waterDensities);
    EXPECT_EQ(loaded.hcNames, fluid.hcNames);
    EXPECT_EQ(loaded.componentProperties, fluid.componentProperties);
    EXPECT_EQ(loaded.interactionCoefficients, fluid.interactionCoefficients);

    // A stream cut short leaves the object as it was.
    FluidProperties kept = BlackOil(1);
    const std::vector<unsigned char> cut(bytes.begin(), bytes.end() - 4);
    BinaryArchive archive(cut.data(), cut.size(), ArchiveDirection::Load);
    EXPECT_THROW(kept.StreamData(&archive, 1), ArchiveException);
    EXPECT_EQ(kept.modelType, 1);
    EXPECT_EQ(kept.blackOilDensities.size(), 6u);
}

}  // namespace
}  // namespace rivulet
