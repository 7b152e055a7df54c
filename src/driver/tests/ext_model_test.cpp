// The model with a case on disk: the start on the scripted simulator library and its failing steps,
// Initialise with its connections and restart checks, the field totals, Timestep with its passes, texts and
// simulator calls; without a simulator, the dialogs, the view commands, the saved model and archive file,
// and the inflow library's hook-up.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "ScriptedApi.h"
#include "case/CaseDlg.h"
#include "driver/BoundaryDate.h"
#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"
#include "driver/tests/ExtModelProbe.h"
#include "inflowkit/InflowKit.h"
#include "platform/ShellOpener.h"
#include "platform/UserInterface.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;

using tnavscripted::Script;

tnavscripted::Well MakeWell(const std::string& name, bool injector, std::map<int, double> params) {
    tnavscripted::Well well;
    well.name = name;
    well.status = well.firstActiveStatus =
        injector ? TNAV_WELL_STATUS_OPEN_INJECTOR : TNAV_WELL_STATUS_OPEN_PRODUCER;
    well.params = std::move(params);
    return well;
}

// A case file in a scratch directory, a configured local machine and a fresh script whose FIELD-unit deck
// runs from 1 Jan 2015 to 1 Jan 2016 with the producers P1 and P2 and the water injector I1.
class StartPath : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ =
            fs::temp_directory_path() / ("rivulet_model_" + std::to_string(::getpid()) + "_" + info->name());
        fs::create_directories(dir_ / "locks");
        ::setenv("RIVULET_LOCK_DIR", (dir_ / "locks").c_str(), 1);
        std::ofstream(dir_ / "CASE.DATA") << "RUNSPEC\n";
        std::ofstream(dir_ / "tnav-standin") << "\n";
        saved_ = TheApp().Config;
        TheApp().Config.SimExecutable = (dir_ / "tnav-standin").string();
        TheApp().Config.LowerPort = 15960;
        TheApp().Config.UpperPort = 15961;
        TheApp().Config.DebugCommsDirectory.clear();
        tnavscripted::Script().Reset();
        Script().state.units = TNAV_UNIT_SYSTEM_FIELD;
        Script().state.wells = {
            MakeWell("P1", false,
                     {{TNAV_WELL_OIL_RATE, 1000.0},
                      {TNAV_WELL_GAS_RATE, 2.5},
                      {TNAV_WELL_WATER_RATE, 10.0},
                      {TNAV_WELL_ACCUM_OIL_RATE, 5e4}}),
            MakeWell("P2", false, {{TNAV_WELL_OIL_RATE, 500.0}}),
            MakeWell("I1", true, {{TNAV_WELL_WATER_INJ, 800.0}}),
        };
        model_.GetSettings().FileName = (dir_ / "CASE.DATA").string();
        model_.GetSettings().IsLocalMachine = true;
    }
    void TearDown() override {
        TheApp().Config = saved_;
        fs::remove_all(dir_);
    }
    std::int32_t Start() {
        err_ = tErrorRecord{};
        return model_.StartSimulator(nullptr, &err_);
    }
    std::string Status() {
        char text[256] = {};
        model_.GetModMsg(text, sizeof text - 1, nullptr);
        return text;
    }
    std::int32_t Init(tInitData* init, CExtModel* model = nullptr) {
        err_ = tErrorRecord{};
        return (model ? *model : model_).Initialise(init, &err_);
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
    void Restart(CExtModel* model = nullptr) {
        (model ? *model : model_).Stop();
        Script().state.jobEnded = Script().state.jobStarted = false;
    }
    std::int32_t StepTo(OleDate target, CExtModel* model = nullptr) {
        tTimestepData step{};
        step.iSize = sizeof step;
        EXPECT_TRUE(DateToBoundary(target, &step.stTarget));
        err_ = tErrorRecord{};
        return (model ? *model : model_).Timestep(&step, &err_);
    }
    const WellData& WellAt(int index) { return *model_.GetReservoir()->wells.At(index); }
    double GetVar(const std::string& access) {
        tGetVarData data{};
        data.pszAccess = access.c_str();
        EXPECT_EQ(model_.GetVar(&data, &err_), 0) << access << ": " << err_.szText;
        return std::stod(data.szValue);
    }

    fs::path dir_;
    MachineConfig saved_;
    CExtModel model_;
    tErrorRecord err_{};
    std::vector<std::int32_t> indices_, kinds_, phases_;
};

