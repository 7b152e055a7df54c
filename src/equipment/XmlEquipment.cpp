#include "equipment/XmlEquipment.h"

#include <exception>

#include "common/Trim.h"
#include "equipment/XMLDocument.h"

namespace rivulet {

namespace {

using Element = CXMLElement;

Element* Text(Element* parent, const char* name, const std::string& value) {
    return new Element(parent, name, value);
}

void Flag(Element* parent, const char* name, bool value) {
    new Element(parent, Element::kElement, name, value);
}

// Children and parents are written by label and type alone.
void Relatives(Element* parent, const char* listName, const char* itemName,
               const CExtCollection<CXmlEquipmentItem>& items) {
    Element* list = new Element(parent, listName);
    for (std::size_t k = 0; k < items.GetSize(); ++k) {
        Element* relative = new Element(list, itemName);
        Text(relative, "Label", items.GetAt(k)->label);
        Text(relative, "Type", items.GetAt(k)->type);
    }
}

void Variables(Element* parent, const CExtCollection<CXmlEquipmentVariable>& variables) {
    Element* list = new Element(parent, "Variables");
    for (std::size_t k = 0; k < variables.GetSize(); ++k) {
        const CXmlEquipmentVariable& variable = *variables.GetAt(k);
        Element* item = new Element(list, "VariableItem");
        Text(item, "Label", variable.label);
        Text(item, "Unit", variable.unit);
        Flag(item, "Writeable", variable.writeable);
        for (std::size_t t = 0; t < variable.tags.GetSize(); ++t) {
            Element* ts = new Element(item, "TS");
            Text(ts, "Tag", variable.tags.GetAt(t)->tag);
            Text(ts, "Qualifier", variable.tags.GetAt(t)->qualifier);
        }
    }
}

void EquipmentItem(Element* element, const CXmlEquipmentItem& item) {
    Text(element, "Label", item.label);
    Text(element, "Type", item.type);
    Text(element, "SubType", item.subType);
    Relatives(element, "Children", "Child", item.children);
    Relatives(element, "Parents", "Parent", item.parents);
    Variables(element, item.variables);
}

// "Equipment" builds the elements of one item at a time while it is written, so that a model of ten
// thousand wells never holds the elements of its whole document (some two million) at once. The bytes are
// those of the element with all its items as children.
class EquipmentElement : public Element {
  public:
    EquipmentElement(Element* parent, const CExtCollection<CXmlEquipmentItem>& items)
        : Element(parent, "Equipment"), items_(items) {}

    void Write(std::ostream& out, CXMLDocument& document, bool indent) const override {
        if (items_.IsEmpty()) {
            Element::Write(out, document, indent);
            return;
        }
        out << document.IndentText(indent) << '<' << name << ">\n";
        ++document.indentDepth;
        for (std::size_t k = 0; k < items_.GetSize(); ++k) {
            Element element(nullptr, "EquipmentItem");
            element.parent = const_cast<EquipmentElement*>(this);
            EquipmentItem(&element, *items_.GetAt(k));
            element.Write(out, document, true);
        }
        --document.indentDepth;
        out << document.IndentText(indent) << "</" << name << ">\n";
    }

  private:
    const CExtCollection<CXmlEquipmentItem>& items_;
};

void ModuleData(Element* parent, const CXmlModuleData& data) {
    Element* element = new Element(parent, "ModuleDataItem");
    Text(element, "Alias", data.alias);
    Text(element, "Application", data.application);
    Flag(element, "IsLocal", data.isLocal);
    Text(element, "Description", data.description);
    Text(element, "Share", data.share);
    Text(element, "UniqueId", data.uniqueId);
    Element* system = Text(element, "System", data.system);
    if (!data.systemType.empty()) new Element(system, Element::kAttribute, "SystemType", data.systemType);
    new EquipmentElement(element, data.equipment);
}

}  // namespace

EquipVarSpec::EquipVarSpec(const std::string& name, const std::string& variableTag,
                           const std::string& unitWord, bool canWrite)
    : displayName(Trimmed(name)), tag(Trimmed(variableTag)), unit(Trimmed(unitWord)), writeable(canWrite) {}

CXmlEquipmentVariable* AddVariable(CXmlEquipmentItem& item, const EquipVarSpec& row, const std::string& tag,
                                   const std::string& qualifier) {
    auto* variable = new CXmlEquipmentVariable;
    variable->label = row.displayName;
    variable->unit = row.unit;
    variable->writeable = row.writeable;
    variable->tags.Add(new CXmlVariableTSTag{tag, qualifier});
    item.variables.Add(variable);
    return variable;
}

bool WriteModelXml(const CXmlModel& model, const std::string& path, std::string& error) {
    try {
        CXMLDocument document;
        Element* root = new Element(&document, "Model");
        new Element(root, Element::kAttribute, "xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
        new Element(root, Element::kAttribute, "xmlns:xsd", "http://www.w3.org/2001/XMLSchema");
        new Element(root, Element::kAttribute, "version", kModelDocumentVersion);
        Text(root, "Filename", model.fileName);
        Element* modules = new Element(root, "Modules");
        for (std::size_t k = 0; k < model.modules.GetSize(); ++k) {
            const CXmlModule& module = *model.modules.GetAt(k);
            Element* item = new Element(modules, "ModuleItem");
            Text(item, "Filename", module.fileName);
            Element* data = new Element(item, "Data");
            for (std::size_t d = 0; d < module.data.GetSize(); ++d) ModuleData(data, *module.data.GetAt(d));
        }
        return document.Save(path, error);
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
}

}  // namespace rivulet
