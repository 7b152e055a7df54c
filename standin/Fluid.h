// Black-oil fluid and rock properties evaluated from the plain tables of a DeckModel.
#pragma once

#include "standin/DeckModel.h"

namespace rivulet::standin {

struct OilProps {
    double bo = 1.0;
    double mu = 1e-3;
    double rs = 0.0;
};

struct PhaseProps {
    double b = 1.0;  // formation volume factor
    double mu = 1e-3;
};

struct RelPermValues {
    double krw = 0.0;
    double kro = 0.0;
    double krg = 0.0;
};

// Linear interpolation in column `col` of `table`; `extrapolate` continues the end segments.
double Lookup(const Table& table, std::size_t col, double x, bool extrapolate);

double SaturatedRs(const FluidRegion& f, double p);
// Oil carried by saturated gas per unit of surface gas; zero for dry gas.
double SaturatedRv(const FluidRegion& f, double p);
// Oil holding `rs` at pressure `p`; rs above saturation is cut to the saturated value.
OilProps Oil(const FluidRegion& f, double p, double rs);
PhaseProps Gas(const FluidRegion& f, double p);
PhaseProps Water(const FluidRegion& f, double p);
// Pore volume at `p` relative to the pore volume at the rock reference pressure.
double PoreVolumeMultiplier(const FluidRegion& f, double p);
// Three-phase relative permeabilities; oil from the saturation-weighted two-phase values.
RelPermValues RelativePermeability(const RelPerm& kr, double sw, double sg);

}  // namespace rivulet::standin