TEST_F(StartPath, AStartedModelHasTheRunsDatesUntilStopped) {
    ASSERT_EQ(Start(), 0) << err_.szText;
    EXPECT_TRUE(model_.IsConnected());
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\nRunning on: Local host");
    EXPECT_EQ(model_.StartDateTime(), OleDate::FromCalendar({2015, 1, 1}));
    EXPECT_EQ(model_.EndDateTime(), OleDate::FromCalendar({2016, 1, 1}));
    EXPECT_EQ(model_.CurrentDateTime(), model_.StartDateTime());
    EXPECT_EQ(model_.ReportDateTime(), model_.StartDateTime());

    EXPECT_EQ(model_.Stop(), 0);
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_NE(model_.GetReservoir(), nullptr);  // the data stay readable after the stop
    EXPECT_EQ(Script().Count("disconnect"), 1);
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\n<Not currently running>");
}

TEST_F(StartPath, EachFailingStepGivesItsTextAndDropsTheSession) {
    TheApp().Config.SimExecutable.clear();
    EXPECT_EQ(Start(), 1);
    EXPECT_STREQ(
        err_.szText,
        "Could not start the simulator process: <The tNavigator configuration for a Local Machine run has "
        "not been set. No new process is created.>");
    EXPECT_EQ(model_.GetSession(), nullptr);

    TheApp().Config.SimExecutable = (dir_ / "tnav-standin").string();
    Script().Fail("launch_job", 2, std::string(300, 'x'));
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(std::string(err_.szText), ("Failed to launch job: " + std::string(300, 'x')).substr(0, 255));
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_EQ(Script().Count("disconnect"), 1);

    Script().Fail("get_time_moment", 2, "no date", 2);
    EXPECT_EQ(Start(), 1);
    EXPECT_STREQ(
        err_.szText,
        "Error when creating the initial reservoir data: <Error when reading date: <no date>, type: <1>>");
    EXPECT_EQ(model_.GetSession(), nullptr);
}

TEST_F(StartPath, AModelWithoutAStartDateTakesTheTimeNow) {
    Script().state.start = {0, 13, 0};
    ASSERT_EQ(Start(), 0) << err_.szText;
    EXPECT_NEAR(model_.StartDateTime().Days(), OleDate::LocalNow().Days(), 1.0 / 24);
    EXPECT_EQ(model_.EndDateTime(), model_.StartDateTime());
    EXPECT_EQ(model_.CurrentDateTime(), model_.StartDateTime());
}

TEST_F(StartPath, AClusterCaseConnectsToItsHeadNode) {
    model_.GetSettings().IsLocalMachine = false;
    model_.GetSettings().HeadNodeName = "head01";
    model_.GetSettings().HeadNodePort = 4000;
    ASSERT_EQ(Start(), 0) << err_.szText;
    EXPECT_EQ(Status(), model_.GetSettings().FileName + "\nRunning on: head01");
    EXPECT_EQ(Script().Count("create_local_dispatcher__force_ports"), 0);
    EXPECT_EQ(Script().LastArgs("connect_to_dispatcher").substr(0, 12), "head01|4000|");
}

using Initialise = StartPath;

