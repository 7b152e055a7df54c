#include "equipment/SerializeXML.h"

#include <strings.h>

#include <cstdlib>

#include "equipment/XMLDocument.h"

namespace rivulet {

namespace {

void ReadRelatives(pugi::xml_node list, const char* itemName, CExtCollection<CXmlEquipmentItem>& items) {
    for (pugi::xml_node node : list.children(itemName)) {
        auto* item = new CXmlEquipmentItem;
        item->label = CSerializeXML::ChildText(node, "Label");
        item->type = CSerializeXML::ChildText(node, "Type");
        items.Add(item);
    }
}

void ReadVariables(pugi::xml_node list, CExtCollection<CXmlEquipmentVariable>& variables) {
    for (pugi::xml_node node : list.children("VariableItem")) {
        auto* variable = new CXmlEquipmentVariable;
        variable->label = CSerializeXML::ChildText(node, "Label");
        variable->unit = CSerializeXML::ChildText(node, "Unit");
        variable->writeable = CSerializeXML::ChildBool(node, "Writeable");
        for (pugi::xml_node ts : node.children("TS")) {
            variable->tags.Add(new CXmlVariableTSTag{CSerializeXML::ChildText(ts, "Tag"),
                                                     CSerializeXML::ChildText(ts, "Qualifier")});
        }
        variables.Add(variable);
    }
}

void ReadModuleData(pugi::xml_node node, CXmlModule& module) {
    auto* data = new CXmlModuleData;
    module.data.Add(data);
    data->alias = CSerializeXML::ChildText(node, "Alias");
    data->application = CSerializeXML::ChildText(node, "Application");
    data->isLocal = CSerializeXML::ChildBool(node, "IsLocal");
    data->description = CSerializeXML::ChildText(node, "Description");
    data->share = CSerializeXML::ChildText(node, "Share");
    data->uniqueId = CSerializeXML::ChildText(node, "UniqueId");
    data->system = CSerializeXML::ChildText(node, "System");
    data->systemType = node.child("System").attribute("SystemType").value();
    for (pugi::xml_node itemNode : node.child("Equipment").children("EquipmentItem")) {
        auto* item = new CXmlEquipmentItem;
        data->equipment.Add(item);
        item->label = CSerializeXML::ChildText(itemNode, "Label");
        item->type = CSerializeXML::ChildText(itemNode, "Type");
        item->subType = CSerializeXML::ChildText(itemNode, "SubType");
        ReadRelatives(itemNode.child("Parents"), "Parent", item->parents);
        ReadRelatives(itemNode.child("Children"), "Child", item->children);
        ReadVariables(itemNode.child("Variables"), item->variables);
    }
}

}  // namespace

bool CSerializeXML::SaveToFile(const std::string& path) {
    document_.reset();
    if (!OnSave(document_)) return false;
    return document_.save_file(path.c_str(), "\t", pugi::format_default, pugi::encoding_utf8);
}

bool CSerializeXML::Loaded(const pugi::xml_parse_result& result) {
    root_ = pugi::xml_node();
    loadError_.clear();
    if (!result) {
        loadError_ = std::string(result.description()) + " at offset " + std::to_string(result.offset);
        return false;
    }
    root_ = document_.document_element();
    if (dump_) DumpNode(root_, 0);
    return OnLoad(root_);
}

bool CSerializeXML::LoadFromFile(const std::string& path) {
    document_.reset();
    return Loaded(document_.load_file(path.c_str()));
}

bool CSerializeXML::LoadFromText(const std::string& text) {
    document_.reset();
    return Loaded(document_.load_buffer(text.data(), text.size()));
}

void CSerializeXML::DumpNode(pugi::xml_node node, int depth) {
    buffer_ += std::string(static_cast<std::size_t>(depth), '\t') + NodeTypeName(node.type()) + " " +
               node.name() + "\n";
    for (pugi::xml_node child : node.children()) DumpNode(child, depth + 1);
}

const char* CSerializeXML::NodeTypeName(pugi::xml_node_type type) {
    switch (type) {
        case pugi::node_element:
            return "ELEMENT";
        case pugi::node_pcdata:
            return "TEXT";
        case pugi::node_cdata:
            return "CDATA_SECTION";
        case pugi::node_pi:
        case pugi::node_declaration:
            return "PROCESSING_INSTRUCTION";
        case pugi::node_comment:
            return "COMMENT";
        case pugi::node_document:
            return "DOCUMENT";
        case pugi::node_doctype:
            return "DOCUMENT_TYPE";
        default:
            return "INVALID";
    }
}

std::string CSerializeXML::ChildText(pugi::xml_node node, const char* name) {
    return node.child(name).text().as_string();
}

bool CSerializeXML::ChildBool(pugi::xml_node node, const char* name) {
    return strcasecmp(node.child(name).text().as_string(), "true") == 0;
}

double CSerializeXML::ChildDate(pugi::xml_node node, const char* name) {
    return ParseXmlDate(ChildText(node, name));
}

bool CModelXmlReader::OnLoad(pugi::xml_node root) {
    model_.fileName.clear();
    model_.modules.RemoveAll();
    if (std::string(root.name()) != "Model") return false;
    version_ = VersionRecord::FromText(root.attribute("version").value());
    model_.fileName = ChildText(root, "Filename");
    for (pugi::xml_node moduleNode : root.child("Modules").children("ModuleItem")) {
        auto* module = new CXmlModule;
        model_.modules.Add(module);
        module->fileName = ChildText(moduleNode, "Filename");
        for (pugi::xml_node data : moduleNode.child("Data").children("ModuleDataItem"))
            ReadModuleData(data, *module);
    }
    return true;
}

}  // namespace rivulet
