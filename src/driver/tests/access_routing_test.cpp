// GetVar and SetVar on a model in each state of a run, with wells and dates in place.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "driver/tests/ExtModelProbe.h"

namespace rivulet {
namespace {

using Answer =
    std::pair<std::int32_t, std::string>;  // the result, and the value of a get or message of a set

std::vector<std::string> g_notified;

void Notify(const char* text, void*) {
    g_notified.emplace_back(text);
}

class AccessRouting : public ::testing::Test {
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
        WellList& wells = ExtModelProbe::MakeReservoir(model_).wells;
        for (const char* name : {"P1", "I1", "P2"}) {
            WellData well;
            well.name = name;
            wells.Add(well);
        }
        return wells;
    }

    CExtModel model_;
    tErrorRecord err_{};
};

TEST_F(AccessRouting, OnlyTheCaseIsReadBeforeTheStart) {
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IsLocalMachine"), Answer(0, "1"));
    EXPECT_EQ(Get("TNAVIGATOR.WELL.Count").first, 1);
    EXPECT_STREQ(err_.szText, "Error: Only the CaseDetails can be read before the simulator is started.");
    ExtModelProbe::InstallSession(model_).SetJob(true, false);  // started, but without reservoir data
    EXPECT_EQ(Get("TNAVIGATOR.Well.Count").first, 1);
    EXPECT_STREQ(err_.szText, "Case data does not yet exist.");
}

TEST_F(AccessRouting, CaseWritesFollowTheRunState) {
    const char* port = "TNAVIGATOR.CaseDetails.HeadNodePort";
    EXPECT_EQ(Set(port, "1024"), Answer(0, ""));
    ScriptedSession& session = ExtModelProbe::InstallSession(model_);
    session.SetJob(true, false);
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

}  // namespace
}  // namespace rivulet
