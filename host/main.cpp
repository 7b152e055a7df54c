// rivulet-host: loads the driver plug-in as Conflux does and drives one model through its commands,
// printing what the plug-in answers.
#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/Plugin.h"
#include "host/Session.h"

namespace {

void Usage(const char* argv0) {
    std::printf(
        "usage: %s [--plugin PATH] [--case DECK]\n"
        "  --plugin PATH  the driver plug-in to load (default: ../lib/librivulet.so beside this program)\n"
        "  --case DECK    the reservoir deck to hand the model (default: the bundled SPE1 example)\n",
        argv0);
}

}  // namespace

int main(int argc, char** argv) {
    std::string pluginPath;
    std::string casePath;
    static const option kOptions[] = {{"plugin", required_argument, nullptr, 'p'},
                                      {"case", required_argument, nullptr, 'c'},
                                      {"help", no_argument, nullptr, 'h'},
                                      {nullptr, 0, nullptr, 0}};
    for (int c; (c = getopt_long(argc, argv, "p:c:h", kOptions, nullptr)) != -1;) {
        switch (c) {
            case 'p':
                pluginPath = optarg;
                break;
            case 'c':
                casePath = optarg;
                break;
            case 'h':
                Usage(argv[0]);
                return 0;
            default:
                Usage(argv[0]);
                return 2;
        }
    }
    if (pluginPath.empty()) pluginPath = host::Plugin::DefaultPath(argv[0]);
    if (casePath.empty()) casePath = RIVULET_EXAMPLE_DECK;

    try {
        host::Plugin plugin(pluginPath);
        std::printf("Loaded %s\n", pluginPath.c_str());
        return host::RunSession(plugin, casePath);
    } catch (const host::PluginError& e) {
        std::fprintf(stderr, "rivulet-host: %s\n", e.what());
        return 1;
    }
}
