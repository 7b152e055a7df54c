// The Qt front end, driven as a person would with key presses and clicks: first over a small dialog of its
// own (the widgets the controls become, what handlers see and show, how their answers close the window, the
// library and its screenshots), then over the driver's case and configuration dialogs.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QImage>
#include <QLineEdit>
#include <QTest>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>

#include "case/CaseDlg.h"
#include "case/ConfigureDlg.h"
#include "session/MachineConfig.h"
#include "ui/QtUserInterface.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;

template <typename W = QWidget>
W* Get(QDialog& window, int id) {
    return window.findChild<W*>(QStringLiteral("control-%1").arg(id));
}

// Near the left end, where checks and radios have their box, whatever width the grid gives them.
void Click(QDialog& window, int id) {
    auto* button = Get<QAbstractButton>(window, id);
    QTest::mouseClick(button, Qt::LeftButton, {},
                      QPoint(std::min(8, button->width() / 2), button->height() / 2));
}

// What a control's widget shows, by the widget's property and as text ("true", "Password", "2", ...).
struct Shown {
    int id;
    const char* property;
    std::string value;
};

void ExpectShown(QDialog& window, const std::vector<Shown>& expected) {
    for (const Shown& shown : expected) {
        EXPECT_EQ(Get(window, shown.id)->property(shown.property).toString().toStdString(), shown.value)
            << "control " << shown.id << ", " << shown.property;
    }
}

void Type(QDialog& window, int id, const QString& text) {
    Get<QLineEdit>(window, id)->clear();
    QTest::keyClicks(Get<QLineEdit>(window, id), text);
}

class SampleDialog final : public ModalDialog {
  public:
    enum Id { kWhere = 10, kHere, kThere, kName, kNotes, kPick, kFree, kShut, kApply, kNote = -7 };

    SampleDialog() {
        using K = ControlKind;
        Add(kWhere, K::Group, "Where", {0, 0, 0, 3});
        Add(kHere, K::Radio, "Here", {kWhere, 0, 0, 1});
        Add(kThere, K::Radio, "There", {kWhere, 0, 1, 1});
        Add(kNote, K::Label, "Name", {0, 1, 0, 1});
        Add(kName, K::PasswordEdit, "", {0, 1, 1, 2});
        Add(kNotes, K::MultiLineEdit, "", {0, 2, 0, 3});
        Add(kPick, K::Combo, "", {0, 3, 0, 1});
        Add(kFree, K::EditableCombo, "", {0, 3, 1, 1});
        Add(kShut, K::Check, "Shut", {0, 3, 2, 1});
        Add(kApply, K::Button, "Apply", {0, 4, 0, 1});
        Add(kIdOk, K::Button, "OK", {0, 4, 1, 1});
        Add(kIdCancel, K::Button, "Cancel", {0, 4, 2, 1});
    }
    std::string Title() const override { return "Sample"; }
    void OnOpen() override {
        At(kHere).checked = At(kShut).checked = true;
        At(kName).text = "first";
        At(kNotes).text = "one\ntwo";
        At(kPick).items = {"alpha", "beta", "gamma"};
        At(kPick).selection = 1;
        At(kFree).items = {"x", "y"};
        At(kFree).text = "free text";
        At(kShut).toolTip = "Shuts it";
        At(kShut).toolTipMilliseconds = 5000;
        At(kNotes).enabled = At(kApply).shown = false;
    }
    DialogAction OnClicked(int id) override {
        seen.push_back(controls_);
        clicks.push_back(id);
        if (onClick) return onClick(*this, id);
        return id == kIdOk ? DialogAction::CloseOk : DialogAction::CloseCancel;
    }
    DialogAction OnSelectionChanged(int id) override {
        clicks.push_back(-id);
        return DialogAction::None;
    }

    std::function<DialogAction(SampleDialog&, int)> onClick;
    std::vector<int> clicks;  // selection changes negated
    std::vector<std::vector<Control>> seen;
};

