// Opening a file for the user to look at, in place of the Windows shell's "open" verb.
#pragma once

#include <memory>
#include <string>

namespace rivulet {

class ShellOpener {
  public:
    virtual ~ShellOpener() = default;
    // Opens the file with the program associated with its type (xdg-open); true if one started.
    virtual bool OpenByAssociation(const std::string& path, const std::string& workingDirectory) = 0;
    // Opens the file through the desktop's own launcher (gio open); true if one started.
    virtual bool OpenThroughDesktop(const std::string& path, const std::string& workingDirectory) = 0;
    // Opens the file in the user's editor ($VISUAL or $EDITOR) inside a terminal; true if one started.
    virtual bool OpenInTerminalEditor(const std::string& path, const std::string& workingDirectory) = 0;
};

// xdg-open, then gio open, then $VISUAL or $EDITOR inside a terminal.
class DesktopShellOpener final : public ShellOpener {
  public:
    bool OpenByAssociation(const std::string& path, const std::string& workingDirectory) override;
    bool OpenThroughDesktop(const std::string& path, const std::string& workingDirectory) override;
    bool OpenInTerminalEditor(const std::string& path, const std::string& workingDirectory) override;
};

ShellOpener& CurrentShellOpener();
// Installs another opener (tests use a recording one) and returns the one it replaces; null restores the
// desktop opener.
std::shared_ptr<ShellOpener> InstallShellOpener(std::shared_ptr<ShellOpener> opener);

}  // namespace rivulet
