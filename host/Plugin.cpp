#include "host/Plugin.h"

#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <filesystem>

namespace host {

Plugin::Plugin(const std::string& path) {
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) throw PluginError("cannot load plug-in " + path + ": " + dlerror());
    try {
        Identify = reinterpret_cast<IdentifyFn>(Resolve("ExtIdentify"));
        CreateInstance = reinterpret_cast<CreateFn>(Resolve("ExtCreateInstance"));
        DestroyInstance = reinterpret_cast<DestroyFn>(Resolve("ExtDestroyInstance"));
        Cmd = reinterpret_cast<CmdFn>(Resolve("ExtCmd"));
        Configure = reinterpret_cast<ConfigureFn>(Resolve("ExtConfigure"));
        CopyConfigure = reinterpret_cast<CopyConfigureFn>(Resolve("ExtCopyConfigure"));
        Help = reinterpret_cast<HelpFn>(Resolve("ExtHelp"));
        EquipXml = reinterpret_cast<EquipXmlFn>(Resolve("ExtEquipXml"));
        ConnectToApp = reinterpret_cast<ConnectToAppFn>(Resolve("ExtConnectToApp"));
        StartApp = reinterpret_cast<StartAppFn>(Resolve("ExtStartApp"));
        StopApp = reinterpret_cast<StopAppFn>(Resolve("ExtStopApp"));
        ShowDataServerString = static_cast<void**>(Resolve("GlpfnSorrelShowDataServerString"));
    } catch (...) {
        dlclose(handle_);
        throw;
    }
}

Plugin::~Plugin() {
    if (handle_ != nullptr) dlclose(handle_);
}

void* Plugin::Resolve(const char* name) {
    dlerror();
    void* symbol = dlsym(handle_, name);
    if (symbol == nullptr) throw PluginError(std::string("the plug-in does not export ") + name);
    return symbol;
}

std::string Plugin::DefaultPath(const char* argv0) {
    char self[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    std::filesystem::path exe = n > 0 ? std::filesystem::path(std::string(self, static_cast<std::size_t>(n)))
                                      : std::filesystem::path(argv0 != nullptr ? argv0 : ".");
    return (exe.parent_path().parent_path() / "lib" / "librivulet.so").string();
}

}  // namespace host
