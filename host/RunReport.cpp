// The per-step table on standard output and the CSV files of a coupled run.
#include "host/RunReport.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace host {

namespace {

namespace fs = std::filesystem;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) < sizeof(buffer)) return std::string(buffer, length);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    va_start(args, format);
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Whole days without decimals, part days with two.
std::string DaysText(double days) {
    return days == std::floor(days) ? Format("%.0f", days) : Format("%.2f", days);
}

constexpr int kColumn = 10;

// One well's row: asked and delivered oil, water, gas and BHP. An injector has no oil; a shut well was asked
// for nothing.
std::string WellRow(const WellStep& well, int nameWidth) {
    std::string row = Format("  %-*s %-4s", nameWidth, well.name.c_str(), well.injector ? "inj" : "prod");
    const auto oil = [&](double value) {
        return well.injector ? Format(" %*s", kColumn, "-") : Format(" %*.1f", kColumn, value);
    };
    if (well.asked.shut) {
        row += Format(" %*s %*s %*s %*s", kColumn, "shut", kColumn, "", kColumn, "", kColumn, "");
    } else {
        row += oil(well.asked.oil) + Format(" %*.1f %*.3f %*.1f", kColumn, well.asked.water, kColumn,
                                            well.asked.gas, kColumn, well.asked.pressure);
    }
    row += ' ';
    row += oil(well.oil) +
           Format(" %*.1f %*.3f %*.1f", kColumn, well.water, kColumn, well.gas, kColumn, well.bhp);
    return row;
}

// Quotes a text field when it holds a separator, a quote or a line break.
std::string CsvText(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c;
        if (c == '"') quoted += '"';
    }
    return quoted + "\"";
}

std::string CsvNumber(double value) {
    return Format("%.10g", value);
}

// Opens a file of the folder for writing, creating the folder when missing.
std::ofstream OpenCsv(const fs::path& file) {
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error) throw std::runtime_error("Could not write " + file.string() + ": " + error.message());
    std::ofstream out(file, std::ios::out | std::ios::trunc);
    if (!out) throw std::runtime_error("Could not write " + file.string());
    return out;
}

void CloseCsv(std::ofstream& out, const fs::path& file) {
    out.close();
    if (!out) throw std::runtime_error("Could not write " + file.string());
}

}  // namespace

void PrintStep(std::ostream& out, const StepRecord& step) {
    std::string head =
        Format("%s  day %-5s manifold %.1f psig   field oil %.1f STB/d  water %.1f STB/d  gas %.3f MMscf/d",
               step.date.Text().c_str(), DaysText(step.days).c_str(), step.manifoldPressure, step.oil,
               step.water, step.gas);
    if (step.limited) head += "  [limited]";
    out << head << '\n';
    if (step.waterInjection != 0.0 || step.gasInjection != 0.0) {
        out << Format("  injected water %.1f STB/d  gas %.3f MMscf/d\n", step.waterInjection,
                      step.gasInjection);
    }
    if (step.wells.empty()) return;

    int nameWidth = 4;
    for (const WellStep& well : step.wells)
        nameWidth = std::max(nameWidth, static_cast<int>(well.name.size()));
    out << Format("  %-*s %-4s %*s %*s %*s %*s  %*s %*s %*s %*s\n", nameWidth, "well", "", kColumn,
                  "asked oil", kColumn, "water", kColumn, "gas", kColumn, "BHP", kColumn, "got oil", kColumn,
                  "water", kColumn, "gas", kColumn, "BHP");
    for (const WellStep& well : step.wells) out << WellRow(well, nameWidth) << '\n';
}

void WriteCsv(const fs::path& folder, const std::vector<StepRecord>& steps,
              const std::vector<std::string>& wellVariables) {
    const fs::path fieldFile = folder / "field.csv";
    std::ofstream field = OpenCsv(fieldFile);
    field << "date,days,manifold_psig,oil_stb_d,water_stb_d,gas_mmscf_d,water_inj_stb_d,gas_inj_mmscf_d,"
             "limited\n";
    for (const StepRecord& step : steps) {
        field << step.date.Text() << ',' << CsvNumber(step.days) << ',' << CsvNumber(step.manifoldPressure)
              << ',' << CsvNumber(step.oil) << ',' << CsvNumber(step.water) << ',' << CsvNumber(step.gas)
              << ',' << CsvNumber(step.waterInjection) << ',' << CsvNumber(step.gasInjection) << ','
              << (step.limited ? 1 : 0) << '\n';
    }
    CloseCsv(field, fieldFile);

    const fs::path wellsFile = folder / "wells.csv";
    std::ofstream wells = OpenCsv(wellsFile);
    wells
        << "date,days,well,injector,shut,asked_oil_stb_d,asked_water_stb_d,asked_gas_mmscf_d,asked_bhp_psig,"
           "oil_stb_d,water_stb_d,gas_mmscf_d,bhp_psig,ipr_correction";
    for (const std::string& variable : wellVariables) wells << ',' << CsvText(variable);
    wells << '\n';
    for (const StepRecord& step : steps) {
        for (const WellStep& well : step.wells) {
            wells << step.date.Text() << ',' << CsvNumber(step.days) << ',' << CsvText(well.name) << ','
                  << (well.injector ? 1 : 0) << ',' << (well.asked.shut ? 1 : 0) << ','
                  << CsvNumber(well.asked.oil) << ',' << CsvNumber(well.asked.water) << ','
                  << CsvNumber(well.asked.gas) << ',' << CsvNumber(well.asked.pressure) << ','
                  << CsvNumber(well.oil) << ',' << CsvNumber(well.water) << ',' << CsvNumber(well.gas) << ','
                  << CsvNumber(well.bhp) << ',' << CsvNumber(well.correction);
            for (std::size_t k = 0; k < wellVariables.size(); ++k)
                wells << ',' << (k < well.variables.size() ? CsvText(well.variables[k]) : std::string());
            wells << '\n';
        }
    }
    CloseCsv(wells, wellsFile);
}

void PrintWellVariables(std::ostream& out, const std::vector<StepRecord>& steps,
                        const std::vector<std::string>& wellVariables) {
    if (steps.empty() || wellVariables.empty()) return;
    const StepRecord& last = steps.back();
    out << "Well variables on " << last.date.Text() << ", read by access string:\n";
    int nameWidth = 4;
    for (const WellStep& well : last.wells)
        nameWidth = std::max(nameWidth, static_cast<int>(well.name.size()));
    for (const WellStep& well : last.wells) {
        std::string line = Format("  %-*s", nameWidth, well.name.c_str());
        for (std::size_t k = 0; k < wellVariables.size() && k < well.variables.size(); ++k)
            line += "  " + wellVariables[k] + "=" + well.variables[k];
        out << line << '\n';
    }
}

}  // namespace host
