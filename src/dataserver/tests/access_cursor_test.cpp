#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "dataserver/DataServerObjectList.h"
#include "dataserver/ExtDataServerObject.h"
#include "dataserver/ExtDataServerTag.h"

namespace rivulet {
namespace {

std::string Get(const char* access, const std::function<bool(CExtDataServerTag&)>& bind) {
    char buffer[64];
    auto tag = CExtDataServerTag::ForGet(access, buffer, sizeof buffer);
    EXPECT_TRUE(bind(tag)) << access;
    return buffer;
}

TEST(CExtDataServerTag, NamesMatchWithoutCaseUpToTheNextSeparator) {
    auto tag = CExtDataServerTag::ForCommand("tnavigator..CASEdetails[3].x(1)");
    EXPECT_FALSE(tag.MatchName("tNav"));
    EXPECT_EQ(tag.GetPosition(), 0u);
    EXPECT_TRUE(tag.MatchName("TNAVIGATOR"));
    EXPECT_EQ(tag.PeekName(), "CASEdetails");
    EXPECT_TRUE(tag.MatchName("CaseDetails"));
    EXPECT_EQ(tag.ReadIndex(), 3);
    EXPECT_EQ(tag.PeekName(), "x(1)");  // a peek stops at "." and "[" only
    EXPECT_TRUE(tag.MatchName("X"));
    EXPECT_FALSE(tag.MatchName("x"));  // "(" is next, and the token before it is empty
    EXPECT_FALSE(tag.IsReadOnly());
}

TEST(CExtDataServerTag, DollarNamesAreReadOnlyAndNeverWritten) {
    std::int32_t count = 4;
    auto tag = CExtDataServerTag::ForSet("Count", "9");
    EXPECT_TRUE(tag.BindInt("$Count", count));
    EXPECT_TRUE(tag.IsReadOnly());
    EXPECT_EQ(count, 4);
    auto dollar = CExtDataServerTag::ForSet("$Count", "9");
    EXPECT_FALSE(dollar.BindInt("$Count", count));
}

TEST(CExtDataServerTag, IndexesAndKeys) {
    struct Case {
        const char* text;
        long long index;
        std::size_t positionAfter;
    };
    for (const Case& c :
         {Case{"[12].x", 12, 4}, Case{"[]", 0, 2}, Case{"[1a]", -1, 0}, Case{"[{1}]", -1, 0},
          Case{"[7", -1, 0}, Case{"x[1]", -1, 0}, Case{"[99999999999999999999]", 1'000'000'000'000LL, 22}}) {
        auto tag = CExtDataServerTag::ForCommand(c.text);
        EXPECT_EQ(tag.ReadIndex(), c.index) << c.text;
        EXPECT_EQ(tag.GetPosition(), c.positionAfter) << c.text;
    }
    auto keyed = CExtDataServerTag::ForCommand("[{P 1.a}]x.y");
    EXPECT_EQ(keyed.ReadBracedName(), "P 1.a");
    EXPECT_EQ(keyed.GetPosition(), 9u);
    auto unclosed = CExtDataServerTag::ForCommand("[{abc");
    EXPECT_EQ(unclosed.ReadBracedName(), "abc");
    EXPECT_EQ(unclosed.GetPosition(), 5u);
    auto plain = CExtDataServerTag::ForCommand("[1]");
    EXPECT_EQ(plain.ReadBracedName(), "");
    EXPECT_EQ(plain.GetPosition(), 0u);
}

TEST(CExtDataServerTag, BindsFormatGetsAndConvertSets) {
    std::int32_t i = -7;
    std::int16_t s = 12;
    bool b = true;
    double d = 0.125;
    std::string text = "abc";
    std::wstring wide = L"wide";
    char fixed[4] = "xyz";
    EXPECT_EQ(Get("I", [&](auto& t) { return t.BindInt("i", i); }), "-7");
    EXPECT_EQ(Get("S", [&](auto& t) { return t.BindShort("s", s); }), "12");
    EXPECT_EQ(Get("B", [&](auto& t) { return t.BindBool("b", b); }), "1");
    EXPECT_EQ(Get("D", [&](auto& t) { return t.BindDouble("d", d); }), "0.125");
    EXPECT_EQ(Get("T", [&](auto& t) { return t.BindStdString("t", text); }), "abc");
    EXPECT_EQ(Get("W", [&](auto& t) { return t.BindBstr("w", wide); }), "wide");
    EXPECT_EQ(Get("F", [&](auto& t) { return t.BindString("f", fixed, sizeof fixed); }), "xyz");

    auto set = [](const char* value, auto bind) {
        auto tag = CExtDataServerTag::ForSet("v", value);
        EXPECT_TRUE(bind(tag)) << value;
    };
    set("70000", [&](auto& t) { return t.BindShort("v", s); });
    EXPECT_EQ(s, static_cast<std::int16_t>(70000));
    set("-3", [&](auto& t) { return t.BindBool("v", b); });
    EXPECT_TRUE(b);
    set("1/2/2020", [&](auto& t) { return t.BindDouble("v", d); });
    EXPECT_EQ(d, 1.0);
    set("12abc", [&](auto& t) { return t.BindInt("v", i); });
    EXPECT_EQ(i, 12);
    set("longer", [&](auto& t) { return t.BindString("v", fixed, sizeof fixed); });
    EXPECT_STREQ(fixed, "lon");
    set("new", [&](auto& t) { return t.BindBstr("v", wide); });
    EXPECT_EQ(wide, L"new");

    auto command = CExtDataServerTag::ForCommand("v");
    EXPECT_TRUE(command.BindInt("v", i));
    EXPECT_EQ(i, 12);
}

TEST(CExtDataServerTag, GetResultsAreCutToTheCallersBuffer) {
    std::string text(100, 'x');
    char small[8];
    auto tag = CExtDataServerTag::ForGet("T", small, sizeof small);
    EXPECT_TRUE(tag.BindStdString("T", text));
    EXPECT_STREQ(small, "xxxxxxx");
}

TEST(CExtDataServerTag, AllocatingModeHandsOverResultText) {
    char* slot = nullptr;
    double d = 2.5;
    std::string text = "first";
    {
        auto tag = CExtDataServerTag::ForAllocating("D", CExtDataServerTag::kGet, &slot);
        EXPECT_TRUE(tag.BindDouble("D", d));
        EXPECT_STREQ(tag.GetValueText(), "2.5");
        auto again = CExtDataServerTag::ForAllocating("T", CExtDataServerTag::kGet, &slot);
        EXPECT_TRUE(again.BindStdString("T", text));  // frees the number's text
    }
    EXPECT_STREQ(slot, "first");
    auto set = CExtDataServerTag::ForAllocating("T", CExtDataServerTag::kSet, &slot);
    text.clear();
    EXPECT_TRUE(set.BindStdString("T", text));
    EXPECT_EQ(text, "first");
    std::free(slot);
}

TEST(CExtDataServerTag, ArrayElementsCheckTheirIndex) {
    std::vector<double> values{1.0, 2.0};
    EXPECT_EQ(Get("Values[1]", [&](auto& t) { return t.BindDoubleElement("values", values); }), "2");
    auto past = CExtDataServerTag::ForSet("Values[2]", "5");
    EXPECT_FALSE(past.BindDoubleElement("Values", values));
    EXPECT_EQ(past.GetErrorText(), "Index out of range");
    auto keyed = CExtDataServerTag::ForSet("Values[{1}]", "5");
    EXPECT_FALSE(keyed.BindDoubleElement("Values", values));
    EXPECT_FALSE(keyed.HasError());
    auto set = CExtDataServerTag::ForSet("Values[0]", "5");
    EXPECT_TRUE(set.BindDoubleElement("Values", values));
    EXPECT_EQ(values, (std::vector<double>{5.0, 2.0}));
}

struct CommandCase {
    const char* text;
    int result;
    const char* error;
    std::vector<std::pair<int, std::string>> arguments;  // kind and text
};

TEST(CExtDataServerTag, CommandArgumentLists) {
    using A = CExtDataServerCmdArgument;
    const std::vector<CommandCase> cases = {
        {"Run", 1, "Bad argument", {}},
        {"Run(", 1, "Syntax error", {}},
        {"Run(1", 1, "Syntax error", {}},
        {"Run()", 1, "Bad number of arguments", {}},
        {"Run(1,2,3,4)", 1, "Bad number of arguments", {}},
        {"Run( 12 , -3.5e2,abc )", 0, "", {{A::kInteger, "12"}, {A::kReal, "-3.5e2"}, {A::kWord, "abc"}}},
        {"Run(1 2, .5)", 0, "", {{A::kInteger, "1 2"}, {A::kReal, ".5"}}},
        {"Run({abc}, 'it''s', \"a,b\")",
         0,
         "",
         {{A::kQuoted, "abc"}, {A::kQuoted, "it''s"}, {A::kQuoted, "a,b"}}},
        {"Run({})", 0, "", {{A::kQuoted, ""}}},
        {"Run('')", 1, "Syntax error", {}},
        {"Run(a'b)", 0, "", {{A::kWord, "a'b"}}},
    };
    for (const CommandCase& c : cases) {
        auto tag = CExtDataServerTag::ForCommand(c.text);
        CExtDataServerCmdArgumentCollection arguments;
        EXPECT_EQ(tag.ParseCommand("run", arguments, 1, 3), c.result) << c.text;
        EXPECT_EQ(tag.GetErrorText(), c.error) << c.text;
        if (c.result != 0) continue;
        ASSERT_EQ(arguments.GetSize(), c.arguments.size()) << c.text;
        for (std::size_t i = 0; i < c.arguments.size(); ++i) {
            EXPECT_EQ(arguments.GetAt(i)->kind, c.arguments[i].first) << c.text << " #" << i;
            EXPECT_EQ(arguments.GetAt(i)->text, c.arguments[i].second) << c.text << " #" << i;
        }
    }
}

TEST(CExtDataServerTag, CommandArgumentValues) {
    auto tag = CExtDataServerTag::ForCommand("Go(12, 2.5, {x}) tail");
    CExtDataServerCmdArgumentCollection arguments;
    EXPECT_EQ(tag.ParseCommand("Other", arguments, 0, 5), -1);
    EXPECT_EQ(tag.ParseCommand(nullptr, arguments, 0, 5), 0);
    EXPECT_EQ(arguments.GetAt(0)->integerValue, 12);
    EXPECT_EQ(arguments.GetAt(1)->realValue, 2.5);
    EXPECT_EQ(arguments.GetAt(2)->realValue, CExtDataServerCmdArgument::kQuotedReal);
    EXPECT_EQ(tag.GetText().substr(tag.GetPosition()), " tail");
    auto none = CExtDataServerTag::ForCommand("Go");
    EXPECT_EQ(none.ParseCommand("Go", arguments, 0, 1), 0);
    EXPECT_EQ(arguments.GetSize(), 0u);
    std::string longText = "Go(" + std::string(300, 'z') + ")";
    auto cut = CExtDataServerTag::ForCommand(longText.c_str());
    EXPECT_EQ(cut.ParseCommand("Go", arguments, 1, 1), 0);
    EXPECT_EQ(std::string(arguments.GetAt(0)->text).size(), 255u);
}

TEST(CExtDataServerTag, ValueArrays) {
    struct Case {
        const char* text;
        int count;
        int result;
        const char* error;
        std::vector<double> values;
    };
    for (const Case& c :
         {Case{"1|2|3", 3, 0, "", {1, 2, 3}}, Case{"1|2|3", 2, 1, "Too many elements in array", {1, 2}},
          Case{"1|2|3", 4, 1, "Too few elements in array", {1, 2, 3, 0}}, Case{"1|2|", 2, 0, "", {1, 2}},
          Case{"1}2", 1, 1, "Too many elements in array", {1}}, Case{"1}}", 1, 0, "", {1}},
          Case{"|", 1, 0, "", {0}}, Case{"{1|2}", 2, 0, "", {0, 2}},
          Case{"", 1, 1, "Badly formed value array string", {0}}}) {
        std::vector<double> values(static_cast<std::size_t>(c.count), 0.0);
        std::string error;
        auto tag = CExtDataServerTag::ForSet("x", c.text);
        EXPECT_EQ(tag.ParseValueArray(values.data(), c.count, error), c.result) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
        EXPECT_EQ(values, c.values) << c.text;
    }
}

// A named item for the list's walk.
class Item : public CExtDataServerObject {
  public:
    explicit Item(std::string name = {}) : name_(std::move(name)) {}
    std::string GetDataServerName() const override { return name_; }
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t) override {
        return tag.BindInt("Value", value);
    }
    std::int32_t value = 0;

