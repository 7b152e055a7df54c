// The inflow tables of the wells under the network's control, on the scripted simulator, which answers a BHP
// of maxBhp - bhpPerRate * rate for every phase of a well.
#include <map>
#include <tuple>
#include <utility>

#include "session/IprReads.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

using Column = std::vector<double>;

// FIELD units: gas in Mscf/day (MMscf/day in the tables), liquid in STB/day, pressure in psia (psig in the
// tables, 14.6959 less). A BHP of 214.6959 - 0.001 * rate psia is 200 - 0.001 * rate psig.
class IprReads : public RequesterTest {
  protected:
    void SetUp() override {
        RequesterTest::SetUp();
        units_.SetUp("FIELD");
        requester_.minGasRateCap = units_.fromFieldGasRate(0.0001);
        requester_.minLiquidRateCap = units_.fromFieldLiquidRate(10.0);
    }
    int Add(std::int32_t type, std::map<int, double> maxRates, double bhpPerRate = 0.001,
            double maxBhp = 214.6959) {
        tnavscripted::Well simulated;
        simulated.maxRates = std::move(maxRates);
        simulated.bhpPerRate = bhpPerRate;
        simulated.maxBhp = maxBhp;
        Script().state.wells.push_back(simulated);
        WellData well;
        well.wellType = type;
        wells_.Add(well);
        const int index = wells_.Size() - 1;
        (type == kWellInjector ? injectors_ : producers_).push_back(index);
        return index;
    }
    // Gas only; gas and oil both above their caps; water only, all rates tiny; an injector without flow,
    // without injection phase and under gas control.
    void AddFourWells() {
        Add(kWellProducer, {{TNAV_PHASE_GAS, 90000.1}});
        wells_[0].productionRecord[WellRateRecord::kTemperature] = 60.0;
        Add(kWellProducer, {{TNAV_PHASE_GAS, 3e6}, {TNAV_PHASE_OIL, 2e5}});
        Add(kWellProducer, {{TNAV_PHASE_WATER, 4e-5}}, 1e6);
        Add(kWellInjector, {{TNAV_PHASE_GAS, 18000.1}}, -0.001, 114.6959);
        wells_[3].injectionPhase = kPhaseNone;
        wells_[3].vaneRateControl = kControlGas;
    }
    bool Run() {
        maxRates_.assign(wells_.Count(), {0.0, 0.0, 0.0});
        minRates_.assign(wells_.Count(), {0.0, 0.0, 0.0});
        return ReadIprTables(requester_, wells_, injectors_, producers_, units_,
                             CaseSettings::IprAlphaValue(3), maxRates_, minRates_, error_);
    }
    const IprTable& Table(int well) { return wells_[static_cast<std::size_t>(well)].ipr; }

    std::vector<int> injectors_;
    std::vector<int> producers_;
    PhaseRateTable maxRates_;
    PhaseRateTable minRates_;
};

