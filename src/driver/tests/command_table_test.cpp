// The command table sends each id to its operation with the right arguments, and answers 0 for the rest.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/CommandTable.h"
#include "driver/ExtModel.h"

namespace rivulet {
namespace {

// A model that records which operation a command reached and with what.
class RecordingModel : public CExtModel {
  public:
    struct Call {
        std::string name;
        std::uint64_t window = 0;
        const void* argument = nullptr;
        std::int64_t count = -1;
        const tErrorRecord* err = nullptr;
    };
    std::vector<Call> calls;

    std::int32_t Record(const char* name, const void* arg, std::int64_t count, tErrorRecord* err,
                        std::uint64_t window = 0) {
        calls.push_back({name, window, arg, count, err});
        return 42;
    }

    std::int32_t EditCase(HostWindow w, std::int32_t* m, tErrorRecord* e) override {
        return Record("EditCase", m, -1, e, w);
    }
    std::int32_t QueryReserved(std::uint32_t c, tErrorRecord* e) override {
        return Record("QueryReserved", nullptr, c, e);
    }
    std::int32_t Query(tQueryData* d, std::uint32_t r, tErrorRecord* e) override {
        return Record("Query", d, r, e);
    }
    std::int32_t QueryComp(tCompositionData* d, tErrorRecord* e) override {
        return Record("QueryComp", d, -1, e);
    }
    std::int32_t Initialise(tInitData* d, tErrorRecord* e) override { return Record("Initialise", d, -1, e); }
    std::int32_t Timestep(tTimestepData* d, tErrorRecord* e) override { return Record("Timestep", d, -1, e); }
    std::int32_t Reserved8(tErrorRecord* e) override { return Record("Reserved8", nullptr, -1, e); }
    std::int32_t GetIPR(_tGetSetData* d, tErrorRecord* e) override { return Record("GetIPR", d, -1, e); }
    std::int32_t SetOpPt(_tGetSetData* d, tErrorRecord* e) override { return Record("SetOpPt", d, -1, e); }
    std::int32_t StopSimulator(tErrorRecord* e) override { return Record("StopSimulator", nullptr, -1, e); }
    std::int32_t Stop() override { return Record("Stop", nullptr, -1, nullptr); }
    std::int32_t SaveModelString(char* b, std::int32_t s, tErrorRecord* e) override {
        return Record("SaveModelString", b, s, e);
    }
    std::int32_t LoadModelString(tLoadModelData* d, tErrorRecord* e) override {
        return Record("LoadModelString", d, -1, e);
    }
    std::int32_t SetTopLevelFile(tTopLevelFile* d, tErrorRecord* e) override {
        return Record("SetTopLevelFile", d, -1, e);
    }
    std::int32_t StartSimulator(tStartData* d, tErrorRecord* e) override {
        return Record("StartSimulator", d, -1, e);
    }
    std::int32_t DrawIcon(HostWindow w, void* s) override { return Record("DrawIcon", s, -1, nullptr, w); }
    std::int32_t GetVar(tGetVarData* d, tErrorRecord* e) override { return Record("GetVar", d, -1, e); }
    std::int32_t SetVar(tSetVarData* d, tErrorRecord* e) override { return Record("SetVar", d, -1, e); }
    std::int32_t DoCmd(const char* c, tErrorRecord* e) override { return Record("DoCmd", c, -1, e); }
    std::int32_t DoGetExtraNodeResults(tExtraNodeResult* d, tErrorRecord* e) override {
        return Record("DoGetExtraNodeResults", d, -1, e);
    }
    std::int32_t Reserved30(tErrorRecord* e) override { return Record("Reserved30", nullptr, -1, e); }
    std::int32_t SaveToArchiveFile(void* a, std::uint32_t c, tErrorRecord* e) override {
        return Record("SaveToArchiveFile", a, c, e);
    }
    std::int32_t LoadFromArchiveFile(void* a, std::uint32_t c, tErrorRecord* e) override {
        return Record("LoadFromArchiveFile", a, c, e);
    }
    std::int32_t SetCaseDirectory(const char* d, tErrorRecord* e) override {
        return Record("SetCaseDirectory", d, -1, e);
    }
    std::int32_t GetStartDate(tDate* d, tErrorRecord* e) override { return Record("GetStartDate", d, -1, e); }
    std::int32_t GetNextEvent(tDate* d, tErrorRecord* e) override { return Record("GetNextEvent", d, -1, e); }
    std::int32_t Reserved37(void* a, bool f, tErrorRecord* e) override {
        return Record("Reserved37", a, f, e);
    }
    std::int32_t Reserved38(tErrorRecord* e) override { return Record("Reserved38", nullptr, -1, e); }
    std::int32_t QueryCompByStream(tCompositionData* d, std::int32_t w, tErrorRecord* e) override {
        return Record("QueryCompByStream", d, w, e);
    }
    std::int32_t SetArchiveFile(const char* p, bool l, tErrorRecord* e) override {
        return Record("SetArchiveFile", p, l, e);
    }
    std::int32_t SetConnection(tSetConnectionData* d, tErrorRecord* e) override {
        return Record("SetConnection", d, -1, e);
    }
    std::int32_t GetModMsg(char* b, std::int32_t l, tErrorRecord* e) override {
        return Record("GetModMsg", b, l, e);
    }
    std::int32_t ImportComposition(HostWindow w, void* d, bool f, tErrorRecord* e) override {
        return Record("ImportComposition", d, f, e, w);
    }
    std::int32_t Reserved75(void* a, tErrorRecord* e) override { return Record("Reserved75", a, -1, e); }
    std::int32_t GetFileListEntry(tFileListEntry* d, std::uint32_t c, tErrorRecord* e) override {
        return Record("GetFileListEntry", d, c, e);
    }
};

struct Row {
    std::uint32_t id;
    const char* operation;
    bool passesCount;  // the integer reaches the operation (as it is, or as a bool)
    bool passesErr;
};

// Every id of the table with the operation it reaches.
const Row kTable[] = {
    {2, "Query", true, true},
    {3, "QueryReserved", true, true},
    {4, "Reserved30", false, true},
    {5, "EditCase", false, true},
    {7, "DrawIcon", false, false},
    {9, "QueryComp", false, true},
    {10, "SetCaseDirectory", false, true},
    {11, "GetStartDate", false, true},
    {12, "SaveModelString", true, true},
    {13, "LoadModelString", false, true},
    {14, "SaveToArchiveFile", true, true},
    {15, "LoadFromArchiveFile", true, true},
    {16, "GetFileListEntry", true, true},
    {18, "QueryCompByStream", true, true},
    {19, "SetConnection", false, true},
    {20, "SetArchiveFile", true, true},
    {23, "StartSimulator", false, true},
    {48, "Initialise", false, true},
    {49, "Timestep", false, true},
    {50, "GetIPR", false, true},
    {53, "SetOpPt", false, true},
    {55, "StopSimulator", false, true},
    {56, "Stop", false, false},
    {58, "DoGetExtraNodeResults", false, true},
    {60, "Reserved8", false, true},
    {62, "GetNextEvent", false, true},
    {63, "Reserved37", true, true},
    {96, "GetVar", false, true},
    {97, "SetVar", false, true},
    {98, "DoCmd", false, true},
    {100, "Reserved38", false, true},
    {102, "Reserved75", false, true},
    {129, "GetModMsg", true, true},
    {130, "ImportComposition", true, true},
    {136, "SetTopLevelFile", false, true},
};

TEST(CommandTable, EachListedIdReachesItsOperationWithItsArguments) {
    for (const Row& row : kTable) {
        RecordingModel model;
        char argument[16] = {};
        tErrorRecord err{};
        const std::int32_t result =
            DispatchCommand(model, 0x77, row.id, reinterpret_cast<std::uintptr_t>(argument), 9, &err);
        ASSERT_EQ(model.calls.size(), 1u) << "command " << row.id;
        const auto& call = model.calls[0];
        EXPECT_EQ(call.name, row.operation) << "command " << row.id;
        EXPECT_EQ(result, 42) << "command " << row.id;
        if (row.passesErr) {
            EXPECT_EQ(call.err, &err) << "command " << row.id;
        }
        if (row.passesCount) {
            EXPECT_TRUE(call.count == 9 || call.count == 1) << "command " << row.id;
        }
        const bool takesArgument =
            row.id != 3 && row.id != 4 && row.id != 55 && row.id != 56 && row.id != 60 && row.id != 100;
        if (takesArgument) {
            EXPECT_EQ(call.argument, argument) << "command " << row.id;
        }
    }
}

TEST(CommandTable, WindowReachesOnlyTheDialogIconAndImportCommands) {
    for (const std::uint32_t id : {5u, 7u, 130u}) {
        RecordingModel model;
        DispatchCommand(model, 0xABCDEF, id, 0, 0, nullptr);
        ASSERT_EQ(model.calls.size(), 1u);
        EXPECT_EQ(model.calls[0].window, 0xABCDEFu) << "command " << id;
    }
}

TEST(CommandTable, CountBecomesABoolByUnsignedComparison) {
    RecordingModel model;
    DispatchCommand(model, 0, 20, 0, 0xFFFFFFFFu, nullptr);  // "-1" from the host is a large unsigned value
    DispatchCommand(model, 0, 20, 0, 0, nullptr);
    DispatchCommand(model, 0, 63, 0, 0x80000000u, nullptr);
    ASSERT_EQ(model.calls.size(), 3u);
    EXPECT_EQ(model.calls[0].count, 1);
    EXPECT_EQ(model.calls[1].count, 0);
    EXPECT_EQ(model.calls[2].count, 1);
}

TEST(CommandTable, CommandNinetyNineAnswersMinusOneWithoutTheModel) {
    RecordingModel model;
    EXPECT_EQ(DispatchCommand(model, 0, 99, 0, 0, nullptr), -1);
    EXPECT_TRUE(model.calls.empty());
}

TEST(CommandTable, SetAliasAndTheViewCommandsAreNotOperationsOfTheInterface) {
    RecordingModel model;
    const char alias[] = "  North field  ";
    EXPECT_EQ(DispatchCommand(model, 0, 21, reinterpret_cast<std::uintptr_t>(alias), 0, nullptr), 0);
    EXPECT_EQ(model.GetAlias(), "North field");
    EXPECT_EQ(DispatchCommand(model, 0, 4096, 0, 0, nullptr), 1);  // no case yet
    EXPECT_EQ(DispatchCommand(model, 0, 4097, 0, 0, nullptr), 1);
    EXPECT_TRUE(model.calls.empty());
}

}  // namespace
}  // namespace rivulet
