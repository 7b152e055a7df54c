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
    EXPECT_EQ(producer.wellType, kWellProducer);
    EXPECT_DOUBLE_EQ(producer.OilRate(), 120.0);
    EXPECT_DOUBLE_EQ(producer.GasRate(), 9000.0);
    EXPECT_DOUBLE_EQ(producer.Bhp(), 210.0);
    EXPECT_DOUBLE_EQ(producer.Efficiency(), 0.9);
    EXPECT_DOUBLE_EQ(producer.productionRecord[WellRateRecord::kCumOil], 5000.0);
    EXPECT_DOUBLE_EQ(producer.productionRecord[WellRateRecord::kOilDensity], 820.0);
    // An isothermal model stores no temperature, and the well answers with no value.
    EXPECT_DOUBLE_EQ(producer.productionRecord[WellRateRecord::kTemperature], 0.0);
    EXPECT_DOUBLE_EQ(producer.Temperature(), 3.4e35);
    EXPECT_FALSE(producer.underVaneControl);

    const WellData& injector = At(1);
    EXPECT_EQ(injector.wellType, kWellInjector);
    EXPECT_TRUE(injector.underVaneControl);
    EXPECT_EQ(injector.injectionPhase, kPhaseGas);
    EXPECT_EQ(injector.pvtRegion, 2);
    EXPECT_DOUBLE_EQ(injector.WaterRate(), 300.0);  // from the injection list, not the production rate
    EXPECT_DOUBLE_EQ(injector.productionRecord[WellRateRecord::kWater], 0.0);

    // A well never opened has no type: it is read on both sides and answers with the larger value.
    const WellData& idle = At(2);
    EXPECT_EQ(idle.wellType, kWellUndefined);
    EXPECT_EQ(idle.status, kStatusShut);
    EXPECT_DOUBLE_EQ(idle.OilRate(), 4.0);
    EXPECT_DOUBLE_EQ(idle.WaterRate(), 6.0);

    // The requester's defaults come from the unit system. In a metric model both pressures are positive:
    // 0 psig is one atmosphere.
    const WellRequester& requester = *session_->Wells();
    const TNavUnitSystem& units = reservoir_->units;
    EXPECT_NEAR(requester.defaultInjectorBhp, units.fromFieldPressure(14695900.0), 1e-6);
    EXPECT_NEAR(requester.defaultProducerBhp, units.fromFieldPressure(0.0), 1e-9);
    EXPECT_NEAR(requester.minLiquidRateCap, units.fromFieldLiquidRate(10.0), 1e-9);
    EXPECT_NEAR(requester.minGasRateCap, units.fromFieldGasRate(0.0001), 1e-9);
}

TEST_F(WellReads, AStatusChangeZeroesTheRecordsBeforeTheyAreReadAgain) {
    ASSERT_TRUE(Create()) << error_;
    Sim().wells[0].status = TNAV_WELL_STATUS_SHUT;
    Sim().wells[0].params.clear();
    ASSERT_TRUE(session_->ReadCurrentData(reservoir_.get(), error_)) << error_;
    EXPECT_EQ(At(0).status, kStatusShut);
    EXPECT_EQ(At(0).wellType, kWellProducer);  // a typed well keeps its type
    EXPECT_DOUBLE_EQ(At(0).OilRate(), 0.0);
    EXPECT_EQ(Script().Count("get_well_statuses"), 2);
    EXPECT_EQ(Script().Count("get_well_params"), 4);  // one call per group and read, never per well
}

TEST_F(WellReads, NoInjectorsMeansNoInjectorCalls) {
    Sim().wells.erase(Sim().wells.begin() + 1, Sim().wells.end());
    ASSERT_TRUE(Create()) << error_;
    EXPECT_EQ(Script().Count("get_well_params"), 1);
    EXPECT_EQ(Script().LastArgs("get_well_params"), "0|0,1,2,3,8,9,10,11,16,17,19,20,21");
    EXPECT_EQ(Log().find("get_well_efficiency_factors(int*, int, double*)\nint[1]"),
              Log().rfind("get_well_efficiency_factors"));
}

TEST_F(WellReads, TheLogShowsBannersArraysAndResultBlocks) {
    ASSERT_TRUE(Create()) << error_;
    const std::string log = Log();
    EXPECT_NE(log.find("\nget_math_model_type(math_model_type*)\n"), std::string::npos);
    EXPECT_NE(log.find("\nget_well_count(int*)\n"), std::string::npos);
    EXPECT_NE(log.find("\n*** For info: mapping of well indices to well names ***\n0    PROD1\n1    INJ1\n"
                       "2    IDLE\n\n"),
              std::string::npos);
    EXPECT_NE(log.find("\nget_well_pvt_regions(int*, int, well_status_t*)\nint[3]\n0, 1, 2, \nint=3\n"
                       "well_status_t[3]\n"),
              std::string::npos);
    // The statuses call shows only the count, and its answers follow in a block.
    EXPECT_NE(log.find("\nget_well_statuses(int*, int, well_status_t*)\nint=3\nwell_status_t[3]\n"
                       "\n*** For info: results from get_well_statuses ***\nwell_status_t[3]\n1, 2, 3, \n\n"),
              std::string::npos);
    EXPECT_NE(
        log.find("\nget_well_params(int*, int, well_parameter_t*, int, double*)\nint[2]\n1, 2, \nint=2\n"
                 "well_parameter_t[10]\n4, 5, 6, 7, 12, 13, 14, 15, 16, 17, \nint=10\ndouble[20]\n"),
        std::string::npos);
    // Black oil reads no EOS regions.
    EXPECT_EQ(log.find("get_well_eos_regions"), std::string::npos);
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
        EXPECT_FALSE(Create()) << call;
        EXPECT_EQ(error_, text);
        EXPECT_TRUE(EndsWithLine(Log(), error_)) << Log();
        // The new data stays with the caller, half filled.
        EXPECT_NE(reservoir_, nullptr);
    }
}

}  // namespace
}  // namespace rivulet
