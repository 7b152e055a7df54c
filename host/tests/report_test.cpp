#include "host/RunReport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace host {
namespace {

namespace fs = std::filesystem;

// A producer on liquid and a water injector, over three monthly steps; the injector is shut in the second.
std::vector<StepRecord> ThreeSteps(const std::string& injectorName = "INJ") {
    std::vector<StepRecord> steps;
    const CalendarDate dates[3] = {{2015, 2, 1}, {2015, 3, 1}, {2015, 4, 1}};
    for (int i = 0; i < 3; ++i) {
        StepRecord step;
        step.date = dates[i];
        step.days = 31.0 + 28.0 * i;
        step.manifoldPressure = 300.0 + 50.0 * i;
        step.limited = i == 1;
        step.oil = 1200.0 - 100.0 * i;
        step.water = 12.5;
        step.gas = 2.25;
        step.waterInjection = 800.0;

        WellStep producer;
        producer.name = "PROD";
        producer.phase = NetworkPhase::kLiquid;
        producer.table = {{2000.0 - 100.0 * i, 1000.0, 0.0},
                          {20.0, 10.0, 0.0},
                          {4.0, 2.0, 0.0},
                          {500.0, 2500.0, 4000.0 - 200.0 * i}};
        producer.asked = {false, 1234.5, 12.5, 2.5, 1500.3};
        producer.oil = 1200.0 - 100.0 * i;
        producer.water = 12.5;
        producer.gas = 2.25;
        producer.bhp = 1510.7;
        producer.variables = {"Open", "2,5"};

        WellStep injector;
        injector.name = injectorName;
        injector.injector = true;
        injector.phase = NetworkPhase::kWater;
        injector.table = {{0.0, 0.0}, {0.0, 3000.0 + 100.0 * i}, {0.0, 0.0}, {3000.0, 6000.0}};
        injector.asked = {i == 1, 0.0, i == 1 ? 0.0 : 900.0, 0.0, i == 1 ? 0.0 : 4000.0};
        injector.water = i == 1 ? 0.0 : 800.0;
        injector.bhp = i == 1 ? 0.0 : 3990.0;

        step.wells = {producer, injector};
        steps.push_back(step);
    }
    return steps;
}

std::vector<std::string> Lines(const fs::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class ReportFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        folder_ =
            fs::temp_directory_path() / ("rivulet_report_" + std::to_string(::getpid()) + "_" +
                                         ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }
    fs::path folder_;
};

TEST_F(ReportFolder, WriteCsvWritesHeadersAndRowsAndNamesTheFileItCannotWrite) {
    WriteCsv(folder_ / "out", ThreeSteps("INJ,\"1\""), {"Status", "TARGET.Bhp"});

    const auto field = Lines(folder_ / "out" / "field.csv");
    ASSERT_EQ(field.size(), 4u);
    EXPECT_EQ(
        field[0],
        "date,days,manifold_psig,oil_stb_d,water_stb_d,gas_mmscf_d,water_inj_stb_d,gas_inj_mmscf_d,limited");
    EXPECT_EQ(field[2], "2015-03-01,59,350,1100,12.5,2.25,800,0,1");

    const auto wells = Lines(folder_ / "out" / "wells.csv");
    ASSERT_EQ(wells.size(), 7u);
    EXPECT_EQ(
        wells[0],
        "date,days,well,injector,shut,asked_oil_stb_d,asked_water_stb_d,asked_gas_mmscf_d,asked_bhp_psig,"
        "oil_stb_d,water_stb_d,gas_mmscf_d,bhp_psig,Status,TARGET.Bhp");
    EXPECT_EQ(wells[1], "2015-02-01,31,PROD,0,0,1234.5,12.5,2.5,1500.3,1200,12.5,2.25,1510.7,Open,\"2,5\"");
    // A well without the values (none were read for it) leaves their columns empty.
    EXPECT_EQ(wells[4], "2015-03-01,59,\"INJ,\"\"1\"\"\",1,1,0,0,0,0,0,0,0,0,,");

    // A folder that is a plain file cannot hold the CSV files.
    std::ofstream(folder_ / "blocked") << "x";
    try {
        WriteCsv(folder_ / "blocked", ThreeSteps());
        FAIL() << "no error";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("field.csv"), std::string::npos) << e.what();
    }
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

bool HasPngSignature(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string head(8, '\0');
    in.read(head.data(), 8);
    return in && head == "\x89PNG\r\n\x1a\n";
}

TEST_F(ReportFolder, DrawPlotsDrawsFieldAndInflowPngsWithSafeNames) {
    const auto steps = ThreeSteps("I/1'x");
    std::string note;
    {
        const std::string path = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "";
        ::setenv("PATH", (folder_ / "empty").c_str(), 1);
        const auto none = DrawPlots(folder_, steps, note);
        ::setenv("PATH", path.c_str(), 1);
        EXPECT_TRUE(none.empty());
        EXPECT_EQ(note, "gnuplot not found: no plots drawn");
        EXPECT_FALSE(fs::exists(folder_ / "field.png"));
    }
    if (std::system("command -v gnuplot >/dev/null 2>&1") != 0) GTEST_SKIP() << "no gnuplot";

    const auto files = DrawPlots(folder_, steps, note);
    EXPECT_EQ(note, "");
    std::vector<std::string> names;
    for (const fs::path& file : files) {
        names.push_back(file.filename().string());
        EXPECT_TRUE(HasPngSignature(file)) << file;
    }
    EXPECT_EQ(names, (std::vector<std::string>{"field.png", "ipr_PROD.png", "ipr_I_1_x.png"}));
}

}  // namespace
}  // namespace host