TEST_F(Initialise, TheInflowLibrarysStartReadsEveryWellAndKeepsTheNetworksWellsAsTheyWere) {
    IPRInitialiseForSimCalcCallback initialise = nullptr;
    ASSERT_EQ(InflowKitInspectCallbacks(model_.GetIprModel(), nullptr, &initialise, nullptr, nullptr, nullptr,
                                        nullptr),
              1);
    ASSERT_EQ(Start(), 0) << err_.szText;
    Restart();  // the wells read stay
    tSetConnectionData connect{};
    connect.iWellIndex = 1;
    connect.bConnect = 1;
    ASSERT_EQ(model_.SetConnection(&connect, &err_), 0);
    CaseSettings& settings = model_.GetSettings();
    std::tie(settings.IprModel, settings.RateControl, settings.IprAlpha) = std::tuple(2, 3, 1);

    char err[1024] = {};
    ASSERT_EQ(initialise(&model_, err), 0) << err;
    EXPECT_EQ(Script().Count("launch_job"), 2);
    EXPECT_EQ(std::tuple(settings.IprModel, settings.RateControl, settings.IprAlpha), std::tuple(1, 1, 0));
    EXPECT_EQ(std::tuple(WellAt(0).underVaneControl, WellAt(1).underVaneControl, WellAt(2).underVaneControl),
              std::tuple(false, true, false));

    // A calibration needs a year of deck ahead of it.
    Script().state.end = {2015, 12, 1};
    Restart();
    EXPECT_EQ(initialise(&model_, err), 1);
    EXPECT_NE(std::string(err).find("exceeds the end date set in the model's deck file"), std::string::npos)
        << err;
    // Nor can the year run past the calendar's end.
    Script().state.start = Script().state.current = {9999, 6, 1};
    Script().state.end = {9999, 12, 31};
    Restart();
    EXPECT_EQ(initialise(&model_, err), 1);
    EXPECT_EQ(std::string(err), "Invalid end date in InitialiseForSimCalc: model's start date is " +
                                    model_.CurrentDateTime().FormatLocale() + ".");
}

TEST_F(Initialise, ANullRecordStartsTheRunAndTheFieldTotalsAreTheWellsSumsInFieldUnits) {
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;
    EXPECT_TRUE(model_.IsRunActive());
    EXPECT_EQ(model_.GetReservoir()->wells.Count(), 3u);
    ASSERT_EQ(Init(nullptr), 0) << err_.szText;  // while connected no second simulator is started
    EXPECT_EQ(Script().Count("launch_job"), 1);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionRate"), 1500.0);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.WaterProductionRate"), 10.0);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.GasProductionRate"), 2.5 / 1000.0);  // Mscf to MMscf
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionTotal"), 5e4);
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.WaterInjectionRate"), 800.0);

    // A step reads the wells again, and the totals follow.
    Script().state.wells[1].params[TNAV_WELL_OIL_RATE] = 700.0;
    ASSERT_EQ(StepTo(OleDate::FromCalendar({2015, 2, 1})), 0) << err_.szText;
    EXPECT_DOUBLE_EQ(GetVar("tNavigator.Field.OilProductionRate"), 1700.0);
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
    static std::vector<std::string> notes;
    notes.clear();
    tInitData init = Connections({0}, {1}, {2});
    init.pfnProgress = [](const char* text, void*) { notes.push_back(text); };
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

// A started model stepped by the host.
class Stepping : public StartPath {
  protected:
    void SetUp() override {
        StartPath::SetUp();
        ASSERT_EQ(Start(), 0) << err_.szText;
        Script().ClearCalls();
    }
    std::int32_t StepTo(double days) { return StartPath::StepTo(OleDate::FromDays(days)); }
    const double start_ = OleDate::FromCalendar({2015, 1, 1}).Days();
};

TEST_F(Stepping, AReportDateIsReachedThroughTheDecksOwnStops) {
    Script().state.stops = {{2015, 1, 11}, {2015, 1, 21}};
    ASSERT_EQ(StepTo(start_ + 31), 0) << err_.szText;
    EXPECT_EQ(Script().Count("run"), 3);
    EXPECT_EQ(model_.CurrentDateTime(), OleDate::FromDays(start_ + 31));
    EXPECT_EQ(model_.GetStepCount(), 1);
    // The schedule's next stop is the next event once it lies ahead; until then the deck's end is.
    tDate next{};
    ASSERT_EQ(model_.GetNextEvent(&next, &err_), 0);
    EXPECT_DOUBLE_EQ(next.dSerial, OleDate::FromCalendar({2016, 1, 1}).Days() - 1.0);
    Script().state.nextSchedule = {2015, 3, 1};
    ASSERT_EQ(model_.GetNextEvent(&next, &err_), 0);
    EXPECT_DOUBLE_EQ(next.dSerial, OleDate::FromCalendar({2015, 3, 1}).Days() - 1.0);

    // A target within a minute needs no pass at all.
    Script().ClearCalls();
    ASSERT_EQ(StepTo(start_ + 31 + 50.0 / 86400), 0) << err_.szText;
    EXPECT_EQ(Script().Count("run"), 0);
    EXPECT_EQ(model_.GetStepCount(), 2);
}

