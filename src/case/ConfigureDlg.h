// The machine configuration dialog. Its controls and their rules arrive with the dialog's front end; OK
// writes the machine configuration.
#pragma once

#include <string>

#include "platform/UserInterface.h"

namespace rivulet {

class CConfigureDlg final : public ModalDialog {
  public:
    std::string Title() const override { return "tNavigator Configuration"; }
    bool OnOk() override { return true; }
};

}  // namespace rivulet