// Equal spacing over ten points from lo to hi: the first step (hi - lo) / 10, the others (hi - lo) / 9.
//
// Well 0, gas only, maximum 90000.1 Mscf/day: lo 0.1 (half the maximum, capped), hi 90000.1, so the axis
// rates are 0.1, 9000.1, 20000.1, ..., 90000.1 and their pressures 200 - 0.001 * rate psig.
//
// Well 1, gas 3000 MMscf/day and oil 200,000 STB/day: 3000 / 200000 = 0.015 >= 0.01123, so gas spans the
// axis, from 0.1 to the cap of 100,000 Mscf/day (capped oil would give 100 / 100000 = 0.001, oil). The
// second rate is 0.1 + 99999.9 / 10 = 10000.09, at 189.99991 psig. The oil row answers the same rate in
// STB/day at each pressure, extended below its first rate of 10.
//
// Well 2, water 4e-5 STB/day, 1e6 psi per STB/day: the minimum is 0 and the sampled rates 0, 4e-5 / 15,
// then k * 4e-5 / 14, all closer than 1e-5, so a BHP between two of them is the mean of theirs. The axis
// rate 4e-6 lies between 4e-5 / 15 and 8e-5 / 14, whose mean is 4e-5 * 11 / 105 = 4.190476e-6 STB/day, at
// 195.809524 psig. No water flows at the top, 200 psig, so it moves a tenth of the way down: 199.580952
// psig, where 4.190476e-7 STB/day flow. The last point is the maximum, 4e-5 at 160 psig.
//
// Well 3, an injector whose BHP rises 0.001 psi per Mscf/day from 100 psig: 0.1, 1800.1, 4000.1, ...,
// 18000.1 Mscf/day at 100.0001, 101.8001, 104.0001, ..., 118.0001 psig.
TEST_F(IprReads, TablesFollowTheHandWorkingAndTheLogShowsEachCallItsArraysAndItsResults) {
    AddFourWells();
    ASSERT_TRUE(Run()) << error_;
    EXPECT_EQ(Script().CallNames(),
              (Names{"set_inj_phases_for_ipr_shut_wells", "get_max_rates", "get_max_rates",
                     "set_number_of_ipr_points", "get_specific_rate_bhp_ipr"}));
    EXPECT_EQ(Args("set_inj_phases_for_ipr_shut_wells"), "3|2");
    EXPECT_EQ(Script().Calls()[1].args, "0,0,0,1,1,1,2,2,2|2,1,0,2,1,0,2,1,0");
    EXPECT_EQ(Args("get_max_rates"), "3|2");
    EXPECT_EQ(Args("get_specific_rate_bhp_ipr"), "0,1,1,2,3|2,2,1,0,2");

    for (int well = 0; well < 4; ++well) ASSERT_EQ(Table(well).Length(), 10u) << well;
    // Wells 0 and 3: each gas rate in MMscf/day, and the pressure that goes with it.
    for (std::size_t k = 0; k < 10; ++k) {
        const double produced = (k == 1 ? 9.0 : 10.0 * k) + 0.0001;
        const double injected = (k == 1 ? 1.8 : 2.0 * k) + 0.0001;
        EXPECT_NEAR(Table(0).GasRates[k], produced, 1e-9) << k;
        EXPECT_NEAR(Table(0).Pressures[k], 200.0 - produced, 1e-9) << k;
        EXPECT_NEAR(Table(3).GasRates[k], injected, 1e-9) << k;
        EXPECT_NEAR(Table(3).Pressures[k], 100.0 + injected, 1e-9) << k;
    }
    const Column zero(10, 0.0), hot(10, 60.0);
    EXPECT_EQ(std::tie(Table(0).OilRates, Table(0).WaterRates, Table(0).MassFlows, Table(0).Temperatures),
              std::tie(zero, zero, zero, hot));

    const IprTable& capped = Table(1);
    EXPECT_NEAR(capped.Pressures[0], 199.9999, 1e-9);
    EXPECT_NEAR(capped.Pressures[1], 189.99991, 1e-9);
    EXPECT_NEAR(capped.Pressures[9], 100.0, 1e-9);
    EXPECT_NEAR(capped.GasRates[1], 10.00009, 1e-9);
    EXPECT_NEAR(capped.GasRates[9], 100.0, 1e-9);
    EXPECT_NEAR(capped.OilRates[0], 0.1, 1e-9);
    EXPECT_NEAR(capped.OilRates[9], 100000.0, 1e-6);

    const IprTable& tiny = Table(2);
    EXPECT_NEAR(tiny.Pressures[0], 199.580952, 1e-6);
    EXPECT_NEAR(tiny.WaterRates[0], 4.190476e-7, 1e-13);
    EXPECT_NEAR(tiny.Pressures[1], 195.809524, 1e-6);
    EXPECT_NEAR(tiny.WaterRates[1], 4.190476e-6, 1e-12);
    EXPECT_NEAR(tiny.Pressures[9], 160.0, 1e-9);
    EXPECT_NEAR(tiny.WaterRates[9], 4e-5, 1e-15);

    const std::string log = log_.str();
    const char* pieces[] = {
        "\nset_inj_phases_for_ipr_shut_wells(int*, int, inj_phase_t*)\nint[1]\n3, "
        "\nint=1\ninj_phase_t[1]\n2, \n"
        "\nget_max_rates(int*, int, ipr_rate_phase_t*, double*)\nint[9]\n0, 0, 0, 1, 1, 1, 2, 2, 2, \nint=9\n"
        "ipr_rate_phase_t[9]\n2, 1, 0, 2, 1, 0, 2, 1, 0, \ndouble[9]\n"
        "\n*** For info: results from get_max_rates for producers ***\n"
        "double[9]\n90000.1, 0, 0, 3e+06, 200000, 0, 0, 0, 4e-05, \n\n"
        "\nget_max_rates(int*, int, ipr_rate_phase_t*, double*)\nint[1]\n3, \nint=1\nipr_rate_phase_t[1]\n2, "
        "\n"
        "double[1]\n\n*** For info: results from get_max_rates for injectors ***\ndouble[1]\n18000.1, \n\n"
        "\n*** getIprTables ***\n\nset_number_of_ipr_points(int)\nint=15\n"
        "\nget_specific_rate_bhp_ipr(int*, int, ipr_rate_phase_t*, double*, double*)\nint[5]\n0, 1, 1, 2, 3, "
        "\n"
        "int=5\nipr_rate_phase_t[5]\n2, 2, 1, 0, 2, \n"
        // Equal spacing over 15 rates: 0.1 + 90000 / 15, then 0.1 + 2 * 90000 / 14.
        "double[75]\n0.1, 6000.1, 12857.2, ",
        "\ndouble[75]\n\n*** For info: BHP results from get_specific_rate_bhp_ipr ***\ndouble[75]\n214.696, ",
    };
    for (const char* piece : pieces)
        EXPECT_NE(log.find(piece), std::string::npos) << piece << "\nin\n" << log;
}

