// Loads a driver plug-in the way Conflux does: by path, with dlopen, finding each export by name.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace host {

// The error record as the host allocates it: an i32, then 260 bytes of text.
struct ErrorRecord {
    std::int32_t code = 0;
    char text[260] = {};
};
static_assert(sizeof(ErrorRecord) == 264);

class PluginError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Plugin {
  public:
    using IdentifyFn = std::uint32_t (*)(void* ident, ErrorRecord* err);
    using CreateFn = std::uint32_t (*)(void** instance, ErrorRecord* err);
    using DestroyFn = std::uint32_t (*)(void* instance, ErrorRecord* err);
    using CmdFn = std::uint32_t (*)(void* instance, std::uint64_t window, std::uint32_t command,
                                    std::uint64_t argument, std::uint32_t count, ErrorRecord* err);
    using ConfigureFn = std::uint32_t (*)(void* parent, ErrorRecord* err);
    using CopyConfigureFn = void (*)(std::uint64_t hive, char** keyName);
    using HelpFn = void (*)();
    using EquipXmlFn = std::uint32_t (*)(void* instance, const char* path, std::uint8_t noVariables,
                                         const char* const* wellFilter);
    using ConnectToAppFn = std::uint32_t (*)(void* instance, std::uint32_t a, std::uint32_t b,
                                             ErrorRecord* err);
    using StartAppFn = std::uint32_t (*)(void* instance, std::uint32_t a, ErrorRecord* err);
    using StopAppFn = std::uint32_t (*)(void* instance);

    // Throws PluginError naming the library or the export that could not be found.
    explicit Plugin(const std::string& path);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // The directory of this executable's plug-in: <build>/lib/librivulet.so beside <build>/bin.
    static std::string DefaultPath(const char* argv0);

    IdentifyFn Identify = nullptr;
    CreateFn CreateInstance = nullptr;
    DestroyFn DestroyInstance = nullptr;
    CmdFn Cmd = nullptr;
    ConfigureFn Configure = nullptr;
    CopyConfigureFn CopyConfigure = nullptr;
    HelpFn Help = nullptr;
    EquipXmlFn EquipXml = nullptr;
    ConnectToAppFn ConnectToApp = nullptr;
    StartAppFn StartApp = nullptr;
    StopAppFn StopApp = nullptr;
    // The exported data symbol: the address of a writable function pointer.
    void** ShowDataServerString = nullptr;

  private:
    void* Resolve(const char* name);
    void* handle_ = nullptr;
};

}  // namespace host
