// A model without a simulator: dialogs, view commands, the moved-case search and the inflow library hook-up.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "ExtModelProbe.h"
#include "case/CaseDlg.h"
#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"
#include "platform/ShellOpener.h"
#include "platform/UserInterface.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;

class ScriptedUserInterface : public UserInterface {
  public:
    DialogAnswer answer = DialogAnswer::Cancel;
    bool requestStart = false;
    std::vector<std::string> messages;

    void ShowMessage(const std::string& text, MessageIcon) override { messages.push_back(text); }
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        if (auto* caseDialog = dynamic_cast<CaseDlg*>(&dialog)) {
            caseDialog->Edited.FileName = "/edited/CASE.DATA";
            caseDialog->StartRequested = requestStart;
        }
        return answer;
    }
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

class ModelWithFakes : public ::testing::Test {
  protected:
    void SetUp() override {
        ui = std::make_shared<ScriptedUserInterface>();
        shell = std::make_shared<RecordingShell>();
        InstallUserInterface(ui);
        InstallShellOpener(shell);
        dir = fs::temp_directory_path() / ("rivulet-model-" + std::to_string(::getpid()));
        fs::create_directories(dir / "RESULTS");
    }
    void TearDown() override {
        InstallUserInterface(nullptr);
        InstallShellOpener(nullptr);
        fs::remove_all(dir);
    }
    std::string Touch(const fs::path& path) {
        std::ofstream(path) << "x";
        return path.string();
    }

    std::shared_ptr<ScriptedUserInterface> ui;
    std::shared_ptr<RecordingShell> shell;
    fs::path dir;
    CExtModel model;
};

TEST_F(ModelWithFakes, EditCaseTakesTheDialogsSettingsOnlyWhenConfirmed) {
    EXPECT_EQ(model.EditCase(0, nullptr, nullptr), -1);  // cancelled, with no flag to set
    EXPECT_TRUE(model.GetSettings().FileName.empty());
    ui->answer = DialogAnswer::Ok;
    std::int32_t modified = 7;
    EXPECT_EQ(model.EditCase(0, &modified, nullptr), 0);
    EXPECT_EQ(modified, 0);
    EXPECT_EQ(model.GetSettings().FileName, "/edited/CASE.DATA");
    ui->requestStart = true;  // a change is reported only when a start was asked for
    EXPECT_EQ(model.EditCase(0, &modified, nullptr), 0);
    EXPECT_EQ(modified, 1);
}

TEST_F(ModelWithFakes, ViewCommandsRefuseACaseThatIsNotReadyOrMissing) {
    EXPECT_EQ(model.ViewCaseFile(nullptr), 1);
    model.GetSettings().FileName = (dir / "GONE.DATA").string();
    model.GetSettings().IsLocalMachine = false;
    EXPECT_EQ(model.ViewLogFile(nullptr), 1);
    model.GetSettings().IsLocalMachine = true;
    EXPECT_EQ(model.ViewCaseFile(nullptr), 1);
    EXPECT_EQ(ui->messages,
              (std::vector<std::string>{
                  "No case has been specified",
                  "The \"Case file's directory as viewed by your Local machine\" has not been defined.",
                  "The file <" + (dir / "GONE.DATA").string() + "> could not be found"}));
    EXPECT_TRUE(shell->tries.empty());
}

TEST_F(ModelWithFakes, LocalCaseFileIsOpenedByAssociationThenTheDesktopThenTheEditor) {
    model.GetSettings().FileName = Touch(dir / "CASE.DATA");
    EXPECT_EQ(model.ViewCaseFile(nullptr), 1);  // no way succeeds
    const std::string where = (dir / "CASE.DATA").string() + ":" + dir.string() + "/";
    EXPECT_EQ(shell->tries,
              (std::vector<std::string>{"association:" + where, "desktop:" + where, "terminal:" + where}));
    EXPECT_EQ(ui->messages.back(), "No suitable Windows application to open this file could be found");
}

TEST_F(ModelWithFakes, ClusterCaseFileIsOpenedInTheEditorFirstFromTheLocalView) {
    model.GetSettings().IsLocalMachine = false;
    model.GetSettings().FileName = "/cluster/path/CASE.DATA";
    model.GetSettings().WindowsEquivDir = dir.string() + "/";
    Touch(dir / "CASE.DATA");
    shell->succeedWith = "association";
    EXPECT_EQ(model.ViewCaseFile(nullptr), 0);
    const std::string where = (dir / "CASE.DATA").string() + ":" + dir.string() + "/";
    EXPECT_EQ(shell->tries, (std::vector<std::string>{"terminal:" + where, "association:" + where}));
}

