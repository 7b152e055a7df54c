#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/IprPoint.h"
#include "dataserver/IprTable.h"
#include "dataserver/OperatingPoint.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;

template <typename Write>
Bytes Written(Write write) {
    Bytes buffer(1024);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    write(archive);
    buffer.resize(archive.Position());
    return buffer;
}

template <typename... Items>
Bytes Raw(Items... items) {
    return Written([&](BinaryArchive& archive) { (archive.Transfer(items), ...); });
}

Bytes Store(CExtDataServerObject& object, int version) {
    return Written([&](BinaryArchive& archive) { EXPECT_EQ(object.StreamData(&archive, version), 0); });
}

// Loads `bytes`, which are to run short at the offset `failure`, or not at all for -1.
void Load(CExtDataServerObject& object, const Bytes& bytes, int version, long failure = -1) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    long offset = -1;
    try {
        EXPECT_EQ(object.StreamData(&archive, version), 0);
    } catch (const ArchiveException& e) {
        offset = static_cast<long>(e.Offset());
    }
    EXPECT_EQ(offset, failure) << object.GetDataServerName();
}

OperatingPoint Point(double gas, double oil, double water, double liquid, double temperature = -1,
                     double bhp = -1, double thp = -1, double efficiency = 1) {
    OperatingPoint point;
    point.GasRate = gas, point.OilRate = oil, point.WaterRate = water, point.LiquidRate = liquid;
    point.Temperature = temperature, point.Bhp = bhp, point.Thp = thp, point.Efficiency = efficiency;
    return point;
}

std::vector<double> Fields(const OperatingPoint& p) {
    return {p.GasRate, p.OilRate, p.WaterRate, p.LiquidRate, p.Efficiency, p.Bhp, p.Thp, p.Temperature};
}

IprTable Table(std::vector<double> gas, std::vector<double> oil, std::vector<double> water,
               std::vector<double> pressures, std::vector<double> temperatures = {},
               std::vector<double> mass = {}) {
    IprTable table;
    table.GasRates = gas, table.OilRates = oil, table.WaterRates = water;
    table.Pressures = pressures, table.Temperatures = temperatures, table.MassFlows = mass;
    return table;
}

IprPoint NamedPoint(const char* name, double gas, double oil, double water, double pressure) {
    IprPoint point(name);
    point.GasRate = gas, point.OilRate = oil, point.WaterRate = water, point.Pressure = pressure;
    point.Temperature = 5, point.MassFlow = 6;
    return point;
}

const IprTable kTable = Table({1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12});
const IprPoint kPoint = NamedPoint("P1", 1, 2, 3, 4);

TEST(InflowStreamTest, StoredLayout) {
    using F = std::uint16_t;
    OperatingPoint flagged = Point(-0.5, 0, 3, -1e-16, 50, -1, 0, 1.0), unset = Point(-1, -1, -1, -1);
    OperatingPoint half = Point(-1, -1, -1, -1, -1, -1, -1, 0.5), full = Point(1, 2, 3, 4, 5, 6, 7, 0);
    IprTable table = kTable;
    IprPoint point = kPoint;
    const std::pair<CExtDataServerObject*, Bytes> cases[] = {
        {&flagged, Raw(F{0x4D41}, 3.0, 50.0)},  // -0.5 and -1 flagged negative, 0 and -1e-16 zero
        {&unset, Raw(F{0x2C1F})},               // efficiency 1.0 is not stored
        {&half, Raw(F{0x281F}, 0.5)},
        {&full, Raw(F{0}, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 0.0)},
        {&table, Raw(std::int32_t{2}, 7.0, 1.0, 3.0, 5.0, 9.0, 11.0, 8.0, 2.0, 4.0, 6.0, 10.0, 12.0)},
        {&point, Raw(std::string("P1"), 4.0, 1.0, 2.0, 3.0, 5.0, 6.0)}};
    for (const auto& [object, expected] : cases)
        EXPECT_EQ(Store(*object, 5), expected) << object->GetDataServerName();
}

