// The reading side of the XML layer, over pugixml: load a document from a file or text and hand its root to
// OnLoad; or have OnSave fill a new document and save it. CModelXmlReader reads a Model document back into
// the equipment tree. No driver operation calls it (Conflux reads the document); it keeps the two sides of
// the format together, and the tests read what the writer wrote with it.
#pragma once

#include <pugixml.hpp>

#include <cstdint>
#include <string>

#include "common/VersionRecord.h"
#include "equipment/XmlEquipment.h"

namespace rivulet {

class CSerializeXML {
  public:
    CSerializeXML() = default;
    CSerializeXML(const CSerializeXML&) = delete;
    CSerializeXML& operator=(const CSerializeXML&) = delete;
    virtual ~CSerializeXML() = default;

    // A new document filled by OnSave, saved to `path`.
    virtual bool SaveToFile(const std::string& path);
    // A new document from the file or the text; its root element goes to OnLoad, whose answer is the result.
    // False, with the parser's reason in LoadError(), when the text is not well-formed XML.
    virtual bool LoadFromFile(const std::string& path);
    virtual bool LoadFromText(const std::string& text);
    virtual bool OnSave(pugi::xml_node root) {
        (void)root;
        return true;
    }
    virtual bool OnLoad(pugi::xml_node root) {
        (void)root;
        return true;
    }
    // Appends a line per node (its type and name, indented by depth) to the dump text, and its children one
    // level deeper.
    virtual void DumpNode(pugi::xml_node node, int depth);
    virtual void SetDumpFlag(bool flag) { dump_ = flag; }

    const std::string& DumpText() const { return buffer_; }
    const std::string& LoadError() const { return loadError_; }

    // The DOM's words for a node type: "ELEMENT", "TEXT", "PROCESSING_INSTRUCTION", ...
    static const char* NodeTypeName(pugi::xml_node_type type);
    // Named child elements read as text, boolean ("true" in any case) or date (3.4e35 when it does not fit);
    // the empty text or false when missing.
    static std::string ChildText(pugi::xml_node node, const char* name);
    static bool ChildBool(pugi::xml_node node, const char* name);
    static double ChildDate(pugi::xml_node node, const char* name);

  protected:
    bool Loaded(const pugi::xml_parse_result& result);

    std::string buffer_;
    bool dump_ = false;
    pugi::xml_document document_;
    pugi::xml_node root_;
    std::string loadError_;
};

// Reads a Model document into `model`, which it empties first; `version` gets the root's "version".
class CModelXmlReader : public CSerializeXML {
  public:
    explicit CModelXmlReader(CXmlModel& model) : model_(model) {}

    bool OnLoad(pugi::xml_node root) override;
    const VersionRecord& Version() const { return version_; }

  private:
    CXmlModel& model_;
    VersionRecord version_;
};

}  // namespace rivulet
