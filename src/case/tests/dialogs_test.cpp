// The case and configuration dialogs as logic over their controls: a scripted interface stands in for the
// person, presses buttons and picks files; a fake model stands in for the driver's.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "case/CaseDlg.h"
#include "case/ConfigureDlg.h"
#include "common/PasswordStore.h"
#include "session/MachineConfig.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;
using Ids = std::vector<int>;

// Each RunModal opens the dialog and hands it to the next script, which answers by the button it presses.
class ScriptedUi : public UserInterface {
  public:
    using Script = std::function<int(ModalDialog&)>;
    std::deque<Script> scripts;
    std::vector<std::pair<std::string, MessageIcon>> messages;
    std::optional<std::string> file, folder;
    std::vector<std::string> fileRequests;
    int help = 0;

    void ShowMessage(const std::string& text, MessageIcon icon) override {
        messages.emplace_back(text, icon);
    }
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        dialog.OnOpen();
        const int button = scripts.empty() ? kIdCancel : scripts.front()(dialog);
        if (!scripts.empty()) scripts.pop_front();
        return Press(dialog, button) == DialogAction::CloseOk ? DialogAnswer::Ok : DialogAnswer::Cancel;
    }
    std::optional<std::string> ChooseFile(const std::string& filter, const std::string& extension,
                                          const std::string& start) override {
        fileRequests.push_back(filter + ";" + extension + ";" + start);
        return file;
    }
    std::optional<std::string> ChooseDirectory(const std::string& title) override {
        fileRequests.push_back(title);
        return folder;
    }
    void ShowHelp(int topic) override { help = topic; }
    static DialogAction Press(ModalDialog& dialog, int id) { return dialog.OnClicked(id); }
};

class FakeModel : public CaseDialogModel {
  public:
    CaseSettings settings;
    bool reservoir = false, calculated = false, connected = false, active = false;
    int stops = 0;
    std::vector<CaseSettings> calculations;

    CaseSettings GetCaseSettings() const override { return settings; }
    void SetCaseSettings(const CaseSettings& s) override { settings.CopyFrom(s); }
    bool HasReservoirData() const override { return reservoir; }
    bool HasCalculatedIpr() const override { return calculated; }
    bool IsConnected() const override { return connected; }
    bool IsRunActive() const override { return active; }
    void Stop() override {
        ++stops;
        connected = active = false;
    }
    void CalculateIpr(const CaseSettings& onScreen) override {
        calculations.push_back(onScreen);
        calculated = true;
    }
};

class Dialogs : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(dir_);
        ::setenv("RIVULET_REGISTRY", (dir_ / "registry.reg").c_str(), 1);
        std::ofstream(dir_ / "tnav-standin") << "\n";
        config_.SimExecutable = (dir_ / "tnav-standin").string();
        config_.LowerPort = 15960;
        config_.UpperPort = 15961;
        model_.settings.FileName = "/cases/SPE1.DATA";
        InstallUserInterface(ui_);
    }
    void TearDown() override {
        InstallUserInterface(nullptr);
        fs::remove_all(dir_);
    }
    // Opens the case dialog as the interface would.
    CaseDlg& OpenCase() {
        dialog_.OnOpen();
        return dialog_;
    }
    std::vector<std::string> Messages() const {
        std::vector<std::string> texts;
        for (const auto& [text, icon] : ui_->messages) texts.push_back(text);
        return texts;
    }
    Ids Enabled(const ModalDialog& dialog, const Ids& ids) const {
        Ids on;
        for (int id : ids) {
            if (dialog.At(id).enabled) on.push_back(id);
        }
        return on;
    }

    const fs::path dir_ = fs::temp_directory_path() / ("rivulet-dialogs-" + std::to_string(::getpid()));
    std::shared_ptr<ScriptedUi> ui_ = std::make_shared<ScriptedUi>();
    MachineConfig config_;
    FakeModel model_;
    CaseDlg dialog_{model_, config_};
};

const Ids kCaseEditing = {1149, 1150, 1157, 1158, 1140, 1141, 1216, 1215, 1138, 1124, 1123, 1164,
                          1131, 1137, 1160, 1200, 1099, 1156, 1211, 1212, 1143, 1142, 1};
const Ids kClusterOnly = {1157, 1158, 1140, 1141, 1216, 1215, 1163, 1164};