TEST(InflowStreamTest, RoundTripsKeepWhatEachVersionHolds) {
    // Versions 3 and 4 keep a zero pressure through its flag only; before 3 there is no efficiency.
    // Each row: the version, the Bhp, Thp and efficiency loaded, and the stored size.
    using C = std::tuple<int, double, double, double, std::size_t>;
    for (const auto& [version, bhp, thp, efficiency, size] :
         {C{1, -1, -1, 1.0, 34}, C{2, -1, -1, 1.0, 34}, C{3, 0, -1, 0.5, 42}, C{4, 0, -1, 0.5, 42},
          C{5, 0, 150, 0.5, 50}}) {
        SCOPED_TRACE(version);
        OperatingPoint target = Point(100, 0, -0.5, 20, 60, 0, 150, 0.5), loaded;
        const Bytes bytes = Store(target, version);
        EXPECT_EQ(bytes.size(), size);
        Load(loaded, bytes, version);
        EXPECT_EQ(Fields(loaded), Fields(Point(100, 0, -1, 20, 60, bhp, thp, efficiency)));

        IprTable table = kTable, tableBack;
        IprPoint point = kPoint, pointBack("other");
        Load(tableBack, Store(table, version), version);
        Load(pointBack, Store(point, version), version);
        EXPECT_EQ(Store(tableBack, version), Store(table, version));
        EXPECT_EQ(Store(pointBack, version), Store(point, version));
    }
}

TEST(InflowStreamTest, ShortOrBadStreamLeavesObjectAsItWas) {
    OperatingPoint target = Point(1, 2, 3, 4, 5, 6, 7, 0.5);
    IprTable table = Table({1}, {2}, {3}, {4}, {5}, {6});
    IprPoint point = kPoint;
    for (CExtDataServerObject* object : std::vector<CExtDataServerObject*>{&target, &table, &point}) {
        const Bytes before = Store(*object, 5);
        // The last real is the one that does not fit.
        Load(*object, Bytes(before.begin(), before.end() - 1), 5, static_cast<long>(before.size()) - 8);
        EXPECT_EQ(Store(*object, 5), before);
        EXPECT_EQ(object->StreamData(nullptr, 5), 1);
    }

    // The count is not trusted: a huge one fails at the end of the data, and one below 1 empties the table.
    Load(table, Raw(std::int32_t{INT32_MAX}, 1.0), 5, 20);
    EXPECT_EQ(table.Length(), 1u);
    Load(table, Raw(std::int32_t{-3}, 1.0), 5);
    EXPECT_EQ(table.Length(), 0u);
}

TEST(IprTableTest, GasRatioFlatnessAndZeroRows) {
    // Liquid sum at most 1.0; ratio at the limit and just above it; a negative gas sum counts as 0.
    using C = std::tuple<std::vector<double>, std::vector<double>, std::vector<double>, double, bool>;
    for (const auto& [gas, oil, water, limit, above] :
         {C{{0}, {0.5}, {0.5}, 1e12, true}, C{{1}, {1}, {1}, 5e5, false}, C{{1}, {1}, {1}, 4.99e5, true},
          C{{-3, 1}, {2}, {0}, -1, true}}) {
        const IprTable table = Table(gas, oil, water, {});
        EXPECT_EQ(table.IsGasRatioAbove(limit), above) << limit;
    }

    EXPECT_TRUE(IprTable().IsFlat());
    EXPECT_TRUE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 8}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 1e-9}).IsFlat());

    IprTable rows = Table({4e-5, 5e-5}, {0, 0}, {0, 0}, {1, 2});
    EXPECT_EQ((std::vector<bool>{rows.IsRowZero(0), rows.IsRowZero(1), rows.IsRowZero(2)}),
              (std::vector<bool>{true, false, false}));
    rows.FillFromPoint(NamedPoint("P", 0, 0, 2, 3), 3);  // a count other than the length rebuilds the table
    EXPECT_EQ(rows.Pressures, std::vector<double>(3, 3));
    EXPECT_EQ(rows.GasRates, std::vector<double>(3, 0));
    EXPECT_TRUE(rows.HasLiquid());
    rows.Zero();
    EXPECT_EQ(rows.WaterRates, std::vector<double>(3, 0));
}

