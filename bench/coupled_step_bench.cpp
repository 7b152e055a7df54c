// Coupled steps through the plug-in's exports, as Conflux makes them, on synthetic decks of 100, 1,000 and
// 10,000 wells run by the stand-in simulator. Each iteration is one monthly step: an operating point per well
// (SetOpPt), the step (Timestep), an inflow table per well (GetIPR) and the results the host reads (the field
// rows and four rows per well). The host holds one well record per well, as Conflux does, and asks each well
// for the middle point of its last inflow table (the deck's rates before the first).
//
// Counters, per step: the time of each command group; `sim_ms`, the time spent waiting in simulator calls and
// `sim_calls`, their number, both counted by the client library; `driver_ms`, the step less that wait; and
// `floor_ms`, the time of zeroing every well record once, measured in the same run: the least a step that
// touches each record can cost. `open_s` is the simulator's start on the deck; `unanswered`, the result rows
// the driver did not answer over all steps; `getvar_*_per_s`, GetVar calls per second by well key.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/SyntheticDeck.h"
#include "client/CallMeter.h"
#include "host/Buffer.h"
#include "host/Commands.h"
#include "host/MachineSetup.h"
#include "host/ModelClient.h"
#include "host/Plugin.h"

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kGetSetSize = 105368;
constexpr std::size_t kMaskFlag = 8, kOil = 16, kWater = 96, kGas = 176, kTemperature = 416;
constexpr std::size_t kPoints = 496, kDowntime = 102360, kMaskKind = 102504;
constexpr double kNoValue = 3.4e35;
constexpr int kFieldRows = 6, kFirstWellRow = 12, kRowsPerWell = 14;
constexpr int kWellRowsRead[] = {0, 1, 2, 12};  // oil, gas and water rates, BHP

