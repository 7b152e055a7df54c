// Arbitrary bytes as an element's text and as a text attribute: the written document must always parse, and
// give back the text, made UTF-8, unchanged. Anything else is a finding.
#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "equipment/XMLDocument.h"

using namespace rivulet;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CXMLDocument document;
    CXMLElement* root = new CXMLElement(&document, "Model");
    new CXMLElement(root, CXMLElement::kAttribute, "name", text);
    new CXMLElement(root, "Label", text);
    std::ostringstream out;
    if (!document.Write(out)) __builtin_trap();

    pugi::xml_document parsed;
    const std::string xml = out.str();
    // Escapes only: no end-of-line or attribute white-space normalisation, and white space kept as text.
    if (!parsed.load_buffer(xml.data(), xml.size(), pugi::parse_escapes | pugi::parse_ws_pcdata))
        __builtin_trap();
    const std::string expected = EncodeXmlText(text, true, false);
    const pugi::xml_node model = parsed.child("Model");
    if (model.attribute("name").value() != expected) __builtin_trap();
    if (model.child("Label").text().as_string() != expected) __builtin_trap();
    return 0;
}