class FakeModel final : public CaseDialogModel {
  public:
    CaseSettings settings;
    CaseSettings GetCaseSettings() const override { return settings; }
    void SetCaseSettings(const CaseSettings& s) override { settings.CopyFrom(s); }
    bool HasReservoirData() const override { return false; }
    bool HasCalculatedIpr() const override { return false; }
    bool IsConnected() const override { return false; }
    bool IsRunActive() const override { return false; }
    void Stop() override {}
    void CalculateIpr(const CaseSettings&) override {}
};

class FrontEnd : public ::testing::Test {
  protected:
    void SetUp() override {
        ui_->onMessage = [this](const std::string& text, MessageIcon) { messages_.push_back(text); };
        InstallUserInterface(ui_);
    }
    void TearDown() override { InstallUserInterface(nullptr); }

    // Runs the dialog with `steps` as the user; true when they left it open, to be closed without the logic.
    bool LeftOpen(ModalDialog& dialog, DialogAnswer expected, const std::function<void(QDialog&)>& steps) {
        bool open = false;
        ui_->onDialogShown = [&](QDialog& window) {
            steps(window);
            open = window.isVisible();
            if (open) window.done(QDialog::Rejected);
        };
        EXPECT_EQ(ui_->RunModal(0, dialog), expected);
        ui_->onDialogShown = nullptr;
        return open;
    }

    std::shared_ptr<QtUserInterface> ui_ = std::make_shared<QtUserInterface>();
    std::vector<std::string> messages_;
    SampleDialog dialog_;
};

TEST_F(FrontEnd, ControlsBecomeWidgetsOnTheirGroupsGridWithTheirState) {
    using S = SampleDialog;
    const struct {
        int id;
        const char* widget;
        int group, row, column, span;
    } places[] = {{S::kWhere, "QGroupBox", 0, 0, 0, 3},      {S::kThere, "QRadioButton", S::kWhere, 0, 1, 1},
                  {S::kNote, "QLabel", 0, 1, 0, 1},          {S::kName, "QLineEdit", 0, 1, 1, 2},
                  {S::kNotes, "QPlainTextEdit", 0, 2, 0, 3}, {S::kFree, "QComboBox", 0, 3, 1, 1},
                  {S::kShut, "QCheckBox", 0, 3, 2, 1},       {kIdCancel, "QPushButton", 0, 4, 2, 1}};
    LeftOpen(dialog_, DialogAnswer::Cancel, [&](QDialog& window) {
        EXPECT_EQ(window.windowTitle().toStdString(), "Sample");
        for (const auto& place : places) {
            QWidget* widget = Get(window, place.id);
            ASSERT_STREQ(widget->metaObject()->className(), place.widget);
            QWidget* holder = place.group == 0 ? &window : Get(window, place.group);
            ASSERT_EQ(widget->parentWidget(), holder) << place.id;
            auto* grid = static_cast<QGridLayout*>(holder->layout());
            int at[4];
            grid->getItemPosition(grid->indexOf(widget), &at[0], &at[1], &at[2], &at[3]);
            EXPECT_EQ(std::vector<int>(at, at + 4),
                      std::vector<int>({place.row, place.column, 1, place.span}))
                << place.id;
        }
        ExpectShown(window, {{S::kHere, "checked", "true"},
                             {S::kNote, "text", "Name"},
                             {S::kName, "text", "first"},
                             {S::kName, "echoMode", "Password"},
                             {S::kNotes, "plainText", "one\ntwo"},
                             {S::kNotes, "enabled", "false"},
                             {S::kPick, "editable", "false"},
                             {S::kPick, "currentText", "beta"},
                             {S::kFree, "editable", "true"},
                             {S::kFree, "currentText", "free text"},
                             {S::kShut, "checked", "true"},
                             {S::kShut, "toolTip", "Shuts it"},
                             {S::kShut, "toolTipDuration", "5000"},
                             {S::kApply, "visible", "false"}});
    });
}

