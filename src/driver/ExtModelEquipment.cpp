// The equipment description that ExtEquipXml writes: one module for the case, the field, and each well with
// the variables Conflux may read and write by access string.
#include <string>
#include <unordered_set>

#include "driver/ExtModel.h"
#include "equipment/EquipmentTables.h"
#include "equipment/XmlEquipment.h"

namespace rivulet {

namespace {

const char* WellSubType(const WellData& well) {
    if (well.IsProducer()) return "Production";
    if (!well.IsInjector()) return "Unknown";
    if (well.injectionPhase == kPhaseGas) return "Gas Injection";
    if (well.injectionPhase == kPhaseWater) return "Water Injection";
    return "Injection";
}

CXmlEquipmentItem* AddItem(CXmlModuleData& data, const std::string& label, const char* type,
                           const char* subType) {
    auto* item = new CXmlEquipmentItem;
    item->label = label;
    item->type = type;
    item->subType = subType;
    data.equipment.Add(item);
    return item;
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

}  // namespace

std::int32_t CExtModel::GetEquipment(CXmlModel* model, bool noVariables,
                                     const std::vector<std::string>& wellFilter) {
    if (model == nullptr) return 0;
    // Conflux asks while no step runs; the lock keeps a simulator start on another thread from replacing
    // the wells under the walk.
    Guard lock(Lock);
    model->fileName = Settings.FileName;
    auto* module = new CXmlModule;
    module->fileName = model->fileName;
    model->modules.Add(module);
    auto* data = new CXmlModuleData;
    data->application = "tNavigator";
    data->description = "tNavigator simulation data file";
    data->alias = Alias;
    data->isLocal = Settings.IsLocalMachine;
    data->share = Settings.WindowsEquivDir;
    module->data.Add(data);
    if (!Reservoir) return 0;

    const TNavUnitSystem& units = Reservoir->units;
    CXmlEquipmentItem* field = AddItem(*data, "Field", "Field", "Field");
    for (const EquipVarSpec& row : FieldVariableTable(units))
        AddVariable(*field, row, "FIELD." + row.tag, "");

    const std::vector<EquipVarSpec> wellTable = WellVariableTable(units);
    const std::vector<EquipVarSpec> componentTable = ComponentVariableTable(units);
    const std::vector<std::string>& components = Reservoir->fluid.hcNames;
    const std::unordered_set<std::string> wanted(wellFilter.begin(), wellFilter.end());
    for (const WellData& well : Reservoir->wells) {
        if (!wanted.empty() && wanted.count(well.name) == 0) continue;
        CXmlEquipmentItem* item = AddItem(*data, well.name, "Well", WellSubType(well));
        if (noVariables) continue;
        const std::string prefix = "WELL[{" + well.name + "}].";
        for (const EquipVarSpec& row : wellTable) AddVariable(*item, row, prefix + row.tag, "");
        for (const EquipVarSpec& row : componentTable) {
            CXmlEquipmentVariable* variable = nullptr;
            for (const std::string& component : components) {
                std::string tag = prefix + row.tag;
                ReplaceAll(tag, "?", component);
                if (variable == nullptr) {
                    variable = AddVariable(*item, row, tag, component);
                } else {
                    variable->tags.Add(new CXmlVariableTSTag{tag, component});
                }
            }
        }
    }
    return 0;
}

}  // namespace rivulet
