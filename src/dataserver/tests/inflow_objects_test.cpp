#include <gtest/gtest.h>

#include <cstdint>
#include <string>
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

void Load(CExtDataServerObject& object, const Bytes& bytes, int version) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_EQ(object.StreamData(&archive, version), 0);
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
               std::vector<double> pressures, std::vector<double> temperatures, std::vector<double> mass) {
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

TEST(InflowStreamTest, StoredLayout) {
    using F = std::uint16_t;
    OperatingPoint flagged = Point(-0.5, 0, 3, -1e-16, 50, -1, 0, 1.0), unset = Point(-1, -1, -1, -1);
    OperatingPoint half = Point(-1, -1, -1, -1, -1, -1, -1, 0.5), full = Point(1, 2, 3, 4, 5, 6, 7, 0);
    IprTable table = Table({1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12});
    IprPoint point = NamedPoint("P1", 1, 2, 3, 4);
    struct Case {
        CExtDataServerObject* object;
        Bytes expected;
    };
    for (const Case& c : std::vector<Case>{
             {&flagged, Raw(F{0x4D41}, 3.0, 50.0)},  // -0.5 and -1 flagged negative, 0 and -1e-16 zero
             {&unset, Raw(F{0x2C1F})},               // efficiency 1.0 is not stored
             {&half, Raw(F{0x281F}, 0.5)},
             {&full, Raw(F{0}, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 0.0)},
             {&table, Raw(std::int32_t{2}, 7.0, 1.0, 3.0, 5.0, 9.0, 11.0, 8.0, 2.0, 4.0, 6.0, 10.0, 12.0)},
             {&point, Raw(std::string("P1"), 4.0, 1.0, 2.0, 3.0, 5.0, 6.0)},
         }) {
        EXPECT_EQ(Store(*c.object, 5), c.expected) << c.object->GetDataServerName();
    }
}

TEST(InflowStreamTest, RoundTripsKeepWhatEachVersionHolds) {
    struct Case {
        int version;
        OperatingPoint expected;
        std::size_t size;  // header, flag word and the values stored
    };
    // Versions 3 and 4 keep a zero pressure through its flag only; before 3 there is no efficiency.
    for (const Case& c : std::vector<Case>{{1, Point(100, 0, -1, 20, 60, -1, -1, 1.0), 34},
                                           {2, Point(100, 0, -1, 20, 60, -1, -1, 1.0), 34},
                                           {3, Point(100, 0, -1, 20, 60, 0, -1, 0.5), 42},
                                           {4, Point(100, 0, -1, 20, 60, 0, -1, 0.5), 42},
                                           {5, Point(100, 0, -1, 20, 60, 0, 150, 0.5), 50}}) {
        SCOPED_TRACE(c.version);
        OperatingPoint target = Point(100, 0, -0.5, 20, 60, 0, 150, 0.5), loaded;
        const Bytes bytes = Store(target, c.version);
        EXPECT_EQ(bytes.size(), c.size);
        Load(loaded, bytes, c.version);
        EXPECT_EQ(Fields(loaded), Fields(c.expected));

        IprTable table = Table({1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12}), tableBack;
        Load(tableBack, Store(table, c.version), c.version);
        EXPECT_EQ(Store(tableBack, c.version), Store(table, c.version));
        IprPoint point = NamedPoint("P1", 1, 2, 3, 4), pointBack("other");
        Load(pointBack, Store(point, c.version), c.version);
        EXPECT_EQ(Store(pointBack, c.version), Store(point, c.version));
    }
}

TEST(InflowStreamTest, ShortOrBadStreamLeavesObjectAsItWas) {
    OperatingPoint target = Point(1, 2, 3, 4, 5, 6, 7, 0.5);
    IprTable table = Table({1}, {2}, {3}, {4}, {5}, {6});
    IprPoint point = NamedPoint("P1", 1, 2, 3, 4);
    for (CExtDataServerObject* object : std::vector<CExtDataServerObject*>{&target, &table, &point}) {
        const Bytes before = Store(*object, 5);
        const Bytes cut(before.begin(), before.end() - 1);
        BinaryArchive archive(cut.data(), cut.size(), ArchiveDirection::Load);
        try {
            object->StreamData(&archive, 5);
            ADD_FAILURE() << object->GetDataServerName() << " loaded from a short archive";
        } catch (const ArchiveException& e) {
            EXPECT_EQ(e.Offset(), before.size() - 8);  // the last real is the one that does not fit
        }
        EXPECT_EQ(Store(*object, 5), before);
        EXPECT_EQ(object->StreamData(nullptr, 5), 1);
    }

    // The count is not trusted: a huge one fails at the end of the data, and one below 1 empties the table.
    const Bytes huge = Raw(std::int32_t{INT32_MAX}, 1.0);
    BinaryArchive archive(huge.data(), huge.size(), ArchiveDirection::Load);
    EXPECT_THROW(table.StreamData(&archive, 5), ArchiveException);
    EXPECT_EQ(table.Length(), 1u);
    Load(table, Raw(std::int32_t{-3}, 1.0), 5);
    EXPECT_EQ(table.Length(), 0u);
}

TEST(IprTableTest, GasRatioFlatnessAndZeroRows) {
    struct RatioCase {
        std::vector<double> gas, oil, water;
        double limit;
        bool above;
    };
    for (const RatioCase& c : std::vector<RatioCase>{
             {{0}, {0.5}, {0.5}, 1e12, true},  // liquid sum at most 1.0
             {{1}, {1}, {1}, 5e5, false},      // ratio exactly at the limit
             {{1}, {1}, {1}, 4.99e5, true},
             {{-3, 1}, {2}, {0}, -1, true},  // a negative gas sum counts as 0
         }) {
        const IprTable table = Table(c.gas, c.oil, c.water, {}, {}, {});
        EXPECT_EQ(table.IsGasRatioAbove(c.limit), c.above) << c.limit;
        EXPECT_EQ(table.IsGasRatioNotAbove(c.limit), !c.above) << c.limit;
    }

    EXPECT_TRUE(IprTable().IsFlat());
    EXPECT_TRUE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 8}, {0, 0}).IsFlat());
    EXPECT_FALSE(Table({0, 0}, {0, 0}, {0, 0}, {5, 5}, {9, 9}, {0, 1e-9}).IsFlat());

    const IprTable rows = Table({4e-5, 5e-5}, {0, 0}, {0, 0}, {1, 2}, {0, 0}, {0, 0});
    EXPECT_TRUE(rows.IsRowZero(0));
    EXPECT_FALSE(rows.IsRowZero(1));
    EXPECT_FALSE(rows.IsRowZero(2));

    IprTable filled = rows;  // a count other than the length rebuilds the table
    filled.FillFromPoint(NamedPoint("P", 0, 0, 2, 3), 3);
    EXPECT_EQ(filled.Pressures, std::vector<double>(3, 3));
    EXPECT_EQ(filled.GasRates, std::vector<double>(3, 0));
    EXPECT_TRUE(filled.HasLiquid());
    filled.Zero();
    EXPECT_EQ(filled.WaterRates, std::vector<double>(3, 0));
}

