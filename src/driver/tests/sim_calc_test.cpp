// The six callbacks through which the inflow library runs the model by itself, taken from the library as it
// was handed them, and the case dialog's calculation around them.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ExtModelProbe.h"
#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"

namespace rivulet {
namespace {

constexpr double kNoValue = 3.4e35;
constexpr double kAtmosphere = 14.6959;  // FIELD pressures reach the library as gauge pressures

struct Callbacks {
    IPRElapsedTimeCallback elapsed = nullptr;
    IPRInitialiseForSimCalcCallback initialise = nullptr;
    IPRSetWellCtrlForSimCalcCallback setWell = nullptr;
    IPRRunToForSimCalcCallback runTo = nullptr;
    IPRGetWellBlockIPRForSimCalcCallback blockIpr = nullptr;
    IPRGetWellRatesForSimCalcCallback rates = nullptr;
};

class SimCalc : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(InflowKitInspectCallbacks(model_.GetIprModel(), &cb_.elapsed, &cb_.initialise, &cb_.setWell,
                                            &cb_.runTo, &cb_.blockIpr, &cb_.rates),
                  1);
    }
    // A connected model with FIELD units and one open producer flowing 100 STB/day of oil, 20 of water and
    // 500 Mscf/day of gas at 1000 psig.
    WellData& Connect() {
        reservoir_ = &ExtModelProbe::MakeReservoir(model_);
        reservoir_->units.SetUp("FIELD");
        reservoir_->fluid.SetModelType(1);
        ExtModelProbe::InstallSession(model_).SetJob(true, true);
        WellData well(&reservoir_->fluid);
        well.name = "P1";
        well.wellType = kWellProducer;
        well.status = kStatusOpenProducer;
        WellRateRecord& record = well.productionRecord;
        record[WellRateRecord::kOil] = 100.0;
        record[WellRateRecord::kWater] = 20.0;
        record[WellRateRecord::kGas] = 500.0;
        record[WellRateRecord::kBhp] = 1000.0 + kAtmosphere;
        reservoir_->wells.Add(well);
        return *reservoir_->wells.At(0);
    }
    // A two-row table with these rates (STB/day, Mscf/day) at its second row.
    static void Table(WellData& well, double oil, double water, double gas) {
        well.ipr.Pressures = {3000.0, 2000.0};
        well.ipr.OilRates = {0.0, oil};
        well.ipr.WaterRates = {0.0, water};
        well.ipr.GasRates = {0.0, gas};
    }
    std::string Text() const { return std::string(err_); }

    CExtModel model_;
    ReservoirData* reservoir_ = nullptr;
    Callbacks cb_;
    char err_[1024] = {};
    std::unique_ptr<_tGetSetData> data_ = std::make_unique<_tGetSetData>();
    // The record as the library knows it: by its name alone.
    ::_tGetSetData* record() { return reinterpret_cast<::_tGetSetData*>(data_.get()); }
};

// What a simulator start on a fresh model answers.
std::string StartFailure() {
    CExtModel fresh;
    tErrorRecord err{};
    EXPECT_EQ(fresh.StartSimulator(nullptr, &err), 1);
    return err.szText;
}

TEST_F(SimCalc, EachCallbackRefusesWhatItCannotWorkWithAndSaysWhy) {
    CExtModel* m = &model_;
    ::_tGetSetData* r = record();
    struct Case {
        std::function<std::int32_t(char*)> call;
        std::string text;
    };
    const std::vector<Case> unready = {
        {[&](char* e) { return cb_.initialise(nullptr, e); },
         "A null item was sent to InitialiseForSimCalc()"},
        {[&](char* e) { return cb_.setWell(nullptr, 0, 1.0, e); },
         "A null item was sent to SetWellCtrlForSimCalc()"},
        {[&](char* e) { return cb_.runTo(nullptr, 1.0, e); }, "A null item was sent to RunToForSimCalc()"},
        {[&](char* e) { return cb_.blockIpr(nullptr, 0, r, e); },
         "A null item was sent to GetWellBlockIPRForSimCalc()"},
        {[&](char* e) { return cb_.rates(nullptr, 0, r, e); },
         "A null item was sent to GetWellRatesForSimCalc()"},
        {[&](char* e) { return cb_.rates(m, 0, nullptr, e); },
         "A null item was sent to GetWellRatesForSimCalc()"},
        {[&](char* e) { return cb_.setWell(m, 0, 1.0, e); },
         "SetWellCtrlForSimCalc() was called before simulator is ready for data."},
        {[&](char* e) { return cb_.rates(m, 0, r, e); },
         "GetWellRatesForSimCalc() called before simulator was ready to generate data."},
        // Failures of the operations beneath come through with their own texts.
        {[&](char* e) { return cb_.blockIpr(m, 0, r, e); }, "No data present for GetIPR()."},
        {[&](char* e) { return cb_.initialise(m, e); }, StartFailure()},
    };
    for (const Case& c : unready) {
        std::fill(std::begin(err_), std::end(err_), 'x');
        err_[sizeof err_ - 1] = '\0';
        EXPECT_EQ(c.call(err_), 1) << c.text;
        EXPECT_EQ(Text(), c.text);
        EXPECT_EQ(c.call(nullptr), 1) << "a null buffer: " << c.text;
    }
    EXPECT_EQ(cb_.elapsed(nullptr), 0.0);

    // A run whose target cannot be a date.
    ExtModelProbe::SetDates(model_, OleDate::FromDays(40000.0), OleDate::FromDays(40010.0));
    EXPECT_EQ(cb_.elapsed(m), 10.0);
    EXPECT_EQ(cb_.runTo(m, 1e12, err_), 1);
    EXPECT_EQ(Text(), "Invalid end date in RunToForSimCalc: model's start date is " +
                          OleDate::FromDays(40010.0).FormatLocale() + ".");

    // A well that does not exist; the one that does is left alone.
    WellData& well = Connect();
    Table(well, 100.0, 0.0, 50.0);
    EXPECT_EQ(cb_.setWell(m, 1, 10.0, err_), 1);
    EXPECT_EQ(Text(), "SetWellCtrlForSimCalc() was passed an invalid well index <1>.");
    EXPECT_EQ(cb_.rates(m, -1, r, err_), 1);
    EXPECT_EQ(Text(), "GetWellRatesForSimCalc() was passed an invalid well index <-1>.");
    EXPECT_EQ(std::tuple(well.vaneRateControl, well.underVaneControl, well.target.LiquidRate),
              std::tuple(kControlUnset, false, -1.0));

    // A simulator library that throws is answered with a text.
    tnavscripted::Script().state.throwIn = "is_connected";
    EXPECT_EQ(cb_.setWell(m, 0, 10.0, err_), 1);
    EXPECT_EQ(Text(), "An exception occurred during SetOpPtUnlocked()");
    tnavscripted::Script().state.throwIn = "is_connected";
    EXPECT_EQ(cb_.initialise(m, err_), 1);
    EXPECT_EQ(Text(), "An exception was thrown when loading the case file during initialisation.");

    // What SetOpPt makes of the point is the callback's answer.
    model_.GetSettings().RateControl = 7;
    EXPECT_EQ(cb_.setWell(m, 0, 10.0, err_), 1);
    EXPECT_EQ(Text(), "SetOpPt(): The well <P1> has an invalid rate control type <7>.");
}

