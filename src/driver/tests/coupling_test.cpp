// Inflow tables and compositions as the host reads them: GetIPR, QueryComp and QueryCompByStream on a model
// whose reservoir data the test builds.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ExtModelProbe.h"
#include "driver/ExtModel.h"

namespace rivulet {
namespace {

constexpr double kNoValue = 3.4e35;
// FIELD pressures reach the host as gauge pressures.
constexpr double kAtmosphere = 14.6959;

class Coupling : public ::testing::Test {
  protected:
    void SetUp() override {
        reservoir_ = &ExtModelProbe::MakeReservoir(model_);
        reservoir_->units.SetUp("FIELD");
        reservoir_->fluid.SetModelType(1);
        model_.GetSettings().DefaultFluidTemp = 100.0;
        model_.GetSettings().FluidTempUnit = 1;  // deg C: 212 F
    }
    WellData& AddProducer(const std::string& name) {
        WellData well(&reservoir_->fluid);
        well.name = name;
        well.wellType = kWellProducer;
        well.status = kStatusOpenProducer;
        reservoir_->wells.Add(well);
        return *reservoir_->wells.At(reservoir_->wells.Size() - 1);
    }
    // A compositional fluid whose regions have these EOS names and whose components are named C1, C2, ...
    void MakeCompositional(int type, std::vector<std::string> eosNames, int components) {
        FluidProperties& fluid = reservoir_->fluid;
        fluid.SetModelType(type);
        fluid.eosRegionCount = static_cast<int>(eosNames.size());
        fluid.eosNames = std::move(eosNames);
        std::vector<std::string> names;
        for (int c = 1; c <= components; ++c) names.push_back("C" + std::to_string(c));
        fluid.SetHcNames(names);
    }
    double& Property(int region, ComponentProperty property, int component) {
        FluidProperties& fluid = reservoir_->fluid;
        const int hc = fluid.HcCount();
        const int at =
            hc * (region - 1) * fluid.propertyCount + hc * fluid.PropertyPosition(property) + component;
        return fluid.componentProperties[static_cast<std::size_t>(at)];
    }
    std::int32_t GetIpr(int well) {
        err_ = tErrorRecord{};
        record_->iWellIndex = well;
        return model_.GetIPR(record_.get(), &err_);
    }

