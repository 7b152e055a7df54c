#include "host/MachineSetup.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "common/PasswordStore.h"
#include "tNavigator_API_RMA.h"

namespace host {

namespace {

constexpr const char* kDriverKey = "Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator";
// The ports the driver may give its local simulators; it takes the lowest free one.
constexpr int kLowerPort = 24000;
constexpr int kUpperPort = 24049;

// A string value of the registry text format.
std::string Quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
    return out + '"';
}

std::string Dword(int value) {
    char text[32];
    std::snprintf(text, sizeof text, "dword:%08x", static_cast<unsigned>(value));
    return text;
}

}  // namespace

std::filesystem::path UsePrivateConfiguration(const std::filesystem::path& folder,
                                              const std::filesystem::path& simulator,
                                              const std::optional<ClusterTarget>& cluster) {
    std::filesystem::create_directories(folder);
    const std::filesystem::path file = std::filesystem::absolute(folder / "machine.reg");
    std::ofstream out(file);
    out << "REGEDIT4\n\n[" << kDriverKey << "]\n"
        << "\"SimExecutable\"=" << Quoted(simulator.string()) << "\n"
        << "\"LowerPort\"=" << Dword(kLowerPort) << "\n"
        << "\"UpperPort\"=" << Dword(kUpperPort) << "\n";
    if (cluster) {
        // The store keeps the password as the simulator's client library crypts it for the dispatcher.
        tNavigator_API_RMA_string crypted;
        if (tNavigator_API_RMA::encrypt_password(cluster->password.c_str(), crypted).id() != 0) {
            throw std::runtime_error("the cluster password cannot be crypted");
        }
        out << "\"LinuxUser\"=" << Quoted(cluster->user) << "\n"
            << "\"Tassoc\"=" << Quoted(rivulet::StorePassword(std::string(crypted.c_str()))) << "\n";
    }
    out.close();
    if (!out) throw std::runtime_error("cannot write the machine configuration " + file.string());
    ::setenv("RIVULET_REGISTRY", file.c_str(), 1);
    return file;
}

}  // namespace host