TEST_F(FrontEnd, HandlersSeeWhatWasTypedAndTheirChangesAreShown) {
    dialog_.onClick = [](SampleDialog& d, int id) {
        if (id != SampleDialog::kThere) return id == kIdOk ? DialogAction::CloseOk : DialogAction::None;
        d.At(SampleDialog::kNote).text = "Renamed";
        d.At(SampleDialog::kName).enabled = d.At(SampleDialog::kShut).shown = false;
        d.At(SampleDialog::kHere).checked = d.At(SampleDialog::kThere).checked = false;
        d.At(SampleDialog::kPick).items = {"one", "two"};
        return DialogAction::None;
    };
    EXPECT_FALSE(LeftOpen(dialog_, DialogAnswer::Ok, [&](QDialog& window) {
        Type(window, SampleDialog::kName, "typed");
        auto* free = Get<QComboBox>(window, SampleDialog::kFree);
        free->lineEdit()->clear();
        // Enter in an editable combo leaves its list as the logic made it.
        QTest::keyClicks(free, "zed");
        QTest::keyClick(free, Qt::Key_Return);
        QTest::keyClick(Get(window, SampleDialog::kPick), Qt::Key_Down);
        Click(window, SampleDialog::kThere);
        // The logic may clear every radio of a group, which the toolkit's exclusivity keeps from a user.
        // Texts the handler left alone keep what the user can undo.
        ExpectShown(window, {{SampleDialog::kNote, "text", "Renamed"},
                             {SampleDialog::kName, "enabled", "false"},
                             {SampleDialog::kShut, "visible", "false"},
                             {SampleDialog::kThere, "checked", "false"},
                             {SampleDialog::kPick, "count", "2"},
                             {SampleDialog::kName, "undoAvailable", "true"}});
        Click(window, SampleDialog::kHere);
        Click(window, kIdOk);
    }));
    EXPECT_EQ(dialog_.clicks,
              std::vector<int>({-SampleDialog::kPick, SampleDialog::kThere, SampleDialog::kHere, kIdOk}));
    const auto seen = [&](std::size_t call, int id) {
        for (const Control& control : dialog_.seen.at(call))
            if (control.id == id) return control;
        throw std::logic_error("no control " + std::to_string(id));
    };
    EXPECT_EQ(seen(0, SampleDialog::kName).text, "typed");
    EXPECT_EQ(seen(0, SampleDialog::kFree).text, "zed");
    EXPECT_EQ(seen(0, SampleDialog::kFree).selection, -1);
    EXPECT_EQ(seen(0, SampleDialog::kPick).selection, 2);
    EXPECT_TRUE(seen(0, SampleDialog::kThere).checked);
    EXPECT_TRUE(seen(1, SampleDialog::kHere).checked);
}

