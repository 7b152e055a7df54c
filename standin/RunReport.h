// Standalone runs: a deck under its own controls, one report row per report step.
#pragma once

#include <ostream>
#include <string>

#include "standin/StandinReservoir.h"

namespace rivulet::standin {

// "YYYY-MM-DD", or "YYYY-MM-DD hh:mm:ss" when the time is not midnight.
std::string FormatDate(Seconds t);

// Runs the engine to its end, writing an aligned table to `table` and, when given, CSV to `csv`.
// Returns the number of report rows written (the start row included).
std::size_t RunToEnd(StandinReservoir& engine, std::ostream& table, std::ostream* csv);

}  // namespace rivulet::standin
