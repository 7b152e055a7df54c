// Scenario files: every field of a valid file, the message of each kind of broken one, and calendar serials.
#include "host/Scenario.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace host {
namespace {

namespace fs = std::filesystem;

// A scenario folder beside a deck folder, as scenarios usually sit: runs/coupled.toml and decks/CASE.DATA.
class ScenarioFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        Root = fs::temp_directory_path() / ("scenario_test_" + std::to_string(::getpid()) + "_" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(Root / "runs");
        fs::create_directories(Root / "decks");
        std::ofstream(Root / "decks" / "CASE.DATA") << "RUNSPEC\n";
    }
    void TearDown() override { fs::remove_all(Root); }

    fs::path Write(const std::string& text) const {
        const fs::path file = Root / "runs" / "coupled.toml";
        std::ofstream(file) << text;
        return file;
    }

    fs::path Root;
};

TEST_F(ScenarioFiles, ReadsEveryField) {
    const Scenario full = ReadScenario(Write(R"(case = "../decks/CASE.DATA"
[settings]
RateControl = 1
IprAlpha = 0.25
UseTables = true
Label = "base"
Spacing = 1.0
[run]
start = 2015-01-01
end = 2016-01-01
dates = [2015-02-01, 2015-03-01]
[network]
manifold_pressure = 300
injection_pressure = 4000.0
oil_limit = 15000.0
gas_limit = 40.0
water_limit = 5000
[tubing.standard]
hydrostatic = 1500.0
friction = 1.0e-5
[[well]]
name = "PROD"
tubing = "standard"
[[well]]
name = "INJ"
phase = "water"
hydrostatic = 1200
[[well]]
name = "GAS"
phase = "gas"
[cluster]
head_node = "hn01"
port = 5050
user = "res"
password = "secret"
[report]
well_variables = ["Status", "TARGET.Bhp"]
)"));
    EXPECT_EQ(full.file, Root / "runs" / "coupled.toml");
    EXPECT_EQ(full.caseFile, Root / "decks" / "CASE.DATA");
    using Setting = std::pair<std::string, std::string>;
    EXPECT_EQ(full.settings, (std::vector<Setting>{{"RateControl", "1"},
                                                   {"IprAlpha", "0.25"},
                                                   {"UseTables", "1"},
                                                   {"Label", "base"},
                                                   {"Spacing", "1"}}));
    EXPECT_EQ(full.start, (CalendarDate{2015, 1, 1}));
    EXPECT_EQ(full.end, (CalendarDate{2016, 1, 1}));
    EXPECT_EQ(full.stepDays, 0.0);
    EXPECT_EQ(full.dates, (std::vector<CalendarDate>{{2015, 2, 1}, {2015, 3, 1}}));
    EXPECT_EQ(std::tie(full.manifoldPressure, full.injectionPressure), std::tuple(300.0, 4000.0));
    EXPECT_EQ(std::tie(full.limits.oil, full.limits.gas, full.limits.water),
              std::tuple(std::optional(15000.0), std::optional(40.0), std::optional(5000.0)));
    ASSERT_EQ(full.wells.size(), 3u);
    using Well = std::tuple<std::string, NetworkPhase, double, double>;
    for (std::size_t k = 0; k < 3; ++k) {
        const NetworkWell& w = full.wells[k];
        EXPECT_EQ(std::tie(w.name, w.phase, w.tubing.hydrostatic, w.tubing.friction),
                  (std::vector<Well>{{"PROD", NetworkPhase::kLiquid, 1500.0, 1.0e-5},
                                     {"INJ", NetworkPhase::kWater, 1200.0, 0.0},
                                     {"GAS", NetworkPhase::kGas, 0.0, 0.0}}[k]));
    }
    ASSERT_TRUE(full.cluster.has_value());
    EXPECT_EQ(
        std::tie(full.cluster->headNode, full.cluster->port, full.cluster->user, full.cluster->password),
        std::tuple("hn01", 5050, "res", "secret"));
    EXPECT_EQ(full.wellVariables, (std::vector<std::string>{"Status", "TARGET.Bhp"}));

    // The optional parts left out: no start, a whole number of days, no limits, no injection header.
    const Scenario bare = ReadScenario(Write(R"(case = "../decks/CASE.DATA"
run = { end = 2016-01-01, step_days = 30 }
network = { manifold_pressure = 250.5 }
well = [ { name = "P", phase = "default" } ]
)"));
    EXPECT_FALSE(bare.start.has_value());
    EXPECT_EQ(bare.stepDays, 30.0);
    EXPECT_TRUE(bare.dates.empty() && bare.settings.empty());
    EXPECT_EQ(std::tie(bare.manifoldPressure, bare.injectionPressure), std::tuple(250.5, 0.0));
    EXPECT_FALSE(bare.limits.oil || bare.limits.gas || bare.limits.water || bare.cluster);
    EXPECT_EQ(bare.wells.at(0).phase, NetworkPhase::kDefault);
}

TEST_F(ScenarioFiles, BrokenScenariosNameTheFileTheLineAndWhatWasExpected) {
    const std::vector<std::string> base = {
        R"(case = "../decks/CASE.DATA")",  // 1
        "[run]",                           // 2
        "start = 2015-01-01",              // 3
        "end = 2016-01-01",                // 4
        "step_days = 30",                  // 5
        "[network]",                       // 6
        "manifold_pressure = 300.0",       // 7
        "[tubing.standard]",               // 8
        "hydrostatic = 1500.0",            // 9
        "[[well]]",                        // 10
        R"(name = "PROD")",                // 11
        R"(tubing = "standard")",          // 12
    };
    // Each case puts new text in place of one line of the base; {deck} stands for the deck folder.
    using Case = std::tuple<std::size_t, std::string, std::string>;
    for (const auto& [line, text, expected] : std::vector<Case>{
             {7, "manifold_pressure = = 300",
              ":7: Error while parsing value: could not determine value type"},
             {4, "", ":2: missing key 'end' in [run]"},
             {1, "", ":1: missing key 'case'"},
             {4, R"(end = "2016-01-01")", ":4: run.end: expected a date like 2016-01-01"},
             {4, "end = 2015-01-01", ":4: run.end: expected a date after run.start, 2015-01-01"},
             {7, "manifold_pressure = 0",
              ":7: network.manifold_pressure: expected a pressure in psig above 0"},
             {7, "manifold = 300.0", ":7: unknown key 'manifold' in [network]"},
             {12, "tubing = \"standard\"\nphase = \"oil\"",
              ":13: well[1].phase: expected one of water, liquid, gas, default"},
             {12, "tubing = \"standard\"\n[[well]]\nname = \"PROD\"",
              ":14: well[2].name: 'PROD' already names well[1]"},
             {12, R"(tubing = "std")", ":12: well[1].tubing: no curve 'std' in [tubing]"},
             {12, "tubing = \"standard\"\nfriction = 1e-5",
              ":12: well[1].tubing: expected a named curve or hydrostatic and friction, not both"},
             {5, "step_days = 30\ndates = [2015-02-01]", ":6: run: expected step_days or dates, not both"},
             {5, "", ":2: missing key 'step_days' or 'dates' in [run]"},
             {5, "dates = [2015-03-01, 2015-02-01]", ":5: run.dates[2]: expected a date after 2015-03-01"},
             {5, "dates = [2015-01-01]", ":5: run.dates[1]: expected a date after run.start, 2015-01-01"},
             {5, "dates = [\n2015-02-01,\n2016-01-02]",
              ":7: run.dates[2]: expected a date not after run.end, 2016-01-01"},
             {11, "", ":10: missing key 'name' in well[1]"},
             {10, "[well]", ":10: well: expected at least one [[well]] table"},
             {6, "[netwrk]", ":6: unknown key 'netwrk'"},
             {9, "hydrostatic = -1",
              ":9: tubing.standard.hydrostatic: expected a pressure in psi, 0 or more"},
             {3, "start = 2015-01-01T00:00:00", ":3: run.start: expected a date like 2016-01-01"},
             {1, R"(case = "../decks/NONE.DATA")", ":1: case: file not found: {deck}/NONE.DATA"},
             {12, "tubing = \"standard\"\n[cluster]\nhead_node = \"hn\"\nport = 80",
              ":15: cluster.port: expected an integer from 1024 to 65535"},
             {12, "tubing = \"standard\"\n[report]\nwell_variables = [\"Bhp\", \"Bhp\"]",
              ":14: report.well_variables[2]: 'Bhp' is listed already"},
             {12, "tubing = \"standard\"\n[report]\nwell_variables = [\"Gas rate\"]",
              ":14: report.well_variables[1]: expected a well variable name such as \"Bhp\""},
         }) {
        std::vector<std::string> lines = base;
        lines.at(line - 1) = text;
        std::ostringstream scenario;
        for (const std::string& l : lines) scenario << l << '\n';
        const fs::path file = Write(scenario.str());
        std::string want = file.string() + expected;
        if (const auto at = want.find("{deck}"); at != std::string::npos)
            want.replace(at, 6, (Root / "decks").string());
        try {
            ReadScenario(file);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const ScenarioError& e) {
            EXPECT_EQ(e.what(), want);
        }
    }
    try {
        ReadScenario("no/such/coupled.toml");
        ADD_FAILURE() << "read a file that does not exist";
    } catch (const ScenarioError& e) {
        EXPECT_STREQ(e.what(), "no/such/coupled.toml: cannot be read");
    }
}

TEST(CalendarDate, SerialsCountDaysFromTheLastDayOf1899) {
    using Case = std::tuple<CalendarDate, double, std::string>;
    for (const auto& [date, serial, text] :
         {Case{{1899, 12, 31}, 0.0, "1899-12-31"}, Case{{1900, 1, 1}, 1.0, "1900-01-01"},
          Case{{1900, 3, 1}, 60.0, "1900-03-01"}, Case{{2015, 1, 1}, 42004.0, "2015-01-01"},
          Case{{2024, 2, 29}, 45350.0, "2024-02-29"}, Case{{1850, 7, 4}, -18077.0, "1850-07-04"}}) {
        EXPECT_EQ(date.Serial(), serial) << text;
        EXPECT_EQ(date.Text(), text);
        // Any time of the day belongs to the day; a step of days lands on the calendar date.
        EXPECT_EQ(CalendarDate::FromSerial(serial + 0.75), date) << text;
    }
    EXPECT_EQ((CalendarDate{2015, 12, 2}.AddDays(90.0)), (CalendarDate{2016, 3, 1}));
    EXPECT_EQ(CalendarDate::FromSerial(std::nan("")), CalendarDate{});
}

}  // namespace
}  // namespace host