TEST_F(FrontEnd, TheLogicDecidesHowTheWindowCloses) {
    const auto escape = [](QDialog& w) { QTest::keyClick(&w, Qt::Key_Escape); };
    const auto close = [](QDialog& w) { w.close(); };
    const auto cancel = [](QDialog& w) { Click(w, kIdCancel); };
    const auto enter = [](QDialog& w) {
        // Apply, first in the tab order, is the button a dialog would make its default.
        Get(w, SampleDialog::kApply)->show();
        QTest::keyClick(Get(w, SampleDialog::kName), Qt::Key_Return);
    };
    using A = DialogAction;
    const struct {
        std::function<void(QDialog&)> act;
        A cancelAnswer;
        DialogAnswer answer;
        bool leftOpen;
        std::vector<int> clicks;
    } rows[] = {
        {[](QDialog& w) { Click(w, kIdOk); }, A::CloseCancel, DialogAnswer::Ok, false, {kIdOk}},
        {cancel, A::CloseCancel, DialogAnswer::Cancel, false, {kIdCancel}},
        {cancel, A::None, DialogAnswer::Cancel, true, {kIdCancel}},
        {escape, A::CloseCancel, DialogAnswer::Cancel, false, {kIdCancel}},
        {escape, A::None, DialogAnswer::Cancel, true, {kIdCancel}},
        {close, A::CloseOk, DialogAnswer::Ok, false, {kIdCancel}},
        {enter, A::CloseOk, DialogAnswer::Cancel, true, {}},
    };
    for (std::size_t n = 0; n < std::size(rows); ++n) {
        dialog_ = SampleDialog();
        dialog_.onClick = [&](SampleDialog&, int id) {
            return id == kIdOk ? A::CloseOk : rows[n].cancelAnswer;
        };
        EXPECT_EQ(LeftOpen(dialog_, rows[n].answer, rows[n].act), rows[n].leftOpen) << n;
        EXPECT_EQ(dialog_.clicks, rows[n].clicks) << n;
    }
    dialog_.onClick = [](SampleDialog&, int) -> DialogAction { throw std::runtime_error("broken logic"); };
    EXPECT_THROW(LeftOpen(dialog_, DialogAnswer::Cancel, [](QDialog& w) { Click(w, kIdOk); }),
                 std::runtime_error);
}

TEST_F(FrontEnd, TheLibraryExportsOnlyItsEntryPointAndSavesScreenshots) {
    std::set<std::string> symbols;
    FILE* pipe = popen((std::string("nm -D --defined-only '") + RIVULET_UI_LIBRARY_PATH + "'").c_str(), "r");
    char address[64], type, name[256];
    while (std::fscanf(pipe, "%63s %c %255s", address, &type, name) == 3) {
        if (type != 'A') symbols.insert(name);  // 'A': version nodes
    }
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(symbols, std::set<std::string>{kCreateUserInterfaceSymbol});

    void* library = ::dlopen(RIVULET_UI_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    auto create = reinterpret_cast<CreateUserInterfaceFunction>(::dlsym(library, kCreateUserInterfaceSymbol));
    std::unique_ptr<UserInterface> loaded(create());
    const auto file = fs::temp_directory_path() / ("rivulet-ui-" + std::to_string(::getpid()) + ".png");
    ::setenv("RIVULET_UI_SCREENSHOT", file.c_str(), 1);
    EXPECT_EQ(loaded->RunModal(0, dialog_), DialogAnswer::Cancel);
    ::unsetenv("RIVULET_UI_SCREENSHOT");
    EXPECT_TRUE(dialog_.clicks.empty());
    EXPECT_GT(fs::exists(file) ? fs::file_size(file) : 0, 5000u);
    EXPECT_FALSE(QImage(QString::fromStdString(file.string()), "PNG").isNull());
    fs::remove(file);
}

TEST(FileDialogFilter, PairsBecomeQtFilters) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"Decks|*.dat;*.data|", "Decks (*.dat *.data)"},
        {"Decks (*.dat)|*.dat;*.DATA|All files (*)|*|", "Decks (*.dat *.DATA);;All files (*)"},
        {"|*.exe|Half a pair|", "*.exe"},
    };
    for (const auto& [windows, qt] : rows) EXPECT_EQ(FileDialogFilter(windows).toStdString(), qt) << windows;
}

