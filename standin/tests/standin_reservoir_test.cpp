#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "bench/SyntheticDeck.h"
#include "standin/DeckReader.h"
#include "standin/RunReport.h"
#include "standin/StandinReservoir.h"

namespace rivulet::standin {
namespace {

using ::testing::ThrowsMessage;

const std::string kDecks = RIVULET_DECKS_DIR;
const std::string kSpe1 = kDecks + "/spe1/SPE1CASE1.DATA";

// The SPE1 deck is read once; every test gets its own engine.
const DeckModel& Spe1() {
    static const DeckModel model = ReadDeck(kSpe1);
    return model;
}

// Wells, connections, dates, names, units and well limits of SPE1 are checked where the engine and the
// dispatcher use them.
TEST(DeckReader, ReadsSpe1TankNamesAMissingDeckAndRejectsANonDeck) {
    const DeckModel& m = Spe1();
    ASSERT_EQ(m.tanks.size(), 1u);
    EXPECT_NEAR(m.tanks[0].initial_pressure / m.scales.pressure, 4800.0, 1e-6);
    EXPECT_NEAR(m.tanks[0].initial_sw, 0.12, 1e-9);
    EXPECT_THAT([] { ReadDeck("/no/such/CASE.DATA"); },
                ThrowsMessage<DeckError>("Case file /no/such/CASE.DATA not found"));
    EXPECT_THROW(ReadDeck(kDecks + "/spe1/SOURCE.txt"), DeckError);
}

// Decks of many wells are read in batches of wells: every well keeps its place, its column and its controls,
// and a record naming wells by pattern reaches the wells of every batch.
TEST(DeckReader, ReadsEveryWellOfALargeDeckInOrder) {
    constexpr int kWells = 300;
    std::string deck = bench::SyntheticDeck(kWells);
    const std::string firstStep = "/\nTSTEP\n";
    deck.replace(deck.find(firstStep), firstStep.size(), "/\nTSTEP\n31 /\nWELOPEN\n 'I*' 'SHUT' /\n/\nTSTEP\n");
    const std::string path = ::testing::TempDir() + "/LARGE.DATA";
    std::ofstream(path) << deck;
    const DeckModel m = ReadDeck(path);

    ASSERT_EQ(m.wells.size(), static_cast<std::size_t>(kWells));
    for (int k = 0; k < kWells; ++k) {
        SCOPED_TRACE(k);
        const WellData& well = m.wells[static_cast<std::size_t>(k)];
        EXPECT_EQ(well.name, bench::SyntheticWellName(k));
        ASSERT_EQ(well.connections.size(), 1u);
        EXPECT_EQ(well.connections[0].i, k);
        const WellControls& first = m.controls.front()[static_cast<std::size_t>(k)];
        const WellControls& later = m.controls.back()[static_cast<std::size_t>(k)];
        if (bench::IsSyntheticInjector(k)) {
            EXPECT_EQ(std::tuple(first.type, first.injected, first.status),
                      std::tuple(WellType::kInjector, Phase::kGas, WellStatus::kOpen));
            EXPECT_EQ(later.status, WellStatus::kShut);
        } else {
            EXPECT_EQ(std::tuple(first.type, first.mode, later.status),
                      std::tuple(WellType::kProducer, ControlMode::kOrat, WellStatus::kOpen));
        }
    }
}

struct Row {
    double oil, gas, bhp;
};

TEST(Spe1Run, HoldsPlateauThenDeclinesAsGorRisesAndKeepsTheBalance) {
    StandinReservoir engine(Spe1());
    const std::size_t prod = engine.WellIndex("PROD");
    const TankReport before = engine.Tank(0);
    EXPECT_NEAR(before.rs, 1.27, 1e-9);
    EXPECT_NEAR(before.so + before.sw + before.sg, 1.0, 1e-9);
    // A requested moment stops inside a report step; time never runs backwards.
    const Seconds half_day = engine.Start() + 43200;
    EXPECT_EQ(engine.AdvanceTo(half_day), half_day);
    EXPECT_EQ(FormatDate(engine.Now()), "2015-01-01 12:00:00");
    EXPECT_EQ(engine.ReportStep(), 0u);
    EXPECT_EQ(engine.AdvanceTo(engine.Start()), half_day);

    std::vector<Row> rows;
    while (!engine.Ended()) {
        const auto next = engine.NextReportDate();
        ASSERT_TRUE(next.has_value());
        ASSERT_EQ(engine.AdvanceTo(engine.End()), *next);
        const WellReport w = engine.Well(prod);
        rows.push_back({w.oil_rate, w.gas_rate, w.bhp});
        EXPECT_EQ(engine.ReportStep(), rows.size());
    }
    ASSERT_EQ(rows.size(), 120u);
    EXPECT_FALSE(engine.NextReportDate().has_value());

    std::size_t plateau = 0;
    while (plateau < rows.size() && rows[plateau].bhp > 1000.0 + 1e-6) {
        EXPECT_NEAR(rows[plateau].oil, 20000.0, 1e-6) << "step " << plateau;
        ++plateau;
    }
    ASSERT_GT(plateau, 12u) << "plateau too short";
    ASSERT_LT(plateau, rows.size()) << "the BHP limit never bound";
    for (std::size_t i = plateau; i < rows.size(); ++i) {
        EXPECT_NEAR(rows[i].bhp, 1000.0, 1e-6);
        EXPECT_LT(rows[i].oil, rows[i - 1].oil + 1e-9);
    }
    EXPECT_LT(rows.back().oil, 0.8 * 20000.0);
    const double gor_first = rows.front().gas / rows.front().oil;
    const double gor_last = rows.back().gas / rows.back().oil;
    EXPECT_NEAR(gor_first, 1.27, 0.01);  // Mscf/STB of the initial solution gas
    EXPECT_GT(gor_last, 3.0 * gor_first);

    // The changes in place match the wells' totals.
    const TankReport after = engine.Tank(0);
    const FieldReport f = engine.Field();
    EXPECT_NEAR(f.oil_total, engine.Well(prod).oil_total, 1e-6);
    EXPECT_NEAR(before.oil_in_place - after.oil_in_place, f.oil_total, 1e-6 * f.oil_total);
    EXPECT_NEAR(after.gas_in_place - before.gas_in_place, f.gas_injection_total - f.gas_total,
                1e-6 * f.gas_injection_total);
    EXPECT_GT(after.sg, 0.05);  // injected gas stays free (DRSDT 0)
    EXPECT_LE(after.rs, before.rs + 1e-12);
    EXPECT_NEAR(after.so + after.sw + after.sg, 1.0, 1e-6);  // the pressure fills the pores
}

TEST(Spe1Controls, WritesWaitForCheckNewControlsAndBadOnesAreRefused) {
    StandinReservoir engine(Spe1());
    EXPECT_THAT([&] { engine.Well(12); }, ThrowsMessage<EngineError>("Well index 12 out of range (0..1)"));
    EXPECT_THROW(engine.WellIndex("NOPE"), EngineError);
    EXPECT_THROW(engine.SetEfficiency(0, 1.5), EngineError);
    EXPECT_THROW(engine.SetBhpLimit(0, -1.0), EngineError);
    EXPECT_THROW(engine.SetInjectedPhase(1, Phase::kLiquid), EngineError);

    const std::size_t prod = engine.WellIndex("PROD");
    engine.SetRateLimit(prod, Phase::kOil, 5000.0);
    engine.AdvanceTo(engine.End());
    EXPECT_NEAR(engine.Well(prod).oil_rate, 20000.0, 1e-6);
    EXPECT_EQ(engine.CheckNewControls(), 1u);
    engine.AdvanceTo(engine.End());
    EXPECT_NEAR(engine.Well(prod).oil_rate, 5000.0, 1e-6);
    EXPECT_EQ(engine.Well(prod).mode, ControlMode::kOrat);

    engine.SetEfficiency(prod, 0.5);
    engine.CheckNewControls();
    engine.AdvanceTo(engine.End());
    EXPECT_NEAR(engine.Field().oil_rate, 2500.0, 1e-6);

    engine.SetStatus(prod, WellStatus::kShut);
    engine.CheckNewControls();
    engine.AdvanceTo(engine.End());
    EXPECT_EQ(engine.Well(prod).status, WellStatus::kShut);
    EXPECT_EQ(engine.Well(prod).oil_rate, 0.0);
    EXPECT_EQ(engine.Field().oil_rate, 0.0);
}

TEST(Spe1Ipr, AnswersFromTheInflowLawAndARaisedBhpLimitBinds) {
    StandinReservoir engine(Spe1());
    const std::size_t prod = engine.WellIndex("PROD");
    engine.AdvanceTo(engine.End());
    const double max_oil = engine.MaxRate(prod, Phase::kOil);
    EXPECT_GT(max_oil, 20000.0);
    EXPECT_NEAR(*engine.BhpForRate(prod, Phase::kOil, max_oil), 1000.0, 1e-6);
    EXPECT_NEAR(*engine.BhpForRate(prod, Phase::kOil, 20000.0), engine.Well(prod).bhp, 1e-3);
    EXPECT_GT(*engine.BhpForRate(prod, Phase::kOil, 5000.0), *engine.BhpForRate(prod, Phase::kOil, 15000.0));
    EXPECT_FALSE(engine.BhpForRate(prod, Phase::kWater, 100.0).has_value());  // no mobile water

    const std::size_t inj = engine.WellIndex("INJ");
    EXPECT_GT(*engine.BhpForRate(inj, Phase::kGas, 50000.0), engine.TankPressure(0));
    EXPECT_GT(engine.MaxRate(inj, Phase::kGas), 100000.0);

    const double p = engine.TankPressure(0);
    engine.SetBhpLimit(prod, p - 500.0);
    engine.CheckNewControls();
    engine.AdvanceTo(engine.End());
    const WellReport w = engine.Well(prod);
    EXPECT_EQ(w.mode, ControlMode::kBhp);
    EXPECT_NEAR(w.bhp, p - 500.0, 1e-6);
    EXPECT_LT(w.oil_rate, 20000.0);
    EXPECT_LT(w.thp, w.bhp);
}

TEST(OtherDecks, Spe3FollowsItsScheduleToTheEnd) {
    StandinReservoir engine(ReadDeck(kDecks + "/spe3/SPE3CASE1.DATA"));
    const std::size_t inj = engine.WellIndex("INJ");
    const std::size_t prod = engine.WellIndex("PROD");
    engine.AdvanceTo(engine.End());
    EXPECT_NEAR(engine.Well(inj).gas_rate, 4700.0, 1e-6);
    EXPECT_NEAR(engine.Well(prod).gas_rate, 6200.0, 1e-6);
    const double condensate = engine.Well(prod).oil_rate;  // oil carried by the produced gas
    EXPECT_GT(condensate, 100.0);
    while (!engine.Ended()) engine.AdvanceTo(engine.End());
    EXPECT_EQ(engine.Now(), engine.End());
    EXPECT_EQ(engine.Well(inj).gas_rate, 0.0);                // injection stops in the deck's last years
    EXPECT_LT(engine.Well(prod).oil_rate, 0.5 * condensate);  // lean gas cycling strips the condensate
    EXPECT_GT(engine.Field().gas_total, 0.0);
}

TEST(OtherDecks, Spe9RunsToTheEnd) {
    StandinReservoir engine(ReadDeck(kDecks + "/spe9/SPE9_CP.DATA"));
    EXPECT_EQ(engine.WellCount(), 26u);
    std::vector<double> oil;
    while (!engine.Ended()) {
        engine.AdvanceTo(engine.End());
        oil.push_back(engine.Field().oil_rate);
    }
    ASSERT_EQ(oil.size(), 90u);
    // Days 300 to 360: every producer cut to 100 STB/d, then back to 1500.
    EXPECT_GT(oil[29], 20000.0);
    for (std::size_t i = 30; i < 36; ++i) EXPECT_NEAR(oil[i], 25 * 100.0, 1e-6) << "step " << i;
    EXPECT_GT(oil[36], 20000.0);
    EXPECT_LT(engine.Field().pressure, 3600.0);
}

TEST(Waterflood, DeadOilDeckWithEfficiencyAndALaterShut) {
    const DeckModel model = ReadDeck(std::string(STANDIN_TEST_DECKS) + "/WATERFLOOD.DATA");
    EXPECT_EQ(model.units, UnitKind::kMetric);
    EXPECT_FALSE(model.fluids.at(0).live_oil);
    EXPECT_EQ(FormatDate(model.report_dates.at(1)), "2020-03-01");

    StandinReservoir engine(model);
    const TankReport initial = engine.Tank(0);
    engine.AdvanceTo(engine.End());
    const WellReport p = engine.Well(0);
    EXPECT_EQ(p.mode, ControlMode::kLrat);
    EXPECT_NEAR(p.liquid_rate, 100.0, 1e-9);
    EXPECT_NEAR(engine.Field().oil_rate + engine.Field().water_rate, 50.0, 1e-9);
    EXPECT_NEAR(p.liquid_rate, p.oil_rate + p.water_rate, 1e-9);
    EXPECT_EQ(p.gas_rate, 0.0);
    EXPECT_GT(engine.Tank(0).pressure, 200.0);  // injects twice what the half-time producer takes

    engine.AdvanceTo(engine.End());
    EXPECT_TRUE(engine.Ended());
    EXPECT_EQ(engine.Well(0).status, WellStatus::kShut);
    EXPECT_EQ(engine.Well(0).liquid_rate, 0.0);
    const FieldReport f = engine.Field();
    EXPECT_NEAR(engine.Tank(0).water_in_place - initial.water_in_place,
                f.water_injection_total - f.water_total, 1e-6 * f.water_injection_total);
}

int RunProgram(const std::string& args) {
    const std::string cmd = std::string(TNAV_STANDIN_EXE) + " " + args + " >/dev/null 2>&1";
    const int status = std::system(cmd.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Program, RunWritesOneCsvRowPerReportStepAndFailsWithoutADeck) {
    const std::string csv = ::testing::TempDir() + "standin_spe1.csv";
    ASSERT_EQ(RunProgram("--run " + kSpe1 + " --csv " + csv), 0);
    std::ifstream in(csv);
    std::string header, line;
    std::getline(in, header);
    EXPECT_EQ(header.rfind("DATE,DAYS,FOPR,", 0), 0u);
    std::size_t rows = 0;
    while (std::getline(in, line)) ++rows;
    EXPECT_EQ(rows, 121u);  // the start and each report date
    std::remove(csv.c_str());
    EXPECT_EQ(RunProgram("--run /no/such/CASE.DATA"), 1);
    EXPECT_EQ(RunProgram(""), 2);
}

}  // namespace
}  // namespace rivulet::standin