double Milliseconds(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

fs::path ExecutableDir() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

tnavclient_call_meter_t ReadMeter() {
    tnavclient_call_meter_t meter{};
    tnavclient_read_call_meter(&meter);
    return meter;
}

// A folder of this process with the deck and the machine configuration, and the plug-in loaded after it.
struct Workspace {
    fs::path folder;
    std::unique_ptr<host::Plugin> plugin;
    Workspace() {
        std::string name = (fs::temp_directory_path() / "rivulet-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a scratch folder");
        folder = name;
        host::UsePrivateConfiguration(folder, ExecutableDir() / "tnav-standin", std::nullopt);
        plugin = std::make_unique<host::Plugin>(
            (ExecutableDir().parent_path() / "lib" / "librivulet.so").string());
    }
    ~Workspace() {
        plugin.reset();
        std::error_code error;
        fs::remove_all(folder, error);
    }
};

Workspace& TheWorkspace() {
    static Workspace workspace;
    return workspace;
}

class Step {
  public:
    Step(host::Plugin& plugin, void* model) : plugin_(plugin), model_(model) {}

    // Sends one command with a record; false, with the driver's text kept, when it does not answer
    // `success`.
    bool Send(std::uint32_t command, void* record, std::uint32_t count = 0, std::uint32_t success = 0) {
        if (plugin_.Cmd(model_, 0, command, reinterpret_cast<std::uintptr_t>(record), count, &err_) ==
            success)
            return true;
        error_ = std::string("command ") + std::to_string(command) + ": " + err_.text;
        return false;
    }
    const std::string& Error() const { return error_; }

  private:
    host::Plugin& plugin_;
    void* model_;
    host::ErrorRecord err_;  // one record for every call, as a host keeps it
    std::string error_;
};

// An operating point: oil, water and gas rates, host units.
using Point = std::array<double, 3>;

void PutOperatingPoint(host::Buffer& record, std::int32_t well, const Point& point) {
    record.Put<std::int32_t>(0, static_cast<std::int32_t>(kGetSetSize));
    record.Put<std::int32_t>(4, well);
    record.Put<std::uint8_t>(kMaskFlag, 0);
    record.Put<std::int32_t>(kMaskKind, 2);
    record.Put<double>(kOil, point[0]);
    record.Put<double>(kWater, point[1]);
    record.Put<double>(kGas, point[2]);
    record.Put<double>(kTemperature, kNoValue);
    record.Put<double>(kDowntime, 0.0);
}

// The point a network would choose on a well's inflow table: its middle row; `fallback` without a table.
Point MiddleOfTable(const host::Buffer& record, const Point& fallback) {
    const int points = record.Get<std::int32_t>(kPoints);
    if (points < 2) return fallback;
    const std::size_t at = 8 * static_cast<std::size_t>(points / 2);
    return {record.Get<double>(kOil + at), record.Get<double>(kWater + at), record.Get<double>(kGas + at)};
}

void BM_CoupledStep(benchmark::State& state) {
    const int wells = static_cast<int>(state.range(0));
    Workspace& workspace = TheWorkspace();
    const std::string deck = bench::WriteSyntheticDeck(
        (workspace.folder / ("SYNTH" + std::to_string(wells) + ".DATA")).string(), wells);

    host::ModelClient model(*workspace.plugin);
    model.SetVar("TNAVIGATOR.CaseDetails.IsLocalMachine", "1");
    model.SetVar("TNAVIGATOR.CaseDetails.FileName", deck);
    const auto openStart = Clock::now();
    model.StartSimulator();
    const double openSeconds = Milliseconds(Clock::now() - openStart) / 1000.0;

    std::vector<host::Connection> connections;
    std::vector<bool> injector;
    for (const host::QueriedWell& well : model.QueryWells()) {
        connections.push_back({well.index, well.injector,
                               well.injector ? host::NetworkPhase::kGas : host::NetworkPhase::kLiquid});
        injector.push_back(well.injector);
    }
    if (static_cast<int>(connections.size()) != wells) {
        state.SkipWithError("the simulator did not report every well of the deck");
        return;
    }
    host::CalendarDate date = model.StartDate();
    model.Initialise(connections, date, host::CalendarDate::FromSerial(date.Serial() + 3650));
    for (const host::Connection& well : connections) model.SetConnection(well.index, true);

    std::vector<host::Buffer> records(static_cast<std::size_t>(wells), host::Buffer(kGetSetSize));
    // Before the first tables: the deck's own rates.
    std::vector<Point> points;
    for (bool isInjector : injector)
        points.push_back(isInjector ? Point{0.0, 0.0, 1000.0} : Point{200.0, 0.0, 0.0});
    host::Buffer result(208), timestep(152);
    Step step(*workspace.plugin, model.Instance());
    double setMs = 0, timestepMs = 0, iprMs = 0, resultsMs = 0, floorMs = 0, simMs = 0;
    std::uint64_t simCalls = 0, unanswered = 0, blankBhp = 0;

    for (auto _ : state) {
        state.PauseTiming();
        for (std::size_t k = 0; k < records.size(); ++k)
            PutOperatingPoint(records[k], connections[k].index, points[k]);
        date = host::CalendarDate::FromSerial(date.Serial() + 30);
        timestep.Put<std::int32_t>(0, 152);
        timestep.Put<std::uint8_t>(48 + 4, 1);
        timestep.Put<double>(48 + 8, date.Serial());
        state.ResumeTiming();

        const tnavclient_call_meter_t before = ReadMeter();
        const auto t0 = Clock::now();
        for (std::size_t k = 0; k < records.size(); ++k)
            if (!step.Send(host::kSetOpPt, records[k].data()))
                return state.SkipWithError(step.Error().c_str());
        const auto t1 = Clock::now();
        if (!step.Send(host::kTimestep, timestep.data())) return state.SkipWithError(step.Error().c_str());
        const auto t2 = Clock::now();
        // Each record still names its well, from its operating point.
        for (host::Buffer& record : records)
            if (!step.Send(host::kGetIpr, record.data())) return state.SkipWithError(step.Error().c_str());
        const auto t3 = Clock::now();
        for (int row = 0; row < kFieldRows; ++row) {
            result.Put<std::int32_t>(4, row);
            unanswered += step.Send(host::kNodeResult, result.data(), 1, 1) ? 0 : 1;
        }
        for (const host::Connection& well : connections)
            for (int row : kWellRowsRead) {
                result.Put<std::int32_t>(4, kFirstWellRow + kRowsPerWell * well.index + row);
                unanswered += step.Send(host::kNodeResult, result.data(), 1, 1) ? 0 : 1;
                if (row == kWellRowsRead[3] && result.Get<double>(96) > 3.2e35) ++blankBhp;
            }
        const auto t4 = Clock::now();
        const tnavclient_call_meter_t after = ReadMeter();

        state.PauseTiming();
        for (std::size_t k = 0; k < records.size(); ++k) points[k] = MiddleOfTable(records[k], points[k]);
        const auto z0 = Clock::now();
        for (host::Buffer& record : records) std::memset(record.data(), 0, record.size());
        benchmark::ClobberMemory();
        floorMs += Milliseconds(Clock::now() - z0);
        state.ResumeTiming();

        setMs += Milliseconds(t1 - t0);
        timestepMs += Milliseconds(t2 - t1);
        iprMs += Milliseconds(t3 - t2);
        resultsMs += Milliseconds(t4 - t3);
        simMs += static_cast<double>(after.nanoseconds - before.nanoseconds) / 1e6;
        simCalls += after.calls - before.calls;
    }
    const double steps = static_cast<double>(state.iterations());
    const double stepMs = (setMs + timestepMs + iprMs + resultsMs) / steps;
    state.counters["step_ms"] = stepMs;
    state.counters["set_ms"] = setMs / steps;
    state.counters["timestep_ms"] = timestepMs / steps;
    state.counters["ipr_ms"] = iprMs / steps;
    state.counters["results_ms"] = resultsMs / steps;
    state.counters["sim_ms"] = simMs / steps;
    state.counters["sim_calls"] = static_cast<double>(simCalls) / steps;
    state.counters["driver_ms"] = stepMs - simMs / steps;
    state.counters["floor_ms"] = floorMs / steps;
    state.counters["driver_per_floor"] = (stepMs - simMs / steps) / (floorMs / steps);
    state.counters["open_s"] = openSeconds;
    state.counters["unanswered"] = static_cast<double>(unanswered);  // result rows over all steps
    state.counters["blank_bhp"] = static_cast<double>(blankBhp);     // wells without a BHP, over all steps

    // Variables by well key through GetVar, every well in turn: a rate the chain finds early and an integer
    // it tries last.
    std::vector<std::string> names;
    for (const host::QueriedWell& well : model.QueryWells()) names.push_back(well.name);
    for (const char* variable : {"OilRate", "EosRegion"}) {
        std::vector<std::string> access;
        for (const std::string& name : names) access.push_back("TNAVIGATOR.WELL[{" + name + "}]." + variable);
        host::Buffer record(528);
        constexpr int kCalls = 200000;
        const auto g0 = Clock::now();
        for (int k = 0; k < kCalls; ++k) {
            record.Put<const char*>(8, access[static_cast<std::size_t>(k) % access.size()].c_str());
            if (!step.Send(host::kGetVar, record.data())) return state.SkipWithError(step.Error().c_str());
        }
        state.counters[std::string("getvar_") + variable + "_per_s"] =
            kCalls / std::chrono::duration<double>(Clock::now() - g0).count();
    }
    model.Stop();
}
BENCHMARK(BM_CoupledStep)->Arg(100)->Arg(1000)->Arg(10000)->Iterations(3)->Unit(benchmark::kMillisecond);

// Prints the usual console report, then one table of every size's figures and the step's growth from the
// smallest size to the largest, for the README.
class TableReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (!run.error_occurred) runs_.push_back(run);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        if (runs_.empty()) return;
        auto& out = GetOutputStream();
        const auto c = [](const Run& run, const char* name) {
            const auto found = run.counters.find(name);
            return found == run.counters.end() ? 0.0 : static_cast<double>(found->second);
        };
        out << "\n| wells | step | SetOpPt | Timestep (simulator) | GetIPR | results | driver | floor | "
               "driver / floor"
               " | simulator calls | deck open | GetVar by key |\n"
               "|---|---|---|---|---|---|---|---|---|---|---|---|\n";
        char line[512];
        for (const Run& run : runs_) {
            std::snprintf(
                line, sizeof line,
                "| %s | %.1f ms | %.2f ms | %.1f ms (%.1f ms) | %.1f ms | %.2f ms | %.1f ms | %.1f ms | %.2f"
                " | %.0f | %.2f s | %.2f M/s |\n",
                run.run_name.args.c_str(), c(run, "step_ms"), c(run, "set_ms"), c(run, "timestep_ms"),
                c(run, "sim_ms"), c(run, "ipr_ms"), c(run, "results_ms"), c(run, "driver_ms"),
                c(run, "floor_ms"), c(run, "driver_per_floor"), c(run, "sim_calls"), c(run, "open_s"),
                c(run, "getvar_OilRate_per_s") / 1e6);
            out << line;
        }
        for (std::size_t k = 1; k < runs_.size(); ++k) {
            std::snprintf(line, sizeof line, "%sstep growth from %s to %s: %.1f-fold\n", k == 1 ? "\n" : "",
                          runs_[k - 1].run_name.args.c_str(), runs_[k].run_name.args.c_str(),
                          c(runs_[k], "step_ms") / c(runs_[k - 1], "step_ms"));
            out << line;
        }
    }

  private:
    std::vector<Run> runs_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
