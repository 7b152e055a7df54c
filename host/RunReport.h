// What the host shows and leaves of a coupled run: a table per step on standard output, field.csv and
// wells.csv in the output folder, and plots drawn with gnuplot.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "host/StepRecord.h"

namespace host {

// One block per step: the date, the manifold pressure, the field rates, and per well the asked and
// delivered rates and the BHP.
void PrintStep(std::ostream& out, const StepRecord& step);

// field.csv: one row per step (date, days, manifold pressure, field rates). wells.csv: one row per well and
// step (date, days, well, asked and delivered oil, water and gas, asked and delivered BHP, shut flag), then a
// column for each of `wellVariables`, headed by its access-string name. Throws std::runtime_error naming the
// file that could not be written.
void WriteCsv(const std::filesystem::path& folder, const std::vector<StepRecord>& steps,
              const std::vector<std::string>& wellVariables = {});

// The well variables of the last step, one line per well: "PROD  Status=Open  Bhp=3021.5".
void PrintWellVariables(std::ostream& out, const std::vector<StepRecord>& steps,
                        const std::vector<std::string>& wellVariables);

// field.png: field oil, water and gas rates and the manifold pressure against time. ipr_<well>.png for each
// well: its inflow curves (controlled rate against pressure) at a few steps spread over the run, each with
// its operating point marked. Returns the files written; with no gnuplot on the path it writes none and
// says so in `note`.
std::vector<std::filesystem::path> DrawPlots(const std::filesystem::path& folder,
                                             const std::vector<StepRecord>& steps, std::string& note);

}  // namespace host
