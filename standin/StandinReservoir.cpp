#include "standin/StandinReservoir.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "standin/Fluid.h"

namespace rivulet::standin {
namespace {

constexpr double kGravity = 9.80665;
constexpr double kAtmosphere = 101325.0;
constexpr double kTiny = 1e-12;

}  // namespace

struct StandinReservoir::Fluid {
    const FluidRegion* region = nullptr;
    double p = 0.0, vp = 0.0;
    double bo = 1.0, bw = 1.0, bg = 1.0, rs = 0.0, rv = 0.0;
    double muo = 1e-3, muw = 1e-3, mug = 1e-5;
    double so = 0.0, sw = 0.0, sg = 0.0;
    double residual = 0.0;  // fluid volume less pore volume
    RelPermValues kr;

    double Lo() const { return kr.kro / muo; }
    double Lw() const { return kr.krw / muw; }
    double Lg() const { return kr.krg / mug; }
    double Lt() const { return Lo() + Lw() + Lg(); }
};

StandinReservoir::StandinReservoir(DeckModel model) : model_(std::move(model)) {
    if (model_.tanks.empty() || model_.fluids.empty() || model_.relperm.empty())
        throw EngineError("Case " + model_.path + " has no reservoir to run");
    tanks_.resize(model_.tanks.size());
    for (std::size_t t = 0; t < tanks_.size(); ++t) {
        const TankData& data = model_.tanks[t];
        const FluidRegion& f = model_.fluids[static_cast<std::size_t>(data.region)];
        const double p = data.initial_pressure;
        const double vp = data.pore_volume * PoreVolumeMultiplier(f, p);
        const double so = std::max(0.0, 1.0 - data.initial_sw - data.initial_sg);
        const OilProps oil = Oil(f, p, data.initial_rs);
        TankState& tank = tanks_[t];
        const double liquid = vp * so / oil.bo, vapour = vp * data.initial_sg / Gas(f, p).b;
        tank.p = p;
        tank.no = liquid + vapour * SaturatedRv(f, p);
        tank.nw = vp * data.initial_sw / Water(f, p).b;
        tank.ng = vapour + liquid * oil.rs;
        tank.rs_cap = oil.rs;
    }
    wells_.resize(model_.wells.size());
    now_ = model_.start;
    ApplyDeckControls(0);
}

std::optional<Seconds> StandinReservoir::NextReportDate() const {
    if (step_ >= model_.report_dates.size()) return std::nullopt;
    return model_.report_dates[step_];
}

Seconds StandinReservoir::AdvanceTo(Seconds t) {
    Seconds target = std::min(t, End());
    if (const auto next = NextReportDate()) target = std::min(target, *next);
    while (now_ < target) {
        const Seconds dt = std::min(kMaxStep, target - now_);
        Step(static_cast<double>(dt));
        now_ += dt;
    }
    RefreshFlows();
    if (step_ < model_.report_dates.size() && now_ >= model_.report_dates[step_]) {
        ++step_;
        if (step_ < model_.report_dates.size()) ApplyDeckControls(step_);
    }
    return now_;
}

void StandinReservoir::ApplyDeckControls(std::size_t step) {
    for (std::size_t w = 0; w < wells_.size(); ++w) {
        const WellControls& now = model_.controls[step][w];
        if (step == 0 || now != model_.controls[step - 1][w]) wells_[w].active = wells_[w].pending = now;
    }
}

StandinReservoir::Fluid StandinReservoir::Evaluate(std::size_t tank, double p) const {
    const TankState& t = tanks_[tank];
    const TankData& data = model_.tanks[tank];
    Fluid f;
    f.region = &model_.fluids[static_cast<std::size_t>(data.region)];
    f.p = p;
    f.vp = data.pore_volume * PoreVolumeMultiplier(*f.region, p);
    const PhaseProps water = Water(*f.region, p);
    const PhaseProps gas = Gas(*f.region, p);
    // Split the oil and gas in place between the liquid and the vapour.
    double rs_sat = SaturatedRs(*f.region, p);
    if (!model_.rs_can_rise) rs_sat = std::min(rs_sat, t.rs_cap);
    const double rv_sat = SaturatedRv(*f.region, p);
    const double denom = std::max(1.0 - rs_sat * rv_sat, kTiny);
    double liquid = (t.no - rv_sat * t.ng) / denom, vapour = (t.ng - rs_sat * t.no) / denom;
    double rs = rs_sat, rv = rv_sat;
    if (vapour <= 0.0) {  // undersaturated oil
        liquid = t.no;
        vapour = 0.0;
        rs = t.no > kTiny ? std::min(t.ng / t.no, rs_sat) : 0.0;
    } else if (liquid <= 0.0) {  // undersaturated gas
        liquid = 0.0;
        vapour = t.ng;
        rv = t.ng > kTiny ? std::min(t.no / t.ng, rv_sat) : 0.0;
    }
    const OilProps oil = Oil(*f.region, p, rs);
    f.bw = water.b;
    f.muw = water.mu;
    f.bg = gas.b;
    f.mug = gas.mu;
    f.bo = oil.bo;
    f.muo = oil.mu;
    f.rs = oil.rs;
    f.rv = rv;
    const double vo = liquid * f.bo, vw = t.nw * f.bw, vg = vapour * f.bg;
    f.residual = vo + vw + vg - f.vp;
    const double total = vo + vw + vg;
    if (total > kTiny) {
        f.so = vo / total;
        f.sw = vw / total;
        f.sg = vg / total;
    }
    const auto& relperm =
        model_.relperm[std::min(static_cast<std::size_t>(data.region), model_.relperm.size() - 1)];
    f.kr = RelativePermeability(relperm, f.sw, f.sg);
    return f;
}

double StandinReservoir::SolvePressure(std::size_t tank) const {
    const double p0 = tanks_[tank].p;
    if (model_.tanks[tank].pore_volume <= 0.0) return p0;
    auto residual = [&](double p) { return Evaluate(tank, p).residual; };
    // The residual falls with pressure: fluids shrink while the pores grow.
    double lo = p0, hi = p0;
    double f_lo = residual(p0), f_hi = f_lo;
    if (f_lo == 0.0) return p0;
    if (f_lo > 0.0) {
        for (double step = 0.01 * p0 + 1e4; f_hi > 0.0 && hi < 1e10; step *= 2.0) {
            lo = hi;
            f_lo = f_hi;
            hi += step;
            f_hi = residual(hi);
        }
        if (f_hi > 0.0) return hi;
    } else {
        for (double step = 0.01 * p0 + 1e4; f_lo < 0.0 && lo > 1e3; step *= 2.0) {
            hi = lo;
            f_hi = f_lo;
            lo = std::max(lo - step, 1e3);
            f_lo = residual(lo);
        }
        if (f_lo < 0.0) return lo;
    }
    // Illinois-modified regula falsi.
    int side = 0;
    double p = 0.5 * (lo + hi);
    for (int it = 0; it < 100 && hi - lo > 1e-3; ++it) {
        p = (lo * f_hi - hi * f_lo) / (f_hi - f_lo);
        const double fp = residual(p);
        if (std::abs(fp) < 1e-12 * model_.tanks[tank].pore_volume) break;
        if (fp > 0.0) {
            lo = p;
            f_lo = fp;
            if (side == 1) f_hi *= 0.5;
            side = 1;
        } else {
            hi = p;
            f_hi = fp;
            if (side == -1) f_lo *= 0.5;
            side = -1;
        }
    }
    return p;
}

double StandinReservoir::PI(std::size_t well) const {
    double sum = 0.0;
    for (const auto& c : model_.wells[well].connections)
        if (c.open) sum += c.factor;
    return sum;
}

double StandinReservoir::Coefficient(std::size_t well, const WellControls& c, const Fluid& f,
                                     Phase phase) const {
    const double pi = PI(well);
    if (c.type == WellType::kInjector) {
        if (phase == Phase::kReservoir) return pi * f.Lt();
        if (phase != c.injected && !(phase == Phase::kLiquid && c.injected != Phase::kGas)) return 0.0;
        const double b = c.injected == Phase::kGas ? f.bg : c.injected == Phase::kOil ? f.bo : f.bw;
        return pi * f.Lt() / b;
    }
    switch (phase) {
        case Phase::kOil:
            return pi * (f.Lo() / f.bo + f.rv * f.Lg() / f.bg);
        case Phase::kWater:
            return pi * f.Lw() / f.bw;
        case Phase::kGas:
            return pi * (f.Lg() / f.bg + f.rs * f.Lo() / f.bo);
        case Phase::kLiquid:
            return pi * (f.Lo() / f.bo + f.rv * f.Lg() / f.bg + f.Lw() / f.bw);
        case Phase::kReservoir:
            return pi * f.Lt();
    }
    return 0.0;
}

StandinReservoir::Flow StandinReservoir::Solve(std::size_t well, const WellControls& c,
                                               const Fluid& f) const {
    Flow flow;
    flow.bhp = f.p;
    const bool injector = c.type == WellType::kInjector;
    // The tightest of the pressure limit and every rate limit sets the drawdown.
    double dd = injector ? c.bhp_limit - f.p : f.p - c.bhp_limit;
    flow.mode = ControlMode::kBhp;
    auto limit_by = [&](double rate, Phase phase, ControlMode mode) {
        if (!std::isfinite(rate)) return;
        const double coeff = Coefficient(well, c, f, phase);
        const double allowed = rate <= 0.0 ? 0.0 : coeff > kTiny * kTiny ? rate / coeff : kNoLimit;
        if (allowed < dd) {
            dd = allowed;
            flow.mode = mode;
        }
    };
    if (injector) {
        limit_by(c.injection_limit, c.injected, ControlMode::kRate);
    } else {
        limit_by(c.oil_limit, Phase::kOil, ControlMode::kOrat);
        limit_by(c.water_limit, Phase::kWater, ControlMode::kWrat);
        limit_by(c.gas_limit, Phase::kGas, ControlMode::kGrat);
        limit_by(c.liquid_limit, Phase::kLiquid, ControlMode::kLrat);
        limit_by(c.resv_limit, Phase::kReservoir, ControlMode::kResv);
    }
    // Surface make-up of what flows, used for the density of the column in the tubing.
    if (injector) {
        (c.injected == Phase::kGas ? flow.mix_g : c.injected == Phase::kOil ? flow.mix_o : flow.mix_w) = 1.0;
    } else {
        flow.mix_o = Coefficient(well, c, f, Phase::kOil);
        flow.mix_w = Coefficient(well, c, f, Phase::kWater);
        flow.mix_g = Coefficient(well, c, f, Phase::kGas);
        if (flow.mix_o + flow.mix_w + flow.mix_g <= 0.0) flow.mix_o = 1.0;
    }
    if (!(dd > 0.0) || !std::isfinite(dd)) {
        flow.mode = ControlMode::kNone;
        return flow;
    }
    if (injector) {
        const double q = Coefficient(well, c, f, c.injected) * dd;
        (c.injected == Phase::kGas ? flow.qg : c.injected == Phase::kOil ? flow.qo : flow.qw) = q;
        flow.bhp = f.p + dd;
    } else {
        flow.qo = Coefficient(well, c, f, Phase::kOil) * dd;
        flow.qw = Coefficient(well, c, f, Phase::kWater) * dd;
        flow.qg = Coefficient(well, c, f, Phase::kGas) * dd;
        flow.bhp = f.p - dd;
    }
    flow.qr = Coefficient(well, c, f, Phase::kReservoir) * dd;
    return flow;
}

void StandinReservoir::RefreshFlows() {
    std::vector<Fluid> fluids;
    for (std::size_t t = 0; t < tanks_.size(); ++t) fluids.push_back(Evaluate(t, tanks_[t].p));
    for (std::size_t w = 0; w < wells_.size(); ++w) {
        WellRuntime& rt = wells_[w];
        const std::size_t t = static_cast<std::size_t>(model_.wells[w].tank);
        if (!rt.active.defined || rt.active.status != WellStatus::kOpen) {
            rt.flow = Flow{};
            rt.flow.bhp = tanks_[t].p;
        } else if (now_ > model_.start) {
            rt.flow = Solve(w, rt.active, fluids[t]);
        }
    }
}

void StandinReservoir::Step(double dt) {
    std::vector<Fluid> fluids;
    for (std::size_t t = 0; t < tanks_.size(); ++t) fluids.push_back(Evaluate(t, tanks_[t].p));
    for (std::size_t w = 0; w < wells_.size(); ++w) {
        WellRuntime& rt = wells_[w];
        const WellControls& c = rt.active;
        const std::size_t t = static_cast<std::size_t>(model_.wells[w].tank);
        rt.flow = Flow{};
        rt.flow.bhp = tanks_[t].p;
        if (!c.defined || c.status != WellStatus::kOpen) continue;
        rt.flow = Solve(w, c, fluids[t]);
        const double sign = c.type == WellType::kInjector ? 1.0 : -1.0;
        TankState& tank = tanks_[t];
        const double vo = c.efficiency * rt.flow.qo * dt, vw = c.efficiency * rt.flow.qw * dt,
                     vg = c.efficiency * rt.flow.qg * dt;
        tank.no = std::max(tank.no + sign * vo, 0.0);
        tank.nw = std::max(tank.nw + sign * vw, 0.0);
        tank.ng = std::max(tank.ng + sign * vg, 0.0);
        rt.oil_total += vo;
        rt.water_total += vw;
        rt.gas_total += vg;
    }
    for (std::size_t t = 0; t < tanks_.size(); ++t) {
        tanks_[t].p = SolvePressure(t);
        tanks_[t].rs_cap = std::min(tanks_[t].rs_cap, Evaluate(t, tanks_[t].p).rs);
    }
}

void StandinReservoir::CheckWell(std::size_t well) const {
    if (well >= wells_.size()) {
        throw EngineError("Well index " + std::to_string(well) + " out of range (0.." +
                          (wells_.empty() ? std::string("none") : std::to_string(wells_.size() - 1)) + ")");
    }
}

std::size_t StandinReservoir::WellIndex(const std::string& name) const {
    for (std::size_t w = 0; w < model_.wells.size(); ++w)
        if (model_.wells[w].name == name) return w;
    throw EngineError("Unknown well '" + name + "'");
}

double StandinReservoir::RateScale(Phase phase) const {
    switch (phase) {
        case Phase::kGas:
            return model_.scales.gas_rate;
        case Phase::kReservoir:
            return model_.scales.reservoir_rate;
        default:
            return model_.scales.liquid_rate;
    }
}

double StandinReservoir::MixtureDensity(const FluidRegion& r, const Flow& flow, double p) const {
    const double mass =
        flow.mix_o * r.oil_density + flow.mix_w * r.water_density + flow.mix_g * r.gas_density;
    double rs = flow.mix_o > kTiny ? std::min(SaturatedRs(r, p), flow.mix_g / flow.mix_o) : 0.0;
    if (!r.live_oil) rs = 0.0;
    const double volume = flow.mix_o * Oil(r, p, rs).bo + flow.mix_w * Water(r, p).b +
                          std::max(flow.mix_g - flow.mix_o * rs, 0.0) * Gas(r, p).b;
    return volume > kTiny ? mass / volume : r.oil_density;
}

WellReport StandinReservoir::Well(std::size_t well) const {
    CheckWell(well);
    const WellRuntime& rt = wells_[well];
    const WellData& data = model_.wells[well];
    const UnitScales& s = model_.scales;
    const FluidRegion& r =
        model_.fluids[static_cast<std::size_t>(model_.tanks[static_cast<std::size_t>(data.tank)].region)];
    WellReport out;
    out.name = data.name;
    out.type = rt.active.type;
    out.status = rt.active.defined ? rt.active.status : WellStatus::kShut;
    out.mode = rt.flow.mode;
    out.injected = rt.active.injected;
    out.oil_rate = rt.flow.qo / s.liquid_rate;
    out.water_rate = rt.flow.qw / s.liquid_rate;
    out.gas_rate = rt.flow.qg / s.gas_rate;
    out.liquid_rate = (rt.flow.qo + rt.flow.qw) / s.liquid_rate;
    out.resv_rate = rt.flow.qr / s.reservoir_rate;
    out.oil_total = rt.oil_total / s.liquid_volume;
    out.water_total = rt.water_total / s.liquid_volume;
    out.gas_total = rt.gas_total / s.gas_volume;
    const double bhp =
        rt.flow.bhp > 0.0 ? rt.flow.bhp : TankPressure(static_cast<std::size_t>(data.tank)) * s.pressure;
    out.bhp = bhp / s.pressure;
    // THP: BHP less the head of the flowing mixture, taken at the mean pressure of the column.
    double thp = bhp;
    for (int it = 0; it < 4; ++it) {
        const double rho = MixtureDensity(r, rt.flow, 0.5 * (bhp + thp));
        thp = std::max(bhp - rho * kGravity * data.ref_depth, kAtmosphere);
    }
    out.thp = thp / s.pressure;
    out.oil_density = r.oil_density / s.density;
    out.water_density = r.water_density / s.density;
    out.gas_density = r.gas_density / s.density;
    out.mixture_density = MixtureDensity(r, rt.flow, bhp) / s.density;
    out.efficiency = rt.active.efficiency;
    return out;
}

FieldReport StandinReservoir::Field() const {
    FieldReport f;
    const UnitScales& s = model_.scales;
    for (const WellRuntime& rt : wells_) {
        const double e = rt.active.efficiency;
        if (rt.active.type == WellType::kProducer) {
            f.oil_rate += e * rt.flow.qo / s.liquid_rate;
            f.water_rate += e * rt.flow.qw / s.liquid_rate;
            f.gas_rate += e * rt.flow.qg / s.gas_rate;
            f.oil_total += rt.oil_total / s.liquid_volume;
            f.water_total += rt.water_total / s.liquid_volume;
            f.gas_total += rt.gas_total / s.gas_volume;
        } else {
            f.water_injection_rate += e * rt.flow.qw / s.liquid_rate;
            f.gas_injection_rate += e * rt.flow.qg / s.gas_rate;
            f.water_injection_total += rt.water_total / s.liquid_volume;
            f.gas_injection_total += rt.gas_total / s.gas_volume;
        }
    }
    double pv = 0.0;
    for (std::size_t t = 0; t < tanks_.size(); ++t) {
        f.pressure += model_.tanks[t].pore_volume * tanks_[t].p;
        pv += model_.tanks[t].pore_volume;
    }
    f.pressure = pv > 0.0 ? f.pressure / pv / s.pressure : 0.0;
    return f;
}

double StandinReservoir::TankPressure(std::size_t tank) const {
    if (tank >= tanks_.size())
        throw EngineError("Tank index " + std::to_string(tank) + " out of range (0.." +
                          std::to_string(tanks_.size() - 1) + ")");
    return tanks_[tank].p / model_.scales.pressure;
}

TankReport StandinReservoir::Tank(std::size_t tank) const {
    const double p = TankPressure(tank);
    const Fluid f = Evaluate(tank, tanks_[tank].p);
    const UnitScales& s = model_.scales;
    TankReport out;
    out.pressure = p;
    out.oil_in_place = tanks_[tank].no / s.liquid_volume;
    out.water_in_place = tanks_[tank].nw / s.liquid_volume;
    out.gas_in_place = tanks_[tank].ng / s.gas_volume;
    out.so = f.so;
    out.sw = f.sw;
    out.sg = f.sg;
    out.rs = f.rs * s.liquid_volume / s.gas_volume;
    return out;
}

void StandinReservoir::SetStatus(std::size_t well, WellStatus status) {
    CheckWell(well);
    wells_[well].pending.status = status;
    wells_[well].pending.defined = true;
}

void StandinReservoir::SetControlMode(std::size_t well, ControlMode mode) {
    CheckWell(well);
    wells_[well].pending.mode = mode;
}

void StandinReservoir::SetRateLimit(std::size_t well, Phase phase, double rate) {
    CheckWell(well);
    WellControls& c = wells_[well].pending;
    const double si = rate < 0.0 ? kNoLimit : rate * RateScale(phase);
    if (c.type == WellType::kInjector) {
        c.injection_limit = si;
        return;
    }
    switch (phase) {
        case Phase::kOil:
            c.oil_limit = si;
            break;
        case Phase::kWater:
            c.water_limit = si;
            break;
        case Phase::kGas:
            c.gas_limit = si;
            break;
        case Phase::kLiquid:
            c.liquid_limit = si;
            break;
        case Phase::kReservoir:
            c.resv_limit = si;
            break;
    }
}

void StandinReservoir::SetBhpLimit(std::size_t well, double bhp) {
    CheckWell(well);
    if (!(bhp > 0.0)) throw EngineError("BHP limit must be positive, got " + std::to_string(bhp));
    wells_[well].pending.bhp_limit = bhp * model_.scales.pressure;
}

void StandinReservoir::SetEfficiency(std::size_t well, double efficiency) {
    CheckWell(well);
    if (!(efficiency > 0.0 && efficiency <= 1.0))
        throw EngineError("Efficiency factor must be in (0, 1], got " + std::to_string(efficiency));
    wells_[well].pending.efficiency = efficiency;
}

void StandinReservoir::SetInjectedPhase(std::size_t well, Phase phase) {
    CheckWell(well);
    if (phase != Phase::kWater && phase != Phase::kGas && phase != Phase::kOil)
        throw EngineError("An injector injects oil, water or gas");
    wells_[well].pending.injected = phase;
}

std::size_t StandinReservoir::CheckNewControls() {
    std::size_t changed = 0;
    for (WellRuntime& rt : wells_) {
        if (rt.pending == rt.active) continue;
        rt.active = rt.pending;
        ++changed;
    }
    return changed;
}

double StandinReservoir::MaxRate(std::size_t well, Phase phase) const {
    CheckWell(well);
    const WellControls& c = wells_[well].active;
    const std::size_t t = static_cast<std::size_t>(model_.wells[well].tank);
    const Fluid f = Evaluate(t, tanks_[t].p);
    const double dd = c.type == WellType::kInjector ? c.bhp_limit - f.p : f.p - c.bhp_limit;
    return Coefficient(well, c, f, phase) * std::max(dd, 0.0) / RateScale(phase);
}

std::optional<double> StandinReservoir::BhpForRate(std::size_t well, Phase phase, double rate) const {
    CheckWell(well);
    const WellControls& c = wells_[well].active;
    const std::size_t t = static_cast<std::size_t>(model_.wells[well].tank);
    const Fluid f = Evaluate(t, tanks_[t].p);
    const double coeff = Coefficient(well, c, f, phase);
    if (coeff <= 0.0) return std::nullopt;
    const double dd = rate * RateScale(phase) / coeff;
    const double bhp = c.type == WellType::kInjector ? f.p + dd : f.p - dd;
    if (bhp <= 0.0) return std::nullopt;
    return bhp / model_.scales.pressure;
}

}  // namespace rivulet::standin