TEST_F(Dialogs, CaseOpensOnTheModelsCaseOrTheLastUsedValues) {
    CaseSettings& s = model_.settings;
    s.HeadNodePort = 99, s.ParallelCount = 0, s.GlrThreshold = -4, s.DefaultFluidTemp = 3.3e35;
    s.RateControl = 2, s.FluidTempUnit = 9, s.IprAlpha = 3, s.IprModel = 1, s.UnconnectedState = 2;
    s.LinuxQueue = "night";
    config_.AllLinuxQueues = " short\nlong \n\nshort\n";
    CaseDlg& d = OpenCase();
    EXPECT_EQ(std::tuple(d.At(1141).text, d.At(1138).text, d.At(1137).text, d.At(1211).text),
              std::tuple("5555", "", "587", ""));
    EXPECT_EQ(
        std::tuple(d.At(1131).selection, d.At(1212).selection, d.At(1200).selection, d.At(1099).selection),
        std::tuple(1, 0, 3, 0));  // an unknown unit selects the first
    EXPECT_TRUE(d.At(1160).checked);
    EXPECT_EQ(d.At(1215).items, (std::vector<std::string>{"short", "long"}));
    EXPECT_EQ(d.At(1215).text, "night");
    EXPECT_EQ(d.At(1111).text, "Case File (path as seen from your Local machine)");
    EXPECT_EQ(std::tuple(d.At(1143).text, d.At(1156).text, d.At(1156).enabled),
              std::tuple("Reconfigure", "Calculate now", false));
    for (int id : kClusterOnly) EXPECT_FALSE(d.At(id).shown) << id;
    EXPECT_TRUE(d.At(1137).shown && d.At(1135).shown);  // gas-to-liquid control shows its threshold
    EXPECT_FALSE(d.At(1156).shown);                     // "Block" has nothing to calculate
    Ids editable = kCaseEditing;
    std::erase(editable, 1156);  // nothing to calculate on without reservoir data
    EXPECT_EQ(Enabled(d, kCaseEditing), editable);

    // A model without a case file starts from the user's last-used values.
    CaseSettings lastUsed;
    lastUsed.FileName = "/last/USED.DATA", lastUsed.IsLocalMachine = false, lastUsed.HeadNodeName = "hn";
    lastUsed.SaveLastUsed();
    model_.settings = CaseSettings();
    model_.reservoir = model_.calculated = true;
    OpenCase();
    EXPECT_EQ(std::tuple(d.At(1124).text, d.At(1150).checked, d.At(1158).text),
              std::tuple("/last/USED.DATA", true, "hn"));
    EXPECT_EQ(d.At(1111).text, "Case File (path as seen from Linux cluster)");
    EXPECT_EQ(std::tuple(d.At(1156).text, d.At(1156).enabled, d.At(1156).shown),
              std::tuple("Recalculate", true, true));
    for (int id : kClusterOnly) EXPECT_TRUE(d.At(id).shown) << id;
    EXPECT_FALSE(d.At(1123).enabled);  // no browsing for a cluster's path
}

TEST_F(Dialogs, ARunningModelLocksTheCaseUntilStopped) {
    const Ids groups = {1139, 1217, 1111, 1112, 1159, 1155, 1198};
    model_.connected = model_.active = true;
    CaseDlg& d = OpenCase();
    EXPECT_EQ(Enabled(d, kCaseEditing), Ids{});

    // Connected but not initialised: only Stop, Cancel and Help answer, and the groups say why, once.
    model_.active = false;
    OpenCase();
    OpenCase();
    EXPECT_EQ(Enabled(d, kCaseEditing), Ids{1142});
    EXPECT_TRUE(d.At(kIdCancel).enabled && d.At(kIdHelp).enabled);
    EXPECT_EQ(d.At(1142).text, "Stop");
    EXPECT_EQ(d.At(1159).text, "Wells not connected to VANE - Press Stop to edit");
    for (int id : groups)
        EXPECT_EQ(d.At(id).text.find(" - Press Stop to edit"), d.At(id).text.size() - 21) << id;

    EXPECT_EQ(d.OnClicked(1142), DialogAction::None);
    EXPECT_EQ(std::tuple(model_.stops, d.At(1142).text, d.At(1159).text),
              std::tuple(1, "Start", "Wells not connected to VANE"));
    EXPECT_EQ(Enabled(d, kCaseEditing), kCaseEditing);
}

