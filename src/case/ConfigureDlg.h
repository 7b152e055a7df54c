// The machine configuration dialog. Its controls and their rules arrive with the dialog's front end; OK
// hands over to `Accepted`, which writes the machine configuration.
#pragma once

#include <functional>
#include <string>

#include "platform/UserInterface.h"

namespace rivulet {

class CConfigureDlg final : public ModalDialog {
  public:
    std::string Title() const override { return "tNavigator Configuration"; }
    bool OnOk() override {
        if (Accepted) Accepted();
        return true;
    }

    std::function<void()> Accepted;
};

}  // namespace rivulet
