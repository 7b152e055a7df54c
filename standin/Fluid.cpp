#include "standin/Fluid.h"

#include <algorithm>
#include <cmath>

namespace rivulet::standin {
namespace {

constexpr double kMinViscosity = 1e-6;

double Interp(const std::vector<double>& x, const std::vector<double>& y, double at, bool extrapolate) {
    if (x.empty()) return 0.0;
    if (x.size() == 1) return y.front();
    std::size_t i;
    if (at <= x.front()) {
        if (!extrapolate) return y.front();
        i = 1;
    } else if (at >= x.back()) {
        if (!extrapolate) return y.back();
        i = x.size() - 1;
    } else {
        i = static_cast<std::size_t>(std::upper_bound(x.begin(), x.end(), at) - x.begin());
    }
    const double w = (at - x[i - 1]) / (x[i] - x[i - 1]);
    return y[i - 1] + w * (y[i] - y[i - 1]);
}

// Ratio of a property at `dp` above the first row of an undersaturated branch to its first-row value.
double UndersaturatedFactor(const Table& branch, std::size_t col, double dp) {
    const double base = branch.y[col].front();
    return Interp(branch.x, branch.y[col], branch.x.front() + dp, true) / base;
}

}  // namespace

double Lookup(const Table& table, std::size_t col, double x, bool extrapolate) {
    if (col >= table.y.size()) return 0.0;
    return Interp(table.x, table.y[col], x, extrapolate);
}

double SaturatedRs(const FluidRegion& f, double p) {
    if (!f.live_oil) return 0.0;
    return std::max(0.0, Interp(f.oil.p_sat, f.oil.rs, p, true));
}

double SaturatedRv(const FluidRegion& f, double p) {
    if (!f.wet_gas) return 0.0;
    return std::max(0.0, Lookup(f.vaporized, 0, p, false));
}

OilProps Oil(const FluidRegion& f, double p, double rs) {
    OilProps out;
    if (!f.live_oil) {
        out.bo = Lookup(f.dead_oil, 0, p, true);
        out.mu = Lookup(f.dead_oil, 1, p, true);
        if (f.dead_oil.x.empty()) out = OilProps{};
        out.mu = std::max(out.mu, kMinViscosity);
        return out;
    }
    const LiveOilPvt& o = f.oil;
    const double rs_sat = SaturatedRs(f, p);
    out.rs = std::clamp(rs, 0.0, rs_sat);
    const double pb = Interp(o.rs, o.p_sat, out.rs, true);
    out.bo = Interp(o.rs, o.bo_sat, out.rs, true);
    out.mu = Interp(o.rs, o.mu_sat, out.rs, true);
    if (p > pb) {
        // Shape of the undersaturated branch: the first node at or above this Rs that has one.
        const Table* branch = nullptr;
        for (std::size_t n = 0; n < o.undersat.size(); ++n) {
            if (o.undersat[n].x.size() < 2) continue;
            branch = &o.undersat[n];
            if (o.rs[n] >= out.rs) break;
        }
        if (branch != nullptr) {
            out.bo *= UndersaturatedFactor(*branch, 0, p - pb);
            out.mu *= UndersaturatedFactor(*branch, 1, p - pb);
        }
    }
    out.bo = std::max(out.bo, 1e-3);
    out.mu = std::max(out.mu, kMinViscosity);
    return out;
}

PhaseProps Gas(const FluidRegion& f, double p) {
    if (f.gas.x.empty()) return {};
    // 1/Bg and 1/(Bg mu) are close to linear in pressure, so those are interpolated.
    std::vector<double> inv_b(f.gas.x.size()), inv_bmu(f.gas.x.size());
    for (std::size_t i = 0; i < inv_b.size(); ++i) {
        inv_b[i] = 1.0 / f.gas.y[0][i];
        inv_bmu[i] = 1.0 / (f.gas.y[0][i] * f.gas.y[1][i]);
    }
    const double ib = std::max(Interp(f.gas.x, inv_b, p, true), 1e-9);
    const double ibmu = std::max(Interp(f.gas.x, inv_bmu, p, true), 1e-9);
    return {1.0 / ib, std::max(ib / ibmu, kMinViscosity)};
}

PhaseProps Water(const FluidRegion& f, double p) {
    const WaterPvt& w = f.water;
    const double x = w.compressibility * (p - w.p_ref);
    const double y = (w.compressibility - w.viscosibility) * (p - w.p_ref);
    const double b = w.bw_ref / (1.0 + x + 0.5 * x * x);
    const double b_mu = w.bw_ref * w.mu_ref / (1.0 + y + 0.5 * y * y);
    return {b, std::max(b_mu / b, kMinViscosity)};
}

double PoreVolumeMultiplier(const FluidRegion& f, double p) {
    const double x = f.rock_compressibility * (p - f.rock_p_ref);
    return 1.0 + x + 0.5 * x * x;
}

RelPermValues RelativePermeability(const RelPerm& kr, double sw, double sg) {
    RelPermValues out;
    const double swc = kr.swof.x.empty() ? 0.0 : kr.swof.x.front();
    out.krw = std::max(0.0, Lookup(kr.swof, 0, sw, false));
    out.krg = std::max(0.0, Lookup(kr.sgof, 0, sg, false));
    const double krow = std::max(0.0, Lookup(kr.swof, 1, sw, false));
    const double krog = std::max(0.0, Lookup(kr.sgof, 1, sg, false));
    const double dw = std::max(sw - swc, 0.0);
    out.kro = sg + dw > 1e-12 ? (sg * krog + dw * krow) / (sg + dw) : krow;
    return out;
}

}  // namespace rivulet::standin