TEST_F(Dialogs, CaseOkValidatesInOrderAndKeepsTheDialogOpen) {
    using Setup = std::function<void(CaseDlg&)>;
    const auto cluster = [](CaseDlg& d) { d.OnClicked(1150); };
    const std::vector<std::tuple<Setup, std::string, MessageIcon>> cases = {
        {[](CaseDlg& d) { d.At(1124).text = "  "; }, "No case file name has been entered",
         MessageIcon::Warning},
        {[](CaseDlg& d) { d.At(1211).text = "warm"; }, "The Default fluid temperature must be a number",
         MessageIcon::Warning},
        {[](CaseDlg& d) { d.At(1211).text = ""; }, "The Default fluid temperature must be a number",
         MessageIcon::Warning},
        {[&](CaseDlg& d) { cluster(d), d.At(1158).text = "hn", d.At(1141).text = "99"; },
         "Head Node Port must be from 1024 to 65535 (inclusive).", MessageIcon::Warning},
        {[&](CaseDlg& d) { cluster(d), d.At(1158).text = " "; }, "No Linux Head Node Name has been entered",
         MessageIcon::Error},
        {[&](CaseDlg&) { config_.SimExecutable.clear(); },
         "Simulator cannot be set-up unless it is configured.", MessageIcon::Warning},
    };
    for (const auto& [setup, text, icon] : cases) {
        ui_->messages.clear();
        config_.SimExecutable = (dir_ / "tnav-standin").string();
        CaseDlg& d = OpenCase();
        setup(d);
        EXPECT_EQ(d.OnClicked(kIdOk), DialogAction::None) << text;
        EXPECT_EQ(ui_->messages, (std::vector<std::pair<std::string, MessageIcon>>{{text, icon}}));
    }
    EXPECT_TRUE(ui_->scripts.empty());  // the configuration dialog was offered before giving up
    EXPECT_EQ(model_.settings.FileName, "/cases/SPE1.DATA");

    // A local run's port out of range is put right without a word.
    ui_->messages.clear();
    config_.SimExecutable = (dir_ / "tnav-standin").string();
    CaseDlg& d = OpenCase();
    d.At(1141).text = "99";
    EXPECT_EQ(d.OnClicked(kIdOk), DialogAction::CloseOk);
    EXPECT_EQ(std::tuple(d.At(1141).text, model_.settings.HeadNodePort, Messages().size()),
              std::tuple("5555", 5555, 0u));
}

TEST_F(Dialogs, CaseControlsAreReadBackByTheirTexts) {
    CaseDlg& d = OpenCase();
    d.At(1124).text = "  /new/CASE.DATA ", d.At(1138).text = "", d.At(1137).text = " 600",
    d.At(1211).text = "98.5";
    d.At(1160).checked = false;
    // Combos are read by the first choice their text contains, in the exact case.
    const std::vector<std::tuple<int, int, int>> combos = {{1200, 1, 1}, {1200, 0, 0}, {1200, -1, 1},
                                                           {1131, 2, 3}, {1212, 3, 4}, {1099, -1, 0}};
    for (const auto& [id, selection, value] : combos) {
        d.At(id).selection = selection;
        const CaseSettings s = d.ReadControls();
        const int got = id == 1200   ? s.IprAlpha
                        : id == 1131 ? s.RateControl
                        : id == 1212 ? s.FluidTempUnit
                                     : s.IprModel;
        EXPECT_EQ(got, value) << id << " item " << selection;
    }
    d.At(1200).items[0] = "bias to low rates (Default)";  // no longer the table's text in its case
    d.At(1200).selection = 0;
    EXPECT_EQ(d.ReadControls().IprAlpha, 1);

    EXPECT_EQ(d.OnClicked(kIdOk), DialogAction::CloseOk);
    const CaseSettings& s = model_.settings;
    EXPECT_EQ(std::tuple(s.FileName, s.ParallelCount, s.GlrThreshold, s.DefaultFluidTemp, s.UnconnectedState),
              std::tuple("/new/CASE.DATA", 0, 600, 98.5, 0));
    CaseSettings lastUsed;
    lastUsed.LoadLastUsed();
    EXPECT_EQ(lastUsed.FileName, "/new/CASE.DATA");
    EXPECT_FALSE(d.StartRequested);
}

TEST_F(Dialogs, CaseButtonsStartCalculateBrowseConfigureAndHelp) {
    model_.reservoir = true;
    model_.settings.IprModel = 2;
    CaseDlg& d = OpenCase();
    d.At(1200).selection = 4;
    EXPECT_EQ(d.OnClicked(1156), DialogAction::None);
    ASSERT_EQ(model_.calculations.size(), 1u);
    EXPECT_EQ(model_.calculations[0].IprAlpha, 4);  // the values on screen, not the model's
    EXPECT_EQ(std::tuple(d.At(1156).text, d.At(kIdOk).enabled), std::tuple("Recalculate", true));

    ui_->file = "/picked/DECK.DATA";
    d.OnClicked(1123);
    EXPECT_EQ(d.At(1124).text, "/picked/DECK.DATA");
    EXPECT_EQ(ui_->fileRequests.back(), ";dat;*.dat");
    d.OnClicked(kIdHelp);
    EXPECT_EQ(ui_->help, 8700);

    // The configuration dialog's OK brings its queues in.
    ui_->scripts.push_back([](ModalDialog& c) {
        c.At(CConfigureDlg::kQueues).text = "fast\nslow";
        return kIdOk;
    });
    d.OnClicked(1143);
    EXPECT_EQ(d.At(1215).items, (std::vector<std::string>{"fast", "slow"}));

    EXPECT_EQ(d.OnClicked(1142), DialogAction::CloseOk);
    EXPECT_TRUE(d.StartRequested);
    EXPECT_EQ(model_.settings.IprAlpha, 4);
}

