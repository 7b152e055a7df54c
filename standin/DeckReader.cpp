// The only translation unit that sees opm-common: everything it reads leaves here as plain structs.
#include "standin/DeckReader.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <numbers>
#include <set>

#include <opm/input/eclipse/Deck/Deck.hpp>
#include <opm/input/eclipse/Deck/DeckKeyword.hpp>
#include <opm/input/eclipse/Deck/DeckRecord.hpp>
#include <opm/input/eclipse/EclipseState/EclipseState.hpp>
#include <opm/input/eclipse/EclipseState/Grid/EclipseGrid.hpp>
#include <opm/input/eclipse/EclipseState/Grid/FieldPropsManager.hpp>
#include <opm/input/eclipse/EclipseState/InitConfig/Equil.hpp>
#include <opm/input/eclipse/EclipseState/InitConfig/InitConfig.hpp>
#include <opm/input/eclipse/EclipseState/Tables/FlatTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/PvdgTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/PvdoTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/PvtgTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/PvtoTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/RsvdTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/SgofTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/SwofTable.hpp>
#include <opm/input/eclipse/EclipseState/Tables/TableManager.hpp>
#include <opm/input/eclipse/Parser/ErrorGuard.hpp>
#include <opm/input/eclipse/Parser/ParseContext.hpp>
#include <opm/input/eclipse/Parser/Parser.hpp>
#include <opm/input/eclipse/Python/Python.hpp>
#include <opm/input/eclipse/Schedule/Schedule.hpp>
#include <opm/input/eclipse/Schedule/SummaryState.hpp>
#include <opm/input/eclipse/Schedule/Well/Well.hpp>
#include <opm/input/eclipse/Schedule/Well/WellConnections.hpp>
#include <opm/input/eclipse/Units/UnitSystem.hpp>

#include "standin/Fluid.h"

#if defined(__SANITIZE_ADDRESS__)
#define STANDIN_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define STANDIN_ASAN 1
#endif
#endif

#if defined(STANDIN_ASAN)
// opm-common and the Python runtime it links keep a few allocations of their own static set-up for the
// life of the process; every program that reads decks would otherwise end with a leak report.
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return "leak:libopmcommon\nleak:libpython3\n";
}
#endif

