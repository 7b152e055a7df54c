#include "equipment/XMLDocument.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string_view>

#include "platform/OleDate.h"

namespace rivulet {

namespace {

constexpr int kMaxTabs = 127;
constexpr double kNoValue = 3.4e35;
constexpr const char* kWitsmlNamespace = "http://www.witsml.org/schemas/131";
// Day count of 1 January 1970.
constexpr double kUnixEpochDays = 25569.0;

struct Entity {
    char character;
    std::string_view text;
};

constexpr std::array<Entity, 5> kEntities = {{
    {'"', "&quot;"},
    {'\'', "&apos;"},
    {'&', "&amp;"},
    {'<', "&lt;"},
    {'>', "&gt;"},
}};

std::string Escape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto entity = std::find_if(kEntities.begin(), kEntities.end(),
                                         [c](const Entity& e) { return e.character == c; });
        if (entity != kEntities.end()) {
            out += entity->text;
        } else {
            out += c;
        }
    }
    return out;
}

// From the first "&" on, each of the five entities becomes its character; any other "&" stays.
std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto entity = text[at] != '&'
                                ? kEntities.end()
                                : std::find_if(kEntities.begin(), kEntities.end(), [&](const Entity& e) {
                                      return text.substr(at, e.text.size()) == e.text;
                                  });
        if (entity != kEntities.end()) {
            out += entity->character;
            at += entity->text.size();
        } else {
            out += text[at++];
        }
    }
    return out;
}

void AppendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// The length of the well-formed UTF-8 sequence at `at` (no overlong forms, surrogates or code points past
// U+10FFFF), or 0.
std::size_t Utf8Length(std::string_view text, std::size_t at, char32_t& code) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[at + k]); };
    const unsigned char lead = byte(0);
    std::size_t length = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
        code = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        length = 2, code = lead & 0x1F, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, code = lead & 0x0F, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, code = lead & 0x07, minimum = 0x10000;
    } else {
        return 0;
    }
    if (at + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(k) & 0xC0) != 0x80) return 0;
        code = (code << 6) | (byte(k) & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
    return length;
}

// Text is UTF-8 already here. A byte that starts no well-formed sequence is taken as Latin-1, and a control
// character that XML cannot carry becomes U+FFFD, so that the document always parses.
std::string ToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        char32_t code = 0;
        std::size_t length = Utf8Length(text, at, code);
        if (length == 0) {
            code = static_cast<unsigned char>(text[at]);
            length = 1;
        }
        const bool control = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
        if (control || code == 0xFFFE || code == 0xFFFF) code = 0xFFFD;
        if (length > 1 && code != 0xFFFD) {
            out.append(text.substr(at, length));
        } else {
            AppendUtf8(out, code);
        }
        at += length;
    }
    return out;
}

void LineEnd(std::ostream& out) {
    out << '\n';
}

}  // namespace

std::string EncodeXmlText(const std::string& text, bool outward, bool entities) {
    if (outward) return ToUtf8(entities ? Escape(text) : text);
    return entities ? Unescape(text) : text;
}

std::string FormatXmlDate(double days) {
    const OleDate date = OleDate::FromDays(days);
    const std::string day = date.Format("%Y-%m-%dT");
    if (day.empty()) return {};
    return day + date.Format("%H:%M:%S.000Z");
}

double ParseXmlDate(const std::string& text) {
    CalendarTime time;
    char tail = 0;
    if (std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d.000Z%c", &time.year, &time.month, &time.day, &time.hour,
                    &time.minute, &time.second, &tail) != 6) {
        return kNoValue;
    }
    const OleDate date = OleDate::FromCalendar(time);
    return date.IsValid() ? date.Days() : kNoValue;
}

// ---- CXMLElement ----

CXMLElement::CXMLElement(CXMLElement* parentObject, const std::string& elementName, const std::string& text)
    : CXMLElement(parentObject, kElement, elementName, text) {}

CXMLElement::CXMLElement(CXMLElement* parentObject, Kind objectKind, const std::string& objectName,
                         const std::string& text, ValueType type)
    : kind(objectKind), valueType(type), name(objectName), value(text) {
    if (parentObject != nullptr) parentObject->Add(this);
}

CXMLElement::CXMLElement(CXMLElement* parentObject, Kind objectKind, const std::string& objectName, bool flag)
    : CXMLElement(parentObject, objectKind, objectName, flag ? "true" : "false", kBoolean) {}

const CXMLDocument* CXMLElement::TopDocument() const {
    const CXMLElement* top = this;
    while (top->parent != nullptr) top = top->parent;
    return top->kind == kDocument ? static_cast<const CXMLDocument*>(top) : nullptr;
}

std::string CXMLElement::CreationTime() const {
    const CXMLDocument* document = TopDocument();
    return document != nullptr ? document->creationTime : std::string();
}

void CXMLElement::Add(CXMLElement* object) {
    object->parent = this;
    (object->kind == kAttribute ? attributes : children).Add(object);
}

int CXMLElement::FindChild(const std::string& childName, int start, bool ignoreCase) const {
    for (std::size_t k = static_cast<std::size_t>(std::max(start, 0)); k < children.GetSize(); ++k) {
        const CXMLElement* child = children.GetAt(k);
        if (child->kind != kElement) continue;
        const bool same =
            ignoreCase ? strcasecmp(child->name.c_str(), childName.c_str()) == 0 : child->name == childName;
        if (same) return static_cast<int>(k);
    }
    return -1;
}

