// What the driver shows a person: message boxes and modal dialogs. The dialog logic talks only to this
// interface. The headless default writes message texts to standard error and answers Cancel; a front end
// installs a real one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace rivulet {

enum class MessageIcon { Information, Warning, Error, Question };
enum class DialogAnswer { Ok, Cancel };

// A dialog written as logic over its controls. The front end runs it; the headless interface never does.
class ModalDialog {
  public:
    virtual ~ModalDialog() = default;
    virtual std::string Title() const = 0;
    // Called when the user presses OK; false keeps the dialog open.
    virtual bool OnOk() = 0;
};

class UserInterface {
  public:
    virtual ~UserInterface() = default;
    virtual void ShowMessage(const std::string& text, MessageIcon icon) = 0;
    virtual DialogAnswer RunModal(std::uint64_t parentWindow, ModalDialog& dialog) = 0;
};

class HeadlessUserInterface final : public UserInterface {
  public:
    void ShowMessage(const std::string& text, MessageIcon icon) override;
    DialogAnswer RunModal(std::uint64_t parentWindow, ModalDialog& dialog) override;
};

// The process-wide interface in use; the headless one until another is installed.
UserInterface& CurrentUserInterface();
// Installs another interface and returns the one it replaces; null puts the headless one back.
std::shared_ptr<UserInterface> InstallUserInterface(std::shared_ptr<UserInterface> ui);

}  // namespace rivulet
