// A model whose reservoir data the test builds: GetVar and SetVar in each state of a run, the inflow tables
// and compositions that the host reads (GetIPR, QueryComp, QueryCompByStream), and the field and well results
// that it walks by a rising index.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ExtModelProbe.h"
#include "driver/ExtModel.h"

namespace rivulet {
namespace {

constexpr double kNoValue = 3.4e35;
// FIELD pressures reach the host as gauge pressures.
constexpr double kAtmosphere = 14.6959;

class ReservoirModel : public ::testing::Test {
  protected:
    // Reservoir data in FIELD units with a black-oil fluid; the case's default fluid temperature is 100 deg C
    // (212 F).
    void MakeReservoir() {
        reservoir_ = &ExtModelProbe::MakeReservoir(model_);
        reservoir_->units.SetUp("FIELD");
        reservoir_->fluid.SetModelType(1);
        model_.GetSettings().DefaultFluidTemp = 100.0;
        model_.GetSettings().FluidTempUnit = 1;
    }
    WellData& Add(const std::string& name, std::int32_t type = kWellProducer,
                  std::int32_t status = kStatusOpenProducer) {
        WellData well(&reservoir_->fluid);
        well.name = name;
        well.wellType = type;
        well.status = status;
        reservoir_->wells.Add(well);
        return *reservoir_->wells.At(reservoir_->wells.Size() - 1);
    }
    // An open producer flowing 100 STB/day of oil, 20 of water and 500 Mscf/day of gas at 1000 psig.
    WellRateRecord& AddFlowingProducer(const std::string& name) {
        WellRateRecord& record = Add(name).productionRecord;
        record[WellRateRecord::kOil] = 100.0;
        record[WellRateRecord::kWater] = 20.0;
        record[WellRateRecord::kGas] = 500.0;
        record[WellRateRecord::kBhp] = 1000.0 + kAtmosphere;
        return record;
    }

    CExtModel model_;
    ReservoirData* reservoir_ = nullptr;
    tErrorRecord err_{};
};

// The result, and the value of a get or the message of a set.
using Answer = std::pair<std::int32_t, std::string>;

std::vector<std::string> g_notified;

void Notify(const char* text, void*) {
    g_notified.emplace_back(text);
}

class AccessRouting : public ReservoirModel {
  protected:
    Answer Get(const char* access) {
        tGetVarData data{};
        data.pszAccess = access;
        err_ = {};
        const std::int32_t result = model_.GetVar(&data, &err_);
        return {result, data.szValue};
    }
    Answer Set(const char* access, const char* value) {
        tSetVarData data{};
        data.pszAccess = access;
        data.pszValue = value;
        err_ = {};
        const std::int32_t result = model_.SetVar(&data, &err_);
        return {result, err_.szText};
    }
    WellList& AddWells() {
        MakeReservoir();
        for (const char* name : {"P1", "I1", "P2"}) Add(name);
        return reservoir_->wells;
    }
};

TEST_F(AccessRouting, OnlyTheCaseIsReadBeforeTheStartAndCaseWritesFollowTheRunState) {
    const char* port = "TNAVIGATOR.CaseDetails.HeadNodePort";
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IsLocalMachine"), Answer(0, "1"));
    EXPECT_EQ(Get("TNAVIGATOR.WELL.Count").first, 1);
    EXPECT_STREQ(err_.szText, "Error: Only the CaseDetails can be read before the simulator is started.");
    EXPECT_EQ(Set(port, "1024"), Answer(0, ""));

    ScriptedSession& session = ExtModelProbe::InstallSession(model_);
    session.SetJob(true, false);  // started, but without reservoir data
    EXPECT_EQ(Get("TNAVIGATOR.Well.Count").first, 1);
    EXPECT_STREQ(err_.szText, "Case data does not yet exist.");
    EXPECT_EQ(Set(port, "2000"), Answer(1, "Cannot edit HeadNodePort once the simulator has been started."));
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IsLocalMachine", "0"),
              Answer(1, "Cannot edit IsLocalMachine once the simulator has been started."));
    EXPECT_EQ(Set(port, "1024"), Answer(0, ""));  // a write that changes nothing passes
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "4"), Answer(0, ""));
    EXPECT_EQ(Set("TNAVIGATOR.WELL.Count", "3"), Answer(1, ""));  // no wells without reservoir data

    session.SetJob(true, true);
    ExtModelProbe::SetRunInitialised(model_, true);
    const Answer refused(1, "Cannot edit CaseDetails while the simulator is running.");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "2"), refused);
    // With a notification callback the host hears of it there, and the write answers 0.
    g_notified.clear();
    ExtModelProbe::SetCallbacks(model_, Notify, Notify);
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "2"), Answer(0, ""));
    EXPECT_EQ(g_notified, std::vector<std::string>(2, refused.second));
    EXPECT_EQ(model_.GetSettings().IprAlpha, 4);
}

