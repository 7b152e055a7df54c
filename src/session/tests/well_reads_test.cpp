// The first read of a job's wells and the refresh at each step, on the scripted simulator.
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

using tnavscripted::Well;

Well MakeWell(const std::string& name, tNavigator_API_RMA_well_status_t status) {
    Well well;
    well.name = name;
    well.status = status;
    well.firstActiveStatus = status;
    return well;
}

// A producer, an injector and a well never opened, in a launched job.
class WellReads : public LaunchedSession {
  protected:
    void SetUp() override {
        LaunchedSession::SetUp();
        Well producer = MakeWell(" 'PROD1' ", TNAV_WELL_STATUS_OPEN_PRODUCER);
        producer.params = {{TNAV_WELL_OIL_RATE, 120.0},    {TNAV_WELL_GAS_RATE, 9000.0},
                           {TNAV_WELL_BHP, 210.0},         {TNAV_WELL_ACCUM_OIL_RATE, 5000.0},
                           {TNAV_WELL_OIL_DENSITY, 820.0}, {TNAV_WELL_TEMPERATURE, 80.0}};
        producer.efficiency = 0.9;
        Well injector = MakeWell("INJ1", TNAV_WELL_STATUS_OPEN_INJECTOR);
        injector.params = {{TNAV_WELL_WATER_INJ, 300.0},
                           {TNAV_WELL_ACCUM_WATER_INJ, 7000.0},
                           {TNAV_WELL_BHP, 330.0},
                           {TNAV_WELL_WATER_RATE, 55.0}};
        injector.injectorPhase = TNAV_PHASE_GAS;
        injector.pvtRegion = 2;
        Well idle = MakeWell("IDLE", TNAV_WELL_STATUS_SHUT);
        idle.firstActiveStatus = TNAV_WELL_STATUS_NONE;
        idle.params = {{TNAV_WELL_OIL_RATE, 4.0}, {TNAV_WELL_WATER_INJ, 6.0}};
        Sim().wells = {producer, injector, idle};
    }
};

TEST_F(WellReads, TheFirstReadKnowsEachWellAndItsResults) {
    ASSERT_TRUE(Create("INJ1\n")) << error_;
    ASSERT_EQ(reservoir_->wells.Count(), 3u);
    EXPECT_EQ(reservoir_->units.name, "METRIC");
    EXPECT_EQ(reservoir_->fluid.modelType, 1);

    const WellData& producer = At(0);
    EXPECT_EQ(producer.name, "PROD1");  // trimmed, and one pair of quotes taken off
    // An isothermal model stores no temperature, and the well answers with no value.
    EXPECT_EQ(std::tuple(producer.wellType, producer.OilRate(), producer.GasRate(), producer.Bhp(),
                         producer.Efficiency(), producer.productionRecord[WellRateRecord::kCumOil],
                         producer.productionRecord[WellRateRecord::kOilDensity],
                         producer.productionRecord[WellRateRecord::kTemperature], producer.Temperature(),
                         producer.underVaneControl),
              std::tuple(kWellProducer, 120.0, 9000.0, 210.0, 0.9, 5000.0, 820.0, 0.0, 3.4e35, false));
    // The injector's water rate comes from the injection list, not the production rate.
    const WellData& injector = At(1);
    EXPECT_EQ(
        std::tuple(injector.wellType, injector.underVaneControl, injector.injectionPhase, injector.pvtRegion,
                   injector.WaterRate(), injector.productionRecord[WellRateRecord::kWater]),
        std::tuple(kWellInjector, true, kPhaseGas, 2, 300.0, 0.0));
    // A well never opened has no type: it is read on both sides and answers with the larger value.
    const WellData& idle = At(2);
    EXPECT_EQ(std::tuple(idle.wellType, idle.status, idle.OilRate(), idle.WaterRate()),
              std::tuple(kWellUndefined, kStatusShut, 4.0, 6.0));

    // The requester's defaults come from the unit system. In a metric model both pressures are positive:
    // 0 psig is one atmosphere.
    const WellRequester& r = *session_->Wells();
    const TNavUnitSystem& u = reservoir_->units;
    EXPECT_EQ(std::tuple(r.defaultInjectorBhp, r.defaultProducerBhp, r.minLiquidRateCap, r.minGasRateCap),
              std::tuple(u.fromFieldPressure(14695900.0), u.fromFieldPressure(0.0),
                         u.fromFieldLiquidRate(10.0), u.fromFieldGasRate(0.0001)));
}

