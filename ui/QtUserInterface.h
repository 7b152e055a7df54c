// The Qt Widgets front end of the driver's dialogs, built as librivulet-ui.so, which the plug-in loads at run
// time when there is a display. It makes the process's QApplication when the host has none.
//
// With RIVULET_UI_SCREENSHOT naming a file, a dialog is not run: it is shown once, saved to that file as a
// PNG image and answered with Cancel. On a platform that draws off screen, with nothing to drive it,
// dialogs answer Cancel and messages go to standard error, so that nothing waits for a click that cannot
// come.
#pragma once

#include <QString>
#include <functional>
#include <string>

#include "platform/UserInterface.h"

class QDialog;

namespace rivulet {

class QtUserInterface final : public UserInterface {
  public:
    QtUserInterface();

    void ShowMessage(const std::string& text, MessageIcon icon) override;
    // The parent window is the host's handle, which means nothing here: a dialog opened from another
    // dialog's handler sits over that one.
    DialogAnswer RunModal(std::uint64_t parentWindow, ModalDialog& dialog) override;
    std::optional<std::string> ChooseFile(const std::string& filter, const std::string& defaultExtension,
                                          const std::string& startName) override;
    std::optional<std::string> ChooseDirectory(const std::string& title) override;
    void ShowHelp(int topic) override;

    // For the front end's own tests. Called with each dialog once it is shown and its window is running,
    // so that keys and clicks can be sent to it.
    std::function<void(QDialog&)> onDialogShown;
    // When set, messages come here instead of to a message box.
    std::function<void(const std::string& text, MessageIcon icon)> onMessage;

  private:
    // No one can answer a window: the platform draws off screen and no test drives it.
    bool Unseen() const;
};

// The chooser's filter as Qt writes one: "Decks (*.dat)|*.dat;*.data|" becomes "Decks (*.dat *.data)".
QString FileDialogFilter(const std::string& filter);

}  // namespace rivulet
