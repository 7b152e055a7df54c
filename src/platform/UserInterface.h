// What the driver shows a person: message boxes, file choosers and modal dialogs. A dialog is written as
// logic over its controls (texts, enabled and shown states, checks, selections, handlers) and knows no
// toolkit; a front end maps the controls onto real widgets. The headless default writes message texts to
// standard error and answers Cancel. A front end is a shared library loaded at run time when a display is
// there, so the plug-in itself never links a toolkit.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rivulet {

enum class MessageIcon { Information, Warning, Error, Question };
enum class DialogAnswer { Ok, Cancel };

// The standard buttons of every dialog.
inline constexpr int kIdOk = 1;
inline constexpr int kIdCancel = 2;
inline constexpr int kIdHelp = 3;

enum class ControlKind {
    Group,          // a frame with a caption around the controls placed in it
    Label,          // static text; may hold line breaks
    Edit,           // one line of text
    PasswordEdit,   // one line of text, shown masked
    MultiLineEdit,  // several lines of text
    Combo,          // a drop-down list to pick from
    EditableCombo,  // a drop-down list with free text
    Check,          // a check box
    Radio,          // a radio button; those placed in one group exclude each other
    Button,         // a push button
};

// Where a control sits: in a group (0 for the dialog itself), on a row and column of that group's grid,
// across a number of columns. Groups sit on the dialog's grid like any control.
struct ControlPlace {
    int group = 0;
    int row = 0;
    int column = 0;
    int columnSpan = 1;
};

struct Control {
    int id = 0;  // the dialog's identifier; controls that are never addressed take negative ones
    ControlKind kind = ControlKind::Label;
    std::string text;  // the caption, or the text of an edit or of an editable combo
    ControlPlace place;
    bool enabled = true;
    bool shown = true;
    bool checked = false;            // checks and radios
    std::vector<std::string> items;  // combos
    int selection = -1;              // combos: the selected item, -1 for none
    std::string toolTip;
    int toolTipMilliseconds = 0;  // how long the tip stays; 0 for the toolkit's own time
};

// What a handler asks of the front end once it has run.
enum class DialogAction { None, CloseOk, CloseCancel };

// A dialog's logic. The front end copies what the user changed (texts, checks, selections) into the controls
// before it calls a handler, and shows the controls as they stand after it.
class ModalDialog {
  public:
    virtual ~ModalDialog() = default;
    virtual std::string Title() const = 0;
    // Fills the controls from the model; called once, before the dialog is shown.
    virtual void OnOpen() = 0;
    // A button, check or radio was clicked. Cancel (also the window's close) comes here as kIdCancel.
    virtual DialogAction OnClicked(int id) = 0;
    // The user picked another item of a combo.
    virtual DialogAction OnSelectionChanged(int /*id*/) { return DialogAction::None; }

    std::vector<Control>& Controls() { return controls_; }
    const std::vector<Control>& Controls() const { return controls_; }
    // The control with this identifier, or null.
    Control* Find(int id);
    const Control* Find(int id) const;
    // The control with this identifier; it must exist.
    Control& At(int id);
    const Control& At(int id) const;

  protected:
    Control& Add(int id, ControlKind kind, std::string text, ControlPlace place);

    std::vector<Control> controls_;
};

class UserInterface {
  public:
    virtual ~UserInterface() = default;
    virtual void ShowMessage(const std::string& text, MessageIcon icon) = 0;
    // Runs the dialog until a handler closes it, and gives the way it was closed.
    virtual DialogAnswer RunModal(std::uint64_t parentWindow, ModalDialog& dialog) = 0;
    // A file the user picked to open, or nothing. `filter` is pairs of description and patterns, each
    // ended by "|" ("Decks (*.dat)|*.dat|"); an empty filter shows every file.
    virtual std::optional<std::string> ChooseFile(const std::string& filter,
                                                  const std::string& defaultExtension,
                                                  const std::string& startName) = 0;
    // A folder the user picked, or nothing.
    virtual std::optional<std::string> ChooseDirectory(const std::string& title) = 0;
    // Opens the help topic; nothing when there is no help to open.
    virtual void ShowHelp(int topic) = 0;
};

class HeadlessUserInterface final : public UserInterface {
  public:
    void ShowMessage(const std::string& text, MessageIcon icon) override;
    DialogAnswer RunModal(std::uint64_t parentWindow, ModalDialog& dialog) override;
    std::optional<std::string> ChooseFile(const std::string&, const std::string&,
                                          const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> ChooseDirectory(const std::string&) override { return std::nullopt; }
    void ShowHelp(int) override {}
};

// The process-wide interface in use. Until one is installed, the front end library is loaded on first use
// when a display is there (DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM set, RIVULET_HEADLESS not set);
// without one, or when it cannot be loaded, the headless interface serves.
UserInterface& CurrentUserInterface();
// Installs another interface and returns the one it replaces; null goes back to the rule above.
std::shared_ptr<UserInterface> InstallUserInterface(std::shared_ptr<UserInterface> ui);

// The entry point a front end library exports: a new interface, owned by the caller.
using CreateUserInterfaceFunction = UserInterface* (*)();
inline constexpr const char* kCreateUserInterfaceSymbol = "RivuletCreateUserInterface";
// The front end library's file name, looked for beside the plug-in unless RIVULET_UI_LIBRARY names a path.
inline constexpr const char* kUserInterfaceLibrary = "librivulet-ui.so";

}  // namespace rivulet
