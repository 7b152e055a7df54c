// Densities and compositions at the maximum rates of producers that are not flowing.
#include "session/MaxRateDetails.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

class MaxRateDetails : public RequesterTest {
  protected:
    void SetUp() override {
        RequesterTest::SetUp();
        units_.SetUp("FIELD");  // lb/scf, gas in Mscf
        // Two components weighing 16 and 100.
        fluid_.SetModelType(3);
        fluid_.eosRegionCount = 1;
        fluid_.SetHcNames({"C1", "C7"});
        const int weights = 2 * fluid_.PropertyPosition(kMolecularWeight);
        fluid_.componentProperties[static_cast<std::size_t>(weights)] = 16.0;
        fluid_.componentProperties[static_cast<std::size_t>(weights) + 1] = 100.0;
        Script().state.hcNames = {"C1", "C7"};
    }
    // A well as the ordinary reads left it; `flowing` gives an open well a gas rate. The reference lasts
    // until the next well is added.
    WellData& Add(std::int32_t type, std::int32_t status, bool flowing = false) {
        WellData well(&fluid_);
        well.wellType = type;
        well.status = status;
        well.eosRegion = 1;
        well.composition.SetHcCount(2);
        well.composition.rateFractions = {0.5, 0.5};
        if (flowing) well.productionRecord[WellRateRecord::kGas] = 10.0;
        wells_.Add(well);
        Script().state.wells.resize(static_cast<std::size_t>(wells_.Size()));
        return wells_[static_cast<std::size_t>(wells_.Size() - 1)];
    }
    bool ReadComposition() { return ReadCompositionOfMaxRates(requester_, 2, wells_, max_, units_, error_); }

    PhaseRateTable max_;  // water, oil, gas
};

TEST_F(MaxRateDetails, DensitiesAreReadForTheMissingPhasesOfIdleProducers) {
    Add(kWellProducer, kStatusShut).productionRecord[WellRateRecord::kOilDensity] = 700.0;
    Add(kWellProducer, kStatusOpenProducer, true);  // flowing
    Add(kWellInjector, kStatusShut);
    Add(kWellProducer, kStatusOpenProducer);  // open but not flowing, with rates too small to count
    Add(kWellProducer, kStatusStop);
    max_ = {{0.0, 5.0, 8.0}, {1.0, 1.0, 1.0}, {1.0, 1.0, 1.0}, {4e-5, 4e-5, 4e-5}, {10.0, 5.0, 0.0}};

    ASSERT_TRUE(ReadDensitiesOfMaxRates(requester_, wells_, max_, error_)) << error_;
    EXPECT_EQ(Args("get_sc_densities_of_max_rates"), "0,4,4|2,1,0");
    EXPECT_EQ(log_.str(),
              "\nget_sc_densities_of_max_rates(int*, int, phase_t*, double*)\n"
              "int[3]\n0, 4, 4, \nint=3\nphase_t[3]\n2, 1, 0, \ndouble[3]\n");
    // The scripted answers are the PVT region's densities: water 1000, oil 800, gas 0.9. The shut well keeps
    // its own oil density.
    const WellRateRecord &shut = wells_[0].productionRecord, &stopped = wells_[4].productionRecord;
    EXPECT_EQ(std::tuple(shut[WellRateRecord::kGasDensity], shut[WellRateRecord::kOilDensity],
                         stopped[WellRateRecord::kOilDensity], stopped[WellRateRecord::kWaterDensity],
                         wells_[3].productionRecord[WellRateRecord::kGasDensity]),
              std::tuple(0.9, 700.0, 800.0, 1000.0, 0.0));

    Script().Fail("get_sc_densities_of_max_rates", 3, "no job");
    wells_[4].productionRecord[WellRateRecord::kOilDensity] = 0.0;
    EXPECT_EQ(ErrorOf(ReadDensitiesOfMaxRates(requester_, wells_, max_, error_), error_),
              "Error when reading production SC densities: <no job>");

    Script().ClearCalls();
    EXPECT_TRUE(ReadDensitiesOfMaxRates(requester_, wells_, {}, error_));
    EXPECT_EQ(Calls("get_sc_densities_of_max_rates"), 0);
}