    CExtModel model_;
    ReservoirData* reservoir_ = nullptr;
    tErrorRecord err_{};
    std::unique_ptr<_tGetSetData> record_ = std::make_unique<_tGetSetData>();
    std::unique_ptr<tCompositionData> composition_ = std::make_unique<tCompositionData>();
};

TEST_F(Coupling, GetIprRefusesWhatItCannotRead) {
    EXPECT_EQ(model_.GetIPR(nullptr, &err_), 1);
    EXPECT_STREQ(err_.szText, "A null data item was provided to GetIPR().");
    AddProducer("P1");
    EXPECT_EQ(GetIpr(3), 1);
    EXPECT_STREQ(err_.szText, "The requested well No. 4 does not exist (function call GetIPR).");
    CExtModel empty;
    EXPECT_EQ(empty.GetIPR(record_.get(), &err_), 1);
    EXPECT_STREQ(err_.szText, "No data present for GetIPR().");
}

TEST_F(Coupling, GetIprWritesTheNonzeroRowsOfTheTableUpToTenAndThePresentState) {
    AddProducer("SPARE");
    WellData& well = AddProducer("P1");
    well.productionRecord[WellRateRecord::kOilDensity] = 49.9408;   // gravity 0.8 against 62.426
    well.productionRecord[WellRateRecord::kGasDensity] = 0.061088;  // gravity 0.8 against 0.07636
    well.productionRecord[WellRateRecord::kWaterDensity] = 62.426 * 1.02;
    well.productionRecord[WellRateRecord::kBhp] = 1000.0 + kAtmosphere;
    well.productionRecord[WellRateRecord::kOil] = 100.0;
    well.productionRecord[WellRateRecord::kWater] = 20.0;
    well.productionRecord[WellRateRecord::kGas] = 500.0;  // Mscf/day
    // Thirteen rows, the second of them without flow.
    IprTable& table = well.ipr;
    for (int r = 0; r < 13; ++r) {
        const double scale = r == 1 ? 0.0 : r + 1.0;
        table.GasRates.push_back(0.1 * scale);
        table.OilRates.push_back(10.0 * scale);
        table.WaterRates.push_back(1.0 * scale);
        table.Pressures.push_back(2000.0 - 100.0 * r);
        table.Temperatures.push_back(150.0);
        table.MassFlows.push_back(0.0);
    }
    std::memset(record_.get(), 0x5a, sizeof(_tGetSetData));  // everything is written afresh

    ASSERT_EQ(GetIpr(1), 0) << err_.szText;
    const _tGetSetData& d = *record_;
    EXPECT_EQ(d.iSize, 105368);
    EXPECT_EQ(d.iWellIndex, 1);
    EXPECT_EQ(d.stComposition.iSize, 93720);
    EXPECT_EQ(d.iExtensionSize, 776);
    EXPECT_EQ(d.iOne, 1);
    EXPECT_EQ(d.bMaskFlag, 0);
    EXPECT_DOUBLE_EQ(d.dOilGravity, 0.8);
    EXPECT_DOUBLE_EQ(d.dGasGravity, 0.8);
    EXPECT_DOUBLE_EQ(d.dWaterGravity, 1.02);
    EXPECT_EQ(d.iNumPoints, 10);
    const int rowOfColumn[10] = {0, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    for (int k = 0; k < 10; ++k) {
        const double scale = rowOfColumn[k] + 1.0;
        EXPECT_DOUBLE_EQ(d.adGasRate[k], 0.1 * scale) << k;
        EXPECT_DOUBLE_EQ(d.adOilRate[k], 10.0 * scale) << k;
        EXPECT_DOUBLE_EQ(d.adWaterRate[k], scale) << k;
        EXPECT_DOUBLE_EQ(d.adPressure[k], 2000.0 - 100.0 * rowOfColumn[k]) << k;
        EXPECT_DOUBLE_EQ(d.adTemperature[k], 212.0) << k;  // an isothermal model takes the case's default
        // lb/STB and lb/MMscf
        EXPECT_NEAR(d.adMassRate[k], 10.0 * scale * 49.9408 * 5.61458341 + 0.1 * scale * 0.061088e6, 1e-6)
            << k;
    }
    EXPECT_DOUBLE_EQ(d.dPresentPressure, 1000.0);
    for (double rate : {d.dPresentOilRate, d.dPresentWaterRate, d.dPresentGasRate}) EXPECT_EQ(rate, kNoValue);

    ExtModelProbe::SetStepCount(model_, 1);
    ASSERT_EQ(GetIpr(1), 0);
    EXPECT_DOUBLE_EQ(record_->dPresentOilRate, 100.0);
    EXPECT_DOUBLE_EQ(record_->dPresentWaterRate, 20.0);
    EXPECT_DOUBLE_EQ(record_->dPresentGasRate, 0.5);
    well.status = kStatusStop;
    ASSERT_EQ(GetIpr(1), 0);
    EXPECT_DOUBLE_EQ(record_->dPresentPressure, 1000.0);
    for (double rate : {record_->dPresentOilRate, record_->dPresentWaterRate, record_->dPresentGasRate})
        EXPECT_EQ(rate, 0.0);
}

TEST_F(Coupling, GetIprColumnsFollowTheGravitiesAndTheModelTemperature) {
    struct Case {
        const char* what;
        int modelType;
        double oilDensity;
        double gasDensity;
        double oilGravity;
        double gasGravity;
        double mass;
        double temperature;  // of a row at 150 F
    } cases[] = {
        {"both gravities", 1, 62.426, 0.07636, 1.0, 1.0, 10.0 * 62.426 * 5.61458341 + 0.07636e6, 212.0},
        {"no oil density", 1, 0.0, 0.07636, 0.8, 1.0, 0.0, 212.0},
        {"no gas density", 1, 62.426, 0.0, 1.0, 0.7, 0.0, 212.0},
        {"thermal model", 2, 62.426, 0.07636, 1.0, 1.0, 10.0 * 62.426 * 5.61458341 + 0.07636e6, 150.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        reservoir_->wells.Clear();
        reservoir_->fluid.SetModelType(c.modelType);
        WellData& well = AddProducer("P1");
        well.productionRecord[WellRateRecord::kOilDensity] = c.oilDensity;
        well.productionRecord[WellRateRecord::kGasDensity] = c.gasDensity;
        well.ipr.GasRates = {1.0, 0.0, 2.0};
        well.ipr.OilRates = {10.0, 0.0, 0.0};
        well.ipr.WaterRates = {0.0, 0.0, 0.0};
        well.ipr.Pressures = {500.0, 400.0, 300.0};
        well.ipr.Temperatures = {150.0, 150.0, kNoValue};  // no value takes the default
        well.ipr.MassFlows = {0.0, 0.0, 0.0};
        ASSERT_EQ(GetIpr(0), 0);
        EXPECT_EQ(record_->iNumPoints, 2);
        EXPECT_DOUBLE_EQ(record_->dOilGravity, c.oilGravity);
        EXPECT_DOUBLE_EQ(record_->dGasGravity, c.gasGravity);
        EXPECT_NEAR(record_->adMassRate[0], c.mass, 1e-6);
        EXPECT_DOUBLE_EQ(record_->adTemperature[0], c.temperature);
        EXPECT_DOUBLE_EQ(record_->adTemperature[1], 212.0);
        EXPECT_DOUBLE_EQ(record_->adPressure[1], 300.0);
    }
    // A table without a row that flows gives no point.
    reservoir_->wells[0].ipr.GasRates = {0.0, 4e-5, 0.0};
    reservoir_->wells[0].ipr.OilRates = {0.0, 0.0, 0.0};
    ASSERT_EQ(GetIpr(0), 0);
    EXPECT_EQ(record_->iNumPoints, 0);
}

TEST_F(Coupling, GetIprCopiesTheWellsFractionsToEachTableRowAndItsComposition) {
    MakeCompositional(3, {"PR"}, 2);
    WellData& well = AddProducer("P1");
    well.eosRegion = 1;
    well.composition.SetHcCount(2);
    well.composition.rateFractions = {0.25, 0.75};
    well.ipr.GasRates = {0.0, 1.0, 2.0, 0.0};
    well.ipr.OilRates = {0.0, 0.0, 0.0, 0.0};
    well.ipr.WaterRates = {0.0, 0.0, 0.0, 0.0};
    well.ipr.Pressures = {400.0, 300.0, 200.0, 100.0};
    ASSERT_EQ(GetIpr(0), 0) << err_.szText;
    EXPECT_EQ(record_->iNumPoints, 2);
    EXPECT_EQ(record_->stComposition.iNumComponents, 2);
    EXPECT_STREQ(record_->stComposition.aszNames[1], "C2");
    // Rows by the table's own positions: the zero rows 0 (the well's) and 3 (left empty) included.
    const double expected[4][2] = {{0.25, 0.75}, {0.25, 0.75}, {0.25, 0.75}, {0.0, 0.0}};
    for (int r = 0; r < 4; ++r) {
        EXPECT_EQ(record_->aadMoleFractions[r][0], expected[r][0]) << r;
        EXPECT_EQ(record_->aadMoleFractions[r][1], expected[r][1]) << r;
    }

    well.composition.rateFractions = {1.0};
    EXPECT_EQ(GetIpr(0), 1);
    EXPECT_STREQ(err_.szText, "Internal error: mole fractions array is the wrong size");
}

TEST_F(Coupling, MoreThanAHundredComponentsFailEveryCompositionRead) {
    MakeCompositional(3, {"PR", "PR"}, 101);
    AddProducer("P1").eosRegion = 2;
    const char* message = "Conflux can only transfer 100 hc components; model contains 101.";
    EXPECT_EQ(model_.QueryComp(composition_.get(), &err_), 1);
    EXPECT_STREQ(err_.szText, message);
    err_ = tErrorRecord{};
    EXPECT_EQ(model_.QueryCompByStream(composition_.get(), 0, &err_), -1);
    EXPECT_STREQ(err_.szText, message);
    EXPECT_EQ(GetIpr(0), 1);
    EXPECT_STREQ(err_.szText, message);
}

TEST_F(Coupling, QueryCompGivesRegionOneInTheHostsUnits) {
    struct Case {
        const char* units;
        double temperature, pressure, volume;  // as the simulator gives them
        double hostTemperature, hostPressure, hostVolume;
    } cases[] = {
        {"FIELD", 600.0, 714.6959, 0.1, 140.33, 700.0, 0.1},  // deg R, psia, ft3/lb
        {"METRIC", 300.0, 10.0, 0.005, 80.33, 10.0 * 14.50377 - kAtmosphere, 0.005 * 16.018447258720002},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.units);
        reservoir_->units.SetUp(c.units);
        MakeCompositional(3, {"pr"}, 2);
        reservoir_->fluid.hcNames[0] = "METHANE-AND-MORE-THAN-15";
        Property(1, kCriticalTemperature, 1) = c.temperature;
        Property(1, kCriticalPressure, 1) = c.pressure;
        Property(1, kCriticalVolume, 1) = c.volume;
        Property(1, kMolecularWeight, 1) = 44.0;
        Property(1, kShift, 1) = 0.02;
        reservoir_->fluid.interactionCoefficients = {0.0, 0.1, 0.2, 0.0};
        std::memset(composition_.get(), 0x5a, sizeof(tCompositionData));
        composition_->iSize = 7;

        ASSERT_EQ(model_.QueryComp(composition_.get(), &err_), 0) << err_.szText;
        const tCompositionData& r = *composition_;
        EXPECT_EQ(r.iSize, 7);  // the size is the well record's business
        EXPECT_EQ(r.iEquationOfState, 1);
        EXPECT_EQ(r.iNumComponents, 2);
        EXPECT_STREQ(r.aszNames[0], "METHANE-AND-MOR");
        // Type 3 has every property but parachor, and interaction coefficients.
        EXPECT_EQ(r.dwMask, 0x1u | 0x2u | 0x4u | 0x8u | 0x10u | 0x80u | 0x100u | 0x200u | 0x800u);
        EXPECT_NEAR(r.adCriticalTemperature[1], c.hostTemperature, 1e-9);
        EXPECT_NEAR(r.adCriticalPressure[1], c.hostPressure, 1e-9);
        EXPECT_NEAR(r.adCriticalVolume[1], c.hostVolume, 1e-12);
        EXPECT_EQ(r.adMolecularWeight[1], 44.0);
        EXPECT_EQ(r.adProperty8[1], 0.02);
        EXPECT_EQ(r.adInteraction[0][1], 0.1);
        EXPECT_EQ(r.adInteraction[1][0], 0.2);
    }
}

TEST_F(Coupling, CompositionReadsByRegion) {
    enum Kind { kBlackOil, kNoRegion, kOneRegion, kTwoRegions };
    struct Case {
        const char* what;
        Kind kind;
        int wellRegion;
        int wellIndex;
        std::int32_t queryComp;
        std::int32_t byStream;
        const char* message;  // of the stream read
    } cases[] = {
        {"black oil", kBlackOil, 0, 0, -1, -1, ""},
        {"no region", kNoRegion, 0, 0, 1, -1, "The EosRegion for well index 0 is invalid."},
        {"one region", kOneRegion, 1, 0, 0, 0, ""},
        {"the well's region", kTwoRegions, 2, 0, 0, 1, ""},
        {"a region past the last", kTwoRegions, 3, 0, 0, -1, "The EosRegion for well index 0 is invalid."},
        {"no such well", kTwoRegions, 1, 5, 0, -1,
         "The handle was provided to QueryCompByStream() was out-of-range."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        reservoir_->wells.Clear();
        if (c.kind == kBlackOil) {
            reservoir_->fluid.SetModelType(1);
            reservoir_->fluid.eosRegionCount = 0;
        }
        if (c.kind == kNoRegion) MakeCompositional(5, {}, 2);
        if (c.kind == kOneRegion) MakeCompositional(5, {"PR"}, 2);
        if (c.kind == kTwoRegions) {
            MakeCompositional(5, {"PR", "Srk"}, 2);
            Property(2, kParachor, 0) = 77.0;
        }
        AddProducer("P1").eosRegion = c.wellRegion;

        *composition_ = tCompositionData{};
        err_ = tErrorRecord{};
        EXPECT_EQ(model_.QueryComp(composition_.get(), &err_), c.queryComp);
        EXPECT_STREQ(err_.szText, c.kind == kNoRegion ? "There are no EosRegions available." : "");
        EXPECT_EQ(composition_->iNumComponents, c.queryComp == 0 ? 2 : 0);

        *composition_ = tCompositionData{};
        err_ = tErrorRecord{};
        EXPECT_EQ(model_.QueryCompByStream(composition_.get(), c.wellIndex, &err_), c.byStream);
        EXPECT_STREQ(err_.szText, c.message);
        // Only the well's own region fills the record: region 2 is "SRK" with its own parachor.
        const bool filled = c.byStream == 1;
        EXPECT_EQ(composition_->iNumComponents, filled ? 2 : 0);
        EXPECT_EQ(composition_->iEquationOfState, filled ? 2 : 0);
        EXPECT_EQ(composition_->adProperty9[0], filled ? 77.0 : 0.0);
        EXPECT_EQ(composition_->dwMask & 0x400u, filled ? 0x400u : 0u);
    }
}

}  // namespace
}  // namespace rivulet