TEST_F(AccessRouting, WellsAreReachedByExactKeyOrIndex) {
    WellList& wells = AddWells();
    EXPECT_EQ(Get("TNAVIGATOR.WELL.Count"), Answer(0, "3"));
    EXPECT_EQ(Get("TNAVIGATOR.well.count"), Answer(0, "3"));
    EXPECT_EQ(Get("TNAVIGATOR.WELL.$Count").first, 1);
    for (const char* unreached : {"TNAVIGATOR.WELL[{p1}].GasRate", "TNAVIGATOR.Well[7].GasRate"}) {
        EXPECT_EQ(Get(unreached).first, 1) << unreached;
        EXPECT_STREQ(err_.szText, "") << unreached;
    }
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "1"), Answer(0, ""));
    EXPECT_EQ(wells.At(1)->name, "P2");
    // Before the start a well's error is put as the case-only rule; once started it is told as it is.
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "9"),
              Answer(1, "Error: Only CaseDetails can be edited when the simulator is not running."));
    ExtModelProbe::InstallSession(model_).SetJob(true, false);
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "9"),
              Answer(1, "Attempting to remove an object at an invalid index"));
    EXPECT_EQ(wells.Count(), 2u);
}

TEST_F(AccessRouting, FieldTotalsAndRunTimes) {
    AddWells();
    ExtModelProbe::SetFieldTotal(model_, kOilProductionTotal, 1250.5);
    EXPECT_EQ(Get("TNAVIGATOR.FIELD.OilProductionTotal"), Answer(0, "1250.5"));
    EXPECT_EQ(Get("TNAVIGATOR.Field.GasInjectionRate"), Answer(0, "0"));
    EXPECT_EQ(Get("TNAVIGATOR.field.OilProductionTotal").first, 1);  // only "Field" and "FIELD" lead there
    EXPECT_EQ(Set("TNAVIGATOR.FIELD.OilProductionTotal", "1").first, 1);

    ExtModelProbe::SetDates(model_, OleDate::FromCalendar({2015, 1, 1}),
                            OleDate::FromCalendar({2014, 12, 1}));
    EXPECT_EQ(Get("TNAVIGATOR.FIELD.RunStartDate"), Answer(0, "01 Jan 2015"));
    EXPECT_EQ(Get("TNAVIGATOR.CurrentSimTime"), Answer(0, "0"));
    ExtModelProbe::SetDates(model_, OleDate::FromCalendar({2015, 1, 1}), OleDate::FromCalendar({2015, 3, 2}));
    EXPECT_EQ(Get("TNAVIGATOR.CURRENTSIMTIME"), Answer(0, "60"));
}

class Coupling : public ReservoirModel {
  protected:
    void SetUp() override { MakeReservoir(); }
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

    std::unique_ptr<_tGetSetData> record_ = std::make_unique<_tGetSetData>();
    std::unique_ptr<tCompositionData> composition_ = std::make_unique<tCompositionData>();
};

TEST_F(Coupling, GetIprRefusesWhatItCannotRead) {
    EXPECT_EQ(model_.GetIPR(nullptr, &err_), 1);
    EXPECT_STREQ(err_.szText, "A null data item was provided to GetIPR().");
    Add("P1");
    EXPECT_EQ(GetIpr(3), 1);
    EXPECT_STREQ(err_.szText, "The requested well No. 4 does not exist (function call GetIPR).");
    CExtModel empty;
    EXPECT_EQ(empty.GetIPR(record_.get(), &err_), 1);
    EXPECT_STREQ(err_.szText, "No data present for GetIPR().");
}

