// A small write-side XML tree: elements, attributes, processing instructions and comments, built under a
// document by construction alone and written out with tab indentation. Reading goes through CSerializeXML.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "dataserver/ExtCollection.h"

namespace rivulet {

class CXMLDocument;

class CXMLElement {
  public:
    enum Kind : std::int32_t { kElement = 0, kAttribute = 1, kInstruction = 2, kComment = 3, kDocument = 4 };
    enum ValueType : std::int32_t { kText = 0, kInteger = 1, kBoolean = 2, kReal = 3 };

    // Each constructor adds the new object to `parent` at once, when there is one; the parent owns it from
    // then on.
    CXMLElement(CXMLElement* parent, const std::string& name, const std::string& value = {});
    CXMLElement(CXMLElement* parent, Kind kind, const std::string& name, const std::string& value,
                ValueType type = kText);
    // A literal is text, not the boolean it would otherwise convert to.
    CXMLElement(CXMLElement* parent, Kind kind, const std::string& name, const char* value,
                ValueType type = kText)
        : CXMLElement(parent, kind, name, std::string(value != nullptr ? value : ""), type) {}
    // A boolean value, held as "true" or "false".
    CXMLElement(CXMLElement* parent, Kind kind, const std::string& name, bool value);
    CXMLElement(const CXMLElement&) = delete;
    CXMLElement& operator=(const CXMLElement&) = delete;
    virtual ~CXMLElement() = default;

    // The creation time text of the document at the top of the parents; empty without one.
    virtual std::string CreationTime() const;
    virtual void ReservedHook() {}
    virtual void Write(std::ostream& out, CXMLDocument& document, bool indent) const;
    // Takes `object` over: an attribute joins the attributes, anything else the children.
    virtual void Add(CXMLElement* object);

    // The index of the first child element (kind 0) named `name` from `start` on, or -1.
    int FindChild(const std::string& name, int start = 0, bool ignoreCase = false) const;
    // The child element named `name` that follows child `after`, or -1.
    int NextSibling(int after, const std::string& name) const { return FindChild(name, after + 1); }
    // The last attribute named exactly `name`, or null.
    const CXMLElement* FindAttribute(const std::string& name) const;
    // Takes `object` over and puts it among the children before or after child `index`, clamped to the list.
    void InsertChild(CXMLElement* object, int index, bool after);
    // Typed reads of an attribute: false when it is missing or holds another value type.
    bool GetAttribute(const std::string& name, std::int32_t& out) const;
    bool GetAttribute(const std::string& name, double& out) const;
    bool GetAttribute(const std::string& name, std::string& out) const;
    bool GetAttribute(const std::string& name, bool& out) const;
    // The attribute "xsi:schemaLocation": the WITSML 1.3.1 namespace, a blank, the document's schema path
    // when it asks for it, and `fileName`.
    void AddSchemaLocation(const std::string& fileName);

    Kind kind;
    ValueType valueType;
    CXMLElement* parent = nullptr;
    std::string name;
    std::string value;
    CExtCollection<CXMLElement> children;
    CExtCollection<CXMLElement> attributes;

  protected:
    const CXMLDocument* TopDocument() const;
};

class CXMLDocument : public CXMLElement {
  public:
    // Stamped with the current time; its first child is the XML declaration.
    CXMLDocument();

    using CXMLElement::Write;

    virtual void ReservedDocumentHook() {}
    virtual void ReservedDocumentHook2() {}
    // Writes the document to `path`. False, with "Cannot write to file '<path>'" in `error`, when the file
    // cannot be opened; false without a text when writing fails after that.
    virtual bool Save(const std::string& path, std::string& error);
    // Writes every child at depth 0 with indentation; false when the stream is, or goes, bad.
    virtual bool Write(std::ostream& out, bool indent = true);

    // The tabs of the present depth: at most 127, and none from a depth of 128 on or without `indent`.
    const char* IndentText(bool indent) const;

    std::string creationTime;
    std::int32_t indentDepth = 0;
    bool useSchemaPath = false;
    std::string schemaPath;
};

// The text as the document carries it: escaped (the five entities) and made UTF-8 for `outward`; with only
// `entities`, the five entities turned back into characters; with neither, the text as it is.
std::string EncodeXmlText(const std::string& text, bool outward, bool entities);

// A day count as "2024-05-01T13:45:00.000Z"; the empty text for a date that cannot be written.
std::string FormatXmlDate(double days);
// The reverse; 3.4e35 for a text that does not fit.
double ParseXmlDate(const std::string& text);

}  // namespace rivulet