const CXMLElement* CXMLElement::FindAttribute(const std::string& attributeName) const {
    for (std::size_t k = attributes.GetSize(); k-- > 0;) {
        const CXMLElement* attribute = attributes.GetAt(k);
        if (attribute->kind == kAttribute && attribute->name == attributeName) return attribute;
    }
    return nullptr;
}

void CXMLElement::InsertChild(CXMLElement* object, int index, bool after) {
    object->parent = this;
    const int size = static_cast<int>(children.GetSize());
    const int at = std::clamp(index + (after ? 1 : 0), 0, size);
    children.InsertAt(static_cast<std::size_t>(at), object);
}

bool CXMLElement::GetAttribute(const std::string& attributeName, std::int32_t& out) const {
    const CXMLElement* attribute = FindAttribute(attributeName);
    if (attribute == nullptr || attribute->valueType != kInteger) return false;
    out = static_cast<std::int32_t>(std::strtol(attribute->value.c_str(), nullptr, 10));
    return true;
}

bool CXMLElement::GetAttribute(const std::string& attributeName, double& out) const {
    const CXMLElement* attribute = FindAttribute(attributeName);
    if (attribute == nullptr || attribute->valueType != kReal) return false;
    out = std::strtod(attribute->value.c_str(), nullptr);
    return true;
}

bool CXMLElement::GetAttribute(const std::string& attributeName, std::string& out) const {
    const CXMLElement* attribute = FindAttribute(attributeName);
    if (attribute == nullptr || attribute->valueType != kText) return false;
    out = attribute->value;
    return true;
}

bool CXMLElement::GetAttribute(const std::string& attributeName, bool& out) const {
    const CXMLElement* attribute = FindAttribute(attributeName);
    if (attribute == nullptr || attribute->valueType != kBoolean) return false;
    out = strcasecmp(attribute->value.c_str(), "true") == 0;
    return true;
}

void CXMLElement::AddSchemaLocation(const std::string& fileName) {
    const CXMLDocument* document = TopDocument();
    std::string location = std::string(kWitsmlNamespace) + " ";
    if (document != nullptr && document->useSchemaPath) location += document->schemaPath;
    new CXMLElement(this, kAttribute, "xsi:schemaLocation", location + fileName);
}

void CXMLElement::Write(std::ostream& out, CXMLDocument& document, bool indent) const {
    switch (kind) {
        case kAttribute:
            out << document.IndentText(indent) << name << "=\""
                << (valueType == kText ? EncodeXmlText(value, true, true) : value) << '"';
            return;
        case kInstruction:
            out << document.IndentText(indent) << "<?" << EncodeXmlText(value, true, false) << "?>";
            LineEnd(out);
            return;
        case kComment:
            out << document.IndentText(indent) << "<!-- " << EncodeXmlText(value, true, false) << " -->";
            LineEnd(out);
            return;
        default:
            break;
    }
    out << document.IndentText(indent) << '<' << name;
    const bool hasChildren = !children.IsEmpty();
    if (hasChildren) ++document.indentDepth;
    const std::size_t attributeCount = attributes.GetSize();
    for (std::size_t k = 0; k < attributeCount; ++k) {
        // Every fourth attribute starts a line of its own; a long list is indented.
        if ((k + 1) % 4 == 0) {
            LineEnd(out);
        } else {
            out << ' ';
        }
        attributes.GetAt(k)->Write(out, document, attributeCount > 5);
    }
    if (hasChildren || !value.empty()) out << '>';
    if (hasChildren) {
        LineEnd(out);
        for (std::size_t k = 0; k < children.GetSize(); ++k) children.GetAt(k)->Write(out, document, true);
        --document.indentDepth;
        out << document.IndentText(indent);
    } else if (value.empty()) {
        out << " />";
        LineEnd(out);
        return;
    }
    out << EncodeXmlText(value, true, true) << "</" << name << '>';
    LineEnd(out);
}

// ---- CXMLDocument ----

CXMLDocument::CXMLDocument() : CXMLElement(nullptr, kDocument, "", "") {
    creationTime = FormatXmlDate(kUnixEpochDays + static_cast<double>(std::time(nullptr)) / 86400.0);
    new CXMLElement(this, kInstruction, "", "xml version=\"1.0\" encoding=\"UTF-8\"");
}

const char* CXMLDocument::IndentText(bool indent) const {
    static const std::string tabs(kMaxTabs, '\t');
    const int depth = std::min(indentDepth, kMaxTabs + 1);
    if (!indent || depth < 1 || depth > kMaxTabs) return "";
    return tabs.c_str() + (kMaxTabs - depth);
}

bool CXMLDocument::Write(std::ostream& out, bool indent) {
    if (!out) return false;
    indentDepth = 0;
    for (std::size_t k = 0; k < children.GetSize(); ++k) children.GetAt(k)->Write(out, *this, indent);
    out.flush();
    return static_cast<bool>(out);
}

bool CXMLDocument::Save(const std::string& path, std::string& error) {
    std::ofstream file(path, std::ios::out | std::ios::trunc | std::ios::binary);
    if (!file) {
        error = "Cannot write to file '" + path + "'";
        return false;
    }
    return Write(file, true);
}

}  // namespace rivulet
