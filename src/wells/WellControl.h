// Who controls a well, and what an operating point from the network makes of its target. The network knows a
// well as a node with a phase and an operating point in field units; the target holds the limits that the
// simulator will get, in simulator units. Nothing here talks to the simulator except the one step that opens
// a well as an injector when it is connected, which goes through the requester it is given.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dataserver/OperatingPoint.h"

namespace rivulet {

class TNavUnitSystem;
class WellData;
class WellList;
class WellRequester;
struct WellComposition;

// Well types as the network gives them when it connects its wells.
enum NetworkWellType : std::int32_t { kNetworkProducer = 1, kNetworkInjector = 2 };

// How the targets of a well that is not an injector are chosen.
enum RateControlKind : std::int32_t { kRateByVaneType = 1, kRateByGlr = 2, kRateCombined = 3 };

// What the network sends for one node. Rates in STB/day (oil, water) and MMscf/day (gas), temperature in
// degrees F; `moleFractions` holds `componentCount` values of the injected composition.
struct NodeOperatingPoint {
    double oilRate = 0.0;
    double waterRate = 0.0;
    double gasRate = 0.0;
    bool maskFlag = false;
    std::int32_t maskKind = 0;
    double temperature = 0.0;
    double downtime = 0.0;
    const double* moleFractions = nullptr;
    std::int32_t componentCount = 0;
};

// The case's choice of rate control and its gas-to-liquid threshold (scf per standard barrel).
struct RateControlSettings {
    std::int32_t rateControl = kRateByVaneType;
    std::int32_t glrThreshold = 587;
};

// --- Connecting wells ---

// Takes every well from both masters and forgets its rate control, before the network connects its wells.
void ClearControls(WellList& wells);

// Connects the well at `index` to the network as a node of `networkType` with the network's phase
// `vanePhase`. A well the network calls an injector is opened as a water injector through `requester` first,
// unless the simulator knows it as an injector already.
bool ConnectWellToVaneCtrl(WellList& wells, WellRequester* requester, int index, int networkType,
                           int vanePhase, std::string& error);

// Gives an injector without a rate control the one its single flowing phase suggests, then settles the
// injection phase of every well to be open. The indices are those whose phase changed, to be sent again.
std::vector<int> SettleInjectorPhases(WellList& wells);

// The injection phase that the well's rate control asks for; true when it changed.
bool DeriveInjectionPhase(WellData& well);

// Open (as the well's kind) when the node is not masked; a masked node is shut for mask kinds -1 and 2 and
// stopped for any other.
void SetTargetStatusFromNode(WellData& well, bool maskFlag, int maskKind);

// What a well's control is made of: who controls it, by which rate, its target and its injection phase.
struct WellControlState {
    std::string name;
    bool underVaneControl = false;
    bool underTapServerControl = false;
    std::int32_t vaneRateControl = 0;
    std::int32_t targetStatus = 0;
    std::int32_t injectionPhase = 0;
    OperatingPoint target;
};

// The control of every well, in list order.
std::vector<WellControlState> CaptureControls(const WellList& wells);
// Gives each well of `wells` the control captured under its name; a well not captured keeps its own.
void RestoreControls(WellList& wells, const std::vector<WellControlState>& controls);

// --- Operating points ---

// A rate from the network as a usable value: 0 for a negative rate, for no number and for the "no value"
// marker and anything above it.
double SanitiseRate(double rate);
// Gas g (MMscf) and liquid l (STB) against the threshold t in scf per standard barrel.
bool GlrAtOrAbove(double g, double l, double t);
bool GlrBelow(double g, double l, double t);

// Takes the operating point into the well's target. Puts the well under the network's control first, and
// sets its efficiency, whatever follows. False with the whole text in `error` when the point cannot be used.
bool SetOpPtUnlocked(WellData& well, const NodeOperatingPoint& point, const RateControlSettings& settings,
                     const TNavUnitSystem& units, bool blackOil, std::string& error);

// The target of a producer from its kind of rate control; writes only the one rate that kind names.
bool setVaneProductionTarget(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                             std::string& error);
// The single-phase target of an injector and its temperature.
bool setVaneInjectorTarget(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                           std::string& error);
// A gas or a liquid target by the gas-to-liquid ratio against `glrThreshold`.
bool SetOpPtGlr(WellData& well, const NodeOperatingPoint& point, double glrThreshold,
                const TNavUnitSystem& units, std::string& error);
// A gas target, a liquid target or both, by fixed ratios.
bool SetOpPtCombined(WellData& well, const NodeOperatingPoint& point, const TNavUnitSystem& units,
                     std::string& error);
// The hydrocarbon composition that a gas injector of a compositional model injects.
bool SetInjectionComposition(WellData& well, const NodeOperatingPoint& point, bool blackOil,
                             std::string& error);

// Stores one hydrocarbon mole fraction of the injected composition, after checking index and value.
bool StoreMoleFraction(WellComposition& composition, int index, double value, std::string& error);

}  // namespace rivulet