TEST_F(IprReads, InjectorsGetTheirZeroFlowPhaseAndMaximumRatePhase) {
    // Injection phase, rate control, gas and water injection, phase sent for no flow, phase of the
    // maximum rate (-1: none).
    const std::tuple<std::int32_t, std::int32_t, double, double, int, int> cases[] = {
        {kPhaseGas, kControlUnset, 0.0, 0.0, 2, 2},   {kPhaseGas, kControlWater, 5.0, 0.0, -1, 2},
        {kPhaseWater, kControlGas, 0.0, 5.0, -1, 0},  {kPhaseWater, kControlUnset, 0.0, 0.0, 0, 0},
        {kPhaseNone, kControlGas, 0.0, 0.0, 2, 2},    {kPhaseNone, kControlWater, 0.0, 0.0, 0, 0},
        {kPhaseNone, kControlWater, 0.0, 3.0, -1, 0}, {kPhaseOil, kControlLiquid, 0.0, 0.0, -1, -1},
    };
    std::string shut[2];
    std::string asked[2];
    for (const auto& [phase, control, gas, water, shutPhase, maxPhase] : cases) {
        const int index = Add(kWellInjector, {});
        WellData& well = wells_[static_cast<std::size_t>(index)];
        well.injectionPhase = phase;
        well.vaneRateControl = control;
        well.injectionRecord[WellRateRecord::kGas] = gas;
        well.injectionRecord[WellRateRecord::kWater] = water;
        for (auto [list, value] : {std::pair(shut, shutPhase), std::pair(asked, maxPhase)}) {
            if (value < 0) continue;
            list[0] += (list[0].empty() ? "" : ",") + std::to_string(index);
            list[1] += (list[1].empty() ? "" : ",") + std::to_string(value);
        }
    }
    wells_[0].ipr.Pressures = {1.0};  // emptied, as no well has a positive maximum
    ASSERT_TRUE(Run()) << error_;
    EXPECT_EQ(Args("set_inj_phases_for_ipr_shut_wells"), shut[0] + "|" + shut[1]);
    EXPECT_EQ(Args("get_max_rates"), asked[0] + "|" + asked[1]);
    // No producers, and nothing to sample: one call for the injectors and none for the BHPs.
    EXPECT_EQ(Script().CallNames(), (Names{"set_inj_phases_for_ipr_shut_wells", "get_max_rates"}));
    EXPECT_EQ(Table(0).Length(), 0u);
}

