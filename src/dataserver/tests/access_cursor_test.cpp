#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "dataserver/DataServerObjectList.h"
#include "dataserver/ExtDataServerObject.h"
#include "dataserver/ExtDataServerTag.h"

namespace rivulet {
namespace {

using Bind = std::function<bool(CExtDataServerTag&)>;

// The text of a get into a buffer of 64 characters.
std::string Get(const char* access, const Bind& bind) {
    char buffer[64];
    auto tag = CExtDataServerTag::ForGet(access, buffer, sizeof buffer);
    EXPECT_TRUE(bind(tag)) << access;
    return buffer;
}

void Set(const char* value, const Bind& bind) {
    auto tag = CExtDataServerTag::ForSet("v", value);
    EXPECT_TRUE(bind(tag)) << value;
}

TEST(CExtDataServerTag, NamesMatchWithoutCaseAndDollarNamesAreReadOnly) {
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

    std::int32_t count = 4;
    auto set = CExtDataServerTag::ForSet("Count", "9");
    EXPECT_TRUE(set.BindInt("$Count", count) && set.IsReadOnly() && count == 4);
    EXPECT_FALSE(CExtDataServerTag::ForSet("$Count", "9").BindInt("$Count", count));
}

TEST(CExtDataServerTag, IndexesAndKeys) {
    using C = std::tuple<const char*, long long, std::size_t, const char*, std::size_t>;
    for (const auto& [text, index, afterIndex, key, afterKey] :
         {C{"[12].x", 12, 4, "", 0}, C{"[]", 0, 2, "", 0}, C{"[1a]", -1, 0, "", 0}, C{"[7", -1, 0, "", 0},
          C{"x[1]", -1, 0, "", 0}, C{"[99999999999999999999]", 1'000'000'000'000LL, 22, "", 0},
          C{"[{P 1.a}]x.y", -1, 0, "P 1.a", 9}, C{"[{abc", -1, 0, "abc", 5}}) {
        auto tag = CExtDataServerTag::ForCommand(text), keyed = CExtDataServerTag::ForCommand(text);
        EXPECT_EQ(tag.ReadIndex(), index) << text;
        EXPECT_EQ(tag.GetPosition(), afterIndex) << text;
        EXPECT_EQ(keyed.ReadBracedName(), key) << text;
        EXPECT_EQ(keyed.GetPosition(), afterKey) << text;
    }
}

TEST(CExtDataServerTag, BindsFormatGetsAndConvertSets) {
    std::int32_t i = -7;
    std::int16_t s = 12;
    bool b = true;
    double d = 0.125;
    std::string text(100, 'x');
    std::wstring wide = L"wide";
    char fixed[4] = "xyz";
    EXPECT_EQ(Get("I", [&](auto& t) { return t.BindInt("i", i); }), "-7");
    EXPECT_EQ(Get("S", [&](auto& t) { return t.BindShort("s", s); }), "12");
    EXPECT_EQ(Get("B", [&](auto& t) { return t.BindBool("b", b); }), "1");
    EXPECT_EQ(Get("D", [&](auto& t) { return t.BindDouble("d", d); }), "0.125");
    EXPECT_EQ(Get("W", [&](auto& t) { return t.BindBstr("w", wide); }), "wide");
    EXPECT_EQ(Get("F", [&](auto& t) { return t.BindString("f", fixed, sizeof fixed); }), "xyz");
    EXPECT_EQ(Get("T", [&](auto& t) { return t.BindStdString("t", text); }), std::string(63, 'x'));

    Set("70000", [&](auto& t) { return t.BindShort("v", s); });
    Set("-3", [&](auto& t) { return t.BindBool("v", b); });
    Set("1.5/2/2020", [&](auto& t) { return t.BindDouble("v", d); });  // not read as a date
    Set("12abc", [&](auto& t) { return t.BindInt("v", i); });
    Set("longer", [&](auto& t) { return t.BindString("v", fixed, sizeof fixed); });
    Set("new", [&](auto& t) { return t.BindBstr("v", wide); });
    EXPECT_TRUE(CExtDataServerTag::ForCommand("v").BindInt("v", i));  // a command writes nothing
    EXPECT_EQ(std::tuple(s, b, d, i, std::string(fixed), wide),
              std::tuple(static_cast<std::int16_t>(70000), true, 1.5, 12, "lon", L"new"));
}

TEST(CExtDataServerTag, AllocatingModeHandsOverResultText) {
    char* slot = nullptr;
    double d = 2.5;
    std::string text = "first", back;
    {
        auto tag = CExtDataServerTag::ForAllocating("D", CExtDataServerTag::kGet, &slot);
        EXPECT_TRUE(tag.BindDouble("D", d));
        EXPECT_STREQ(tag.GetValueText(), "2.5");
        auto again = CExtDataServerTag::ForAllocating("T", CExtDataServerTag::kGet, &slot);
        EXPECT_TRUE(again.BindStdString("T", text));  // frees the number's text
    }
    EXPECT_STREQ(slot, "first");  // and the tags leave the result to the caller
    auto set = CExtDataServerTag::ForAllocating("T", CExtDataServerTag::kSet, &slot);
    EXPECT_TRUE(set.BindStdString("T", back));
    EXPECT_EQ(back, "first");
    std::free(slot);
}

TEST(CExtDataServerTag, ArrayElementsCheckTheirIndex) {
    std::vector<double> values{1.0, 2.0};
    EXPECT_EQ(Get("Values[1]", [&](auto& t) { return t.BindDoubleElement("values", values); }), "2");
    auto past = CExtDataServerTag::ForSet("Values[2]", "5"),
         keyed = CExtDataServerTag::ForSet("Values[{1}]", "5");
    EXPECT_FALSE(past.BindDoubleElement("Values", values));
    EXPECT_EQ(past.GetErrorText(), "Index out of range");
    EXPECT_FALSE(keyed.BindDoubleElement("Values", values) || keyed.HasError());
    EXPECT_TRUE(CExtDataServerTag::ForSet("Values[0]", "5").BindDoubleElement("Values", values));
    EXPECT_EQ(values, (std::vector<double>{5.0, 2.0}));
}

// The arguments as "kind:text|...", the kinds being W(ord), Q(uoted), R(eal) and I(nteger).
std::string Describe(const CExtDataServerCmdArgumentCollection& arguments) {
    std::string out;
    for (std::size_t i = 0; i < arguments.GetSize(); ++i) {
        const CExtDataServerCmdArgument& argument = *arguments.GetAt(i);
        out += std::string(i > 0 ? "|" : "") + "WQRI"[argument.kind] + ":" + argument.text;
    }
    return out;
}

TEST(CExtDataServerTag, CommandArgumentLists) {
    using C = std::tuple<const char*, const char*, const char*>;  // command, error, arguments
    for (const auto& [text, error, expected] :
         {C{"Run", "Bad argument", ""}, C{"Run(1", "Syntax error", ""}, C{"Run('')", "Syntax error", ""},
          C{"Run()", "Bad number of arguments", ""},
          C{"Run(1,2,3,4)", "Bad number of arguments", "I:1|I:2|I:3|I:4"},
          C{"Run( +12 , -3.5e2,abc )", "", "I:+12|R:-3.5e2|W:abc"}, C{"Run(1 2,\t.5)", "", "I:1 2|R:.5"},
          C{"Run({abc}, 'it''s', \"a,b\")", "", "Q:abc|Q:it''s|Q:a,b"}, C{"Run({})", "", "Q:"},
          C{"Run(a'b)", "", "W:a'b"}}) {
        auto tag = CExtDataServerTag::ForCommand(text);
        CExtDataServerCmdArgumentCollection arguments;
        EXPECT_EQ(tag.ParseCommand("run", arguments, 1, 3), *error ? 1 : 0) << text;
        EXPECT_EQ(std::tuple(tag.GetErrorText(), Describe(arguments)), std::tuple(error, expected)) << text;
    }
}

TEST(CExtDataServerTag, CommandArgumentValues) {
    auto tag = CExtDataServerTag::ForCommand("Go(12, 2.5, {x}) tail");
    CExtDataServerCmdArgumentCollection arguments;
    EXPECT_EQ(tag.ParseCommand("Other", arguments, 0, 5), -1);
    EXPECT_EQ(tag.ParseCommand(nullptr, arguments, 0, 5), 0);
    EXPECT_EQ(std::tuple(arguments.GetAt(0)->integerValue, arguments.GetAt(1)->realValue,
                         arguments.GetAt(2)->realValue),
              std::tuple(12, 2.5, CExtDataServerCmdArgument::kQuotedReal));
    EXPECT_EQ(tag.GetText().substr(tag.GetPosition()), " tail");
    EXPECT_EQ(CExtDataServerTag::ForCommand("Go").ParseCommand("Go", arguments, 0, 1), 0);
    EXPECT_EQ(arguments.GetSize(), 0u);
    const std::string longText = "Go(" + std::string(300, 'z') + ")";
    EXPECT_EQ(CExtDataServerTag::ForCommand(longText.c_str()).ParseCommand("Go", arguments, 1, 1), 0);
    EXPECT_EQ(std::string(arguments.GetAt(0)->text).size(), 255u);
}

TEST(CExtDataServerTag, ValueArrays) {
    using C = std::tuple<const char*, int, const char*, std::vector<double>>;
    for (const auto& [text, count, error, expected] :
         {C{"1|2|3", 3, "", {1, 2, 3}}, C{"1|2|3", 2, "Too many elements in array", {1, 2}},
          C{"1|2|3", 4, "Too few elements in array", {1, 2, 3, 0}}, C{"1|2|", 2, "", {1, 2}},
          C{"1}2", 1, "Too many elements in array", {1}}, C{"1}}", 1, "", {1}}, C{"|", 1, "", {0}},
          C{"{1|2}", 2, "", {0, 2}}, C{"", 1, "Badly formed value array string", {0}}}) {
        std::vector<double> values(static_cast<std::size_t>(count), 0.0);
        std::string reason;
        auto tag = CExtDataServerTag::ForSet("x", text);
        EXPECT_EQ(tag.ParseValueArray(values.data(), count, reason), *error ? 1 : 0) << text;
        EXPECT_EQ(std::tuple(reason, values), std::tuple(error, expected)) << text;
    }
}

struct Item : CExtDataServerObject {
    explicit Item(std::string n = {}) : name(std::move(n)) {}
    std::string GetDataServerName() const override { return name; }
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t) override {
        return tag.BindInt("Value", value);
    }
    std::string name;
    std::int32_t value = 0;
};

struct ItemList : CExcStdDataServerObjectList<Item> {
    const char* GetTypeName() const override { return "Item"; }
};

TEST(CExcStdDataServerObjectList, CountsAddsDeletesAndReachesItems) {
    ItemList list;
    for (const char* name : {"P1", "P2", "P1"}) list.Add(Item(name));
    const auto walk = [&](CExtDataServerTag&& tag) { return list.ProcessAccessString(tag, false, 0, {}); };
    char out[32];
    EXPECT_EQ(walk(CExtDataServerTag::ForGet("ITEM.count", out, sizeof out)), 1);
    EXPECT_STREQ(out, "3");
    EXPECT_EQ(walk(CExtDataServerTag::ForGet("Item.$Count", out, sizeof out)), 0);
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item.Count", "0")), 1);

    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item[{P1}].Value", "5")), 1);
    EXPECT_EQ(list.At(0)->value, 5);  // the first of that name
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item[{p1}].Value", "6")), 0);
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item[1].Value", "7")), 1);
    EXPECT_EQ(list.At(1)->value, 7);
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item[3].Value", "7")), 0);

    auto bad = CExtDataServerTag::ForSet("Item.Delete", "3");
    EXPECT_EQ(list.ProcessAccessString(bad, false, 0, {}), 0);
    EXPECT_EQ(bad.GetErrorText(), "Attempting to remove an object at an invalid index");
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item.Delete", "0")), 1);
    EXPECT_EQ(list.FindByName("P1"), list.At(1));

    EXPECT_EQ(walk(CExtDataServerTag::ForGet("Item.Add", out, sizeof out)), 0);
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Item.Add", "")), 1);
    EXPECT_EQ(list.Count(), 3u);
    EXPECT_EQ(walk(CExtDataServerTag::ForSet("Things.Reset", "")), 0);
    auto reset = CExtDataServerTag::ForSet("Reset", "");
    EXPECT_EQ(list.ProcessItemAccessString(reset), 1);
    EXPECT_TRUE(list.IsEmpty());
}

}  // namespace
}  // namespace rivulet
