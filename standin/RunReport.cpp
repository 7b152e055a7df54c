#include "standin/RunReport.h"

#include <chrono>
#include <cstdio>
#include <iomanip>
#include <vector>

namespace rivulet::standin {
namespace {

struct Column {
    std::string name;
    double value;
    bool in_table;
};

const char* UnitName(UnitKind kind) {
    switch (kind) {
        case UnitKind::kField:
            return "FIELD";
        case UnitKind::kLab:
            return "LAB";
        case UnitKind::kPvtM:
            return "PVT-M";
        default:
            return "METRIC";
    }
}

std::vector<Column> Row(const StandinReservoir& engine) {
    const FieldReport f = engine.Field();
    std::vector<Column> row = {
        {"FOPR", f.oil_rate, true},           {"FWPR", f.water_rate, true},
        {"FGPR", f.gas_rate, true},           {"FWIR", f.water_injection_rate, true},
        {"FGIR", f.gas_injection_rate, true}, {"FPR", f.pressure, true},
        {"FOPT", f.oil_total, true},          {"FWPT", f.water_total, true},
        {"FGPT", f.gas_total, true},
    };
    for (std::size_t w = 0; w < engine.WellCount(); ++w) {
        const WellReport r = engine.Well(w);
        const bool inj = r.type == WellType::kInjector;
        const std::string p = r.name + (inj ? ":I" : ":");
        row.push_back({p + "ORAT", r.oil_rate, !inj || r.injected == Phase::kOil});
        row.push_back({p + "WRAT", r.water_rate, !inj || r.injected == Phase::kWater});
        row.push_back({p + "GRAT", r.gas_rate, !inj || r.injected == Phase::kGas});
        row.push_back({r.name + ":BHP", r.bhp, true});
        row.push_back({r.name + ":THP", r.thp, false});
        row.push_back({p + "OTOT", r.oil_total, false});
        row.push_back({p + "WTOT", r.water_total, false});
        row.push_back({p + "GTOT", r.gas_total, false});
    }
    return row;
}

void Write(const StandinReservoir& engine, std::ostream& table, std::ostream* csv, bool header) {
    const std::vector<Column> row = Row(engine);
    const double days = static_cast<double>(engine.Now() - engine.Start()) / 86400.0;
    if (header) {
        table << std::left << std::setw(12) << "DATE" << std::right << std::setw(10) << "DAYS";
        for (const auto& c : row)
            if (c.in_table)
                table << ' ' << std::setw(std::max<int>(12, static_cast<int>(c.name.size()))) << c.name;
        table << '\n';
        if (csv != nullptr) {
            *csv << "DATE,DAYS";
            for (const auto& c : row) *csv << ',' << c.name;
            *csv << '\n';
        }
    }
    table << std::left << std::setw(12) << FormatDate(engine.Now()) << std::right << std::setw(10)
          << std::fixed << std::setprecision(1) << days;
    for (const auto& c : row) {
        if (!c.in_table) continue;
        table << ' ' << std::setw(std::max<int>(12, static_cast<int>(c.name.size()))) << std::setprecision(1)
              << c.value;
    }
    table << '\n';
    if (csv != nullptr) {
        *csv << FormatDate(engine.Now()) << ',' << std::defaultfloat << std::setprecision(10) << days;
        for (const auto& c : row) *csv << ',' << c.value;
        *csv << '\n';
    }
}

}  // namespace

std::string FormatDate(Seconds t) {
    using namespace std::chrono;
    const sys_seconds tp{seconds{t}};
    const sys_days day = floor<days>(tp);
    const year_month_day ymd{day};
    const auto rest = tp - day;
    char buf[64];
    if (rest.count() == 0) {
        std::snprintf(buf, sizeof buf, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                      static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
    } else {
        const hh_mm_ss hms{rest};
        std::snprintf(buf, sizeof buf, "%04d-%02u-%02u %02ld:%02ld:%02ld", static_cast<int>(ymd.year()),
                      static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                      static_cast<long>(hms.hours().count()), static_cast<long>(hms.minutes().count()),
                      static_cast<long>(hms.seconds().count()));
    }
    return buf;
}

std::size_t RunToEnd(StandinReservoir& engine, std::ostream& table, std::ostream* csv) {
    const DeckModel& m = engine.Model();
    table << "# " << m.title << " (" << m.path << "), units " << UnitName(m.units) << ", "
          << m.report_dates.size() << " report steps from " << FormatDate(m.start) << " to "
          << FormatDate(m.End()) << '\n';
    std::size_t rows = 1;
    Write(engine, table, csv, true);
    while (!engine.Ended()) {
        engine.AdvanceTo(engine.End());
        Write(engine, table, csv, false);
        ++rows;
    }
    return rows;
}

}  // namespace rivulet::standin
