// The field and well results that the host walks by a rising index, before and after a completed step.
#include <gtest/gtest.h>

#include <string>

#include "ExtModelProbe.h"
#include "driver/ExtModel.h"

namespace rivulet {
namespace {

constexpr double kNoValue = 3.4e35;
constexpr int kFirstWellRow = 12;

// One answer of DoGetExtraNodeResults.
struct Row {
    int index;
    std::int32_t code;
    const char* name;
    const char* unit;
    double value;
    const char* node;
};

class Results : public ::testing::Test {
  protected:
    void SetUp() override {
        reservoir_ = &ExtModelProbe::MakeReservoir(model_);
        reservoir_->units.SetUp("FIELD");  // gas in Mscf, pressure in psia
        reservoir_->fluid.SetModelType(1);
        model_.GetSettings().DefaultFluidTemp = 100.0;
        model_.GetSettings().FluidTempUnit = 1;  // deg C: 212 F

        WellRateRecord& p = Add("P1", kWellProducer, kStatusOpenProducer).productionRecord;
        p[WellRateRecord::kOil] = 100.0;
        p[WellRateRecord::kWater] = 20.0;
        p[WellRateRecord::kGas] = 500.0;
        p[WellRateRecord::kCumOil] = 1000.0;
        p[WellRateRecord::kCumWater] = 200.0;
        p[WellRateRecord::kCumGas] = 8000.0;
        p[WellRateRecord::kBhp] = 1014.6959;
        WellRateRecord& s = Add("S1", kWellProducer, kStatusShut).productionRecord;
        s[WellRateRecord::kCumOil] = 300.0;
        s[WellRateRecord::kBhp] = 514.6959;
        WellRateRecord& i = Add("I1", kWellInjector, kStatusStop).injectionRecord;
        i[WellRateRecord::kWater] = 50.0;
        i[WellRateRecord::kCumWater] = 700.0;
        i[WellRateRecord::kCumGas] = 3000.0;
        Add("U1", kWellUndefined, kStatusStop).productionRecord[WellRateRecord::kCumOil] = 40.0;
    }
    WellData& Add(const std::string& name, std::int32_t type, std::int32_t status) {
        WellData well(&reservoir_->fluid);
        well.name = name;
        well.wellType = type;
        well.status = status;
        reservoir_->wells.Add(well);
        return *reservoir_->wells.At(reservoir_->wells.Size() - 1);
    }
    std::int32_t Read(int index) {
        result_ = tExtraNodeResult{};
        err_ = tErrorRecord{};
        result_.iResultIndex = index;
        return model_.DoGetExtraNodeResults(&result_, &err_);
    }
    void Expect(const Row& row) {
        SCOPED_TRACE("index " + std::to_string(row.index));
        ASSERT_EQ(Read(row.index), 1) << err_.szText;
        EXPECT_EQ(result_.iVariableCode, row.code);
        EXPECT_STREQ(result_.szName, row.name);
        EXPECT_STREQ(result_.szUnit, row.unit);
        EXPECT_NEAR(result_.dValue, row.value, 1e-9 * (1.0 + row.value));
        EXPECT_EQ(result_.iZero, 0);
        EXPECT_STREQ(result_.szNodeName, row.node);
        EXPECT_STREQ(err_.szText, "");
    }
    static int WellRow(int well, int row) { return kFirstWellRow + 14 * well + row; }