TEST_F(SimCalc, SetWellCtrlHoldsTheWellAtTheRateOfItsPhase) {
    enum Map { kUnknown, kLiquidWell, kGasWell };
    struct Case {
        const char* name;
        double oil, water, gas;
        Map map;
        std::int32_t type;
        std::int32_t control;  // 0: the well is left alone
    };
    const Case cases[] = {
        {"no flow in the table", 0.0, 0.0, 0.0, kUnknown, kWellProducer, kControlUnset},
        {"gas alone", 0.0, 0.0, 800.0, kUnknown, kWellProducer, kControlGas},
        {"liquid producer", 100.0, 50.0, 0.0, kUnknown, kWellProducer, kControlLiquid},
        {"liquid injector", 0.0, 100.0, 0.0, kUnknown, kWellInjector, kControlWater},
        {"gas above the ratio", 1.0, 1.0, 800.0, kUnknown, kWellProducer, kControlGas},
        {"mapped gas beats the table", 100.0, 0.0, 1.0, kGasWell, kWellProducer, kControlGas},
        {"mapped liquid beats the table", 0.0, 0.0, 800.0, kLiquidWell, kWellProducer, kControlLiquid},
    };
    WellData& well = Connect();
    CExtModel* m = &model_;
    for (const Case& c : cases) {
        well.wellType = c.type;
        well.vaneRateControl = kControlUnset;
        well.underVaneControl = false;
        well.target = OperatingPoint();
        Table(well, c.oil, c.water, c.gas);
        ExtModelProbe::GasWellMap(model_).clear();
        if (c.map != kUnknown) ExtModelProbe::GasWellMap(model_)["P1"] = c.map == kLiquidWell;

        EXPECT_EQ(cb_.setWell(m, 0, 12.5, err_), 0) << c.name << ": " << Text();
        EXPECT_EQ(well.vaneRateControl, c.control) << c.name;
        EXPECT_EQ(well.underVaneControl, c.control != kControlUnset) << c.name;
        // The rate reaches the target in the model's units: Mscf/day for gas.
        const OperatingPoint& t = well.target;
        const double expected[] = {c.control == kControlGas ? 12500.0 : -1.0,
                                   c.control == kControlLiquid ? 12.5 : -1.0,
                                   c.control == kControlWater ? 12.5 : -1.0};
        EXPECT_EQ(std::vector<double>({t.GasRate, t.LiquidRate, t.WaterRate}),
                  std::vector<double>(std::begin(expected), std::end(expected)))
            << c.name;
    }
    // An empty table leaves the well alone.
    well.ipr = IprTable();
    well.vaneRateControl = kControlUnset;
    EXPECT_EQ(cb_.setWell(m, 0, 12.5, err_), 0);
    EXPECT_EQ(well.vaneRateControl, kControlUnset);
}

TEST_F(SimCalc, GetWellRatesGivesThePressureAndOnceAStepIsTakenTheRates) {
    Connect();
    CExtModel* m = &model_;
    const _tGetSetData& r = *data_;
    ASSERT_EQ(cb_.rates(m, 0, record(), err_), 0) << Text();
    EXPECT_NEAR(r.adPressure[0], 1000.0, 1e-9);
    EXPECT_EQ(std::vector<double>({r.adOilRate[0], r.adWaterRate[0], r.adGasRate[0]}),
              std::vector<double>(3, kNoValue));
    ExtModelProbe::SetStepCount(model_, 1);
    ASSERT_EQ(cb_.rates(m, 0, record(), err_), 0) << Text();
    EXPECT_EQ(std::vector<double>({r.adOilRate[0], r.adWaterRate[0], r.adGasRate[0]}),
              std::vector<double>({100.0, 20.0, 0.5}));
}

}  // namespace
}  // namespace rivulet
