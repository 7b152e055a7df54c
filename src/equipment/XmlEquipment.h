// The equipment description that Conflux browses: a model of modules, each module's data with its
// equipment items (the field and the wells), and each item's variables with their access strings. A driver
// fills the tree; WriteModelXml turns it into the Model document.
#pragma once

#include <string>

#include "dataserver/ExtCollection.h"

namespace rivulet {

// The Model document's version, whatever the driver's own is.
inline constexpr const char* kModelDocumentVersion = "1.0.0";

// One access string of a variable (without the driver's root) and what it qualifies, such as a component.
struct CXmlVariableTSTag {
    std::string tag;
    std::string qualifier;
};

class CXmlEquipmentVariable : public CExtCollectionObject {
  public:
    std::string label;
    std::string unit;
    bool writeable = false;
    CExtCollection<CXmlVariableTSTag> tags;
};

class CXmlEquipmentItem : public CExtCollectionObject {
  public:
    std::string label;
    std::string type;
    std::string subType;
    CExtCollection<CXmlEquipmentItem> children;  // written by label and type alone
    CExtCollection<CXmlEquipmentItem> parents;
    CExtCollection<CXmlEquipmentVariable> variables;
};

class CXmlModuleData : public CExtCollectionObject {
  public:
    std::string application;
    std::string alias;
    bool isLocal = false;
    std::string description;
    std::string share;
    std::string uniqueId;
    std::string system;
    std::string systemType;
    CExtCollection<CXmlEquipmentItem> equipment;
};

class CXmlModule : public CExtCollectionObject {
  public:
    std::string fileName;
    CExtCollection<CXmlModuleData> data;
};

class CXmlModel {
  public:
    std::string fileName;
    CExtCollection<CXmlModule> modules;
};

// One published variable: display name, tag behind the item's prefix, unit word, writeable. All four texts
// are trimmed.
struct EquipVarSpec {
    EquipVarSpec(const std::string& displayName, const std::string& tag, const std::string& unit,
                 bool writeable);

    std::string displayName;
    std::string tag;
    std::string unit;
    bool writeable;
};

// Adds the variable of a published row to `item` with one tag and its qualifier.
CXmlEquipmentVariable* AddVariable(CXmlEquipmentItem& item, const EquipVarSpec& row, const std::string& tag,
                                   const std::string& qualifier);

// Writes the Model document of `model` to `path`. False when the file cannot be opened (the reason in
// `error`) or anything fails while it is written.
bool WriteModelXml(const CXmlModel& model, const std::string& path, std::string& error);

}  // namespace rivulet
