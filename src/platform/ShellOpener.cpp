#include "platform/ShellOpener.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace rivulet {

namespace {

// Runs a launcher program in the given directory and waits for it; launchers hand the file to the program
// that shows it and return at once. True if the launcher ran and reported success.
bool Launch(std::vector<std::string> argv, const std::string& workingDirectory) {
    const pid_t pid = fork();
    if (pid < 0) return false;
    if (pid == 0) {
        if (!workingDirectory.empty() && chdir(workingDirectory.c_str()) != 0) _exit(127);
        std::vector<char*> args;
        for (auto& a : argv) args.push_back(a.data());
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    int status = 0;
    if (waitpid(pid, &status, 0) != pid) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string EnvironmentEditor() {
    for (const char* name : {"VISUAL", "EDITOR"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

std::mutex g_openerMutex;
std::shared_ptr<ShellOpener> g_opener;

}  // namespace

bool DesktopShellOpener::OpenByAssociation(const std::string& path, const std::string& dir) {
    return Launch({"xdg-open", path}, dir);
}

bool DesktopShellOpener::OpenThroughDesktop(const std::string& path, const std::string& dir) {
    return Launch({"gio", "open", path}, dir);
}

bool DesktopShellOpener::OpenInTerminalEditor(const std::string& path, const std::string& dir) {
    const std::string editor = EnvironmentEditor();
    if (editor.empty()) return false;
    return Launch({"x-terminal-emulator", "-e", editor, path}, dir);
}

ShellOpener& CurrentShellOpener() {
    static DesktopShellOpener desktop;
    std::lock_guard<std::mutex> lock(g_openerMutex);
    if (g_opener) return *g_opener;
    return desktop;
}

std::shared_ptr<ShellOpener> InstallShellOpener(std::shared_ptr<ShellOpener> opener) {
    std::lock_guard<std::mutex> lock(g_openerMutex);
    auto previous = std::move(g_opener);
    g_opener = std::move(opener);
    return previous;
}

}  // namespace rivulet