TEST_F(Stepping, EachWayOfMissingTheTargetHasItsText) {
    EXPECT_EQ(StepTo(start_ - 1), 1);
    EXPECT_STREQ(err_.szText, "Report was requested for a date preceeding the current date.");

    // An overshoot is read but does not match.
    Script().ClearCalls();
    Script().state.overshootMinutes = 2;
    EXPECT_EQ(StepTo(start_ + 10), 1);
    EXPECT_STREQ(err_.szText, "Timestep() completed without matching the target report date.");
    EXPECT_EQ(model_.GetStepCount(), 0);
    EXPECT_EQ(Script().Count("get_time_moment"), 2);  // the clock, then the data read on arrival

    Script().state.stuck = true;
    EXPECT_EQ(StepTo(start_ + 20), 1);
    EXPECT_STREQ(err_.szText, "Timestep() inner loop failed to increment the current time.");
}

TEST_F(Stepping, AJobThatEndsBetweenPassesEndsTheStep) {
    Script().state.stops = {{2015, 1, 11}};
    int passes = 0;
    ExtModelProbe::SetBetweenPasses(model_, [&] {
        if (++passes == 2) Script().state.jobEnded = true;
    });
    EXPECT_EQ(StepTo(start_ + 31), 1);
    EXPECT_STREQ(err_.szText,
                 "Error when moving to the next time-step: <The tNavigator Simulation has ended.>");
}

// A simulator that dies is never taken for a Stop: the step ends with the text of an ended simulation and
// the model keeps its session for Stop to end.
TEST_F(Stepping, ASimulatorLostBetweenPassesEndsTheSimulationNotAStop) {
    for (const int lostAfter : {1, 2}) {
        SCOPED_TRACE("lost after pass " + std::to_string(lostAfter));
        Script().state.connectionLost = false;
        Script().state.current = {2015, 1, 1};
        Script().state.stops = {{2015, 1, 11}, {2015, 1, 21}};
        if (model_.GetSession() == nullptr) {
            Restart();
            ASSERT_EQ(Start(), 0) << err_.szText;
        }
        int passes = 0;
        ExtModelProbe::SetBetweenPasses(model_, [&] {
            if (++passes == lostAfter) Script().state.connectionLost = true;
        });
        EXPECT_EQ(StepTo(start_ + 31), 1);
        EXPECT_STREQ(err_.szText, "The tNavigator Simulation has ended.");
        EXPECT_NE(model_.GetSession(), nullptr);
        ExtModelProbe::SetBetweenPasses(model_, nullptr);
        EXPECT_EQ(model_.Stop(), 0);
        EXPECT_EQ(model_.GetSession(), nullptr);
    }
}

TEST_F(Stepping, AStopFromAnotherThreadBetweenPassesEndsTheStepCleanly) {
    Script().state.stops = {{2015, 1, 11}, {2015, 1, 21}};
    int passes = 0;
    ExtModelProbe::SetBetweenPasses(model_, [&] {
        if (++passes == 2) std::thread([&] { model_.Stop(); }).join();
    });
    EXPECT_EQ(StepTo(start_ + 31), 1);
    EXPECT_STREQ(err_.szText, "Process was stopped during a Timestep().");
    EXPECT_EQ(model_.GetSession(), nullptr);
    EXPECT_EQ(model_.CurrentDateTime(), OleDate::FromCalendar({2015, 1, 11}));
}

