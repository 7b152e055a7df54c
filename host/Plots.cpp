// The plots of a coupled run: a data file and a gnuplot script in the output folder, drawn by gnuplot into
// field.png and one ipr_<well>.png per well.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "host/RunReport.h"

extern char** environ;

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCurvesPerWell = 4;

// The gnuplot executable on PATH, or empty.
fs::path FindGnuplot() {
    const char* path = std::getenv("PATH");
    std::stringstream folders(path != nullptr ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path candidate = fs::path(folder.empty() ? "." : folder) / "gnuplot";
        std::error_code error;
        if (fs::is_regular_file(candidate, error) && ::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return {};
}

// A well's name as a file name: letters, digits, '_' and '-' kept, anything else '_'.
std::string SafeFileName(const std::string& name) {
    std::string safe = name.empty() ? "well" : name;
    for (char& c : safe) {
        const bool kept = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                          c == '_' || c == '-';
        if (!kept) c = '_';
    }
    return safe;
}

// A gnuplot single-quoted string: quotes doubled, line breaks and other control characters made spaces.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "''";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            quoted += ' ';
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string Number(double value) {
    if (!std::isfinite(value)) return "NaN";
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%.10g", value);
    return buffer;
}

// Every step of one well, in the order of the run.
struct WellSeries {
    std::string name;
    NetworkPhase phase = NetworkPhase::kLiquid;
    std::vector<const StepRecord*> steps;
    std::vector<const WellStep*> records;
};

std::vector<WellSeries> CollectWells(const std::vector<StepRecord>& steps) {
    std::vector<WellSeries> wells;
    for (const StepRecord& step : steps) {
        for (const WellStep& record : step.wells) {
            auto it = std::find_if(wells.begin(), wells.end(),
                                   [&](const WellSeries& series) { return series.name == record.name; });
            if (it == wells.end())
                it = wells.insert(wells.end(), WellSeries{record.name, record.phase, {}, {}});
            it->phase = record.phase;
            it->steps.push_back(&step);
            it->records.push_back(&record);
        }
    }
    return wells;
}

// The steps whose curves are drawn: the first and the last with a table, and evenly between. A table
// without one finite pressure counts as none.
std::vector<std::size_t> ChosenSteps(const WellSeries& well) {
    std::vector<std::size_t> withTable;
    for (std::size_t i = 0; i < well.records.size(); ++i) {
        const auto& pressure = well.records[i]->table.pressure;
        if (std::any_of(pressure.begin(), pressure.end(), [](double p) { return std::isfinite(p); })) {
            withTable.push_back(i);
        }
    }
    if (withTable.size() <= kCurvesPerWell) return withTable;
    std::vector<std::size_t> chosen;
    for (std::size_t k = 0; k < kCurvesPerWell; ++k) {
        const std::size_t at = (k * (withTable.size() - 1) + (kCurvesPerWell - 1) / 2) / (kCurvesPerWell - 1);
        chosen.push_back(withTable[at]);
    }
    return chosen;
}

// The table with every phase as long as its pressures, so that each point has all its rates.
InflowTable Padded(const InflowTable& table) {
    InflowTable padded = table;
    const std::size_t points = table.pressure.size();
    padded.oil.resize(points, 0.0);
    padded.water.resize(points, 0.0);
    padded.gas.resize(points, 0.0);
    return padded;
}

const char* RateLabel(NetworkPhase phase) {
    switch (phase) {
        case NetworkPhase::kWater:
            return "water rate (STB/d)";
        case NetworkPhase::kLiquid:
            return "liquid rate (STB/d)";
        case NetworkPhase::kGas:
            return "gas rate (MMscf/d)";
        default:
            return "controlled rate (STB/d or MMscf/d)";
    }
}

// Builds the data file and the script side by side; each data block is one gnuplot index.
class PlotWriter {
  public:
    explicit PlotWriter(const fs::path& dataFile) : dataName_(Quoted(dataFile.string())) {}

    std::string Data() const { return data_.str(); }
    std::string Script() const { return script_.str(); }

    void Field(const std::vector<StepRecord>& steps, const fs::path& png) {
        const int block = Block("field: days oil water gas manifold");
        for (const StepRecord& step : steps) {
            data_ << Number(step.days) << ' ' << Number(step.oil) << ' ' << Number(step.water) << ' '
                  << Number(step.gas) << ' ' << Number(step.manifoldPressure) << '\n';
        }
        const std::string from = dataName_ + " index " + std::to_string(block);
        script_ << "reset\nset output " << Quoted(png.string()) << "\n"
                << "set multiplot layout 2,1 title 'Field'\n"
                << "set grid\nset key outside right top\nset xlabel 'days'\n"
                << "set ylabel 'oil, water (STB/d)'\nset y2label 'gas (MMscf/d)'\n"
                << "set ytics nomirror\nset y2tics\nset title 'Rates'\n"
                << "plot " << from << " using 1:2 with linespoints pt 7 ps 0.6 title 'oil', \\\n"
                << "     " << from << " using 1:3 with linespoints pt 7 ps 0.6 title 'water', \\\n"
                << "     " << from << " using 1:4 axes x1y2 with linespoints pt 7 ps 0.6 title 'gas'\n"
                << "unset y2tics\nunset y2label\nset ytics mirror\n"
                << "set ylabel 'pressure (psig)'\nset title 'Manifold pressure'\n"
                << "plot " << from << " using 1:5 with linespoints pt 7 ps 0.6 title 'manifold'\n"
                << "unset multiplot\nset output\n";
    }

    void Inflow(const WellSeries& well, const fs::path& png) {
        std::vector<std::string> plots;
        int curve = 0;
        for (const std::size_t i : ChosenSteps(well)) {
            ++curve;
            const WellStep& record = *well.records[i];
            const std::string date = well.steps[i]->date.Text();
            InflowTable table = Padded(record.table);
            const int block = Block("inflow " + well.name + " " + date);
            for (std::size_t p = 0; p < table.pressure.size(); ++p) {
                data_ << Number(ControlledRate(table, well.phase, p)) << ' ' << Number(table.pressure[p])
                      << '\n';
            }
            // A corrected table is drawn beside the simulator's own, which is its rates over the correction.
            const double correction = record.correction;
            const bool corrected = std::isfinite(correction) && correction > 0.0 && correction != 1.0;
            plots.push_back(dataName_ + " index " + std::to_string(block) +
                            " using 1:2 with linespoints pt 6 ps 0.6 lw 2 lt " + std::to_string(curve) +
                            " title " + Quoted(corrected ? date + " corrected" : date));
            if (corrected) {
                const int raw = Block("raw inflow " + well.name + " " + date);
                for (std::size_t p = 0; p < table.pressure.size(); ++p) {
                    data_ << Number(ControlledRate(table, well.phase, p) / correction) << ' '
                          << Number(table.pressure[p]) << '\n';
                }
                plots.push_back(dataName_ + " index " + std::to_string(raw) +
                                " using 1:2 with lines dt 2 lw 1 lt " + std::to_string(curve) + " title " +
                                Quoted(date + " raw"));
            }
            if (record.asked.shut) continue;
            // The asked point joins the table so that the controlled phase is judged on the whole table.
            table.oil.push_back(record.asked.oil);
            table.water.push_back(record.asked.water);
            table.gas.push_back(record.asked.gas);
            table.pressure.push_back(record.asked.pressure);
            const int point = Block("operating point " + well.name + " " + date);
            data_ << Number(ControlledRate(table, well.phase, table.pressure.size() - 1)) << ' '
                  << Number(record.asked.pressure) << '\n';
            plots.push_back(dataName_ + " index " + std::to_string(point) +
                            " using 1:2 with points pt 7 ps 2 lt " + std::to_string(curve) + " notitle");
        }
        script_ << "reset\nset output " << Quoted(png.string()) << "\n"
                << "set grid\nset key outside right top\n"
                << "set title " << Quoted("Inflow of " + well.name) << "\n"
                << "set xlabel " << Quoted(RateLabel(well.phase)) << "\nset ylabel 'pressure (psig)'\n"
                << "plot ";
        for (std::size_t k = 0; k < plots.size(); ++k) script_ << (k == 0 ? "" : ", \\\n     ") << plots[k];
        script_ << "\nset output\n";
    }

  private:
    // Starts a data block and returns its index.
    int Block(const std::string& comment) {
        if (blocks_ > 0) data_ << "\n\n";
        std::string line = comment;
        for (char& c : line) {
            if (c == '\n' || c == '\r') c = ' ';
        }
        data_ << "# " << line << '\n';
        return blocks_++;
    }

    std::string dataName_;
    std::ostringstream data_;
    std::ostringstream script_;
    int blocks_ = 0;
};

void WriteFile(const fs::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::out | std::ios::trunc);
    out << text;
    out.close();
    if (!out) throw std::runtime_error("Could not write " + file.string());
}

// Runs gnuplot on the script, its output going to the log; the exit status, or -1 with `failure` set.
int RunGnuplot(const fs::path& gnuplot, const fs::path& script, const fs::path& log, std::string& failure) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::string program = gnuplot.string();
    std::string argument = script.string();
    char* argv[] = {program.data(), argument.data(), nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        failure = "gnuplot could not be started: " + std::string(std::strerror(spawned));
        return -1;
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            failure = "gnuplot could not be waited for: " + std::string(std::strerror(errno));
            return -1;
        }
    }
    if (WIFSIGNALED(status)) {
        failure = "gnuplot was killed by signal " + std::to_string(WTERMSIG(status));
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

std::vector<fs::path> DrawPlots(const fs::path& folder, const std::vector<StepRecord>& steps,
                                std::string& note) {
    note.clear();
    const fs::path gnuplot = FindGnuplot();
    if (gnuplot.empty()) {
        note = "gnuplot not found: no plots drawn";
        return {};
    }
    if (steps.empty()) {
        note = "no steps: no plots drawn";
        return {};
    }
    std::error_code error;
    const fs::path out = fs::absolute(folder, error);
    fs::create_directories(out, error);
    if (error)
        throw std::runtime_error("Could not create the folder " + folder.string() + ": " + error.message());

    const fs::path dataFile = out / "plots.dat";
    const fs::path scriptFile = out / "plots.gp";
    PlotWriter writer(dataFile);
    std::vector<fs::path> pngs = {out / "field.png"};
    writer.Field(steps, pngs.back());
    std::set<std::string> taken;
    for (const WellSeries& well : CollectWells(steps)) {
        if (ChosenSteps(well).empty()) continue;
        // Two names may come out the same once made safe; the later gets a number.
        std::string name = SafeFileName(well.name);
        for (int n = 2; !taken.insert(name).second; ++n)
            name = SafeFileName(well.name) + "_" + std::to_string(n);
        pngs.push_back(out / ("ipr_" + name + ".png"));
        writer.Inflow(well, pngs.back());
    }
    for (const fs::path& png : pngs) fs::remove(png, error);

    WriteFile(dataFile, writer.Data());
    WriteFile(scriptFile,
              "# The plots of a coupled run; data in plots.dat.\n"
              "if (strstrt(GPVAL_TERMINALS, 'pngcairo') > 0) {\n"
              "    set terminal pngcairo noenhanced size 1000,600\n"
              "} else {\n"
              "    set terminal png noenhanced size 1000,600\n"
              "}\n" +
                  writer.Script());

    std::string failure;
    const int status = RunGnuplot(gnuplot, scriptFile, out / "plots.log", failure);
    if (!failure.empty()) {
        note = failure;
    } else if (status != 0) {
        note = "gnuplot failed with exit status " + std::to_string(status) + " (see plots.log)";
    }
    std::vector<fs::path> written;
    for (const fs::path& png : pngs) {
        if (fs::is_regular_file(png, error) && fs::file_size(png, error) > 0) written.push_back(png);
    }
    return written;
}

}  // namespace host