TEST_F(Coupling, GetIprWritesTheNonzeroRowsOfTheTableUpToTenAndThePresentState) {
    Add("SPARE");
    WellRateRecord& record = AddFlowingProducer("P1");
    record[WellRateRecord::kOilDensity] = 49.9408;   // gravity 0.8 against 62.426
    record[WellRateRecord::kGasDensity] = 0.061088;  // gravity 0.8 against 0.07636
    record[WellRateRecord::kWaterDensity] = 62.426 * 1.02;
    WellData& well = reservoir_->wells[1];
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
    EXPECT_EQ(std::tuple(d.iSize, d.iWellIndex, d.stComposition.iSize, d.iExtensionSize, d.iOne, d.bMaskFlag),
              std::tuple(105368, 1, 93720, 776, 1, 0));
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
        double oilDensity, gasDensity, oilGravity, gasGravity, mass;
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
        WellData& well = Add("P1");
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
    WellData& well = Add("P1");
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
    Add("P1").eosRegion = 2;
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
        int wellRegion, wellIndex;
        std::int32_t queryComp, byStream;
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
        Add("P1").eosRegion = c.wellRegion;

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

// The labels of the field's twelve result rows and of each well's fourteen: a code that the host knows, or
// a name with its unit.
const char* const kFieldLabels =
    "2 5 3 4 9 8 Cum Oil[STB] Cum Gas[MMscf] Cum Water[STB] Cum Liquid[STB] Cum Gas Injected[MMscf] "
    "Cum Water Injected[STB]";
const char* const kWellLabels =
    "2 5 3 4 Cum Oil[STB] Cum Gas[MMscf] Cum Wat[STB] Cum Liq[STB] 9 8 Cum Gas Injected[MMscf] "
    "Cum Wat Injected[STB] 1 Temperature[F]";

class Results : public ReservoirModel {
  protected:
    // An open producer, a shut producer, a stopped injector and a stopped well of no type.
    void SetUp() override {
        MakeReservoir();
        WellRateRecord& p = AddFlowingProducer("P1");
        p[WellRateRecord::kCumOil] = 1000.0;
        p[WellRateRecord::kCumWater] = 200.0;
        p[WellRateRecord::kCumGas] = 8000.0;
        p[WellRateRecord::kTemperature] = 150.0;  // only a thermal model reads the temperatures
        WellRateRecord& s = Add("S1", kWellProducer, kStatusShut).productionRecord;
        s[WellRateRecord::kCumOil] = 300.0;
        s[WellRateRecord::kBhp] = 500.0 + kAtmosphere;
        WellRateRecord& i = Add("I1", kWellInjector, kStatusStop).injectionRecord;
        i[WellRateRecord::kWater] = 50.0;
        i[WellRateRecord::kCumWater] = 700.0;
        i[WellRateRecord::kCumGas] = 3000.0;
        i[WellRateRecord::kBhp] = 2000.0 + kAtmosphere;
        i[WellRateRecord::kTemperature] = 120.0;
        WellRateRecord& u = Add("U1", kWellUndefined, kStatusStop).productionRecord;
        u[WellRateRecord::kCumOil] = 40.0;
        u[WellRateRecord::kBhp] = 300.0 + kAtmosphere;
    }
    // The result at `index`; the record keeps what an earlier read left in it.
    std::int32_t Read(int index) {
        err_ = tErrorRecord{};
        result_.iResultIndex = index;
        return model_.DoGetExtraNodeResults(&result_, &err_);
    }
    // The values of the rows of the field (well -1) or of a well, no value written as "-"; every row must
    // carry its label and node.
    std::string Walk(int well) {
        const int first = well < 0 ? 0 : 12 + 14 * well;
        std::string values, labels;
        for (int index = first; index < first + (well < 0 ? 12 : 14); ++index) {
            if (Read(index) != 1) return "no row " + std::to_string(index) + ": " + err_.szText;
            const tExtraNodeResult& r = result_;
            EXPECT_EQ(r.szNodeName, well < 0 ? "Field" : reservoir_->wells[well].name) << index;
            EXPECT_EQ(r.iZero, 0) << index;
            EXPECT_STREQ(err_.szText, "") << index;
            labels += (labels.empty() ? "" : " ") +
                      (r.iVariableCode == -1 ? "" : std::to_string(r.iVariableCode)) + r.szName +
                      (r.szUnit[0] ? "[" + std::string(r.szUnit) + "]" : "");
            char value[32] = "-";
            if (r.dValue != kNoValue) std::snprintf(value, sizeof value, "%.10g", r.dValue);
            values += (values.empty() ? "" : " ") + std::string(value);
        }
        EXPECT_EQ(labels, well < 0 ? kFieldLabels : kWellLabels) << well;
        return values;
    }

    tExtraNodeResult result_{};
};

TEST_F(Results, BeforeTheFirstStepNothingHasAValueAndTheWalkEndsPastTheLastWell) {
    ExtModelProbe::SetFieldTotal(model_, kOilProductionTotal, 5.0);
    EXPECT_EQ(Walk(-1), "- - - - - - - - - - - -");
    for (int well = 0; well < 4; ++well) EXPECT_EQ(Walk(well), "- - - - - - - - - - - - - -") << well;
    EXPECT_EQ(Read(12 + 14 * 4), 0);  // a blank record
    EXPECT_EQ(result_.iVariableCode, 0);
    EXPECT_STREQ(result_.szName, "");
    EXPECT_EQ(result_.dValue, 0.0);
    EXPECT_STREQ(result_.szNodeName, "");
    EXPECT_STREQ(err_.szText, "");
}

TEST_F(Results, AfterAStepTheFieldGivesItsTotalsAndTheWellsFollowTheirStatusAndType) {
    for (int t = 0; t < kFieldTotalCount; ++t)
        ExtModelProbe::SetFieldTotal(model_, static_cast<FieldTotal>(t), t + 1.0);
    ExtModelProbe::SetStepCount(model_, 1);
    EXPECT_EQ(Walk(-1), "6 5 7 13 1 2 9 8 10 19 3 4");
    // An open producer: every producer row, in MMscf for gas and psig, nothing flowing on the injector rows.
    EXPECT_EQ(Walk(0), "100 0.5 20 120 1000 8 200 1200 0 0 0 0 1000 212");
    // A shut producer: no value on the rate rows, its cumulatives all the same.
    EXPECT_EQ(Walk(1), "- - - - 300 0 0 300 - - - - 500 212");
    // A stopped injector: zero rates, its cumulatives.
    EXPECT_EQ(Walk(2), "0 0 0 0 0 0 0 0 0 0 3 700 2000 212");
    // A well of no type has no rate or cumulative.
    EXPECT_EQ(Walk(3), "0 0 0 0 0 0 0 0 0 0 0 0 300 212");

    // A thermal model reports the well's own temperature; an open injector its rates.
    reservoir_->fluid.SetModelType(2);
    reservoir_->wells[2].status = kStatusOpenInjector;
    EXPECT_EQ(Walk(0), "100 0.5 20 120 1000 8 200 1200 0 0 0 0 1000 150");
    EXPECT_EQ(Walk(2), "0 0 0 0 0 0 0 0 0 50 3 700 2000 120");
}

TEST_F(Results, BadRequestsAreRefused) {
    EXPECT_EQ(model_.DoGetExtraNodeResults(nullptr, &err_), 0);
    EXPECT_STREQ(err_.szText, "A null data store was provided to DoGetExtraNodeResults().");
    EXPECT_EQ(Read(-1), 0);
    EXPECT_STREQ(err_.szText, "An invalid (negative) iResultIndex was provided to DoGetExtraNodeResults().");
    reservoir_->wells.Clear();
    EXPECT_EQ(Read(0), 0);
    EXPECT_STREQ(err_.szText, "No data present for DoGetExtraNodeResults().");
}

}  // namespace
}  // namespace rivulet