// The simulator calls of one coupled timestep do not grow with the number of wells: every read, every
// inflow table and every group of targets goes out in one batch.
TEST_F(StartPath, OneTimestepMakesAsManySimulatorCallsForTenAsForAThousandWells) {
    // `count` wells, all under the network: producers under water, liquid and gas control in turn, and every
    // fourth well a water injector. Each gets an operating point; the answer is the number of simulator
    // calls that one Timestep then made. Each count runs on a model of its own, so that no well list is
    // carried over from another run.
    const auto callsOfOneTimestep = [this](int count) {
        CExtModel model;
        model.GetSettings().FileName = model_.GetSettings().FileName;
        model.GetSettings().IsLocalMachine = true;
        Script().state.wells.clear();
        std::vector<std::int32_t> indices, kinds, phases;
        for (int k = 0; k < count; ++k) {
            const bool injector = k % 4 == 3;
            Script().state.wells.push_back(
                MakeWell("W" + std::to_string(k), injector,
                         {{injector ? TNAV_WELL_WATER_INJ : TNAV_WELL_OIL_RATE, 100.0}}));
            Script().state.wells.back().maxRates = {{0, 500.0}, {1, 800.0}, {2, 3.0}};
            indices.push_back(k);
            kinds.push_back(injector ? 2 : 1);
            phases.push_back(injector ? 1 : 1 << (k % 3));
        }
        tInitData init = Connections(indices, kinds, phases);
        EXPECT_EQ(Init(&init, &model), 0) << err_.szText;
        for (int k = 0; k < count; ++k) {
            _tGetSetData point{};
            point.iWellIndex = k;
            point.adOilRate[0] = 50.0;
            point.adWaterRate[0] = 20.0;
            point.adGasRate[0] = 0.5;
            EXPECT_EQ(model.SetOpPt(&point, &err_), 0) << err_.szText;
        }
        Script().ClearCalls();
        EXPECT_EQ(StepTo(OleDate::FromCalendar({2015, 2, 1}), &model), 0) << err_.szText;
        const int calls = static_cast<int>(Script().Calls().size());
        Restart(&model);
        Script().state.current = Script().state.start;
        return calls;
    };
    const int ten = callsOfOneTimestep(10);
    EXPECT_FALSE(HasFailure());
    // Targets (at most three calls for each of eleven groups, five lists and the check), the run and the
    // reads with the inflow tables: a bounded number whatever the well count.
    EXPECT_GT(ten, 20);
    EXPECT_LT(ten, 80);
    EXPECT_EQ(callsOfOneTimestep(1000), ten);
}

class ScriptedUserInterface : public UserInterface {
  public:
    DialogAnswer answer = DialogAnswer::Cancel;
    bool requestStart = false;
    std::vector<std::string> messages;

    void ShowMessage(const std::string& text, MessageIcon) override { messages.push_back(text); }
    // Opens the dialog, types a case file name and presses OK, Start or Cancel.
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        dialog.OnOpen();
        dialog.At(CaseDlg::kFileName).text = "/edited/CASE.DATA";
        const int button = answer == DialogAnswer::Cancel ? kIdCancel
                           : requestStart                 ? CaseDlg::kStart
                                                          : kIdOk;
        return dialog.OnClicked(button) == DialogAction::CloseOk ? DialogAnswer::Ok : DialogAnswer::Cancel;
    }
    std::optional<std::string> ChooseFile(const std::string&, const std::string&,
                                          const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> ChooseDirectory(const std::string&) override { return std::nullopt; }
    void ShowHelp(int) override {}
};

// Records each way tried as "how:path:dir"; only the way named in succeedWith succeeds.
class RecordingShell : public ShellOpener {
  public:
    using Text = const std::string&;
    std::vector<std::string> tries;
    std::string succeedWith;

    bool Try(const char* how, Text path, Text dir) {
        tries.push_back(std::string(how) + ":" + path + ":" + dir);
        return succeedWith == how;
    }
    bool OpenByAssociation(Text p, Text d) override { return Try("association", p, d); }
    bool OpenThroughDesktop(Text p, Text d) override { return Try("desktop", p, d); }
    bool OpenInTerminalEditor(Text p, Text d) override { return Try("terminal", p, d); }
};

// The model without a simulator, with the host's dialogs and the shell's ways of opening a file faked.
class ModelWithFakes : public StartPath {
  protected:
    void SetUp() override {
        StartPath::SetUp();
        InstallUserInterface(ui);
        InstallShellOpener(shell);
        fs::create_directories(dir_ / "RESULTS");
    }
    void TearDown() override {
        InstallUserInterface(nullptr);
        InstallShellOpener(nullptr);
        StartPath::TearDown();
    }
    std::string Touch(const fs::path& path) {
        std::ofstream(path) << "x";
        return path.string();
    }

    std::shared_ptr<ScriptedUserInterface> ui = std::make_shared<ScriptedUserInterface>();
    std::shared_ptr<RecordingShell> shell = std::make_shared<RecordingShell>();
};

