// tnav-standin: the stand-in reservoir simulator. `--run DECK` runs a deck on its own and reports it.
#include <getopt.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "standin/DeckReader.h"
#include "standin/RunReport.h"
#include "standin/StandinReservoir.h"

namespace {

using namespace rivulet::standin;

constexpr const char* kVersion = "tnav-standin 0.1.0";

enum class Mode { kNone, kRun };

struct Options {
    Mode mode = Mode::kNone;
    std::string deck;
    std::optional<std::string> csv;
};

void Usage(std::ostream& out) {
    out << "Usage: tnav-standin --run DECK [--csv FILE]\n"
           "\n"
           "  --run DECK    run an Eclipse-format deck under its own well controls and print one row\n"
           "                per report step: field rates and pressure, cumulatives, well rates and BHP\n"
           "  --csv FILE    also write every row, with per-well THP and cumulatives, as CSV to FILE\n"
           "  --version     print the version and exit\n"
           "  --help        print this help and exit\n";
}

// Returns the exit status to use when the options end the program before any work.
std::optional<int> Parse(int argc, char** argv, Options& opts) {
    enum { kOptCsv = 1000, kOptVersion };
    static const option kLong[] = {{"run", required_argument, nullptr, 'r'},
                                   {"csv", required_argument, nullptr, kOptCsv},
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

}  // namespace

int main(int argc, char** argv) {
    Options opts;
    if (const auto status = Parse(argc, argv, opts)) return *status;
    try {
        switch (opts.mode) {
            case Mode::kRun:
                return Run(opts);
            case Mode::kNone:
                break;
        }
    } catch (const std::exception& e) {
        std::cerr << "tnav-standin: " << e.what() << '\n';
        return 1;
    }
    return 2;
}
