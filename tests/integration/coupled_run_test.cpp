// A coupled run of SPE9 on the stand-in simulator through the exports, as Conflux drives one: start,
// enumerate the wells, initialise with some of them connected, then a timestep per report date of the deck
// up to its end, checking the field totals against the stand-in's own run of the same deck.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "StandinFixture.h"
#include "client/CallMeter.h"

namespace rivulet::it {
namespace {

const std::string kSpe9 = std::string(RIVULET_DECKS_DIR) + "/spe9/SPE9_CP.DATA";

class CoupledRun : public StandinTest {
  protected:
    double Field(const std::string& name) { return std::stod(Get("TNAVIGATOR.Field." + name)); }
};

// The calls to the simulator made so far by the client library, which the plug-in shares with this program.
std::uint64_t SimulatorCalls() {
    tnavclient_call_meter_t meter{};
    tnavclient_read_call_meter(&meter);
    return meter.calls;
}

// Within the six significant digits of an access string's value.
void ExpectClose(double actual, double expected, const std::string& what) {
    EXPECT_NEAR(actual, expected, 1e-5 * std::max(1.0, std::fabs(expected))) << what;
}

TEST_F(CoupledRun, Spe9StepsToTheDecksEndWithFieldTotalsOfItsWells) {
    const std::vector<Row> reference = ReferenceRun(kSpe9);
    ASSERT_GT(reference.size(), 2u);

    const std::filesystem::path debug = scratch_.root / "IncDetailedApiLog";
    std::filesystem::create_directories(debug);
    Configure(debug.string());
    LocalCase(kSpe9);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);

    const auto wells = QueryWells();
    ASSERT_EQ(wells.size(), 26u);
    std::vector<std::int32_t> producers;
    for (std::size_t k = 0; k < wells.size(); ++k) {
        const bool injector = wells[k].first == "INJE1";
        EXPECT_EQ(wells[k].second, injector ? 2 : 1) << wells[k].first;
        if (!injector && producers.size() < 3) producers.push_back(static_cast<std::int32_t>(k));
    }

    // Three producers under the network, under liquid, gas and default control.
    std::vector<std::int32_t> kinds(3, 1), phases{2, 4, 0};
    host::Buffer init(176);
    init.Put<std::uint64_t>(8, Arg(producers.data()));
    init.Put<std::uint64_t>(16, Arg(kinds.data()));
    init.Put<std::uint64_t>(24, Arg(phases.data()));
    init.Put<std::int32_t>(128, 3);
    ASSERT_EQ(Cmd(48, init.Address()), 0) << Message(err_);

    host::Buffer start(32);
    ASSERT_EQ(Cmd(11, start.Address()), 0) << Message(err_);
    const double first = start.Get<double>(8);
    for (std::size_t k = 1; k + 1 < reference.size(); ++k) {
        const Row& row = reference[k];
        ASSERT_EQ(StepTo(first + row.at("DAYS")), 0) << "day " << row.at("DAYS") << ": " << Message(err_);
        const std::string when = "day " + std::to_string(row.at("DAYS"));
        ExpectClose(Field("OilProductionRate"), row.at("FOPR"), when + " oil rate");
        ExpectClose(Field("WaterProductionRate"), row.at("FWPR"), when + " water rate");
        ExpectClose(Field("GasProductionRate"), row.at("FGPR") / 1000.0, when + " gas rate");
        ExpectClose(Field("WaterInjectionRate"), row.at("FWIR"), when + " water injection");
        ExpectClose(Field("OilProductionTotal"), row.at("FOPT"), when + " oil total");
        double oil = 0.0;
        for (const auto& [name, type] : wells) {
            if (type == 1) oil += row.at(name + ":ORAT");
        }
        ExpectClose(Field("OilProductionRate"), oil, when + " sum of the wells' oil rates");
    }
    // Between steps the host's calls per well answer from what the step read: no simulator call.
    const std::uint64_t before = SimulatorCalls();
    host::Buffer record(105368), result(208), variable(528);
    for (std::int32_t well = 0; well < static_cast<std::int32_t>(wells.size()); ++well) {
        record.Put<std::int32_t>(4, well);
        EXPECT_EQ(Cmd(50, record.Address()), 0) << Message(err_);
        result.Put<std::int32_t>(4, 12 + 14 * well + 12);
        EXPECT_EQ(Cmd(58, result.Address(), 1), 1);
        const std::string access =
            "TNAVIGATOR.WELL[{" + wells[static_cast<std::size_t>(well)].first + "}].Bhp";
        variable.Put<std::uint64_t>(8, Arg(access.c_str()));
        EXPECT_EQ(Cmd(96, variable.Address()), 0) << Message(err_);
    }
    for (std::int32_t producer : producers) {
        record.Put<std::int32_t>(4, producer);
        EXPECT_EQ(Cmd(53, record.Address()), 0) << Message(err_);
    }
    EXPECT_EQ(SimulatorCalls(), before);
    // The job is never asked to run on to the deck's end date, so a step there cannot arrive.
    EXPECT_EQ(StepTo(first + reference.back().at("DAYS")), 1);
    EXPECT_EQ(Message(err_), "Timestep() inner loop failed to increment the current time.");

    std::ifstream in(debug / ("DebugTNav" + std::to_string(lower_) + "_DetailedApiLog.txt"));
    const std::string log((std::istreambuf_iterator<char>(in)), {});
    for (const char* form :
         {"\n*** CreateReservoir ***\n", "\nget_math_model_type(math_model_type*)\n",
          "\ncompos__get_water_sc_densities(unit_system_t*)\n",
          "\n*** For info: mapping of well indices to well names ***\n0    INJE1\n1    PRODU2\n",
          "\nget_well_statuses(int*, int, well_status_t*)\nint=26\nwell_status_t[26]\n"
          "\n*** For info: results from get_well_statuses ***\nwell_status_t[26]\n2, 1, 1, ",
          "\nget_well_params(int*, int, well_parameter_t*, int, double*)\nint[1]\n0, "
          "\nint=1\nwell_parameter_t[10]\n"
          "4, 5, 6, 7, 12, 13, 14, 15, 16, 17, \nint=10\ndouble[10]\n",
          "\n*** ReadCurrentData ***\n", "\n*** Continue: current date = "}) {
        EXPECT_NE(log.find(form), std::string::npos) << form;
    }
}

}  // namespace
}  // namespace rivulet::it