TEST_F(ModelWithFakes, EditCaseTakesTheDialogsSettingsOnlyWhenConfirmed) {
    const std::string before = model_.GetSettings().FileName;
    EXPECT_EQ(model_.EditCase(0, nullptr, nullptr), -1);  // cancelled, with no flag to set
    EXPECT_EQ(model_.GetSettings().FileName, before);
    ui->answer = DialogAnswer::Ok;
    std::int32_t modified = 7;
    EXPECT_EQ(model_.EditCase(0, &modified, nullptr), 0);
    EXPECT_EQ(modified, 0);
    EXPECT_EQ(model_.GetSettings().FileName, "/edited/CASE.DATA");
    ui->requestStart = true;  // a change is reported only when a start was asked for
    EXPECT_EQ(model_.EditCase(0, &modified, nullptr), 0);
    EXPECT_EQ(modified, 1);
}

TEST_F(ModelWithFakes, ViewCommandsRefuseACaseThatIsNotReadyOrMissing) {
    model_.GetSettings().FileName.clear();
    EXPECT_EQ(model_.ViewCaseFile(nullptr), 1);
    model_.GetSettings().FileName = (dir_ / "GONE.DATA").string();
    model_.GetSettings().IsLocalMachine = false;
    EXPECT_EQ(model_.ViewLogFile(nullptr), 1);
    model_.GetSettings().IsLocalMachine = true;
    EXPECT_EQ(model_.ViewCaseFile(nullptr), 1);
    EXPECT_EQ(ui->messages,
              (std::vector<std::string>{
                  "No case has been specified",
                  "The \"Case file's directory as viewed by your Local machine\" has not been defined.",
                  "The file <" + (dir_ / "GONE.DATA").string() + "> could not be found"}));
    EXPECT_TRUE(shell->tries.empty());
}

TEST_F(ModelWithFakes, ViewCommandsTryTheShellsWaysInTurn) {
    // A local case file: by association, then through the desktop, then in the editor.
    model_.GetSettings().FileName = Touch(dir_ / "CASE.DATA");
    const std::string where = (dir_ / "CASE.DATA").string() + ":" + dir_.string() + "/";
    EXPECT_EQ(model_.ViewCaseFile(nullptr), 1);  // no way succeeds
    EXPECT_EQ(shell->tries,
              (std::vector<std::string>{"association:" + where, "desktop:" + where, "terminal:" + where}));
    EXPECT_EQ(ui->messages.back(), "No suitable Windows application to open this file could be found");

    // The log file is found under RESULTS, or else beside the case.
    shell->succeedWith = "association";
    Touch(dir_ / "CASE.log");
    EXPECT_EQ(model_.ViewLogFile(nullptr), 0);
    EXPECT_NE(shell->tries.back().find((dir_ / "CASE.log").string() + ":"), std::string::npos);
    Touch(dir_ / "RESULTS" / "CASE.log");
    EXPECT_EQ(model_.ViewLogFile(nullptr), 0);
    EXPECT_NE(shell->tries.back().find((dir_ / "RESULTS" / "CASE.log").string()), std::string::npos);

    // A cluster case file is opened from the local view, in the editor first.
    model_.GetSettings().IsLocalMachine = false;
    model_.GetSettings().FileName = "/cluster/path/CASE.DATA";
    model_.GetSettings().WindowsEquivDir = dir_.string() + "/";
    shell->tries.clear();
    EXPECT_EQ(model_.ViewCaseFile(nullptr), 0);
    EXPECT_EQ(shell->tries, (std::vector<std::string>{"terminal:" + where, "association:" + where}));
}

TEST_F(ModelWithFakes, ALoadedLocalCaseFindsItsDeckBesideTheMovedModel) {
    CExtModel source;
    source.GetSettings().FileName = "/old/place/SPE1.DATA";
    std::vector<char> saved(4096);
    tErrorRecord err{};
    ASSERT_EQ(source.SaveModelString(saved.data(), static_cast<std::int32_t>(saved.size()), &err), 0);

    auto data = std::make_unique<tLoadModelData>();  // zeroed
    std::memcpy(data->acModelString, saved.data(), saved.size());
    data->iLength = static_cast<std::int32_t>(saved.size());
    const std::string modelPath = (dir_ / "case.cfx").string();
    data->pszModelPath = modelPath.c_str();

    ASSERT_EQ(model_.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model_.GetSettings().FileName, "/old/place/SPE1.DATA");  // nothing beside the model yet

    const std::string moved = Touch(dir_ / "SPE1.DATA");
    ASSERT_EQ(model_.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model_.GetSettings().FileName, moved);
    EXPECT_TRUE(model_.GetLoadedFromSave());
    EXPECT_EQ(model_.GetModelPath(), modelPath);

    data->dwNoCaseSearch = 1;  // the host may turn the search off
    ASSERT_EQ(model_.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model_.GetSettings().FileName, "/old/place/SPE1.DATA");
}

