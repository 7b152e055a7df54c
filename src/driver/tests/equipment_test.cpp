// The equipment description of a model, written as the Model document and read back with pugixml: the
// module, the field, each well's sub type and published variables, filters, and names that XML must escape.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ExtModelProbe.h"
#include "equipment/SerializeXML.h"

namespace rivulet {
namespace {

const std::string kOdd = "W&<\"\xC3\xA9'>";  // a well name with all that XML escapes, and a non-ASCII letter

class Equipment : public ::testing::Test {
  protected:
    void SetUp() override {
        model_.GetSettings().FileName = "/cases/R&D.DATA";
        model_.GetSettings().IsLocalMachine = true;
        model_.SetAlias("Res <1>", nullptr);
    }
    void AddReservoir(std::vector<std::string> components = {}) {
        ReservoirData& reservoir = ExtModelProbe::MakeReservoir(model_);
        reservoir.units.SetUp("METRIC");
        if (!components.empty()) {
            reservoir.fluid.SetModelType(3);
            reservoir.fluid.SetHcNames(components);
        }
        // A producer, injectors of gas, water and no phase yet, and a well of no type.
        const std::vector<std::pair<std::string, int>> wells = {
            {"P1", -1}, {kOdd, kPhaseGas}, {"WI", kPhaseWater}, {"I", kPhaseNone}, {"U", -2}};
        for (const auto& [name, phase] : wells) {
            WellData well(&reservoir.fluid);
            well.name = name;
            if (phase != -2) well.SetWellStatus(phase == -1 ? kStatusOpenProducer : kStatusOpenInjector);
            if (phase >= 0) well.injectionPhase = phase;
            reservoir.wells.Add(well);
        }
    }
    // The description as Conflux would read it from the written document.
    const CXmlModuleData& Written(bool noVariables = false, const std::vector<std::string>& filter = {}) {
        CXmlModel model;
        EXPECT_EQ(model_.GetEquipment(&model, noVariables, filter), 0);
        std::string error;
        EXPECT_TRUE(WriteModelXml(model, file_.string(), error)) << error;
        CModelXmlReader reader(read_);
        EXPECT_TRUE(reader.LoadFromFile(file_.string())) << reader.LoadError();
        EXPECT_EQ(reader.Version().Text(), "1.0.0");
        std::filesystem::remove(file_);
        EXPECT_EQ(read_.modules.GetSize(), 1u);
        EXPECT_EQ(read_.modules.GetAt(0)->data.GetSize(), 1u);
        return *read_.modules.GetAt(0)->data.GetAt(0);
    }
    static std::vector<std::string> Labels(const CXmlModuleData& data) {
        std::vector<std::string> labels;
        for (std::size_t k = 0; k < data.equipment.GetSize(); ++k)
            labels.push_back(data.equipment.GetAt(k)->label + "/" + data.equipment.GetAt(k)->subType + "/" +
                             std::to_string(data.equipment.GetAt(k)->variables.GetSize()));
        return labels;
    }

    CExtModel model_;
    CXmlModel read_;
    const std::filesystem::path file_ =
        std::filesystem::temp_directory_path() / ("rivulet_equipment_" + std::to_string(::getpid()) + ".xml");
};

TEST_F(Equipment, BeforeTheReservoirOnlyTheModuleIsDescribed) {
    const CXmlModuleData& data = Written();
    EXPECT_EQ(read_.fileName, "/cases/R&D.DATA");
    EXPECT_EQ(read_.modules.GetAt(0)->fileName, "/cases/R&D.DATA");
    EXPECT_EQ(data.application, "tNavigator");
    EXPECT_EQ(data.description, "tNavigator simulation data file");
    EXPECT_EQ(data.alias, "Res <1>");
    EXPECT_TRUE(data.isLocal);
    EXPECT_EQ(data.equipment.GetSize(), 0u);
}

TEST_F(Equipment, FieldAndWellsWithTheirVariablesSubTypesAndFilters) {
    AddReservoir();
    const CXmlModuleData& data = Written();
    EXPECT_EQ(Labels(data),
              (std::vector<std::string>{"Field/Field/10", "P1/Production/28", kOdd + "/Gas Injection/28",
                                        "WI/Water Injection/28", "I/Injection/28", "U/Unknown/28"}));
    const CXmlEquipmentVariable& fieldGas = *data.equipment.GetAt(0)->variables.GetAt(0);
    EXPECT_EQ(fieldGas.tags.GetAt(0)->tag, "FIELD.GasProductionRate");
    EXPECT_EQ(fieldGas.unit, "m3/day");

    const CXmlEquipmentItem& odd = *data.equipment.GetAt(2);
    const CXmlEquipmentVariable& name = *odd.variables.GetAt(0);
    EXPECT_EQ(std::tie(name.label, name.unit, name.writeable), std::tuple("Name", "", false));
    EXPECT_EQ(name.tags.GetAt(0)->tag, "WELL[{" + kOdd + "}].Label");
    const CXmlEquipmentVariable& gas = *odd.variables.GetAt(7);
    EXPECT_EQ(std::tie(gas.label, gas.unit), std::tuple("Gas rate", "m3/day"));
    const CXmlEquipmentVariable& target = *odd.variables.GetAt(21);
    EXPECT_EQ(std::tie(target.label, target.unit, target.writeable),
              std::tuple("Target pressure", "barsa", true));

    // The flag empties the wells' variables but not the field's; a filter names wells exactly.
    EXPECT_EQ(Labels(Written(true, {"WI", "p1"})),
              (std::vector<std::string>{"Field/Field/10", "WI/Water Injection/0"}));
    EXPECT_EQ(Labels(Written(false, {"none"})), (std::vector<std::string>{"Field/Field/10"}));
}

TEST_F(Equipment, EachComponentRowHasATagPerComponent) {
    AddReservoir({"C1", "CO2", "N&2"});
    const CXmlEquipmentItem& well = *Written(false, {"P1"}).equipment.GetAt(1);
    ASSERT_EQ(well.variables.GetSize(), 28u + 15u);
    const CXmlEquipmentVariable& volume = *well.variables.GetAt(28 + 3);
    EXPECT_EQ(std::tie(volume.label, volume.unit), std::tuple("Critical volume", "m3/kg.mole"));
    ASSERT_EQ(volume.tags.GetSize(), 3u);
    EXPECT_EQ(volume.tags.GetAt(2)->tag, "WELL[{P1}].HCCOMPONENT[{N&2}].CriticalVolume");
    EXPECT_EQ(volume.tags.GetAt(2)->qualifier, "N&2");
    EXPECT_EQ(well.variables.GetAt(28 + 7)->unit, "moles/day");
}

TEST_F(Equipment, NamesComeBackUnchanged) {
    const std::vector<std::string> names = {"A&B",       "<x>",      "q\"uote'", "Ünïcødé",
                                            "tab\tname", " spaced ", "]}{["};
    ReservoirData& reservoir = ExtModelProbe::MakeReservoir(model_);
    for (const std::string& name : names) {
        WellData well;
        well.name = name;
        reservoir.wells.Add(well);
    }
    const CXmlModuleData& data = Written();
    ASSERT_EQ(data.equipment.GetSize(), names.size() + 1);
    for (std::size_t k = 0; k < names.size(); ++k) {
        const CXmlEquipmentItem& item = *data.equipment.GetAt(k + 1);
        EXPECT_EQ(item.label, names[k]);
        EXPECT_EQ(item.variables.GetAt(0)->tags.GetAt(0)->tag, "WELL[{" + names[k] + "}].Label");
    }
}

}  // namespace
}  // namespace rivulet
