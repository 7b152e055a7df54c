// Initialise on the scripted simulator: the start, the restart checks against the model held before, the
// connections, the run to the host's start date and the field totals after each step.
#include <vector>

#include "driver/BoundaryDate.h"
#include "driver/tests/ExtModelProbe.h"
#include "driver/tests/ScriptedModelFixture.h"

namespace rivulet {
namespace {

using tnavscripted::Script;
using tnavscripted::Well;

Well MakeWell(const std::string& name, tNavigator_API_RMA_well_status_t status,
              std::map<int, double> params) {
    Well well;
    well.name = name;
    well.status = well.firstActiveStatus = status;
    well.params = std::move(params);
    return well;
}

class Initialise : public StartPath {
  protected:
    void SetUp() override {
        StartPath::SetUp();
        Script().state.units = TNAV_UNIT_SYSTEM_FIELD;
        Script().state.wells = {
            MakeWell("P1", TNAV_WELL_STATUS_OPEN_PRODUCER,
                     {{TNAV_WELL_OIL_RATE, 1000.0},
                      {TNAV_WELL_GAS_RATE, 2.5},
                      {TNAV_WELL_WATER_RATE, 10.0},
                      {TNAV_WELL_ACCUM_OIL_RATE, 5e4}}),
            MakeWell("P2", TNAV_WELL_STATUS_OPEN_PRODUCER, {{TNAV_WELL_OIL_RATE, 500.0}}),
            MakeWell("I1", TNAV_WELL_STATUS_OPEN_INJECTOR, {{TNAV_WELL_WATER_INJ, 800.0}}),
        };
    }
    std::int32_t Init(tInitData* init) {
        err_ = tErrorRecord{};
        return model_.Initialise(init, &err_);
    }
    // A record that connects `indices` with the given kinds and phases.
    tInitData Connections(std::vector<std::int32_t> indices, std::vector<std::int32_t> kinds,
                          std::vector<std::int32_t> phases) {
        indices_ = std::move(indices);
        kinds_ = std::move(kinds);
        phases_ = std::move(phases);
        tInitData init{};
        init.piWellIndices = indices_.data();
        init.piWellKinds = kinds_.data();
        init.piVanePhases = phases_.data();
        init.iNumWells = static_cast<std::int32_t>(indices_.size());
        return init;
    }
    // Stops the model; the next Initialise starts a new job on the script.
    void Restart() {
        model_.Stop();
        Script().state.jobEnded = false;
        Script().state.jobStarted = false;
    }
    const WellData& WellAt(int index) { return *model_.GetReservoir()->wells.At(index); }
    double GetVar(const std::string& access) {
        tGetVarData data{};
        data.pszAccess = access.c_str();
        EXPECT_EQ(model_.GetVar(&data, &err_), 0) << access << ": " << err_.szText;
        return std::stod(data.szValue);
    }

    std::vector<std::int32_t> indices_, kinds_, phases_;
};

TEST_F(Initialise, ANullRecordStartsTheSimulatorAndInitialisesTheRun) {
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;
    EXPECT_TRUE(model_.IsRunActive());
    EXPECT_EQ(model_.GetReservoir()->wells.Count(), 3u);
    EXPECT_EQ(Script().Count("launch_job"), 1);
    // A second call while connected starts no second simulator.
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;
    EXPECT_EQ(Script().Count("launch_job"), 1);
}

TEST_F(Initialise, ConnectionsSetTheKindOfRateControl) {
    ASSERT_EQ(Start(), 0) << err_.szText;
    tInitData init = Connections({0, 1, 2}, {1, 1, 2}, {0, 4, 1});
    ASSERT_EQ(Init(&init), 0) << err_.szText;
    EXPECT_EQ(WellAt(0).vaneRateControl, kControlDefault);
    EXPECT_EQ(WellAt(1).vaneRateControl, kControlGas);
    EXPECT_EQ(WellAt(2).vaneRateControl, kControlWater);
    EXPECT_FALSE(WellAt(0).underVaneControl);  // the first operating point takes the well

    tInitData mismatch = Connections({2}, {1}, {0});
    EXPECT_EQ(Init(&mismatch), 1);
    EXPECT_STREQ(err_.szText, "The well <I1> has a producer/injector mismatch between VANE and tNavigator.");
    EXPECT_FALSE(model_.GetRunInitialised());
}

TEST_F(Initialise, AnEndDateBeyondTheDeckIsRefused) {
    tInitData init{};
    ASSERT_TRUE(DateToBoundary(OleDate::FromCalendar({2017, 1, 1}), &init.stEndDate));
    EXPECT_EQ(Init(&init), 1);
    EXPECT_NE(std::string(err_.szText).find("exceeds the end date set in the model's deck file"),
              std::string::npos);
}

TEST_F(Initialise, TheRunToTheHostsStartDateReadsTheConnectedWellsOnce) {
    std::vector<std::string> notes;
    static std::vector<std::string>* seen = nullptr;
    seen = &notes;
    tInitData init = Connections({0}, {1}, {2});
    init.pfnProgress = [](const char* text, void*) { seen->push_back(text); };
    init.dwRunToStartDate = 1;
    ASSERT_TRUE(DateToBoundary(OleDate::FromCalendar({2015, 3, 1}), &init.stStartDate));
    model_.GetSettings().UnconnectedState = 2;
    ASSERT_EQ(Init(&init), 0) << err_.szText;
    EXPECT_EQ(model_.CurrentDateTime(), OleDate::FromCalendar({2015, 3, 1}));
    EXPECT_EQ(model_.GetStepCount(), 0);
    EXPECT_EQ(model_.GetSettings().UnconnectedState, 2);
    EXPECT_FALSE(WellAt(0).underVaneControl);
    EXPECT_EQ(notes, std::vector<std::string>{"Running tNavigator simulation to Conflux start date"});
    // Already there: nothing more is run.
    Script().ClearCalls();
    ASSERT_EQ(Init(&init), 0) << err_.szText;
    EXPECT_EQ(Script().Count("run"), 0);
}

TEST_F(Initialise, ARestartIsCheckedAgainstTheModelHeldBefore) {
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;
    Restart();
    std::swap(Script().state.wells[0], Script().state.wells[1]);
    EXPECT_EQ(Init(nullptr), 1);
    EXPECT_STREQ(err_.szText, "The well <P2> is not in the same order as it was in the previous model.");

    Restart();
    std::swap(Script().state.wells[0], Script().state.wells[1]);
    Script().state.units = TNAV_UNIT_SYSTEM_METRIC;
    EXPECT_EQ(Init(nullptr), 1);
    EXPECT_STREQ(err_.szText, "The unit system used in the model has changed.");
}

TEST_F(Initialise, FieldTotalsAreTheSumsOfTheWellsInFieldUnits) {
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionRate"), 1500.0);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.WaterProductionRate"), 10.0);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.GasProductionRate"), 2.5 / 1000.0);  // Mscf to MMscf
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionTotal"), 5e4);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.WaterInjectionRate"), 800.0);

    // A step reads the wells again, and the totals follow.
    Script().state.wells[1].params[TNAV_WELL_OIL_RATE] = 700.0;
    tTimestepData step{};
    ASSERT_TRUE(DateToBoundary(OleDate::FromCalendar({2015, 2, 1}), &step.stTarget));
    ASSERT_EQ(model_.Timestep(&step, &err_), 0) << err_.szText;
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionRate"), 1700.0);
}

}  // namespace
}  // namespace rivulet
