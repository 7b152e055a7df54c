// The corrected inflow model on SPE1: the inflow library calibrates its per-well factors by running the case
// through the driver's callbacks, the driver corrects every table by them, puts the run back as it found it,
// and the factors travel with the archive file.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

constexpr std::size_t kGetSetSize = 105368;
constexpr std::size_t kOil = 16, kWater = 96, kGas = 176, kPressure = 256, kColumns = 496;
const std::string kSpe1 = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";

// The factors of the inflow library's block in an archive file: a count, then a name and a factor each.
std::map<std::string, double> SavedFactors(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::map<std::string, double> factors;
    const std::size_t block = bytes.find("IKCF");
    if (block == std::string::npos) return factors;
    std::size_t at = block + 12;
    const auto u32 = [&] {
        std::uint32_t v = 0;
        std::memcpy(&v, bytes.data() + at, 4);
        at += 4;
        return v;
    };
    for (std::uint32_t n = u32(); n > 0; --n) {
        const std::string name = bytes.substr(at, u32());
        at += name.size();
        std::uint64_t bits = 0;
        std::memcpy(&bits, bytes.data() + at, 8);
        at += 8;
        factors[name] = std::bit_cast<double>(bits);
    }
    return factors;
}

class InflowCorrection : public StandinTest {
  protected:
    host::Buffer Ipr(std::int32_t well) {
        host::Buffer table(kGetSetSize);
        table.Put<std::int32_t>(4, well);
        EXPECT_EQ(Cmd(50, table.Address()), 0) << Message(err_);
        return table;
    }
    // The run's dates and each well's control, as a script reads them.
    std::vector<std::string> RunState() {
        std::vector<std::string> state = {Get("TNAVIGATOR.RunStartDate"), Get("TNAVIGATOR.CurrentSimTime")};
        for (const char* variable : {"VaneRateControl", "TARGET.Status", "TARGET.OilRate", "TARGET.GasRate",
                                     "TARGET.LiquidRate", "TARGET.Bhp"}) {
            for (int well = 0; well < 2; ++well)
                state.push_back(Get("TNAVIGATOR.WELL[" + std::to_string(well) + "]." + variable));
        }
        return state;
    }
};

TEST_F(InflowCorrection, CalibratedFactorsCorrectTheTablesLeaveTheRunAsItWasAndAreSavedWithTheModel) {
    Configure();
    LocalCase(kSpe1);
    ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.IprModel", "2"), 0);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    // The producer under liquid control and the injector under gas, one month into the deck.
    host::Buffer start(32);
    ASSERT_EQ(Cmd(11, start.Address()), 0) << Message(err_);
    std::vector<std::int32_t> indices{0, 1}, kinds{1, 2}, phases{2, 4};
    host::Buffer init(176);
    init.Put<std::uint64_t>(8, Arg(indices.data()));
    init.Put<std::uint64_t>(16, Arg(kinds.data()));
    init.Put<std::uint64_t>(24, Arg(phases.data()));
    init.Put<std::int32_t>(128, 2);
    init.Put<std::uint8_t>(32 + 4, 1);
    init.Put<double>(32 + 8, start.Get<double>(8) + 31.0);
    init.Put<std::uint32_t>(156, 1);
    ASSERT_EQ(Cmd(48, init.Address()), 0) << Message(err_);
    ASSERT_EQ(QueryWells(), (std::vector<std::pair<std::string, std::int32_t>>{{"PROD", 1}, {"INJ", 2}}));

    const std::vector<std::string> before = RunState();
    const std::string calculate = "TNAVIGATOR.CalculateIprCorrection";
    ASSERT_EQ(Cmd(98, Arg(calculate.c_str())), 0) << Message(err_);
    EXPECT_EQ(RunState(), before);

    const std::string archive = (scratch_.root / "model.arc").string();
    ASSERT_EQ(Cmd(20, Arg(archive.c_str()), 0), 0) << Message(err_);
    ASSERT_EQ(Cmd(14), 0) << Message(err_);
    const std::map<std::string, double> factors = SavedFactors(archive);
    ASSERT_EQ(factors.size(), 2u);

    // Corrected against raw: every rate of every row by the well's factor, the pressures as they were.
    std::vector<host::Buffer> corrected;
    for (std::int32_t well = 0; well < 2; ++well) corrected.push_back(Ipr(well));
    ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.IprModel", "1"), 0) << Message(err_);
    for (std::int32_t well = 0; well < 2; ++well) {
        const std::string name = well == 0 ? "PROD" : "INJ";
        const double factor = factors.at(name);
        EXPECT_GT(std::abs(factor - 1.0), 1e-4) << name << " was not corrected";
        const host::Buffer raw = Ipr(well);
        const int columns = raw.Get<std::int32_t>(kColumns);
        ASSERT_GT(columns, 1);
        ASSERT_EQ(corrected[well].Get<std::int32_t>(kColumns), columns);
        for (int k = 0; k < columns; ++k) {
            const std::size_t at = 8 * static_cast<std::size_t>(k);
            for (const std::size_t rate : {kOil, kWater, kGas}) {
                EXPECT_DOUBLE_EQ(corrected[well].Get<double>(rate + at), raw.Get<double>(rate + at) * factor)
                    << name << " column " << k;
            }
            EXPECT_EQ(corrected[well].Get<double>(kPressure + at), raw.Get<double>(kPressure + at));
        }
    }

    // A new model loaded from the archive corrects the same tables the same way.
    void* first = model_;
    ASSERT_EQ(Driver().CreateInstance(&model_, nullptr), 0u);
    ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.IprModel", "2"), 0);
    ASSERT_EQ(Cmd(20, Arg(archive.c_str()), 1), 0) << Message(err_);
    for (std::int32_t well = 0; well < 2; ++well) {
        const host::Buffer loaded = Ipr(well);
        EXPECT_EQ(std::memcmp(loaded.data() + kOil, corrected[well].data() + kOil, kColumns + 4 - kOil), 0)
            << "well " << well;
    }
    EXPECT_EQ(Driver().DestroyInstance(model_, nullptr), 0u);
    model_ = first;
}

}  // namespace
}  // namespace rivulet::it
