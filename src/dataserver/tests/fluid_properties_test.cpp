#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/FluidProperties.h"

namespace rivulet {
namespace {

// Whether the path was recognised, the value and the error text.
std::tuple<std::int32_t, std::string, std::string> Get(FluidProperties& fluid, const std::string& path) {
    char buffer[256];
    auto tag = CExtDataServerTag::ForGet(path.c_str(), buffer, sizeof buffer);
    const std::int32_t recognised = fluid.ProcessAccessString(tag);
    return {recognised, buffer, tag.GetErrorText()};
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
    fluid.SetModelType(7);
    EXPECT_EQ(fluid.modelType, 0);
    EXPECT_EQ(fluid.propertyList, nullptr);
    EXPECT_TRUE(fluid.eosRegionCount == 0 && fluid.hcNames.empty() && fluid.waterDensities.empty() &&
                fluid.eosNames.empty());

    // The names the fluid reader does not read itself.
    EXPECT_EQ(FluidProperties::ModelTypeOf("COMPOSITIONAL", true), 5);
    EXPECT_EQ(FluidProperties::ModelTypeOf("ThermalCompositional", false), 4);
    EXPECT_EQ(FluidProperties::ModelTypeOf("IsothermalBlackOil", true), 1);
    EXPECT_EQ(FluidProperties::ModelTypeOf("", false), 0);
}

TEST(FluidModelTest, PropertiesFollowTheRegionMajorLayoutAndDensitiesThePvtRegion) {
    const FluidProperties fluid = Fluid(4);  // hc 2, properties 0, 1, 2
    ASSERT_NE(fluid.PropertyArray(2, kMolecularWeight), nullptr);
    EXPECT_EQ(fluid.PropertyArray(2, kMolecularWeight)[1], 11.0);  // 2*1*3 + 2*2 + 1
    EXPECT_EQ(fluid.PropertyArray(1, kCriticalPressure)[0], 2.0);
    EXPECT_EQ(fluid.PropertyArray(0, kCriticalPressure), nullptr);
    EXPECT_EQ(fluid.PropertyArray(3, kCriticalPressure), nullptr);
    EXPECT_EQ(fluid.PropertyArray(1, kShift), nullptr);
    EXPECT_EQ(Fluid(1).PropertyArray(1, kCriticalTemperature), nullptr);

    ASSERT_NE(fluid.InteractionCoefficients(2), nullptr);
    EXPECT_EQ(fluid.InteractionCoefficients(2)[0], 4.0);
    EXPECT_EQ(fluid.InteractionCoefficients(3), nullptr);

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
        {4, "EOSREGION[{PR}].HCCOMPONENT[{CO2}].MolecularWeight", "11", ""},
        {4, "EosRegion[1].HcComponent[1].Label", "CO2", ""},
        {4, "EosRegion[0].HcComponent[0].OmegaA", "", "OmegaA is not defined in the requested fluid."},
        {4, "EosRegion[0].HcComponent[0].Shift", "", "Shift is not defined in the requested fluid."},
        {4, "EosRegion[{ZJ}].HcComponent[0].Name", "", "EosRegion name ZJ was not recognised."},
        {4, "EosRegion[0].Name", "", "Unrecognised EosRegion data request"},
        {5, "EosRegion[1].HcComponent[0].Parachor", "38", ""},  // 2*1*10 + 2*9
    };
    for (const auto& [type, path, value, error] : cases) {
        FluidProperties fluid = Fluid(type);
        EXPECT_EQ(Get(fluid, path), std::tuple(1, value, error)) << path;
    }
    FluidProperties fluid = Fluid(4);
    for (const char* path : {"Pressure", "EosRegion[0].HcComponent[0].CriticalVolumeForViscosity",
                             "EosRegion[0].HcComponent[0].Density"})
        EXPECT_EQ(std::get<0>(Get(fluid, path)), 0) << path;
    // Nor is a fluid variable given a value.
    auto set = CExtDataServerTag::ForSet("ModelType", "THERMAL_BLACK_OIL");
    EXPECT_EQ(fluid.ProcessAccessString(set), 0);
    EXPECT_FALSE(set.HasError());
    EXPECT_EQ(fluid.modelType, 4);

    // A component beyond the list, reached without the access path, is recognised with no value.
    char buffer[32] = "x";
    auto tag = CExtDataServerTag::ForGet("Name", buffer, sizeof buffer);
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 1, 2), 1);
    EXPECT_FALSE(tag.HasError());
    EXPECT_EQ(fluid.ProcessComponentVariable(tag, 3, 0), 1);
    EXPECT_EQ(tag.GetErrorText(),
              "Eos region 3 (index-1 based value) does not exist in the set of (2) eos regions.");
}

std::vector<unsigned char> Stored(FluidProperties& fluid) {
    std::vector<unsigned char> bytes(4096);
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Store);
    EXPECT_EQ(fluid.StreamData(&archive, 1), 0);
    bytes.resize(archive.Position());
    return bytes;
}

auto Fields(const FluidProperties& f) {
    return std::tie(f.modelType, f.propertyCount, f.pvtRegionCount, f.eosRegionCount, f.blackOilDensities,
                    f.eosNames, f.waterNames, f.waterDensities, f.hcNames, f.componentProperties,
                    f.interactionCoefficients);
}

TEST(FluidStreamTest, EachModelRoundTripsAndAShortStreamChangesNothing) {
    for (const std::int32_t type : {2, 6}) {
        FluidProperties fluid = Fluid(type), loaded;
        const std::vector<unsigned char> bytes = Stored(fluid);
        BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
        EXPECT_EQ(loaded.StreamData(&archive, 1), 0);
        EXPECT_EQ(archive.Position(), bytes.size());
        EXPECT_EQ(Fields(loaded), Fields(fluid)) << type;
        EXPECT_EQ(bytes[BinaryArchive::kHeaderSize], type);
    }
    // Black oil: the type byte, region count, density count and six reals.
    FluidProperties kept = Fluid(1), compositional = Fluid(6);
    EXPECT_EQ(Stored(kept).size(), BinaryArchive::kHeaderSize + 1 + 4 + 4 + 6 * 8);

    std::vector<unsigned char> cut = Stored(compositional);
    cut.resize(cut.size() - 4);
    BinaryArchive archive(cut.data(), cut.size(), ArchiveDirection::Load);
    EXPECT_THROW(kept.StreamData(&archive, 1), ArchiveException);
    EXPECT_EQ(kept.modelType, 1);
}

}  // namespace
}  // namespace rivulet
