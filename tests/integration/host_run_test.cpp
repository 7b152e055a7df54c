// rivulet-host end to end: a short coupled run of SPE1 under a network, as a user starts it, and a run that
// the driver refuses part-way.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

std::string Slurp(const fs::path& file) {
    std::ifstream in(file);
    return std::string((std::istreambuf_iterator<char>(in)), {});
}

class HostRun : public ::testing::Test {
  protected:
    // A scenario on the bundled SPE1 deck with the given wells and run tables.
    fs::path Scenario(const std::string& wellsAndRun) {
        return scratch_.File("case.toml",
                             "case = \"" + std::string(RIVULET_DECKS_DIR) +
                                 "/spe1/SPE1CASE1.DATA\"\n"
                                 "[network]\nmanifold_pressure = 500.0\ninjection_pressure = 6000.0\n" +
                                 wellsAndRun);
    }
    Outcome Host(const fs::path& scenario, const std::string& subcommand = "run",
                 const std::string& outName = "run") {
        const fs::path out = scratch_.root / outName;
        const std::string command = std::string(RIVULET_HOST_EXE) + " " + subcommand + " '" +
                                    scenario.string() + "' --out '" + out.string() + "' > '" +
                                    (scratch_.root / "stdout").string() + "' 2> '" +
                                    (scratch_.root / "stderr").string() + "'";
        Outcome outcome;
        const int raw = std::system(command.c_str());
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        outcome.out = Slurp(scratch_.root / "stdout");
        outcome.err = Slurp(scratch_.root / "stderr");
        return outcome;
    }
    std::vector<Row> Csv(const std::string& name) { return ReadCsv((scratch_.root / "run" / name).string()); }

    ScratchDir scratch_;
};

// Raw and calibrated, corrected inflow tables alike.
TEST_F(HostRun, ThreeStepsOfSpe1DeliverWhatTheNetworkAsks) {
    for (const bool corrected : {false, true}) {
        SCOPED_TRACE(corrected ? "corrected" : "raw");
        const Outcome run = Host(Scenario(
            "[run]\nstart = 2015-02-01\nend = 2015-05-01\nstep_days = 30\n"
            "[[well]]\nname = \"PROD\"\nphase = \"liquid\"\nhydrostatic = 2000.0\nfriction = 2.5e-6\n"
            "[[well]]\nname = \"INJ\"\nphase = \"gas\"\nhydrostatic = 1000.0\nfriction = 0.1\n" +
            std::string(corrected ? "[inflow]\ncorrected = true\n" : "")));
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find("2015-03-03  day 30"), std::string::npos) << run.out;
        EXPECT_NE(run.err.find("step 3/3 to 2015-05-01 done"), std::string::npos) << run.err;

        const std::vector<Row> field = Csv("field.csv");
        ASSERT_EQ(field.size(), 3u);
        EXPECT_EQ(field.back().at("days"), 89.0);
        // The two lines of wells.csv for each step, the producer's liquid and the injector's gas: delivered
        // within 2% of asked, and the producer on its tubing curve, 500 + 2000 + 2.5e-6 q^2 psig at the
        // bottom.
        const std::vector<Row> wells = Csv("wells.csv");
        ASSERT_EQ(wells.size(), 6u);
        for (const Row& row : wells) {
            const bool injector = row.at("injector") == 1.0;
            EXPECT_EQ(row.at("shut"), 0.0);
            const double asked = injector ? row.at("asked_gas_mmscf_d")
                                          : row.at("asked_oil_stb_d") + row.at("asked_water_stb_d");
            const double got = injector ? row.at("gas_mmscf_d") : row.at("oil_stb_d") + row.at("water_stb_d");
            EXPECT_GT(asked, 0.0);
            EXPECT_NEAR(got, asked, 0.02 * asked) << "day " << row.at("days");
            if (!injector) {
                EXPECT_NEAR(row.at("asked_bhp_psig"), 2500.0 + 2.5e-6 * asked * asked, 1.0);
            }
            // A calibrated well's table is corrected, by a factor near 1 on a deck the stand-in runs closely.
            if (corrected) {
                EXPECT_NE(row.at("ipr_correction"), 1.0);
                EXPECT_NEAR(row.at("ipr_correction"), 1.0, 0.2);
            } else {
                EXPECT_EQ(row.at("ipr_correction"), 1.0);
            }
        }
        EXPECT_TRUE(fs::exists(scratch_.root / "run" / "field.png"));
        if (corrected) {
            EXPECT_NE(Slurp(scratch_.root / "run" / "plots.gp").find(" raw'"), std::string::npos);
        }
    }
}

TEST_F(HostRun, BothDialogsAreDrawnOffScreen) {
    const fs::path scenario =
        Scenario("[run]\nend = 2015-05-01\nstep_days = 30\n[[well]]\nname = \"PROD\"\n");
    for (const std::string& subcommand : {"case '" + scenario.string() + "'", std::string("configure")}) {
        const fs::path png = scratch_.root / "dialog.png";
        const std::string command = std::string(RIVULET_HOST_EXE) + " " + subcommand + " --screenshot '" +
                                    png.string() + "' > /dev/null 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << subcommand;
        // A PNG of a whole dialog, not an empty window.
        const std::string image = Slurp(png);
        EXPECT_EQ(image.substr(0, 4), "\x89PNG") << subcommand;
        EXPECT_GT(image.size(), 10000u) << subcommand;
        fs::remove(png);
    }
}

TEST_F(HostRun, AWellTheCaseDoesNotHaveStopsTheRunWithTheReason) {
    const Outcome run =
        Host(Scenario("[run]\nend = 2015-05-01\nstep_days = 30\n[[well]]\nname = \"PROD9\"\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("the scenario's well PROD9 is not in the case; its wells are: PROD, INJ"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("the simulator has been stopped"), std::string::npos);
}

TEST_F(HostRun, AScenarioErrorNamesTheFileAndLine) {
    const Outcome run = Host(Scenario("[run]\nend = \"soon\"\nstep_days = 30\n[[well]]\nname = \"PROD\"\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("case.toml:6: run.end: expected a date"), std::string::npos) << run.err;
}

TEST_F(HostRun, EquipmentWritesTheModelDocumentOfTheStartedCase) {
    const Outcome run = Host(Scenario("[run]\nend = 2015-05-01\nstep_days = 30\n[[well]]\nname = \"PROD\"\n"),
                             "equipment", "model.xml");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("(version 1.0.0): 3 equipment items (the field and 2 wells), 66 variables"),
              std::string::npos)
        << run.out;
    EXPECT_NE(Slurp(scratch_.root / "model.xml").find("<Tag>WELL[{INJ}].TARGET.GasRate</Tag>"),
              std::string::npos);
}

}  // namespace
}  // namespace rivulet::it
