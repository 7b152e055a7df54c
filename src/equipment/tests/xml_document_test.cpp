// The XML write layer: the exact bytes of a document, escaping and encoding, indentation limits, lookups,
// dates, and a file that cannot be written.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "equipment/XMLDocument.h"

namespace rivulet {
namespace {

using E = CXMLElement;

TEST(XmlDocument, WritesTheExactBytes) {
    CXMLDocument document;
    E* root = new E(&document, "Root");
    new E(root, E::kAttribute, "a", "R&D \"x\"");         // text: escaped
    new E(root, E::kAttribute, "n", "R&D", E::kInteger);  // any other type: as it stands
    new E(root, "Leaf", "R&D \"x\"");
    new E(root, "Empty");
    new E(root, E::kComment, "", "note & more");
    E* five = new E(root, "Five");
    E* six = new E(root, "Six");
    for (int k = 1; k <= 6; ++k) {
        if (k <= 5) new E(five, E::kAttribute, "a" + std::to_string(k), std::to_string(k));
        new E(six, E::kAttribute, "a" + std::to_string(k), std::to_string(k));
    }
    std::ostringstream out;
    ASSERT_TRUE(document.Write(out));
    // Every fourth attribute starts a line; more than five are each indented.
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Root a=\"R&amp;D &quot;x&quot;\" n=\"R&D\">\n"
              "\t<Leaf>R&amp;D &quot;x&quot;</Leaf>\n"
              "\t<Empty />\n"
              "\t<!-- note & more -->\n"
              "\t<Five a1=\"1\" a2=\"2\" a3=\"3\"\na4=\"4\" a5=\"5\" />\n"
              "\t<Six \ta1=\"1\" \ta2=\"2\" \ta3=\"3\"\n\ta4=\"4\" \ta5=\"5\" \ta6=\"6\" />\n"
              "</Root>\n");

    document.indentDepth = 127;
    EXPECT_EQ(std::string(document.IndentText(true)), std::string(127, '\t'));
    EXPECT_STREQ(document.IndentText(false), "");
    document.indentDepth = 200;
    EXPECT_STREQ(document.IndentText(true), "");
}

TEST(XmlDocument, TextIsEscapedAndMadeUtf8) {
    const struct {
        const char* text;
        bool outward, entities;
        const char* expected;
    } rows[] = {
        {"a<b>'c'&d", true, true, "a&lt;b&gt;&apos;c&apos;&amp;d"},
        {"a<b", true, false, "a<b"},
        {"\xC3\xA9t\xC3\xA9", true, true, "\xC3\xA9t\xC3\xA9"},  // UTF-8 passes
        {"caf\xE9", true, true, "caf\xC3\xA9"},                  // a Latin-1 byte is converted
        {"a\x01z", true, true, "a\xEF\xBF\xBDz"},                // XML cannot carry it
        {"&amp;lt; &foo; &quot;", false, true, "&lt; &foo; \""},
        {"&amp;", false, false, "&amp;"},
    };
    for (const auto& row : rows) EXPECT_EQ(EncodeXmlText(row.text, row.outward, row.entities), row.expected);

    EXPECT_EQ(FormatXmlDate(45000.5), "2023-03-15T12:00:00.000Z");
    EXPECT_DOUBLE_EQ(ParseXmlDate("2023-03-15T12:00:00.000Z"), 45000.5);
    EXPECT_EQ(ParseXmlDate("15/03/2023"), 3.4e35);
}

TEST(XmlDocument, LookupsFindByKindNameAndValueType) {
    E parent(nullptr, "P");
    new E(&parent, E::kComment, "A", "not an element");
    new E(&parent, "a");
    new E(&parent, "A");
    new E(&parent, E::kAttribute, "n", "7", E::kInteger);
    new E(&parent, E::kAttribute, "n", "8", E::kInteger);  // the last of a name is found
    new E(&parent, E::kAttribute, "on", true);
    EXPECT_EQ(parent.FindChild("A"), 2);
    EXPECT_EQ(parent.FindChild("A", 0, true), 1);
    EXPECT_EQ(parent.NextSibling(1, "a"), -1);
    parent.InsertChild(new E(nullptr, "first"), -5, false);
    EXPECT_EQ(parent.FindChild("first"), 0);

    std::int32_t number = 0;
    bool flag = false;
    std::string text;
    EXPECT_TRUE(parent.GetAttribute("n", number));
    EXPECT_EQ(number, 8);
    EXPECT_TRUE(parent.GetAttribute("on", flag) && flag);
    EXPECT_FALSE(parent.GetAttribute("n", text));  // held as an integer
    EXPECT_FALSE(parent.GetAttribute("missing", number));
}

TEST(XmlDocument, SaveNamesTheFileItCannotWriteAndCreatesNothing) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("rivulet_xml_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    for (const std::filesystem::path& path : {folder / "missing" / "model.xml", folder}) {
        CXMLDocument document;
        std::string error;
        EXPECT_FALSE(document.Save(path.string(), error));
        EXPECT_EQ(error, "Cannot write to file '" + path.string() + "'");
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace rivulet