    CExtModel model_;
    ReservoirData* reservoir_ = nullptr;
    tExtraNodeResult result_{};
    tErrorRecord err_{};
};

TEST_F(Results, BeforeTheFirstStepNothingHasAValue) {
    const Row rows[] = {
        {0, 2, "", "", kNoValue, "Field"},
        {6, -1, "Cum Oil", "STB", kNoValue, "Field"},
        {11, -1, "Cum Water Injected", "STB", kNoValue, "Field"},
        {WellRow(0, 0), 2, "", "", kNoValue, "P1"},
        {WellRow(0, 4), -1, "Cum Oil", "STB", kNoValue, "P1"},
        {WellRow(0, 12), 1, "", "", kNoValue, "P1"},
        {WellRow(0, 13), -1, "Temperature", "F", kNoValue, "P1"},
        {WellRow(2, 11), -1, "Cum Wat Injected", "STB", kNoValue, "I1"},
    };
    ExtModelProbe::SetFieldTotal(model_, kOilProductionTotal, 5.0);
    for (const Row& row : rows) Expect(row);
}

TEST_F(Results, FieldRowsGiveTheTotalsAndTheirSums) {
    const double totals[kFieldTotalCount] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0};
    for (int t = 0; t < kFieldTotalCount; ++t)
        ExtModelProbe::SetFieldTotal(model_, static_cast<FieldTotal>(t), totals[t]);
    ExtModelProbe::SetStepCount(model_, 1);
    const Row rows[] = {
        {0, 2, "", "", 6.0, "Field"},
        {1, 5, "", "", 5.0, "Field"},
        {2, 3, "", "", 7.0, "Field"},
        {3, 4, "", "", 13.0, "Field"},
        {4, 9, "", "", 1.0, "Field"},
        {5, 8, "", "", 2.0, "Field"},
        {6, -1, "Cum Oil", "STB", 9.0, "Field"},
        {7, -1, "Cum Gas", "MMscf", 8.0, "Field"},
        {8, -1, "Cum Water", "STB", 10.0, "Field"},
        {9, -1, "Cum Liquid", "STB", 19.0, "Field"},
        {10, -1, "Cum Gas Injected", "MMscf", 3.0, "Field"},
        {11, -1, "Cum Water Injected", "STB", 4.0, "Field"},
    };
    for (const Row& row : rows) Expect(row);
}

TEST_F(Results, WellRowsAfterAStepByStatusAndType) {
    ExtModelProbe::SetStepCount(model_, 1);
    const Row rows[] = {
        // An open producer: every producer row, nothing flowing on the injector rows.
        {WellRow(0, 0), 2, "", "", 100.0, "P1"},
        {WellRow(0, 1), 5, "", "", 0.5, "P1"},
        {WellRow(0, 2), 3, "", "", 20.0, "P1"},
        {WellRow(0, 3), 4, "", "", 120.0, "P1"},
        {WellRow(0, 4), -1, "Cum Oil", "STB", 1000.0, "P1"},
        {WellRow(0, 5), -1, "Cum Gas", "MMscf", 8.0, "P1"},
        {WellRow(0, 6), -1, "Cum Wat", "STB", 200.0, "P1"},
        {WellRow(0, 7), -1, "Cum Liq", "STB", 1200.0, "P1"},
        {WellRow(0, 8), 9, "", "", 0.0, "P1"},
        {WellRow(0, 11), -1, "Cum Wat Injected", "STB", 0.0, "P1"},
        {WellRow(0, 12), 1, "", "", 1000.0, "P1"},
        {WellRow(0, 13), -1, "Temperature", "F", 212.0, "P1"},
        // A shut producer: no value on the rate rows, its cumulatives all the same.
        {WellRow(1, 0), 2, "", "", kNoValue, "S1"},
        {WellRow(1, 4), -1, "Cum Oil", "STB", 300.0, "S1"},
        {WellRow(1, 8), 9, "", "", kNoValue, "S1"},
        {WellRow(1, 12), 1, "", "", 500.0, "S1"},
        // A stopped injector: zero rates, its cumulatives.
        {WellRow(2, 9), 8, "", "", 0.0, "I1"},
        {WellRow(2, 10), -1, "Cum Gas Injected", "MMscf", 3.0, "I1"},
        {WellRow(2, 11), -1, "Cum Wat Injected", "STB", 700.0, "I1"},
        {WellRow(2, 4), -1, "Cum Oil", "STB", 0.0, "I1"},
        // A well of no type has no rate or cumulative.
        {WellRow(3, 4), -1, "Cum Oil", "STB", 0.0, "U1"},
        {WellRow(3, 13), -1, "Temperature", "F", 212.0, "U1"},
    };
    for (const Row& row : rows) Expect(row);

    // A thermal model reports the well's own temperature; an open injector its rates.
    reservoir_->fluid.SetModelType(2);
    reservoir_->wells[0].productionRecord[WellRateRecord::kTemperature] = 150.0;
    reservoir_->wells[2].status = kStatusOpenInjector;
    Expect({WellRow(0, 13), -1, "Temperature", "F", 150.0, "P1"});
    Expect({WellRow(2, 9), 8, "", "", 50.0, "I1"});
}

TEST_F(Results, TheWalkEndsPastTheLastWellAndBadRequestsAreRefused) {
    EXPECT_EQ(Read(WellRow(4, 0)), 0);
    EXPECT_EQ(result_.iVariableCode, 0);
    EXPECT_STREQ(result_.szNodeName, "");
    EXPECT_STREQ(err_.szText, "");

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
