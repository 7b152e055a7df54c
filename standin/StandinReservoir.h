// A material-balance black-oil reservoir: one tank per PVT region, wells flowing by productivity index.
// Public quantities are in the deck's own units, rates per day; the state is kept in SI.
// Not thread-safe: callers serialise access to one instance.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "standin/DeckModel.h"

namespace rivulet::standin {

class EngineError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct WellReport {
    std::string name;
    WellType type = WellType::kProducer;
    WellStatus status = WellStatus::kShut;
    ControlMode mode = ControlMode::kNone;  // the limit that governs the flow now
    Phase injected = Phase::kWater;
    // Surface rates while flowing: production for a producer, injection for an injector.
    double oil_rate = 0.0, water_rate = 0.0, gas_rate = 0.0, liquid_rate = 0.0, resv_rate = 0.0;
    double oil_total = 0.0, water_total = 0.0, gas_total = 0.0;  // cumulatives, efficiency applied
    double bhp = 0.0, thp = 0.0;
    double oil_density = 0.0, water_density = 0.0, gas_density = 0.0;  // surface densities
    double mixture_density = 0.0;  // density of the flowing mixture at reservoir conditions
    double efficiency = 1.0;
};

struct FieldReport {
    double oil_rate = 0.0, water_rate = 0.0, gas_rate = 0.0;  // production, efficiency applied
    double water_injection_rate = 0.0, gas_injection_rate = 0.0;
    double oil_total = 0.0, water_total = 0.0, gas_total = 0.0;
    double water_injection_total = 0.0, gas_injection_total = 0.0;
    double pressure = 0.0;  // pore-volume weighted tank pressure
};

struct TankReport {
    double pressure = 0.0;
    double oil_in_place = 0.0, water_in_place = 0.0;  // surface volumes, vaporised oil included
    double gas_in_place = 0.0;                        // free and dissolved
    double so = 0.0, sw = 0.0, sg = 0.0;
    double rs = 0.0;  // dissolved gas-oil ratio
};

class StandinReservoir {
  public:
    static constexpr Seconds kMaxStep = 86400;

    explicit StandinReservoir(DeckModel model);

    const DeckModel& Model() const { return model_; }
    Seconds Start() const { return model_.start; }
    Seconds End() const { return model_.End(); }
    Seconds Now() const { return now_; }
    bool Ended() const { return now_ >= End(); }
    // The first report date after now; empty once the schedule is done.
    std::optional<Seconds> NextReportDate() const;
    // Number of report dates reached so far.
    std::size_t ReportStep() const { return step_; }

    // Runs towards `t`, stopping early at the next report date or the end; returns the time reached.
    Seconds AdvanceTo(Seconds t);

    std::size_t WellCount() const { return model_.wells.size(); }
    std::size_t WellIndex(const std::string& name) const;  // throws for an unknown name
    WellReport Well(std::size_t well) const;
    FieldReport Field() const;
    std::size_t TankCount() const { return tanks_.size(); }
    double TankPressure(std::size_t tank) const;
    TankReport Tank(std::size_t tank) const;

    // Control writes are held until CheckNewControls().
    void SetStatus(std::size_t well, WellStatus status);
    void SetControlMode(std::size_t well, ControlMode mode);
    // Rate limit of a phase (kOil, kWater, kGas, kLiquid, kReservoir); an injector takes it as its
    // injection rate. A negative value removes the limit.
    void SetRateLimit(std::size_t well, Phase phase, double rate);
    void SetBhpLimit(std::size_t well, double bhp);
    void SetEfficiency(std::size_t well, double efficiency);
    void SetInjectedPhase(std::size_t well, Phase phase);
    // Applies the held writes; returns how many wells changed.
    std::size_t CheckNewControls();

    // Rate of `phase` at the well's BHP limit, ignoring its rate limits.
    double MaxRate(std::size_t well, Phase phase) const;
    // BHP at which the well gives `rate` of `phase`; empty when the phase does not flow.
    std::optional<double> BhpForRate(std::size_t well, Phase phase, double rate) const;

  private:
    struct TankState {
        double no = 0.0, ng = 0.0, nw = 0.0;  // surface volumes in place, whichever phase holds them
        double p = 0.0;
        double rs_cap = 0.0;  // highest Rs the oil may take when free gas cannot dissolve
    };
    struct Fluid;  // tank properties at its pressure
    struct Flow {
        double qo = 0.0, qw = 0.0, qg = 0.0, qr = 0.0;  // SI, positive out of the tank for producers
        double bhp = 0.0;
        double mix_o = 1.0, mix_w = 0.0, mix_g = 0.0;  // surface make-up of the flow
        ControlMode mode = ControlMode::kNone;
    };
    struct WellRuntime {
        WellControls active, pending;
        Flow flow;
        double oil_total = 0.0, water_total = 0.0, gas_total = 0.0;
    };

    void CheckWell(std::size_t well) const;
    void ApplyDeckControls(std::size_t step);
    void Step(double dt);
    // Re-solves every well at the present tank pressures so reports and IPR answers agree.
    void RefreshFlows();
    Fluid Evaluate(std::size_t tank, double p) const;
    double SolvePressure(std::size_t tank) const;
    double PI(std::size_t well) const;
    // Surface rate of `phase` per Pa of drawdown for a producer, or per Pa of overpressure for an injector.
    double Coefficient(std::size_t well, const WellControls& c, const Fluid& f, Phase phase) const;
    Flow Solve(std::size_t well, const WellControls& c, const Fluid& f) const;
    double RateScale(Phase phase) const;
    double MixtureDensity(const FluidRegion& r, const Flow& flow, double p) const;

    DeckModel model_;
    std::vector<TankState> tanks_;
    std::vector<WellRuntime> wells_;
    Seconds now_ = 0;
    std::size_t step_ = 0;
};

}  // namespace rivulet::standin