TEST(OperatingPointTest, PhasesAndCounts) {
    using C = std::tuple<OperatingPoint, int, const char*, bool, bool, int, int>;
    for (const auto& [point, phase, fits, nothingSet, zeroRate, rates, pressures] : {
             // point, phase, fits phases 0 to 3, nothing set, zero rate, rates and pressures not below 0
             C{Point(2, 0, -0.5, -1, -1, 0, 0), 2, "0010", false, false, 2, 2},
             C{Point(-1, 5, 0, -1), 1, "0100", false, false, 2, 0},
             C{Point(-1, -1, 5, -1), 0, "1000", false, false, 1, 0},
             C{Point(-1, -1, -1, 5), 0, "1000", false, false, 1, 0},
             C{Point(0, -1, 5, 5), 0, "1000", false, false, 3, 0},
             C{Point(5, 5, -1, -1), 3, "0000", false, false, 2, 0},
             C{Point(-1, 5, -1, 5), 3, "0000", false, false, 2, 0},
             C{Point(-1, 0, -1, -1), 3, "1111", false, true, 1, 0},
             C{Point(-1, -1, -1, -1, -1, 0), 3, "1111", false, false, 0, 1},
             C{Point(-1, -1, -1, -1), 3, "1111", true, false, 0, 0},
         }) {
        std::string fitting;
        for (int p = 0; p < 4; ++p) fitting += point.FitsPhase(p) ? '1' : '0';
        EXPECT_EQ(std::tuple(point.RatePhase(), fitting, point.IsNothingSet(), point.IsZeroRate(),
                             point.RateCount(), point.PressureCount()),
                  std::tuple(phase, std::string(fits), nothingSet, zeroRate, rates, pressures))
            << testing::PrintToString(Fields(point));
    }
}

// The value text of a get, the error text when one is set, or "-" when the object did not take the string.
std::string Get(CExtDataServerObject& object, const char* access) {
    char buf[64] = {};
    auto tag = CExtDataServerTag::ForGet(access, buf, sizeof buf);
    const std::int32_t result = object.ProcessAccessString(tag);
    return tag.HasError() ? tag.GetErrorText() : result != 0 ? buf : "-";
}

bool Set(CExtDataServerObject& object, const char* access, const char* value) {
    auto tag = CExtDataServerTag::ForSet(access, value);
    return object.ProcessAccessString(tag) != 0;
}

TEST(InflowAccessTest, VariablesThroughTheCursor) {
    IprTable table = Table({1, 2}, {0, 0}, {0, 0}, {100, 200}, {0, 0}, {0, 0});
    IprPoint point = NamedPoint("P1", 0, 2, 3, 0);
    OperatingPoint target;
    EXPECT_TRUE(Set(table, "iprtable.MassFlows[0]", "7.5"));
    EXPECT_TRUE(Set(point, "P1.LiquidRate", "40"));  // taken, but lost
    EXPECT_TRUE(Set(point, "P1.BHP", "150.5"));
    std::string name;
    auto thp = CExtDataServerTag::ForSet("thp", "30");
    EXPECT_EQ(target.ProcessAccessString(thp, &name), 1);
    EXPECT_EQ(name, "Thp");

    using C = std::tuple<CExtDataServerObject*, const char*, const char*>;
    for (const auto& [object, access, expected] :
         {C{&table, "IprTable.Pressures[1]", "200"}, C{&table, "IprTable.MassFlows[0]", "7.5"},
          C{&table, "IprTable.GasRates[2]", "Index out of range"}, C{&table, "IprPoint.GasRates[0]", "-"},
          C{&point, "P1.LiquidRate", "5"}, C{&point, "p1.bhp", "150.5"}, C{&point, "P1.MassFlow", "6"},
          C{&point, "P2.BHP", "-"}, C{&target, "Thp", "30"}, C{&target, "Efficiency", "1"},
          C{&target, "OperatingPoint.GasRate", "-"}}) {
        EXPECT_EQ(Get(*object, access), expected) << access;
    }
}

}  // namespace
}  // namespace rivulet