TEST_F(Dialogs, ConfigurationOpensOnTheStoreAndNeverShowsThePassword) {
    config_.DebugCommsDirectory = "/tmp", config_.LinuxUser = "res", config_.AllLinuxQueues = "short";
    config_.Password = StorePassword("secret");
    config_.LowerPort = 80;
    CConfigureDlg d(config_);
    d.OnOpen();
    EXPECT_EQ(std::tuple(d.At(1092).text, d.At(1194).text, d.At(1206).text, d.At(1214).text, d.At(1208).text),
              std::tuple(config_.SimExecutable, "/tmp", "res", "short", "********"));
    EXPECT_EQ(std::tuple(d.At(1096).text, d.At(1144).text), std::tuple("15960", "15979"));
    EXPECT_EQ(std::tuple(d.At(1096).toolTip, d.At(1096).toolTipMilliseconds),
              std::tuple("Conflux will search for currently available ports in the range specified.", 15000));
    EXPECT_EQ(d.At(1092).toolTip, "Simulator executable.");

    ui_->file = " /opt/tnav/tNavigator-con.exe ";
    ui_->folder = "/var/tmp";
    d.OnClicked(1093);
    d.OnClicked(1196);
    EXPECT_EQ(std::tuple(d.At(1092).text, d.At(1194).text),
              std::tuple("/opt/tnav/tNavigator-con.exe", "/var/tmp"));
    EXPECT_EQ(ui_->fileRequests,
              (std::vector<std::string>{"tNavigator executable file (*.exe)|*.exe|All files (*)|*|;exe;",
                                        "Select Directory"}));
    EXPECT_EQ(d.OnClicked(kIdCancel), DialogAction::CloseCancel);
    EXPECT_EQ(config_.DebugCommsDirectory, "/tmp");
}

TEST_F(Dialogs, ConfigurationOkChecksPortsAndDirectoryThenStoresInOrder) {
    const std::string missing = (dir_ / "missing").string();
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> refused = {
        {"1023", "2000", "", "Port values must be from 1024 to 65535 (inclusive)."},
        {"0", "2000", "", "Port values must be from 1024 to 65535 (inclusive)."},
        {"2000", "70000", "", "Port values must be from 1024 to 65535 (inclusive)."},
        {"2000", "3000", missing, "The communications debug directory (" + missing + ") must already exist."},
        {"2000", "3000", "/proc",
         "You must have write access to the communications debug directory (/proc)."},
    };
    for (const auto& [lower, upper, debug, text] : refused) {
        ui_->messages.clear();
        CConfigureDlg d(config_);
        d.OnOpen();
        d.At(1096).text = lower, d.At(1144).text = upper, d.At(1194).text = debug;
        EXPECT_EQ(d.OnClicked(kIdOk), DialogAction::None) << text;
        EXPECT_EQ(Messages(), std::vector<std::string>{text});
    }
    EXPECT_EQ(config_.LowerPort, 15960);

    // A blank pair is taken as 0 and 0; a reversed range is put in order; the mask keeps the password.
    const std::string stored = config_.Password = StorePassword("secret");
    for (const auto& [lower, upper, password, low, high] :
         std::vector<std::tuple<std::string, std::string, std::string, int, int>>{
             {"", "x", "********", 0, 0},
             {"20000", "15000", "********", 15000, 20000},
             {"16000", "16001", "", 16000, 16001}}) {
        CConfigureDlg d(config_);
        d.OnOpen();
        d.At(1096).text = lower, d.At(1144).text = upper, d.At(1208).text = password;
        d.At(1092).text = " /opt/sim ", d.At(1206).text = " res ", d.At(1214).text = "a\nb\n";
        EXPECT_EQ(d.OnClicked(kIdOk), DialogAction::CloseOk) << lower;
        EXPECT_EQ(std::tuple(config_.LowerPort, config_.UpperPort), std::tuple(low, high));
        EXPECT_EQ(std::tuple(config_.SimExecutable, config_.LinuxUser, config_.AllLinuxQueues),
                  std::tuple("/opt/sim", " res ", "a\nb"));
        EXPECT_EQ(config_.Password, password.empty() ? "" : stored);
    }
    // What OK stored is what the next load reads.
    std::string plain;
    EXPECT_EQ(MachineConfig().UpperPort, 16001);
    EXPECT_EQ(ReadStoredPassword(MachineConfig().Password, plain), kPasswordRead);
    EXPECT_EQ(plain, "");
}

}  // namespace
}  // namespace rivulet