TEST_F(IprReads, EachFailureEndsTheReadWithItsText) {
    AddFourWells();
    const std::tuple<const char*, int, const char*> cases[] = {
        {"set_inj_phases_for_ipr_shut_wells", 1, "Error when setting zero flow injection phases: <refused>"},
        {"get_max_rates", 1, "Error when reading a subset of well max rates: <refused>"},
        {"get_max_rates", 2, "Error when reading a subset of well max rates: <refused>"},
        {"set_number_of_ipr_points", 1, "Error when setting the number of IPR points: <refused>"},
        {"get_specific_rate_bhp_ipr", 1, "Error when reading well IPR: <refused>"},
    };
    for (const auto& [call, nth, message] : cases) {
        Script().ClearCalls();
        Script().Fail(call, 3, "refused", nth);
        EXPECT_EQ(ErrorOf(Run(), error_), message) << call;
        EXPECT_EQ(Script().CallNames().back(), call);  // nothing after the failing call
        EXPECT_TRUE(EndsWithLine(log_.str(), error_)) << log_.str();
    }

    EXPECT_EQ(ErrorOf(getIprTables(requester_, wells_, nullptr, &minRates_, units_, 1.0, error_), error_),
              "Cannot create an ipr table with null max and/or min rates.");

    // At 100,000 Mscf/day the BHP of well 1 is 50 - 100 psia: the compaction stops there, after well 0,
    // leaving well 1 ten points of zero.
    Script().state.wells[1].maxBhp = 50.0;
    EXPECT_EQ(ErrorOf(Run(), error_), "Failed to compact ipr table.");
    EXPECT_EQ(Table(0).Length(), 10u);
    EXPECT_EQ(Table(1).Pressures, Column(10, 0.0));
    EXPECT_EQ(Table(1).GasRates, Column(10, 0.0));
}

// Through the session, with the API log off: only connected wells get tables, with the case's spacing and
// the fluid's temperature.
class IprSessionReads : public LaunchedSession {
  protected:
    IprSessionReads() { logged_ = false; }
};

TEST_F(IprSessionReads, ReadCurrentDataEndsWithTheTablesOfConnectedWells) {
    tnavscripted::Well producer;
    producer.name = "P";
    producer.maxRates = {{TNAV_PHASE_GAS, 90000.1}};
    producer.bhpPerRate = 0.001;
    producer.maxBhp = 214.6959;
    tnavscripted::Well injector;
    injector.name = "I";
    injector.status = injector.firstActiveStatus = TNAV_WELL_STATUS_OPEN_INJECTOR;
    injector.injectorPhase = TNAV_PHASE_GAS;
    tnavscripted::Well idle = producer;
    idle.name = "Q";
    Sim().wells = {producer, injector, idle};
    Sim().units = TNAV_UNIT_SYSTEM_FIELD;
    settings_.IprAlpha = 3;
    ASSERT_TRUE(Create("P\nI\n")) << error_;

    const Names calls = Script().CallNames();
    // The producer does not flow, so a simulator of this version gives the density of its maximum rate;
    // a black-oil model has no composition to read.
    ASSERT_GE(calls.size(), 6u);
    EXPECT_EQ(
        Names(calls.end() - 6, calls.end()),
        (Names{"set_inj_phases_for_ipr_shut_wells", "get_max_rates", "get_max_rates",
               "set_number_of_ipr_points", "get_specific_rate_bhp_ipr", "get_sc_densities_of_max_rates"}));
    EXPECT_EQ(Args("set_inj_phases_for_ipr_shut_wells"), "1|2");
    EXPECT_EQ(Args("get_specific_rate_bhp_ipr"), "0|2");
    const IprTable& table = At(0).ipr;
    ASSERT_EQ(table.Length(), 10u);
    EXPECT_NEAR(table.Pressures[1], 190.9999, 1e-9);  // equal spacing, as well 0 above
    EXPECT_NEAR(table.GasRates[1], 9.0001, 1e-9);
    EXPECT_EQ(table.Temperatures, Column(10, TNavUnitSystem::kNoValue));  // isothermal: no value
    EXPECT_EQ(At(2).ipr.Length(), 0u);
}

}  // namespace
}  // namespace rivulet
