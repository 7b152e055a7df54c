// The files of a run: every field of a valid scenario and the message of each kind of broken one, the report
// of the steps (CSV files, printed lines and plots), and calendar serials.
#include "host/RunReport.h"
#include "host/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace host {
namespace {

namespace fs = std::filesystem;

// A folder of the test's own. Scenarios sit as they usually do, beside a deck folder: runs/coupled.toml and
// decks/CASE.DATA.
class RunFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        Root = fs::temp_directory_path() / ("rivulet_host_" + std::to_string(::getpid()) + "_" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(Root);
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

TEST_F(RunFolder, ReadsEveryField) {
    const Scenario full = ReadScenario(Write(R"(case = "../decks/CASE.DATA"
cluster = { head_node = "hn01", port = 5050, user = "res", password = "secret" }
report = { well_variables = ["Status", "TARGET.Bhp"] }
inflow = { corrected = true }
tubing = { standard = { hydrostatic = 1500.0, friction = 1.0e-5 } }
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
)"));
    EXPECT_EQ(full.file, Root / "runs" / "coupled.toml");
    EXPECT_EQ(full.caseFile, Root / "decks" / "CASE.DATA");
    std::string settings;
    for (const auto& [key, value] : full.settings) settings += key + "=" + value + ";";
    // A corrected inflow is the case's inflow model 2, whatever the settings said.
    EXPECT_EQ(settings, "RateControl=1;IprAlpha=0.25;UseTables=1;Label=base;Spacing=1;IprModel=2;");
    EXPECT_TRUE(full.correctedInflow);
    EXPECT_EQ(std::tie(full.start, full.end, full.stepDays),
              std::tuple(CalendarDate{2015, 1, 1}, CalendarDate{2016, 1, 1}, 0.0));
    EXPECT_EQ(full.dates, (std::vector<CalendarDate>{{2015, 2, 1}, {2015, 3, 1}}));
    EXPECT_EQ(std::tie(full.manifoldPressure, full.injectionPressure), std::tuple(300.0, 4000.0));
    EXPECT_EQ(std::tie(full.limits.oil, full.limits.gas, full.limits.water),
              std::tuple(std::optional(15000.0), std::optional(40.0), std::optional(5000.0)));
    using Well = std::tuple<std::string, NetworkPhase, double, double>;
    std::vector<Well> wells;
    for (const NetworkWell& w : full.wells)
        wells.emplace_back(w.name, w.phase, w.tubing.hydrostatic, w.tubing.friction);
    EXPECT_EQ(wells, (std::vector<Well>{{"PROD", NetworkPhase::kLiquid, 1500.0, 1.0e-5},
                                        {"INJ", NetworkPhase::kWater, 1200.0, 0.0},
                                        {"GAS", NetworkPhase::kGas, 0.0, 0.0}}));
    ASSERT_TRUE(full.cluster.has_value());
    EXPECT_EQ(
        std::tie(full.cluster->headNode, full.cluster->port, full.cluster->user, full.cluster->password),
        std::tuple("hn01", 5050, "res", "secret"));
    EXPECT_EQ(full.wellVariables, (std::vector<std::string>{"Status", "TARGET.Bhp"}));

    // Everything optional left out: no start, a whole number of days, no limits, no injection header.
    const Scenario bare = ReadScenario(Write(R"(case = "../decks/CASE.DATA"
run = { end = 2016-01-01, step_days = 30 }
network = { manifold_pressure = 250.5 }
well = [ { name = "P", phase = "default" } ]
)"));
    EXPECT_FALSE(bare.start.has_value());
    EXPECT_EQ(bare.stepDays, 30.0);
    EXPECT_TRUE(bare.dates.empty() && bare.settings.empty() && !bare.correctedInflow);
    EXPECT_EQ(std::tie(bare.manifoldPressure, bare.injectionPressure), std::tuple(250.5, 0.0));
    EXPECT_FALSE(bare.limits.oil || bare.limits.gas || bare.limits.water || bare.cluster);
    EXPECT_EQ(bare.wells.at(0).phase, NetworkPhase::kDefault);
}

TEST_F(RunFolder, BrokenScenariosNameTheFileTheLineAndWhatWasExpected) {
    // Lines 1 to 12 of a valid scenario.
    std::vector<std::string> base;
    std::istringstream valid(
        "case = \"../decks/CASE.DATA\"\n[run]\nstart = 2015-01-01\nend = 2016-01-01\nstep_days = 30\n"
        "[network]\nmanifold_pressure = 300.0\n[tubing.standard]\nhydrostatic = 1500.0\n[[well]]\n"
        "name = \"PROD\"\ntubing = \"standard\"\n");
    for (std::string line; std::getline(valid, line);) base.push_back(line);
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
             {12, "tubing = \"standard\"\n[inflow]\ncorrected = 1",
              ":14: inflow.corrected: expected true or false"},
         }) {
        std::vector<std::string> lines = base;
        lines.at(line - 1) = text;
        std::ostringstream scenario;
        for (const std::string& l : lines) scenario << l << '\n';
        const fs::path file = Write(scenario.str());
        std::string want = file.string() + expected;
        if (const auto at = want.find("{deck}"); at != std::string::npos)
            want.replace(at, 6, (Root / "decks").string());
        EXPECT_THAT([&] { ReadScenario(file); }, testing::ThrowsMessage<ScenarioError>(want)) << text;
    }
    EXPECT_THAT([] { ReadScenario("no/such/coupled.toml"); },
                testing::ThrowsMessage<ScenarioError>("no/such/coupled.toml: cannot be read"));
}

// A producer on liquid and a water injector, over three monthly steps; the injector is shut in the second.
std::vector<StepRecord> ThreeSteps(const std::string& injectorName = "INJ") {
    std::vector<StepRecord> steps(3);
    for (int i = 0; i < 3; ++i) {
        const double k = i;
        const bool shut = i == 1;
        StepRecord& step = steps[i];
        step.date = {2015, 2 + i, 1}, step.days = 31 + 28 * k, step.manifoldPressure = 300 + 50 * k;
        step.limited = shut, step.oil = 1200 - 100 * k, step.water = 12.5, step.gas = 2.25;
        step.waterInjection = 800;
        WellStep producer, injector;
        producer.name = "PROD", producer.phase = NetworkPhase::kLiquid;
        producer.table = {{2000 - 100 * k, 1000, 0}, {20, 10, 0}, {4, 2, 0}, {500, 2500, 4000 - 200 * k}};
        producer.asked = {false, 1234.5, 12.5, 2.5, 1500.3};
        producer.oil = 1200 - 100 * k, producer.water = 12.5, producer.gas = 2.25, producer.bhp = 1510.7;
        producer.variables = {"Open", "2,5"}, producer.correction = 0.95;
        injector.name = injectorName, injector.injector = true, injector.phase = NetworkPhase::kWater;
        injector.table = {{0, 0}, {0, 3000 + 100 * k}, {0, 0}, {3000, 6000}};
        injector.asked = {shut, 0, shut ? 0 : 900.0, 0, shut ? 0 : 4000.0};
        injector.water = shut ? 0 : 800.0, injector.bhp = shut ? 0 : 3990.0;
        step.wells = {producer, injector};
    }
    return steps;
}

std::vector<std::string> Lines(const fs::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

TEST_F(RunFolder, WriteCsvWritesHeadersAndRowsAndNamesTheFileItCannotWrite) {
    WriteCsv(Root / "out", ThreeSteps("INJ,\"1\""), {"Status", "TARGET.Bhp"});

    const auto field = Lines(Root / "out" / "field.csv");
    ASSERT_EQ(field.size(), 4u);
    EXPECT_EQ(
        field[0],
        "date,days,manifold_psig,oil_stb_d,water_stb_d,gas_mmscf_d,water_inj_stb_d,gas_inj_mmscf_d,limited");
    EXPECT_EQ(field[2], "2015-03-01,59,350,1100,12.5,2.25,800,0,1");

    const auto wells = Lines(Root / "out" / "wells.csv");
    ASSERT_EQ(wells.size(), 7u);
    EXPECT_EQ(
        wells[0],
        "date,days,well,injector,shut,asked_oil_stb_d,asked_water_stb_d,asked_gas_mmscf_d,asked_bhp_psig,"
        "oil_stb_d,water_stb_d,gas_mmscf_d,bhp_psig,ipr_correction,Status,TARGET.Bhp");
    EXPECT_EQ(wells[1],
              "2015-02-01,31,PROD,0,0,1234.5,12.5,2.5,1500.3,1200,12.5,2.25,1510.7,0.95,Open,\"2,5\"");
    // A well without the values (none were read for it) leaves their columns empty.
    EXPECT_EQ(wells[4], "2015-03-01,59,\"INJ,\"\"1\"\"\",1,1,0,0,0,0,0,0,0,0,1,,");

    // A folder that is a plain file cannot hold the CSV files.
    std::ofstream(Root / "blocked") << "x";
    EXPECT_THAT([&] { WriteCsv(Root / "blocked", ThreeSteps()); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr("field.csv")));
}

TEST(RunReport, PrintStepShowsFieldRatesAndEachWellsAskedAndDeliveredNumbers) {
    std::ostringstream out;
    PrintStep(out, ThreeSteps()[1]);
    std::istringstream in(out.str());
    std::string head, producer, injector;
    std::getline(in, head);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("  PROD ", 0) == 0) producer = line;
        if (line.rfind("  INJ ", 0) == 0) injector = line;
    }
    for (const char* text :
         {"2015-03-01", "day 59", "350.0 psig", "1100.0 STB/d", "2.250 MMscf/d", "[limited]"}) {
        EXPECT_NE(head.find(text), std::string::npos) << text << " in " << head;
    }
    // Asked oil, water, gas, BHP, then delivered oil, water, gas, BHP.
    std::istringstream words(producer);
    std::vector<std::string> got{std::istream_iterator<std::string>(words), {}};
    EXPECT_EQ(got, (std::vector<std::string>{"PROD", "prod", "1234.5", "12.5", "2.500", "1500.3", "1100.0",
                                             "12.5", "2.250", "1510.7"}));
    EXPECT_NE(injector.find("shut"), std::string::npos) << out.str();
}

TEST_F(RunFolder, DrawPlotsDrawsFieldAndInflowPngsWithSafeNames) {
    const auto steps = ThreeSteps("I/1'x");
    std::string note;
    {
        const std::string path = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "";
        ::setenv("PATH", (Root / "empty").c_str(), 1);
        const auto none = DrawPlots(Root, steps, note);
        ::setenv("PATH", path.c_str(), 1);
        EXPECT_TRUE(none.empty());
        EXPECT_EQ(note, "gnuplot not found: no plots drawn");
        EXPECT_FALSE(fs::exists(Root / "field.png"));
    }
    if (std::system("command -v gnuplot >/dev/null 2>&1") != 0) GTEST_SKIP() << "no gnuplot";

    const auto files = DrawPlots(Root, steps, note);
    EXPECT_EQ(note, "");
    std::vector<std::string> names;
    for (const fs::path& file : files) {
        names.push_back(file.filename().string());
        std::string head(8, '\0');
        std::ifstream(file, std::ios::binary).read(head.data(), 8);
        EXPECT_EQ(head, "\x89PNG\r\n\x1a\n") << file;
    }
    EXPECT_EQ(names, (std::vector<std::string>{"field.png", "ipr_PROD.png", "ipr_I_1_x.png"}));
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