TEST_F(WellReads, AStatusChangeZeroesTheRecordsBeforeTheyAreReadAgain) {
    ASSERT_TRUE(Create()) << error_;
    Sim().wells[0].status = TNAV_WELL_STATUS_SHUT;
    Sim().wells[0].params.clear();
    ASSERT_TRUE(session_->ReadCurrentData(reservoir_.get(), error_)) << error_;
    // A typed well keeps its type; one call per group and read, never per well.
    EXPECT_EQ(std::tuple(At(0).status, At(0).wellType, At(0).OilRate(), Calls("get_well_statuses"),
                         Calls("get_well_params")),
              std::tuple(kStatusShut, kWellProducer, 0.0, 2, 4));
}

TEST_F(WellReads, NoInjectorsMeansNoInjectorCalls) {
    Sim().wells.erase(Sim().wells.begin() + 1, Sim().wells.end());
    ASSERT_TRUE(Create()) << error_;
    EXPECT_EQ(Calls("get_well_params"), 1);
    EXPECT_EQ(Args("get_well_params"), "0|0,1,2,3,8,9,10,11,16,17,19,20,21");
    EXPECT_EQ(Log().find("get_well_efficiency_factors(int*, int, double*)\nint[1]"),
              Log().rfind("get_well_efficiency_factors"));
}

TEST_F(WellReads, TheLogShowsBannersArraysAndResultBlocks) {
    ASSERT_TRUE(Create()) << error_;
    const std::string log = Log();
    // The statuses call shows only the count, and its answers follow in a block.
    for (const char* piece :
         {"\nget_math_model_type(math_model_type*)\n", "\nget_well_count(int*)\n",
          "\n*** For info: mapping of well indices to well names ***\n0    PROD1\n1    INJ1\n2    IDLE\n\n",
          "\nget_well_pvt_regions(int*, int, well_status_t*)\nint[3]\n0, 1, 2, \nint=3\nwell_status_t[3]\n",
          "\nget_well_statuses(int*, int, well_status_t*)\nint=3\nwell_status_t[3]\n\n*** For info: results "
          "from get_well_statuses ***\nwell_status_t[3]\n1, 2, 3, \n\n",
          "\nget_well_params(int*, int, well_parameter_t*, int, double*)\nint[2]\n1, 2, \nint=2\n"
          "well_parameter_t[10]\n4, 5, 6, 7, 12, 13, 14, 15, 16, 17, \nint=10\ndouble[20]\n"})
        EXPECT_NE(log.find(piece), std::string::npos) << piece;
    EXPECT_EQ(log.find("get_well_eos_regions"), std::string::npos);  // black oil reads no EOS regions
}

TEST_F(WellReads, EachFailingReadGivesItsTextInTheLog) {
    const std::pair<const char*, const char*> cases[] = {
        {"get_well_count", "Error when reading number of wells: <scripted failure>"},
        {"get_well_names", "Error when reading well names: <scripted failure>"},
        {"get_well_first_active_statuses", "Error when reading first well types: <scripted failure>"},
        {"get_well_pvt_regions", "Error when reading well pvt regions: <scripted failure>"},
        {"get_well_statuses", "Error when reading well statuses: <scripted failure>"},
        {"get_injector_phases", "Error when reading well inj phases: <scripted failure>"},
        {"get_well_efficiency_factors", "Error when reading well efficiencies: <scripted failure>"},
        {"get_well_params", "Error when reading a subset of the well parameters: <scripted failure>"},
    };
    for (const auto& [call, text] : cases) {
        Script().Fail(call);
        EXPECT_EQ(ErrorOf(Create(), error_), text) << call;
        EXPECT_TRUE(EndsWithLine(Log(), error_)) << Log();
        // The new data stays with the caller, half filled.
        EXPECT_NE(reservoir_, nullptr);
    }
}

}  // namespace
}  // namespace rivulet
