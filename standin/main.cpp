// tnav-standin: the stand-in reservoir simulator. `--run DECK` runs a deck on its own and reports it;
// `--dispatcher --port N` serves the client library's protocol.
#include <getopt.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

#include "standin/DeckReader.h"
#include "standin/Dispatcher.h"
#include "standin/RunReport.h"
#include "standin/StandinReservoir.h"

namespace {

using namespace rivulet::standin;

constexpr const char* kVersion = "tnav-standin 0.1.0";

enum class Mode { kNone, kRun, kDispatcher };

struct Options {
    Mode mode = Mode::kNone;
    std::string deck;
    std::optional<std::string> csv;
    DispatcherOptions dispatcher;
    bool port_given = false;
};

void Usage(std::ostream& out) {
    out << "Usage: tnav-standin --run DECK [--csv FILE]\n"
           "       tnav-standin --dispatcher --port N [--bind ADDR] [--users FILE] [--debug FILE]\n"
           "                    [--version-text TEXT]\n"
           "\n"
           "  --run DECK    run an Eclipse-format deck under its own well controls and print one row\n"
           "                per report step: field rates and pressure, cumulatives, well rates and BHP\n"
           "  --csv FILE    also write every row, with per-well THP and cumulatives, as CSV to FILE\n"
           "  --dispatcher  serve the simulator's client library on a port. Without --users it is a local\n"
           "                dispatcher: it ends when its client disconnects or its parent process ends\n"
           "  --port N      the port to listen on (required with --dispatcher)\n"
           "  --bind ADDR   the address to listen on (default 127.0.0.1)\n"
           "  --users FILE  cluster mode: accept only the users of FILE, one \"user token\" per line,\n"
           "                the token being the crypted password the client library sends\n"
           "  --debug FILE  log every call and its reply, one line each, to FILE\n"
           "  --version-text TEXT  the simulator version the dispatcher reports (default v23.4)\n"
           "  --version     print the version and exit\n"
           "  --help        print this help and exit\n";
}

// Returns the exit status to use when the options end the program before any work.
std::optional<int> Parse(int argc, char** argv, Options& opts) {
    enum {
        kOptCsv = 1000,
        kOptVersion,
        kOptDispatcher,
        kOptPort,
        kOptBind,
        kOptUsers,
        kOptDebug,
        kOptVersionText
    };
    static const option kLong[] = {{"run", required_argument, nullptr, 'r'},
                                   {"csv", required_argument, nullptr, kOptCsv},
                                   {"dispatcher", no_argument, nullptr, kOptDispatcher},
                                   {"port", required_argument, nullptr, kOptPort},
                                   {"bind", required_argument, nullptr, kOptBind},
                                   {"users", required_argument, nullptr, kOptUsers},
                                   {"debug", required_argument, nullptr, kOptDebug},
                                   {"version-text", required_argument, nullptr, kOptVersionText},
                                   {"version", no_argument, nullptr, kOptVersion},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
    opterr = 0;
    int c;
    while ((c = getopt_long(argc, argv, "r:h", kLong, nullptr)) != -1) {
        switch (c) {
            case 'r':
                opts.mode = Mode::kRun;
                opts.deck = optarg;
                break;
            case kOptCsv:
                opts.csv = optarg;
                break;
            case kOptDispatcher:
                opts.mode = Mode::kDispatcher;
                break;
            case kOptPort: {
                char* end = nullptr;
                const long port = std::strtol(optarg, &end, 10);
                if (*optarg == '\0' || *end != '\0' || port < 1 || port > 65535) {
                    std::cerr << "tnav-standin: --port takes a port number in 1..65535, got " << optarg
                              << '\n';
                    return 2;
                }
                opts.dispatcher.port = static_cast<int>(port);
                opts.port_given = true;
                break;
            }
            case kOptBind:
                opts.dispatcher.bind = optarg;
                break;
            case kOptUsers:
                opts.dispatcher.users_file = optarg;
                break;
            case kOptDebug:
                opts.dispatcher.debug_file = optarg;
                break;
            case kOptVersionText:
                opts.dispatcher.version_text = optarg;
                break;
            case kOptVersion:
                std::cout << kVersion << '\n';
                return 0;
            case 'h':
                Usage(std::cout);
                return 0;
            default:
                std::cerr << "tnav-standin: unknown option or missing argument: " << argv[optind - 1] << '\n';
                Usage(std::cerr);
                return 2;
        }
    }
    if (optind < argc) {
        std::cerr << "tnav-standin: unexpected argument: " << argv[optind] << '\n';
        return 2;
    }
    if (opts.mode == Mode::kNone) {
        Usage(std::cerr);
        return 2;
    }
    if (opts.mode == Mode::kDispatcher && !opts.port_given) {
        std::cerr << "tnav-standin: --dispatcher needs --port N\n";
        return 2;
    }
    return std::nullopt;
}

int Run(const Options& opts) {
    const auto t0 = std::chrono::steady_clock::now();
    StandinReservoir engine(ReadDeck(opts.deck));
    std::ofstream csv;
    if (opts.csv) {
        csv.open(*opts.csv);
        if (!csv) throw std::runtime_error("cannot write CSV file " + *opts.csv);
    }
    const auto t1 = std::chrono::steady_clock::now();
    const std::size_t rows = RunToEnd(engine, std::cout, opts.csv ? &csv : nullptr);
    const auto t2 = std::chrono::steady_clock::now();
    if (opts.csv && !(csv.flush())) throw std::runtime_error("failed writing CSV file " + *opts.csv);
    using ms = std::chrono::duration<double, std::milli>;
    std::cout << "# " << rows << " rows; deck read in " << ms(t1 - t0).count() << " ms, run in "
              << ms(t2 - t1).count() << " ms\n";
    return 0;
}

int Serve(const Options& opts) {
    const bool local = !opts.dispatcher.users_file;
    const pid_t parent = getppid();
    // A local dispatcher must not outlive the program that started it: it watches its parent's process id
    // (PR_SET_PDEATHSIG would fire when the forking thread ends, even if the process lives on).
    // gRPC's own log would bury the one-line reason for a failed start; GRPC_VERBOSITY still overrides.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    Dispatcher dispatcher(opts.dispatcher);
    try {
        dispatcher.Start();
    } catch (const std::exception& e) {
        std::cerr << "tnav-standin: " << e.what() << '\n';
        return 3;
    }
    std::cerr << "tnav-standin: dispatcher listening on " << opts.dispatcher.bind << ':' << dispatcher.Port()
              << (local ? " (local)" : " (cluster)") << std::endl;
    std::atomic<bool> stopping = false;
    std::thread watcher;
    if (local) {
        watcher = std::thread([&dispatcher, &stopping, parent] {
            while (!stopping && getppid() == parent)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            dispatcher.RequestStop();
        });
    }
    dispatcher.Wait();
    stopping = true;
    if (watcher.joinable()) watcher.join();
    dispatcher.Shutdown();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options opts;
    if (const auto status = Parse(argc, argv, opts)) return *status;
    try {
        switch (opts.mode) {
            case Mode::kRun:
                return Run(opts);
            case Mode::kDispatcher:
                return Serve(opts);
            case Mode::kNone:
                break;
        }
    } catch (const std::exception& e) {
        std::cerr << "tnav-standin: " << e.what() << '\n';
        return 1;
    }
    return 2;
}