// A store private to the test, with a simulator to name; set before any configuration is read.
fs::path PrivateStore() {
    const fs::path dir = fs::temp_directory_path() / ("rivulet-ui-dialogs-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    ::setenv("RIVULET_REGISTRY", (dir / "registry.reg").c_str(), 1);
    std::ofstream(dir / "tnav-standin") << "\n";
    return dir;
}

class DriverDialogs : public FrontEnd {
  protected:
    DriverDialogs() {
        config_.SimExecutable = (dir_ / "tnav-standin").string();
        config_.LowerPort = 15960;
        config_.UpperPort = 15961;
        config_.AllLinuxQueues = "short\nlong";
        CaseSettings& s = model_.settings;
        s.FileName = "/cases/SPE1.DATA";
        s.HeadNodeName = "head";
        s.HeadNodePort = 6000;
        s.LinuxQueue = "long";
        s.DefaultFluidTemp = 60;
        s.RateControl = 3;
    }
    ~DriverDialogs() override { fs::remove_all(dir_); }

    const fs::path dir_ = PrivateStore();
    MachineConfig config_;
    FakeModel model_;
};

TEST_F(DriverDialogs, TheCaseDialogShowsTheModelsValuesAndHandsBackATypedPort) {
    for (const bool local : {true, false}) {
        model_.settings.IsLocalMachine = local;
        model_.settings.HeadNodePort = 6000;
        CaseDlg dialog(model_, config_);
        EXPECT_FALSE(LeftOpen(dialog, DialogAnswer::Ok, [&](QDialog& window) {
            const std::string onCluster = local ? "false" : "true";
            ExpectShown(window,
                        {{CaseDlg::kLocal, "checked", local ? "true" : "false"},
                         {CaseDlg::kFileName, "text", "/cases/SPE1.DATA"},
                         {CaseDlg::kHeadNode, "text", "head"},
                         {CaseDlg::kPort, "text", "6000"},
                         {CaseDlg::kPort, "visible", onCluster},
                         {CaseDlg::kTemperature, "text", "60"},
                         {CaseDlg::kRateControl, "currentText", "Combined when multiple phases present"},
                         {CaseDlg::kQueue, "count", "2"},
                         {CaseDlg::kQueue, "currentText", "long"}});
            // Once laid out, no field is squeezed below its height.
            for (int pass = 0; pass < 3; ++pass) QApplication::processEvents();
            for (auto* edit : window.findChildren<QLineEdit*>()) {
                if (edit->isVisible() && edit->objectName().startsWith("control-")) {
                    EXPECT_GE(edit->height(), edit->sizeHint().height()) << edit->objectName().toStdString();
                }
            }
            Click(window, CaseDlg::kCluster);
            Type(window, CaseDlg::kPort, "7001");
            Click(window, kIdOk);
        }));
        EXPECT_FALSE(model_.settings.IsLocalMachine);
        EXPECT_EQ(model_.settings.HeadNodePort, 7001);
    }
    EXPECT_TRUE(messages_.empty());
}

TEST_F(DriverDialogs, TheConfigurationDialogTakesValidPortsOnly) {
    const std::string portRange = "Port values must be from 1024 to 65535 (inclusive).";
    const struct {
        const char *lower, *upper;
        std::vector<std::string> messages;
        std::int32_t storedLower, storedUpper;  // the store's ports afterwards
    } rows[] = {
        {"99", "16000", {portRange}, 15960, 15961},
        {"16000", "70000", {portRange}, 15960, 15961},
        {"16010", "16000", {}, 16000, 16010},
    };
    for (const auto& row : rows) {
        messages_.clear();
        config_.LowerPort = 15960;
        config_.UpperPort = 15961;
        config_.Store();
        CConfigureDlg dialog(config_);
        const bool valid = row.messages.empty();
        EXPECT_EQ(LeftOpen(dialog, valid ? DialogAnswer::Ok : DialogAnswer::Cancel,
                           [&](QDialog& window) {
                               ExpectShown(window,
                                           {{CConfigureDlg::kExecutable, "text", config_.SimExecutable},
                                            {CConfigureDlg::kLowerPort, "text", "15960"}});
                               Type(window, CConfigureDlg::kLowerPort, row.lower);
                               Type(window, CConfigureDlg::kUpperPort, row.upper);
                               Click(window, kIdOk);
                           }),
                  !valid);
        EXPECT_EQ(messages_, row.messages);
        const MachineConfig stored;
        EXPECT_EQ(std::make_pair(stored.LowerPort, stored.UpperPort),
                  std::make_pair(row.storedLower, row.storedUpper));
    }
}

}  // namespace
}  // namespace rivulet