TEST_F(MaxRateDetails, CompositionIsTheMolarMixOfGasAndOilOrTheOnePhaseThatCounts) {
    Add(kWellProducer, kStatusStop);
    Add(kWellProducer, kStatusShut);
    Add(kWellProducer, kStatusOpenProducer, true);  // flowing: keeps its own
    for (int k : {0, 1}) {
        wells_[k].productionRecord[WellRateRecord::kGasDensity] = 0.05;
        wells_[k].productionRecord[WellRateRecord::kOilDensity] = 50.0;
    }
    // Well 0: gas at 1 MMscf/day weighs 50000 lb, oil at 100 STB/day 28072.9 lb. Well 1: gas at 1e-7
    // MMscf/day weighs 0.005 lb, below a millionth of the whole.
    max_ = {{0.0, 100.0, 1000.0}, {0.0, 100.0, 1e-4}, {0.0, 100.0, 1000.0}};
    Script().state.wells[0].maxRateCompositions = {{TNAV_PHASE_GAS, {0.9, 0.1}},
                                                   {TNAV_PHASE_OIL, {0.2, 0.8}}};
    Script().state.wells[1].maxRateCompositions = {{TNAV_PHASE_GAS, {1.0, 0.0}},
                                                   {TNAV_PHASE_OIL, {0.3, 0.7}}};

    ASSERT_TRUE(ReadComposition()) << error_;
    EXPECT_EQ(Args("get_composition_of_max_rates"), "0,0,1|2,1,1");
    EXPECT_EQ(log_.str(),
              "\nget_composition_of_max_rates(int*, int, ipr_rate_phase_t*, double*)\n"
              "int[3]\n0, 0, 1, \nint=3\nipr_rate_phase_t[3]\n2, 1, 1, \ndouble[6]\n");
    // Gas weighs 0.9 * 16 + 0.1 * 100 = 24.4 a mole: 2049.18 moles; oil 0.2 * 16 + 0.8 * 100 = 83.2:
    // 337.415 moles. C1 = (2049.18 * 0.9 + 337.415 * 0.2) / 2386.60.
    EXPECT_NEAR(wells_[0].composition.rateFractions[0], 0.801035, 1e-6);
    EXPECT_NEAR(wells_[0].composition.rateFractions[1], 0.198965, 1e-6);
    EXPECT_EQ(std::tie(wells_[1].composition.rateFractions, wells_[2].composition.rateFractions),
              std::tuple(std::vector<double>{0.3, 0.7}, std::vector<double>{0.5, 0.5}));
}

TEST_F(MaxRateDetails, CompositionFailures) {
    WellData& well = Add(kWellProducer, kStatusStop);  // the only well
    well.productionRecord[WellRateRecord::kGasDensity] = 0.05;
    well.productionRecord[WellRateRecord::kOilDensity] = 50.0;
    max_ = {{0.0, 100.0, 1000.0}};
    // The first read's call fails; then an oil run without weight, and a fraction out of range.
    const std::pair<std::vector<double>, const char*> cases[] = {
        {{0.5, 0.5}, "Error when reading production hc component fractions: <scripted failure>"},
        {{0.0, 0.0}, ""},
        {{2.0, 0.0}, "Mole Fraction value (1.25656) must lie in the range 0.0 to 1.0 (inclusive)."},
    };
    Script().Fail("get_composition_of_max_rates");
    for (const auto& [oil, text] : cases) {
        error_.clear();
        Script().state.wells[0].maxRateCompositions = {{TNAV_PHASE_GAS, {0.5, 0.5}}, {TNAV_PHASE_OIL, oil}};
        EXPECT_EQ(ErrorOf(ReadComposition(), error_), text);
    }
}

}  // namespace
}  // namespace rivulet
