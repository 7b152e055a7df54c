// The case dialog: edits a copy of a model's case settings and may ask for the simulator to be started.
// The controls and their rules are filled in with the dialog's front end; the model sees only the outcome.
#pragma once

#include <string>

#include "case/CaseSettings.h"
#include "platform/UserInterface.h"

namespace rivulet {

class CaseDlg final : public ModalDialog {
  public:
    // A model without a case file starts from the user's last-used values.
    explicit CaseDlg(const CaseSettings& settings) {
        Edited.CopyFrom(settings);
        if (Edited.FileName.empty()) Edited.LoadLastUsed();
    }

    std::string Title() const override { return "tNavigator Case"; }
    // What is accepted becomes the user's last-used values.
    bool OnOk() override { return Edited.SaveLastUsed(); }

    // The settings as the dialog leaves them.
    CaseSettings Edited;
    // Set when the user asked for the simulator to be started from the dialog.
    bool StartRequested = false;
};

}  // namespace rivulet