namespace rivulet::standin {
namespace {

using Measure = Opm::UnitSystem::measure;

// The guard aborts the process when destroyed holding errors, so it is always emptied on the way out.
struct DrainedGuard {
    Opm::ErrorGuard guard;
    ~DrainedGuard() { guard.clear(); }
};

std::vector<double> Column(const Opm::TableColumn& column) {
    std::vector<double> out(column.size());
    for (std::size_t i = 0; i < column.size(); ++i) out[i] = column[i];
    return out;
}

Table MakeTable(const Opm::TableColumn& x, std::initializer_list<const Opm::TableColumn*> ys) {
    Table table;
    table.x = Column(x);
    for (const auto* y : ys) table.y.push_back(Column(*y));
    return table;
}

UnitScales Scales(const Opm::UnitSystem& units) {
    UnitScales s;
    s.pressure = units.to_si(Measure::pressure, 1.0);
    s.liquid_rate = units.to_si(Measure::liquid_surface_rate, 1.0);
    s.gas_rate = units.to_si(Measure::gas_surface_rate, 1.0);
    s.reservoir_rate = units.to_si(Measure::rate, 1.0);
    s.liquid_volume = units.to_si(Measure::liquid_surface_volume, 1.0);
    s.gas_volume = units.to_si(Measure::gas_surface_volume, 1.0);
    s.length = units.to_si(Measure::length, 1.0);
    s.density = units.to_si(Measure::density, 1.0);
    return s;
}

UnitKind Kind(const Opm::UnitSystem& units) {
    switch (units.getType()) {
        case Opm::UnitSystem::UnitType::UNIT_TYPE_FIELD:
            return UnitKind::kField;
        case Opm::UnitSystem::UnitType::UNIT_TYPE_LAB:
            return UnitKind::kLab;
        case Opm::UnitSystem::UnitType::UNIT_TYPE_PVT_M:
            return UnitKind::kPvtM;
        default:
            return UnitKind::kMetric;
    }
}

std::vector<FluidRegion> ReadFluids(const Opm::TableManager& tm, std::size_t regions, bool vapoil) {
    std::vector<FluidRegion> fluids(regions);
    const auto& pvto = tm.getPvtoTables();
    const auto& pvtg = tm.getPvtgTables();
    const auto& pvtw = tm.getPvtwTable();
    const auto& rock = tm.getRockTable();
    const auto& density = tm.getDensityTable();
    for (std::size_t r = 0; r < regions; ++r) {
        FluidRegion& f = fluids[r];
        if (r < pvto.size()) {
            f.live_oil = true;
            const auto& sat = pvto[r].getSaturatedTable();
            f.oil.rs = Column(sat.getColumn(0));
            f.oil.p_sat = Column(sat.getColumn(1));
            f.oil.bo_sat = Column(sat.getColumn(2));
            f.oil.mu_sat = Column(sat.getColumn(3));
            for (std::size_t n = 0; n < f.oil.rs.size(); ++n) {
                const auto& us = pvto[r].getUnderSaturatedTable(n);
                f.oil.undersat.push_back(MakeTable(us.getColumn(0), {&us.getColumn(1), &us.getColumn(2)}));
            }
        } else if (r < tm.getPvdoTables().size()) {
            const auto& t = tm.getPvdoTables().getTable<Opm::PvdoTable>(r);
            f.dead_oil =
                MakeTable(t.getPressureColumn(), {&t.getFormationFactorColumn(), &t.getViscosityColumn()});
        }
        if (r < tm.getPvdgTables().size()) {
            const auto& t = tm.getPvdgTables().getTable<Opm::PvdgTable>(r);
            f.gas =
                MakeTable(t.getPressureColumn(), {&t.getFormationFactorColumn(), &t.getViscosityColumn()});
        } else if (r < pvtg.size()) {
            // Wet gas keeps the properties of saturated gas whatever oil it carries.
            const auto& sat = pvtg[r].getSaturatedTable();
            f.gas = MakeTable(sat.getColumn(0), {&sat.getColumn(2), &sat.getColumn(3)});
            f.wet_gas = vapoil;
            if (vapoil) f.vaporized = MakeTable(sat.getColumn(0), {&sat.getColumn(1)});
        }
        if (!pvtw.empty()) {
            const auto& w = pvtw[std::min(r, pvtw.size() - 1)];
            f.water = {w.reference_pressure, w.volume_factor, w.compressibility, w.viscosity,
                       w.viscosibility};
        }
        if (!rock.empty()) {
            const auto& k = rock[std::min(r, rock.size() - 1)];
            f.rock_p_ref = k.reference_pressure;
            f.rock_compressibility = k.compressibility;
        }
        if (!density.empty()) {
            const auto& d = density[std::min(r, density.size() - 1)];
            f.oil_density = d.oil;
            f.water_density = d.water;
            f.gas_density = d.gas;
        }
    }
    return fluids;
}

std::vector<RelPerm> ReadRelPerm(const Opm::TableManager& tm) {
    std::vector<RelPerm> out;
    const auto& swof = tm.getSwofTables();
    const auto& sgof = tm.getSgofTables();
    const std::size_t n = std::max<std::size_t>({swof.size(), sgof.size(), 1});
    for (std::size_t r = 0; r < n; ++r) {
        RelPerm kr;
        if (!swof.empty()) {
            const auto& t = swof.getTable<Opm::SwofTable>(std::min(r, swof.size() - 1));
            kr.swof = MakeTable(t.getSwColumn(), {&t.getKrwColumn(), &t.getKrowColumn()});
        } else {
            kr.swof = Table{{0.0, 1.0}, {{0.0, 1.0}, {1.0, 0.0}}};
        }
        if (!sgof.empty()) {
            const auto& t = sgof.getTable<Opm::SgofTable>(std::min(r, sgof.size() - 1));
            kr.sgof = MakeTable(t.getSgColumn(), {&t.getKrgColumn(), &t.getKrogColumn()});
        } else {
            kr.sgof = Table{{0.0, 1.0}, {{0.0, 1.0}, {1.0, 0.0}}};
        }
        out.push_back(std::move(kr));
    }
    return out;
}

std::vector<TankData> ReadTanks(const Opm::EclipseState& es, std::size_t regions,
                                const std::vector<RelPerm>& relperm, const std::vector<FluidRegion>& fluids) {
    const auto& grid = es.getInputGrid();
    const auto& fp = es.fieldProps();
    const std::vector<double> porv = fp.porv(false);
    std::vector<int> pvtnum(porv.size(), 1);
    if (fp.has_int("PVTNUM")) pvtnum = fp.get_int("PVTNUM");
    std::vector<int> eqlnum(porv.size(), 1);
    if (fp.has_int("EQLNUM")) eqlnum = fp.get_int("EQLNUM");

    const auto& init = es.getInitConfig();
    if (!init.hasEquil()) throw DeckError("the deck has no EQUIL keyword; the initial state cannot be set");
    const auto& equil = init.getEquil();
    const auto& rsvd = es.getTableManager().getRsvdTables();

    std::vector<TankData> tanks(regions);
    std::vector<double> sw(regions, 0.0), sg(regions, 0.0);
    std::vector<int> equil_of(regions, -1);
    for (std::size_t a = 0; a < porv.size(); ++a) {
        const std::size_t r =
            static_cast<std::size_t>(std::clamp(pvtnum[a], 1, static_cast<int>(regions)) - 1);
        const std::size_t e =
            static_cast<std::size_t>(std::clamp(eqlnum[a], 1, static_cast<int>(equil.size())) - 1);
        const auto& rec = equil.getRecord(e);
        const auto& kr = relperm[std::min(r, relperm.size() - 1)];
        const double swc = kr.swof.x.front();
        const double depth = grid.getCellDepth(grid.getGlobalIndex(a));
        double cell_sw = swc, cell_sg = 0.0;
        if (depth > rec.waterOilContactDepth()) {
            cell_sw = 1.0;
        } else if (depth < rec.gasOilContactDepth()) {
            cell_sg = 1.0 - swc;
        }
        tanks[r].pore_volume += porv[a];
        tanks[r].cells += 1;
        sw[r] += porv[a] * cell_sw;
        sg[r] += porv[a] * cell_sg;
        if (equil_of[r] < 0) equil_of[r] = static_cast<int>(e);
    }
    for (std::size_t r = 0; r < regions; ++r) {
        TankData& t = tanks[r];
        t.region = static_cast<int>(r);
        if (t.pore_volume <= 0.0) continue;
        const auto& rec = equil.getRecord(static_cast<std::size_t>(std::max(equil_of[r], 0)));
        t.datum_depth = rec.datumDepth();
        t.initial_pressure = rec.datumDepthPressure();
        t.initial_sw = sw[r] / t.pore_volume;
        t.initial_sg = sg[r] / t.pore_volume;
        const FluidRegion& f = fluids[r];
        if (f.live_oil) {
            const double rs_sat = SaturatedRs(f, t.initial_pressure);
            t.initial_rs = rs_sat;
            const std::size_t e = static_cast<std::size_t>(std::max(equil_of[r], 0));
            if (e < rsvd.size()) {
                const auto& table = rsvd.getTable<Opm::RsvdTable>(e);
                const Table rs_by_depth = MakeTable(table.getDepthColumn(), {&table.getRsColumn()});
                t.initial_rs = std::min(rs_sat, Lookup(rs_by_depth, 0, t.datum_depth, false));
            }
        }
    }
    return tanks;
}

double Peaceman(const Opm::EclipseState& es, const Opm::Connection& c) {
    const auto& grid = es.getInputGrid();
    const auto& fp = es.fieldProps();
    const std::size_t i = static_cast<std::size_t>(c.getI()), j = static_cast<std::size_t>(c.getJ()),
                      k = static_cast<std::size_t>(c.getK());
    if (!grid.cellActive(i, j, k)) return 0.0;
    const std::size_t a = grid.activeIndex(i, j, k);
    const double kx = fp.get_double("PERMX")[a];
    const double ky = fp.has_double("PERMY") ? fp.get_double("PERMY")[a] : kx;
    const auto dims = grid.getCellDims(i, j, k);
    double ntg = 1.0;
    if (fp.has_double("NTG")) ntg = fp.get_double("NTG")[a];
    const double h = dims[2] * ntg;
    const double rw = c.rw() > 0.0 ? c.rw() : 0.0762;  // three-inch radius unless the deck gives one
    const double ryx = std::sqrt(ky / kx), rxy = std::sqrt(kx / ky);
    const double r0 = 0.28 * std::sqrt(ryx * dims[0] * dims[0] + rxy * dims[1] * dims[1]) /
                      (std::sqrt(ryx) + std::sqrt(rxy));
    const double kh = std::sqrt(kx * ky) * h;
    return 2.0 * std::numbers::pi * kh / std::log(r0 / rw);
}

WellStatus StatusOf(Opm::Well::Status s) {
    switch (s) {
        case Opm::Well::Status::OPEN:
        case Opm::Well::Status::AUTO:
            return WellStatus::kOpen;
        case Opm::Well::Status::STOP:
            return WellStatus::kStop;
        default:
            return WellStatus::kShut;
    }
}

double Limit(bool active, double value) {
    return active ? value : kNoLimit;
}

WellControls ControlsOf(const Opm::Well& well, const Opm::SummaryState& st) {
    using PM = Opm::Well::ProducerCMode;
    using IM = Opm::Well::InjectorCMode;
    WellControls c;
    c.defined = true;
    c.status = StatusOf(well.getStatus());
    c.efficiency = well.getEfficiencyFactor();
    if (well.isProducer()) {
        const auto p = well.productionControls(st);
        c.type = WellType::kProducer;
        c.oil_limit = Limit(p.hasControl(PM::ORAT), p.oil_rate);
        c.water_limit = Limit(p.hasControl(PM::WRAT), p.water_rate);
        c.gas_limit = Limit(p.hasControl(PM::GRAT), p.gas_rate);
        c.liquid_limit = Limit(p.hasControl(PM::LRAT), p.liquid_rate);
        c.resv_limit = Limit(p.hasControl(PM::RESV), p.resv_rate);
        c.bhp_limit = p.hasControl(PM::BHP) ? p.bhp_limit : 101325.0;
        switch (p.cmode) {
            case PM::ORAT:
                c.mode = ControlMode::kOrat;
                break;
            case PM::WRAT:
                c.mode = ControlMode::kWrat;
                break;
            case PM::GRAT:
                c.mode = ControlMode::kGrat;
                break;
            case PM::LRAT:
                c.mode = ControlMode::kLrat;
                break;
            case PM::RESV:
                c.mode = ControlMode::kResv;
                break;
            case PM::BHP:
                c.mode = ControlMode::kBhp;
                break;
            default:
                c.mode = ControlMode::kNone;
                break;
        }
    } else {
        const auto inj = well.injectionControls(st);
        c.type = WellType::kInjector;
        switch (inj.injector_type) {
            case Opm::InjectorType::GAS:
                c.injected = Phase::kGas;
                break;
            case Opm::InjectorType::OIL:
                c.injected = Phase::kOil;
                break;
            default:
                c.injected = Phase::kWater;
                break;
        }
        c.injection_limit = Limit(inj.hasControl(IM::RATE), inj.surface_rate);
        c.bhp_limit = inj.hasControl(IM::BHP) ? inj.bhp_limit : 1e15;
        c.mode = inj.cmode == IM::BHP ? ControlMode::kBhp : ControlMode::kRate;
    }
    return c;
}

DeckModel Convert(const std::string& path, const Opm::Deck& deck, const Opm::EclipseState& es,
                  const Opm::Schedule& sched) {
    DeckModel model;
    model.path = path;
    model.title = es.getTitle();
    model.units = Kind(es.getUnits());
    model.scales = Scales(es.getUnits());
    model.start = static_cast<Seconds>(sched.getStartTime());
    for (std::size_t s = 1; s < sched.size(); ++s) model.report_dates.push_back(sched.simTime(s));

    const auto& tm = es.getTableManager();
    const std::size_t regions = std::max<std::size_t>(
        {tm.getPvtoTables().size(), tm.getPvdoTables().size(), tm.getPvdgTables().size(), 1});
    model.fluids = ReadFluids(tm, regions, deck.hasKeyword("VAPOIL"));
    model.relperm = ReadRelPerm(tm);
    model.tanks = ReadTanks(es, regions, model.relperm, model.fluids);
    model.controls.assign(model.report_dates.size(), {});
    return model;
}

// Appends the wells of `sched` to the model, with their controls at every report step.
void AddWells(DeckModel& model, const Opm::EclipseState& es, const Opm::Schedule& sched) {
    const auto& grid = es.getInputGrid();
    const auto& fp = es.fieldProps();
    std::vector<int> pvtnum;
    if (fp.has_int("PVTNUM")) pvtnum = fp.get_int("PVTNUM");

    const std::vector<std::string> names = sched.wellNames();
    const Opm::SummaryState st(sched.getStartTime());
    const std::size_t steps = model.report_dates.size();
    for (auto& step : model.controls) step.resize(model.wells.size() + names.size());
    for (std::size_t n = 0; n < names.size(); ++n) {
        const std::size_t w = model.wells.size();
        WellData data;
        data.name = names[n];
        bool have_geometry = false;
        for (std::size_t s = 0; s < steps; ++s) {
            if (!sched.hasWell(names[n], s)) continue;
            const Opm::Well& well = sched.getWell(names[n], s);
            model.controls[s][w] = ControlsOf(well, st);
            if (have_geometry) continue;
            have_geometry = true;
            data.ref_depth = well.getRefDepth();
            std::map<int, double> factor_by_region;
            for (const auto& c : well.getConnections()) {
                Connection conn;
                conn.i = c.getI();
                conn.j = c.getJ();
                conn.k = c.getK();
                conn.depth = c.depth();
                conn.open = c.state() == Opm::Connection::State::OPEN;
                conn.factor = std::isfinite(c.CF()) && c.CF() > 0.0 ? c.CF() : Peaceman(es, c);
                data.connections.push_back(conn);
                int region = 0;
                const auto ui = static_cast<std::size_t>(conn.i), uj = static_cast<std::size_t>(conn.j),
                           uk = static_cast<std::size_t>(conn.k);
                if (!pvtnum.empty() && grid.cellActive(ui, uj, uk))
                    region = std::max(pvtnum[grid.activeIndex(ui, uj, uk)] - 1, 0);
                factor_by_region[region] += conn.factor;
            }
            if (!factor_by_region.empty()) {
                data.tank = std::max_element(factor_by_region.begin(), factor_by_region.end(),
                                             [](const auto& a, const auto& b) { return a.second < b.second; })
                                ->first;
                data.tank = std::min(data.tank, static_cast<int>(model.tanks.size()) - 1);
            }
        }
        model.wells.push_back(std::move(data));
    }
}

// opm-common copies a schedule's well and group lists each time it adds a well, so a schedule of N wells
// costs N^2: one of 10,000 wells takes over a minute. The wells are therefore read in batches, each from a
// copy of the deck whose schedule keeps only that batch's records of the keywords that name one well;
// records naming several wells (a pattern, a well list) go to every batch, where they reach its wells.
constexpr std::size_t kWellsPerSchedule = 128;

bool NamesOneWell(const std::string& name) {
    return !name.empty() && name.find_first_of("*?\\") == std::string::npos;  // not a pattern nor a well list
}

// The wells in the order their WELSPECS records name them first.
std::vector<std::string> DeckWellNames(const Opm::Deck& deck) {
    std::vector<std::string> names;
    std::set<std::string> seen;
    for (const Opm::DeckKeyword& keyword : deck) {
        if (keyword.name() != "WELSPECS") continue;
        for (const Opm::DeckRecord& record : keyword) {
            const std::string name = record.getItem(0).getTrimmedString(0);
            if (seen.insert(name).second) names.push_back(name);
        }
    }
    return names;
}

Opm::Deck ScheduleDeck(const Opm::Deck& deck, const std::set<std::string>& batch) {
    static const std::set<std::string> kSkipped = {"GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY"};
    Opm::Deck part;
    part.selectActiveUnitSystem(deck.getActiveUnitSystem().getType());
    part.setDataFile(deck.getDataFile());
    bool skipping = false;
    for (const Opm::DeckKeyword& keyword : deck) {
        if (kSkipped.count(keyword.name()) != 0) skipping = true;
        if (keyword.name() == "RUNSPEC" || keyword.name() == "SCHEDULE") skipping = false;
        if (skipping && keyword.name() != "SCHEDULE") continue;
        const bool perWell = keyword.size() > 0 && keyword.getRecord(0).size() > 0 &&
                             keyword.getRecord(0).getItem(0).name() == "WELL";
        if (!perWell) {
            part.addKeyword(keyword);
            continue;
        }
        Opm::DeckKeyword kept(keyword.location(), keyword.name());
        for (const Opm::DeckRecord& record : keyword) {
            const std::string name = record.getItem(0).getTrimmedString(0);
            if (!NamesOneWell(name) || batch.count(name) != 0) kept.addRecord(Opm::DeckRecord(record));
        }
        if (kept.size() > 0) part.addKeyword(std::move(kept));
    }
    return part;
}

}  // namespace

DeckModel ReadDeck(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    if (!fs::exists(path, ec)) throw DeckError("Case file " + path + " not found");
    if (fs::is_directory(path, ec)) throw DeckError("Case file " + path + " is a directory, not a deck");
    if (!std::ifstream(path).good()) throw DeckError("Case file " + path + " cannot be read");

    DrainedGuard errors;
    try {
        Opm::ParseContext context(Opm::InputError::IGNORE);
        Opm::Parser parser;
        const Opm::Deck deck = parser.parseFile(path, context, errors.guard);
        const Opm::EclipseState es(deck);
        const auto python = std::make_shared<Opm::Python>(Opm::Python::Enable::OFF);
        const std::vector<std::string> names = DeckWellNames(deck);
        DeckModel model;
        if (names.size() <= kWellsPerSchedule) {
            const Opm::Schedule sched(deck, es, context, errors.guard, python);
            model = Convert(path, deck, es, sched);
            AddWells(model, es, sched);
        } else {
            for (std::size_t first = 0; first < names.size(); first += kWellsPerSchedule) {
                const std::set<std::string> batch(
                    names.begin() + static_cast<std::ptrdiff_t>(first),
                    names.begin() +
                        static_cast<std::ptrdiff_t>(std::min(first + kWellsPerSchedule, names.size())));
                const Opm::Schedule sched(ScheduleDeck(deck, batch), es, context, errors.guard, python);
                if (first == 0) model = Convert(path, deck, es, sched);
                AddWells(model, es, sched);
            }
        }
        if (deck.hasKeyword("DRSDT")) {
            const auto& record = deck["DRSDT"].back().getRecord(0);
            model.rs_can_rise = record.getItem(0).getSIDouble(0) > 0.0;
        }
        if (model.report_dates.empty()) throw DeckError("Case file " + path + " has no report steps");
        return model;
    } catch (const DeckError&) {
        throw;
    } catch (const std::exception& e) {
        throw DeckError("Case file " + path + " could not be read: " + e.what());
    }
}

}  // namespace rivulet::standin