TEST_F(ModelWithFakes, ReopenedCaseTakesItsWellsFromTheArchiveFileNotTheModelString) {
    CExtModel source;
    ReservoirData& reservoir = ExtModelProbe::MakeReservoir(source);
    reservoir.units.SetUp("FIELD");
    for (const char* name : {"P1", "I1"}) {
        WellData well(&reservoir.fluid);
        well.name = name;
        reservoir.wells.Add(well);
    }
    WellData& producer = *reservoir.wells.At(0);
    producer.SetWellStatus(kStatusOpenProducer);
    producer.productionRecord[WellRateRecord::kOil] = 250.0;
    std::string dropped;
    producer.SetUnderVaneControl(dropped);
    reservoir.wells.At(1)->SetWellStatus(kStatusOpenInjector);

    const std::string archive = (dir_ / "case.arc").string();
    tErrorRecord err{};
    ASSERT_EQ(source.SetArchiveFile(archive.c_str(), false, &err), 0);
    ASSERT_EQ(source.SaveToArchiveFile(nullptr, 0, &err), 0);
    auto data = std::make_unique<tLoadModelData>();
    ASSERT_EQ(source.SaveModelString(data->acModelString, 4096, &err), 0);
    data->iLength = 4096;

    // The host hands back the model string first: a reset model with no wells.
    ASSERT_EQ(model_.LoadModelString(data.get(), &err), 0);
    ASSERT_NE(model_.GetReservoir(), nullptr);
    EXPECT_TRUE(model_.GetReservoir()->wells.IsEmpty());

    ASSERT_EQ(model_.SetArchiveFile(archive.c_str(), true, &err), 0);
    const ReservoirData& loaded = *model_.GetReservoir();
    EXPECT_TRUE(loaded.units.IsField() && loaded.units.IsSet());
    ASSERT_EQ(loaded.wells.Count(), 2u);
    const WellData& p1 = *loaded.wells.At(0);
    const WellData& i1 = *loaded.wells.At(1);
    EXPECT_EQ(std::tie(p1.name, p1.fluid), std::tuple("P1", &loaded.fluid));
    EXPECT_EQ(std::tuple(p1.IsProducer(), p1.OilRate(), p1.underVaneControl), std::tuple(true, 250.0, true));
    EXPECT_EQ(std::tie(i1.name, i1.fluid), std::tuple("I1", &loaded.fluid));
    EXPECT_EQ(std::tuple(i1.IsInjector(), i1.underVaneControl), std::tuple(true, false));

    // A second load replaces the list; a file cut inside the well list is refused.
    ASSERT_EQ(model_.LoadFromArchiveFile(nullptr, 0, &err), 0);
    EXPECT_EQ(model_.GetReservoir()->wells.Count(), 2u);
    fs::resize_file(archive, fs::file_size(archive) - 1);
    EXPECT_EQ(model_.LoadFromArchiveFile(nullptr, 0, &err), 1);
}

TEST(CExtModel, HandsTheInflowLibraryItselfAsContextAndAllSixCallbacks) {
    CExtModel model;
    ASSERT_NE(model.GetIprModel(), nullptr);
    EXPECT_EQ(InflowKitInspectContext(model.GetIprModel()), &model);
    std::tuple<IPRElapsedTimeCallback, IPRInitialiseForSimCalcCallback, IPRSetWellCtrlForSimCalcCallback,
               IPRRunToForSimCalcCallback, IPRGetWellBlockIPRForSimCalcCallback,
               IPRGetWellRatesForSimCalcCallback>
        callbacks{};
    auto& [elapsed, init, setWell, runTo, blockIpr, rates] = callbacks;
    ASSERT_EQ(
        InflowKitInspectCallbacks(model.GetIprModel(), &elapsed, &init, &setWell, &runTo, &blockIpr, &rates),
        1);
    ASSERT_TRUE(elapsed && init && setWell && runTo && blockIpr && rates);
}

}  // namespace
}  // namespace rivulet
