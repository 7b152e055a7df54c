// The host's side of coupled timesteps on the stand-in simulator: every well is connected to the network;
// at each report date the host reads each well's inflow table, picks an operating point on it, hands it
// back, steps, and reads what the well delivered from the node results.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

constexpr std::size_t kGetSetSize = 105368;
// Offsets of the well data record: the four rate/pressure columns, the column count and the downtime.
constexpr std::size_t kOil = 16, kWater = 96, kGas = 176, kPressure = 256, kColumns = 496;
constexpr std::size_t kDowntime = 102360;

// Node result rows of a well: oil + water rate of a producer, gas and water injection rate of an injector.
constexpr int kLiquidRow = 3, kGasInjectionRow = 8, kWaterInjectionRow = 9;

struct Deck {
    std::string file;
    std::size_t steps;  // report dates to play
    bool gasInjection;  // its injectors inject gas rather than water
};

struct Connected {
    std::int32_t index;
    bool injector;
    bool gas;  // an injector of gas; producers are under liquid control
};

void PrintTo(const Deck& deck, std::ostream* out) {
    *out << deck.file;
}

class NetworkCoupling : public StandinTest, public ::testing::WithParamInterface<Deck> {
  protected:
    // Every well under the network: producers under liquid control, injectors by what they inject.
    // The run starts at `startSerial`, which Initialise runs the simulator to; that first read of the
    // connected wells gives them their tables. Then each well is connected as a network node.
    std::vector<Connected> ConnectAll(double startSerial) {
        std::vector<Connected> wells;
        std::vector<std::int32_t> indices, kinds, phases;
        for (const auto& [name, type] : QueryWells()) {
            (void)name;
            const std::int32_t index = static_cast<std::int32_t>(indices.size());
            const bool injector = type == 2;
            const bool gas = injector && GetParam().gasInjection;
            wells.push_back({index, injector, gas});
            indices.push_back(index);
            kinds.push_back(injector ? 2 : 1);
            phases.push_back(injector ? (gas ? 4 : 1) : 2);
        }
        host::Buffer init(176);
        init.Put<std::uint64_t>(8, Arg(indices.data()));
        init.Put<std::uint64_t>(16, Arg(kinds.data()));
        init.Put<std::uint64_t>(24, Arg(phases.data()));
        init.Put<std::int32_t>(128, static_cast<std::int32_t>(indices.size()));
        init.Put<std::uint8_t>(32 + 4, 1);
        init.Put<double>(32 + 8, startSerial);
        init.Put<std::uint32_t>(156, 1);
        EXPECT_EQ(Cmd(48, init.Address()), 0) << Message(err_);
        for (const std::int32_t index : indices) {
            host::Buffer connection(12);
            connection.Put<std::int32_t>(4, index);
            connection.Put<std::uint8_t>(8, 1);
            EXPECT_EQ(Cmd(19, connection.Address()), 0) << Message(err_);
        }
        return wells;
    }

    double NodeResult(std::int32_t well, int row) {
        host::Buffer result(208);
        result.Put<std::int32_t>(4, 12 + 14 * well + row);
        EXPECT_EQ(Cmd(58, result.Address()), 1) << Message(err_);
        return result.Get<double>(96);
    }
};

double Column(const host::Buffer& table, std::size_t array, int k) {
    return table.Get<double>(array + 8 * static_cast<std::size_t>(k));
}

// The rate the network controls: liquid for a producer, the injected phase for an injector.
double ControlledRate(const host::Buffer& table, const Connected& well, int k) {
    if (!well.injector) return Column(table, kOil, k) + Column(table, kWater, k);
    return Column(table, well.gas ? kGas : kWater, k);
}

TEST_P(NetworkCoupling, EachWellDeliversTheOperatingPointPickedOnItsTable) {
    const std::vector<Row> reference = ReferenceRun(GetParam().file);
    ASSERT_GT(reference.size(), GetParam().steps + 1);
    Configure();
    LocalCase(GetParam().file);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    host::Buffer start(32);
    ASSERT_EQ(Cmd(11, start.Address()), 0) << Message(err_);
    const double first = start.Get<double>(8);
    const std::vector<Connected> wells = ConnectAll(first + reference[1].at("DAYS"));
    ASSERT_FALSE(HasFailure());
    // The network's wells are its own: a script may not take one over.
    EXPECT_EQ(Set("TNAVIGATOR.WELL[0].TARGET.Bhp", "3000"), 1);
    EXPECT_EQ(Message(err_), "Cannot apply TapServer control to a well under VANE control.");

    int checked = 0;
    for (std::size_t step = 2; step <= GetParam().steps + 1; ++step) {
        const std::string when = "report " + std::to_string(step);
        std::vector<double> asked(wells.size(), -1.0);
        for (const Connected& well : wells) {
            host::Buffer table(kGetSetSize);
            table.Put<std::int32_t>(4, well.index);
            ASSERT_EQ(Cmd(50, table.Address()), 0) << when << ": " << Message(err_);
            const int columns = table.Get<std::int32_t>(kColumns);
            if (columns < 2) continue;  // a well that cannot flow now has no curve to pick from
            for (int k = 1; k < columns; ++k) {
                const double rise = ControlledRate(table, well, k) - ControlledRate(table, well, k - 1);
                const double drop = Column(table, kPressure, k - 1) - Column(table, kPressure, k);
                EXPECT_GT(rise, 0.0) << when << ", well " << well.index << ", column " << k;
                // Pressures fall as a producer's rates rise, and rise with an injector's.
                EXPECT_GT(well.injector ? -drop : drop, 0.0)
                    << when << ", well " << well.index << ", column " << k;
            }
            // A point in the lower part of the curve, which the well can still deliver at the step's end.
            const int pick = columns / 3;
            for (const std::size_t array : {kOil, kWater, kGas})
                table.Put<double>(array, Column(table, array, pick));
            table.Put<double>(kDowntime, 0.0);
            ASSERT_EQ(Cmd(53, table.Address()), 0) << when << ": " << Message(err_);
            asked[static_cast<std::size_t>(well.index)] = ControlledRate(table, well, 0);
        }
        ASSERT_EQ(StepTo(first + reference[step].at("DAYS")), 0) << when << ": " << Message(err_);
        for (const Connected& well : wells) {
            const double wanted = asked[static_cast<std::size_t>(well.index)];
            if (wanted <= 0.0) continue;
            const int row = !well.injector ? kLiquidRow : well.gas ? kGasInjectionRow : kWaterInjectionRow;
            EXPECT_NEAR(NodeResult(well.index, row), wanted, 0.02 * wanted)
                << when << ", well " << well.index;
            ++checked;
        }
    }
    EXPECT_GE(checked, static_cast<int>(GetParam().steps));
}

INSTANTIATE_TEST_SUITE_P(
    Decks, NetworkCoupling,
    ::testing::Values(Deck{std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA", 12, true},
                      Deck{std::string(RIVULET_DECKS_DIR) + "/spe9/SPE9_CP.DATA", 6, false}),
    [](const auto& info) { return info.index == 0 ? "Spe1Case1" : "Spe9Cp"; });

}  // namespace
}  // namespace rivulet::it