  private:
    std::string name_;
};

class ItemList : public CExcStdDataServerObjectList<Item> {
  public:
    const char* GetTypeName() const override { return "Item"; }
};

std::int32_t Walk(ItemList& list, CExtDataServerTag&& tag) {
    return list.ProcessAccessString(tag, false, 0, {});
}

TEST(CExcStdDataServerObjectList, CountsAddsDeletesAndReachesItems) {
    ItemList list;
    list.Add(Item("P1"));
    list.Add(Item("P2"));
    list.Add(Item("P1"));
    list.At(2)->value = 9;
    char out[32];
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForGet("ITEM.count", out, sizeof out)), 1);
    EXPECT_STREQ(out, "3");
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForGet("Item.$Count", out, sizeof out)), 0);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item.Count", "0")), 1);
    EXPECT_EQ(list.Count(), 3u);

    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item[{P1}].Value", "5")), 1);
    EXPECT_EQ(list.At(0)->value, 5);  // the first of that name
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item[{p1}].Value", "6")), 0);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item[1].Value", "7")), 1);
    EXPECT_EQ(list.At(1)->value, 7);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item[3].Value", "7")), 0);

    auto bad = CExtDataServerTag::ForSet("Item.Delete", "3");
    EXPECT_EQ(list.ProcessAccessString(bad, false, 0, {}), 0);
    EXPECT_EQ(bad.GetErrorText(), "Attempting to remove an object at an invalid index");
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item.Delete", "0")), 1);
    EXPECT_EQ(list.FindByName("P1"), list.At(1));
    EXPECT_EQ(list.At(1)->value, 9);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForGet("Item.Delete", out, sizeof out)), 0);

    EXPECT_EQ(Walk(list, CExtDataServerTag::ForGet("Item.Add", out, sizeof out)), 0);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Item.Add", "")), 1);
    EXPECT_EQ(list.Count(), 3u);
    EXPECT_EQ(Walk(list, CExtDataServerTag::ForSet("Things.Reset", "")), 0);
    auto reset = CExtDataServerTag::ForSet("Reset", "");
    EXPECT_EQ(list.ProcessItemAccessString(reset), 1);
    EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
}  // namespace rivulet
