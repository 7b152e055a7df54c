// The "Configuration" dialog: the machine configuration that every case shares (the local simulator, the
// ports local runs may search, the communications debug directory, the cluster account), edited in place
// and written to the user's store on OK.
#pragma once

#include <string>

#include "platform/UserInterface.h"

namespace rivulet {

class MachineConfig;

class CConfigureDlg final : public ModalDialog {
  public:
    enum Id {
        kLocalGroup = 1201,
        kExecutableGroup = 1162,
        kExecutable = 1092,
        kBrowseExecutable = 1093,
        kPortsGroup = 1161,
        kPortsFrom = 1146,
        kLowerPort = 1096,
        kPortsAnd = 1147,
        kUpperPort = 1144,
        kPortsInclusive = 1148,
        kDebugGroup = 1193,
        kDebugNote = -1193,
        kDebugDirectory = 1194,
        kBrowseDebug = 1196,
        kClusterGroup = 1202,
        kUserLabel = 1205,
        kUser = 1206,
        kPasswordLabel = 1207,
        kPassword = 1208,
        kQueuesLabel = 1213,
        kQueues = 1214,
    };

    explicit CConfigureDlg(MachineConfig& config);

    std::string Title() const override { return "Configuration"; }
    void OnOpen() override;
    DialogAction OnClicked(int id) override;

  private:
    // The checks of OK, in order; the first that fails is shown and keeps the dialog open.
    bool Validate();
    // Takes the fields into the machine configuration and writes it to the store.
    bool Store();

    MachineConfig& config_;
};

}  // namespace rivulet