TEST_F(ModelWithFakes, LogFileIsFoundUnderResultsOrElseBesideTheCase) {
    model.GetSettings().FileName = Touch(dir / "CASE.DATA");
    shell->succeedWith = "association";
    Touch(dir / "CASE.log");
    EXPECT_EQ(model.ViewLogFile(nullptr), 0);
    EXPECT_NE(shell->tries.back().find((dir / "CASE.log").string() + ":"), std::string::npos);
    Touch(dir / "RESULTS" / "CASE.log");
    EXPECT_EQ(model.ViewLogFile(nullptr), 0);
    EXPECT_NE(shell->tries.back().find((dir / "RESULTS" / "CASE.log").string()), std::string::npos);
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
    const std::string modelPath = (dir / "case.cfx").string();
    data->pszModelPath = modelPath.c_str();

    ASSERT_EQ(model.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model.GetSettings().FileName, "/old/place/SPE1.DATA");  // nothing beside the model yet

    const std::string moved = Touch(dir / "SPE1.DATA");
    ASSERT_EQ(model.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model.GetSettings().FileName, moved);
    EXPECT_TRUE(model.GetLoadedFromSave());
    EXPECT_EQ(model.GetModelPath(), modelPath);

    data->dwNoCaseSearch = 1;  // the host may turn the search off
    ASSERT_EQ(model.LoadModelString(data.get(), &err), 0);
    EXPECT_EQ(model.GetSettings().FileName, "/old/place/SPE1.DATA");
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

    const std::string archive = (dir / "case.arc").string();
    tErrorRecord err{};
    ASSERT_EQ(source.SetArchiveFile(archive.c_str(), false, &err), 0);
    ASSERT_EQ(source.SaveToArchiveFile(nullptr, 0, &err), 0);
    auto data = std::make_unique<tLoadModelData>();
    ASSERT_EQ(source.SaveModelString(data->acModelString, 4096, &err), 0);
    data->iLength = 4096;

    // The host hands back the model string first: a reset model with no wells.
    ASSERT_EQ(model.LoadModelString(data.get(), &err), 0);
    ASSERT_NE(model.GetReservoir(), nullptr);
    EXPECT_TRUE(model.GetReservoir()->wells.IsEmpty());

    ASSERT_EQ(model.SetArchiveFile(archive.c_str(), true, &err), 0);
    const ReservoirData& loaded = *model.GetReservoir();
    EXPECT_TRUE(loaded.units.IsField());
    EXPECT_TRUE(loaded.units.IsSet());
    ASSERT_EQ(loaded.wells.Count(), 2u);
    const WellData& p1 = *loaded.wells.At(0);
    EXPECT_EQ(p1.name, "P1");
    EXPECT_TRUE(p1.IsProducer());
    EXPECT_EQ(p1.OilRate(), 250.0);
    EXPECT_TRUE(p1.underVaneControl);
    EXPECT_EQ(p1.fluid, &loaded.fluid);
    const WellData& i1 = *loaded.wells.At(1);
    EXPECT_EQ(i1.name, "I1");
    EXPECT_TRUE(i1.IsInjector());
    EXPECT_FALSE(i1.underVaneControl);
    EXPECT_EQ(i1.fluid, &loaded.fluid);

    // A second load replaces the list; a file cut inside the well list is refused.
    ASSERT_EQ(model.LoadFromArchiveFile(nullptr, 0, &err), 0);
    EXPECT_EQ(model.GetReservoir()->wells.Count(), 2u);
    fs::resize_file(archive, fs::file_size(archive) - 1);
    EXPECT_EQ(model.LoadFromArchiveFile(nullptr, 0, &err), 1);
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

    // Through the callbacks a fresh model answers with the callbacks' own texts, at the buffer's start.
    char err[300] = {};
    EXPECT_EQ(setWell(&model, 0, 1.0, err), 1);
    EXPECT_STREQ(err, "SetWellCtrlForSimCalc() was called before simulator is ready for data.");
    EXPECT_EQ(rates(&model, 0, nullptr, err), 1);
    EXPECT_STREQ(err, "A null item was sent to GetWellRatesForSimCalc()");
    EXPECT_EQ(blockIpr(nullptr, 0, nullptr, err), 1);
    EXPECT_STREQ(err, "A null item was sent to GetWellBlockIPRForSimCalc()");
    EXPECT_EQ(runTo(&model, 1.0, nullptr), 1);  // a null buffer is a failure with nothing written
}

TEST(CExtInterface, UnusedPositionsKeepTheirBaseAnswers) {
    CExtModel model;
    CExtInterface& base = model;
    unsigned char record[64];
    std::memset(record, 0xAB, sizeof(record));
    EXPECT_EQ(base.Reserved22(record, nullptr), -1);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(record[i], (i >= 16 && i < 24) ? 0 : 0xAB) << "byte " << i;
    EXPECT_EQ(base.Reserved23(), -1);
    EXPECT_EQ(base.Reserved26(), -1);
    EXPECT_EQ(base.Reserved7(), 0);
}

}  // namespace
}  // namespace rivulet