TEST(OperatingPointTest, PhasesAndRateTests) {
    struct Case {
        OperatingPoint point;
        int phase;
        std::vector<bool> fits;  // phases 0, 1, 2, 3
    };
    for (const Case& c : std::vector<Case>{
             {Point(5, -1, -1, -1), 2, {false, false, true, false}},
             {Point(-1, 5, 0, -1), 1, {false, true, false, false}},
             {Point(-1, -1, 5, -1), 0, {true, false, false, false}},
             {Point(-1, -1, -1, 5), 0, {true, false, false, false}},
             {Point(0, -1, 5, 5), 0, {true, false, false, false}},
             {Point(5, 5, -1, -1), 3, {false, false, false, false}},
             {Point(-1, 5, -1, 5), 3, {false, false, false, false}},
             {Point(-1, -1, -1, -1), 3, {true, true, true, true}},
         }) {
        SCOPED_TRACE(testing::PrintToString(Fields(c.point)));
        EXPECT_EQ(c.point.RatePhase(), c.phase);
        for (int phase = 0; phase < 4; ++phase) EXPECT_EQ(c.point.FitsPhase(phase), c.fits[phase]) << phase;
    }

    OperatingPoint point;
    EXPECT_TRUE(point.IsNothingSet());
    EXPECT_FALSE(point.IsZeroRate());
    point.OilRate = 0;
    EXPECT_TRUE(point.IsZeroRate());
    EXPECT_EQ(point.RateCount(), 1);
    point.GasRate = 2, point.WaterRate = -0.5, point.Bhp = 0, point.Thp = 0;
    EXPECT_FALSE(point.IsZeroRate());
    EXPECT_FALSE(point.IsNothingSet());
    EXPECT_EQ(point.PressureCount(), 2);
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
    EXPECT_TRUE(Set(point, "P1.BHP", "150"));
    std::string name;
    auto thp = CExtDataServerTag::ForSet("thp", "30");
    EXPECT_EQ(target.ProcessAccessString(thp, &name), 1);
    EXPECT_EQ(name, "Thp");

    struct Case {
        CExtDataServerObject* object;
        const char* access;
        std::string expected;
    };
    for (const Case& c : std::vector<Case>{
             {&table, "IprTable.Pressures[1]", "200"},
             {&table, "IprTable.MassFlows[0]", "7.5"},
             {&table, "IprTable.GasRates[2]", "Index out of range"},
             {&table, "IprPoint.GasRates[0]", "-"},
             {&point, "P1.LiquidRate", "5"},
             {&point, "p1.bhp", "150"},
             {&point, "P1.MassFlow", "6"},
             {&point, "P2.BHP", "-"},
             {&target, "Thp", "30"},
             {&target, "Efficiency", "1"},
             {&target, "OperatingPoint.GasRate", "-"},
         }) {
        EXPECT_EQ(Get(*c.object, c.access), c.expected) << c.access;
    }
}

}  // namespace
}  // namespace rivulet
