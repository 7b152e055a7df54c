// The command table sends each id to its operation with the right arguments, and answers 0 for the rest.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "driver/CommandTable.h"
#include "driver/ExtModel.h"

namespace rivulet {
namespace {

using I32 = std::int32_t;
using U32 = std::uint32_t;
using Err = tErrorRecord;

// A model that records which operation a command reached and with what; each operation answers 42.
class RecordingModel : public CExtModel {
  public:
    struct Call {
        std::string name;
        HostWindow window;
        const void* argument;
        std::int64_t count;  // -1: the operation takes none
        const Err* err;
    };
    std::vector<Call> calls;

    I32 Record(const char* name, const void* arg, std::int64_t count, Err* err, HostWindow window = 0) {
        calls.push_back({name, window, arg, count, err});
        return 42;
    }

    I32 EditCase(HostWindow w, I32* m, Err* e) override { return Record("EditCase", m, -1, e, w); }
    I32 QueryReserved(U32 c, Err* e) override { return Record("QueryReserved", nullptr, c, e); }
    I32 Query(tQueryData* d, U32 r, Err* e) override { return Record("Query", d, r, e); }
    I32 QueryComp(tCompositionData* d, Err* e) override { return Record("QueryComp", d, -1, e); }
    I32 Initialise(tInitData* d, Err* e) override { return Record("Initialise", d, -1, e); }
    I32 Timestep(tTimestepData* d, Err* e) override { return Record("Timestep", d, -1, e); }
    I32 Reserved8(Err* e) override { return Record("Reserved8", nullptr, -1, e); }
    I32 GetIPR(_tGetSetData* d, Err* e) override { return Record("GetIPR", d, -1, e); }
    I32 SetOpPt(_tGetSetData* d, Err* e) override { return Record("SetOpPt", d, -1, e); }
    I32 StopSimulator(Err* e) override { return Record("StopSimulator", nullptr, -1, e); }
    I32 Stop() override { return Record("Stop", nullptr, -1, nullptr); }
    I32 SaveModelString(char* b, I32 s, Err* e) override { return Record("SaveModelString", b, s, e); }
    I32 LoadModelString(tLoadModelData* d, Err* e) override { return Record("LoadModelString", d, -1, e); }
    I32 SetTopLevelFile(tTopLevelFile* d, Err* e) override { return Record("SetTopLevelFile", d, -1, e); }
    I32 StartSimulator(tStartData* d, Err* e) override { return Record("StartSimulator", d, -1, e); }
    I32 DrawIcon(HostWindow w, void* s) override { return Record("DrawIcon", s, -1, nullptr, w); }
    I32 GetVar(tGetVarData* d, Err* e) override { return Record("GetVar", d, -1, e); }
    I32 SetVar(tSetVarData* d, Err* e) override { return Record("SetVar", d, -1, e); }
    I32 DoCmd(const char* c, Err* e) override { return Record("DoCmd", c, -1, e); }
    I32 DoGetExtraNodeResults(tExtraNodeResult* d, Err* e) override {
        return Record("DoGetExtraNodeResults", d, -1, e);
    }
    I32 Reserved30(Err* e) override { return Record("Reserved30", nullptr, -1, e); }
    I32 SaveToArchiveFile(void* a, U32 c, Err* e) override { return Record("SaveToArchiveFile", a, c, e); }
    I32 LoadFromArchiveFile(void* a, U32 c, Err* e) override {
        return Record("LoadFromArchiveFile", a, c, e);
    }
    I32 SetCaseDirectory(const char* d, Err* e) override { return Record("SetCaseDirectory", d, -1, e); }
    I32 GetStartDate(tDate* d, Err* e) override { return Record("GetStartDate", d, -1, e); }
    I32 GetNextEvent(tDate* d, Err* e) override { return Record("GetNextEvent", d, -1, e); }
    I32 Reserved37(void* a, bool f, Err* e) override { return Record("Reserved37", a, f, e); }
    I32 Reserved38(Err* e) override { return Record("Reserved38", nullptr, -1, e); }
    I32 QueryCompByStream(tCompositionData* d, I32 w, Err* e) override {
        return Record("QueryCompByStream", d, w, e);
    }
    I32 SetArchiveFile(const char* p, bool l, Err* e) override { return Record("SetArchiveFile", p, l, e); }
    I32 SetConnection(tSetConnectionData* d, Err* e) override { return Record("SetConnection", d, -1, e); }
    I32 GetModMsg(char* b, I32 l, Err* e) override { return Record("GetModMsg", b, l, e); }
    I32 ImportComposition(HostWindow w, void* d, bool f, Err* e) override {
        return Record("ImportComposition", d, f, e, w);
    }
    I32 Reserved75(void* a, Err* e) override { return Record("Reserved75", a, -1, e); }
    I32 GetFileListEntry(tFileListEntry* d, U32 c, Err* e) override {
        return Record("GetFileListEntry", d, c, e);
    }
};

// What reaches the operation besides the model.
enum Passes { kErr = 1, kArg = 2, kWindow = 4 };
// The count the operation sees when the host passes 0x80000000: none, as a bool, unsigned or signed.
constexpr std::int64_t kNone = -1, kBool = 1, kUnsigned = 0x80000000, kSigned = -kUnsigned;

struct Row {
    std::uint32_t id;
    const char* operation;
    int passes;
    std::int64_t count;
};

// Every id of the table with the operation it reaches.
const Row kTable[] = {
    {2, "Query", kArg | kErr, kUnsigned},
    {3, "QueryReserved", kErr, kUnsigned},
    {4, "Reserved30", kErr, kNone},
    {5, "EditCase", kWindow | kArg | kErr, kNone},
    {7, "DrawIcon", kWindow | kArg, kNone},
    {9, "QueryComp", kArg | kErr, kNone},
    {10, "SetCaseDirectory", kArg | kErr, kNone},
    {11, "GetStartDate", kArg | kErr, kNone},
    {12, "SaveModelString", kArg | kErr, kSigned},
    {13, "LoadModelString", kArg | kErr, kNone},
    {14, "SaveToArchiveFile", kArg | kErr, kUnsigned},
    {15, "LoadFromArchiveFile", kArg | kErr, kUnsigned},
    {16, "GetFileListEntry", kArg | kErr, kUnsigned},
    {18, "QueryCompByStream", kArg | kErr, kSigned},
    {19, "SetConnection", kArg | kErr, kNone},
    {20, "SetArchiveFile", kArg | kErr, kBool},
    {23, "StartSimulator", kArg | kErr, kNone},
    {48, "Initialise", kArg | kErr, kNone},
    {49, "Timestep", kArg | kErr, kNone},
    {50, "GetIPR", kArg | kErr, kNone},
    {53, "SetOpPt", kArg | kErr, kNone},
    {55, "StopSimulator", kErr, kNone},
    {56, "Stop", 0, kNone},
    {58, "DoGetExtraNodeResults", kArg | kErr, kNone},
    {60, "Reserved8", kErr, kNone},
    {62, "GetNextEvent", kArg | kErr, kNone},
    {63, "Reserved37", kArg | kErr, kBool},
    {96, "GetVar", kArg | kErr, kNone},
    {97, "SetVar", kArg | kErr, kNone},
    {98, "DoCmd", kArg | kErr, kNone},
    {100, "Reserved38", kErr, kNone},
    {102, "Reserved75", kArg | kErr, kNone},
    {129, "GetModMsg", kArg | kErr, kSigned},
    {130, "ImportComposition", kWindow | kArg | kErr, kBool},
    {136, "SetTopLevelFile", kArg | kErr, kNone},
};

TEST(CommandTable, EachListedIdReachesItsOperationWithItsArguments) {
    constexpr HostWindow window = 0x1234567890;
    for (const Row& row : kTable) {
        for (const std::uint32_t count : {0x80000000u, 0u}) {
            SCOPED_TRACE(testing::Message() << "command " << row.id << " count " << count);
            RecordingModel model;
            char argument[16] = {};
            tErrorRecord err{};
            EXPECT_EQ(DispatchCommand(model, window, row.id, reinterpret_cast<std::uintptr_t>(argument),
                                      count, &err),
                      42);
            ASSERT_EQ(model.calls.size(), 1u);
            const RecordingModel::Call& call = model.calls[0];
            EXPECT_EQ(call.name, row.operation);
            EXPECT_EQ(call.argument, row.passes & kArg ? argument : nullptr);
            EXPECT_EQ(call.window, row.passes & kWindow ? window : 0);
            EXPECT_EQ(call.err, row.passes & kErr ? &err : nullptr);
            EXPECT_EQ(call.count, count == 0 && row.count != kNone ? 0 : row.count);
        }
    }
}

TEST(CommandTable, OtherIdsReachNoOperation) {
    RecordingModel model;
    const char alias[] = "  North field  ";
    EXPECT_EQ(DispatchCommand(model, 0, 99, 0, 0, nullptr), -1);
    EXPECT_EQ(DispatchCommand(model, 0, 21, reinterpret_cast<std::uintptr_t>(alias), 0, nullptr), 0);
    EXPECT_EQ(model.GetAlias(), "North field");
    EXPECT_EQ(DispatchCommand(model, 0, 4096, 0, 0, nullptr), 1);  // view commands, with no case yet
    EXPECT_EQ(DispatchCommand(model, 0, 4097, 0, 0, nullptr), 1);
    for (std::uint32_t id = 0; id < 4200; ++id) {  // an unlisted id answers 0
        const auto listed = [id](const Row& row) { return row.id == id; };
        if (id != 21 && id != 99 && id != 4096 && id != 4097 &&
            std::none_of(std::begin(kTable), std::end(kTable), listed)) {
            EXPECT_EQ(DispatchCommand(model, 0, id, 0, 0, nullptr), 0) << id;
        }
    }
    EXPECT_EQ(DispatchCommand(model, 0, 0xFFFFFFFF, 0, 0, nullptr), 0);
    EXPECT_TRUE(model.calls.empty());
}

}  // namespace
}  // namespace rivulet
