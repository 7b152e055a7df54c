// GetVar, SetVar and DoCmd on a model in each state of a run, with wells and dates in place.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "driver/tests/ExtModelProbe.h"

namespace rivulet {
namespace {

struct Answer {
    std::int32_t result;
    std::string value;    // the value text of a get
    std::string message;  // the error record's text
};

std::vector<std::string> g_notified;

void Notify(const char* text, void*) {
    g_notified.emplace_back(text);
}

class AccessRouting : public ::testing::Test {
  protected:
    Answer Get(const char* access) {
        tGetVarData data{};
        data.pszAccess = access;
        tErrorRecord err{};
        const std::int32_t result = model_.GetVar(&data, &err);
        return {result, data.szValue, err.szText};
    }
    Answer Set(const char* access, const char* value) {
        tSetVarData data{};
        data.pszAccess = access;
        data.pszValue = value;
        tErrorRecord err{};
        const std::int32_t result = model_.SetVar(&data, &err);
        return {result, {}, err.szText};
    }
    Answer Command(const char* command) {
        tErrorRecord err{};
        const std::int32_t result = model_.DoCmd(command, &err);
        return {result, {}, err.szText};
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
};

TEST_F(AccessRouting, OnlyTheCaseIsReadBeforeTheStart) {
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IsLocalMachine").value, "1");
    const char* early = "Error: Only the CaseDetails can be read before the simulator is started.";
    for (const char* access :
         {"TNAVIGATOR.WELL.Count", "TNAVIGATOR.RunStartDate", "TNAVIGATOR.CaseDetails.No"}) {
        const Answer answer = Get(access);
        EXPECT_EQ(answer.result, 1) << access;
        EXPECT_EQ(answer.message, early) << access;
    }
    // Started but without reservoir data the plain reason is given.
    ExtModelProbe::InstallSession(model_).started = true;
    EXPECT_EQ(Get("TNAVIGATOR.Well.Count").message, "Case data does not yet exist.");
}

TEST_F(AccessRouting, CaseWritesFollowTheRunState) {
    const char* port = "TNAVIGATOR.CaseDetails.HeadNodePort";
    ASSERT_EQ(Set(port, "1024").result, 0);
    ScriptedSession& session = ExtModelProbe::InstallSession(model_);
    session.started = true;
    EXPECT_EQ(Set(port, "2000").message, "Cannot edit HeadNodePort once the simulator has been started.");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IsLocalMachine", "0").message,
              "Cannot edit IsLocalMachine once the simulator has been started.");
    EXPECT_EQ(Set(port, "1024").result, 0);  // a write that changes nothing passes
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "4").result, 0);
    EXPECT_EQ(Set("TNAVIGATOR.WELL.Count", "3").message,
              "");  // no wells without reservoir data: not recognised, and nothing to say

    session.running = true;
    ExtModelProbe::SetRunInitialised(model_, true);
    const Answer running = Set("TNAVIGATOR.CaseDetails.IprAlpha", "2");
    EXPECT_EQ(running.result, 1);
    EXPECT_EQ(running.message, "Cannot edit CaseDetails while the simulator is running.");
    EXPECT_EQ(model_.GetSettings().IprAlpha, 4);

    // With a notification callback the host hears of it there, and the write answers 0.
    g_notified.clear();
    ExtModelProbe::SetCallbacks(model_, Notify, Notify);
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "2").result, 0);
    EXPECT_EQ(g_notified,
              std::vector<std::string>(2, "Cannot edit CaseDetails while the simulator is running."));
    EXPECT_EQ(model_.GetSettings().IprAlpha, 4);
}

TEST_F(AccessRouting, WellsAreReachedByExactKeyOrIndex) {
    WellList& wells = AddWells();
    EXPECT_EQ(Get("TNAVIGATOR.WELL.Count").value, "3");
    EXPECT_EQ(Get("TNAVIGATOR.well.count").result, 0);
    EXPECT_EQ(Get("TNAVIGATOR.WELL.$Count").result, 1);

    for (const char* unreached : {"TNAVIGATOR.WELL[{p1}].GasRate", "TNAVIGATOR.Well[7].GasRate"}) {
        const Answer answer = Get(unreached);
        EXPECT_EQ(answer.result, 1) << unreached;
        EXPECT_EQ(answer.message, "") << unreached;
    }
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "1").result, 0);
    EXPECT_EQ(wells.At(1)->name, "P2");
    // Before the start a well's error is put as the case-only rule; once started it is told as it is.
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "9").message,
              "Error: Only CaseDetails can be edited when the simulator is not running.");
    ExtModelProbe::InstallSession(model_).started = true;
    EXPECT_EQ(Set("TNAVIGATOR.Well.Delete", "9").message,
              "Attempting to remove an object at an invalid index");
    EXPECT_EQ(wells.Count(), 2u);
}

TEST_F(AccessRouting, FieldTotalsAndRunTimes) {
    AddWells();
    ExtModelProbe::SetFieldTotal(model_, kOilProductionTotal, 1250.5);
    EXPECT_EQ(Get("TNAVIGATOR.FIELD.OilProductionTotal").value, "1250.5");
    EXPECT_EQ(Get("TNAVIGATOR.Field.GasInjectionRate").value, "0");
    EXPECT_EQ(Get("TNAVIGATOR.field.OilProductionTotal").result, 1);  // only "Field" and "FIELD" lead there

    ExtModelProbe::SetDates(model_, OleDate::FromCalendar({2015, 1, 1}),
                            OleDate::FromCalendar({2014, 12, 1}));
    EXPECT_EQ(Get("TNAVIGATOR.FIELD.RunStartDate").value, "01 Jan 2015");
    EXPECT_EQ(Get("TNAVIGATOR.CurrentSimTime").value, "0");
    ExtModelProbe::SetDates(model_, OleDate::FromCalendar({2015, 1, 1}), OleDate::FromCalendar({2015, 3, 2}));
    EXPECT_EQ(Get("TNAVIGATOR.CURRENTSIMTIME").value, "60");
    EXPECT_EQ(Set("TNAVIGATOR.FIELD.OilProductionTotal", "1").result, 1);
}

TEST_F(AccessRouting, RunToTimeChecksItsArgumentsAndSteps) {
    struct Case {
        const char* command;
        std::int32_t result;
        const char* message;
    };
    for (const Case& c : {Case{"TNAVIGATOR.RunToTime", 1, "Bad argument"},
                          Case{"TNAVIGATOR.RunToTime()", 1, "Bad number of arguments"},
                          Case{"TNAVIGATOR.RunToTime(1,2)", 1, "Bad number of arguments"},
                          Case{"TNAVIGATOR.RunToTime(1", 1, "Syntax error"}, Case{"TNAVIGATOR.Stop()", 0, ""},
                          Case{"Other.RunToTime(1)", 1, ""},
                          Case{"tnavigator.runtotime({abc})", 1,
                               "Timestep() called when the simulation process is not running."}}) {
        const Answer answer = Command(c.command);
        EXPECT_EQ(answer.result, c.result) << c.command;
        EXPECT_EQ(answer.message, c.message) << c.command;
    }
    tErrorRecord err{};
    EXPECT_EQ(model_.DoCmd(nullptr, &err), 1);
    EXPECT_STREQ(err.szText, "A null data item was provided to DoCmd().");
}

}  // namespace
}  // namespace rivulet
