// The plug-in's boundary: the command table, the base answers of unused positions, the error record and the
// application's record of live instances.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "driver/CommandTable.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"

namespace rivulet {
namespace {

using I32 = std::int32_t;
using U32 = std::uint32_t;
using Err = tErrorRecord;

// What the host passed to the command.
struct HostCall {
    HostWindow window;
    const void* argument;
    std::uint32_t count;
    const Err* err;
};

// A model whose every operation records the id of the command that should reach it, and whether each
// parameter it takes is what the host passed (a count as seen through the parameter's type); each answers 42.
class RecordingModel : public CExtModel {
  public:
    HostCall host{};
    std::vector<std::pair<std::uint32_t, bool>> reached;

    I32 Rec(std::uint32_t id, bool passed) {
        reached.emplace_back(id, passed);
        return 42;
    }
    bool W(HostWindow w) const { return w == host.window; }
    bool A(const void* a) const { return a == host.argument; }
    bool E(const Err* e) const { return e == host.err; }
    bool C(auto c) const { return c == static_cast<decltype(c)>(host.count); }

    I32 Query(tQueryData* d, U32 r, Err* e) override { return Rec(2, A(d) && C(r) && E(e)); }
    I32 QueryReserved(U32 c, Err* e) override { return Rec(3, C(c) && E(e)); }
    I32 Reserved30(Err* e) override { return Rec(4, E(e)); }
    I32 EditCase(HostWindow w, I32* m, Err* e) override { return Rec(5, W(w) && A(m) && E(e)); }
    I32 DrawIcon(HostWindow w, void* s) override { return Rec(7, W(w) && A(s)); }
    I32 QueryComp(tCompositionData* d, Err* e) override { return Rec(9, A(d) && E(e)); }
    I32 SetCaseDirectory(const char* d, Err* e) override { return Rec(10, A(d) && E(e)); }
    I32 GetStartDate(tDate* d, Err* e) override { return Rec(11, A(d) && E(e)); }
    I32 SaveModelString(char* b, I32 s, Err* e) override { return Rec(12, A(b) && C(s) && E(e)); }
    I32 LoadModelString(tLoadModelData* d, Err* e) override { return Rec(13, A(d) && E(e)); }
    I32 SaveToArchiveFile(void* a, U32 c, Err* e) override { return Rec(14, A(a) && C(c) && E(e)); }
    I32 LoadFromArchiveFile(void* a, U32 c, Err* e) override { return Rec(15, A(a) && C(c) && E(e)); }
    I32 GetFileListEntry(tFileListEntry* d, U32 c, Err* e) override { return Rec(16, A(d) && C(c) && E(e)); }
    I32 QueryCompByStream(tCompositionData* d, I32 w, Err* e) override {
        return Rec(18, A(d) && C(w) && E(e));
    }
    I32 SetConnection(tSetConnectionData* d, Err* e) override { return Rec(19, A(d) && E(e)); }
    I32 SetArchiveFile(const char* p, bool l, Err* e) override { return Rec(20, A(p) && C(l) && E(e)); }
    I32 StartSimulator(tStartData* d, Err* e) override { return Rec(23, A(d) && E(e)); }
    I32 Initialise(tInitData* d, Err* e) override { return Rec(48, A(d) && E(e)); }
    I32 Timestep(tTimestepData* d, Err* e) override { return Rec(49, A(d) && E(e)); }
    I32 GetIPR(_tGetSetData* d, Err* e) override { return Rec(50, A(d) && E(e)); }
    I32 SetOpPt(_tGetSetData* d, Err* e) override { return Rec(53, A(d) && E(e)); }
    I32 StopSimulator(Err* e) override { return Rec(55, E(e)); }
    I32 Stop() override { return Rec(56, true); }
    I32 DoGetExtraNodeResults(tExtraNodeResult* d, Err* e) override { return Rec(58, A(d) && E(e)); }
    I32 Reserved8(Err* e) override { return Rec(60, E(e)); }
    I32 GetNextEvent(tDate* d, Err* e) override { return Rec(62, A(d) && E(e)); }
    I32 Reserved37(void* a, bool f, Err* e) override { return Rec(63, A(a) && C(f) && E(e)); }
    I32 GetVar(tGetVarData* d, Err* e) override { return Rec(96, A(d) && E(e)); }
    I32 SetVar(tSetVarData* d, Err* e) override { return Rec(97, A(d) && E(e)); }
    I32 DoCmd(const char* c, Err* e) override { return Rec(98, A(c) && E(e)); }
    I32 Reserved38(Err* e) override { return Rec(100, E(e)); }
    I32 Reserved75(void* a, Err* e) override { return Rec(102, A(a) && E(e)); }
    I32 GetModMsg(char* b, I32 l, Err* e) override { return Rec(129, A(b) && C(l) && E(e)); }
    I32 ImportComposition(HostWindow w, void* d, bool f, Err* e) override {
        return Rec(130, W(w) && A(d) && C(f) && E(e));
    }
    I32 SetTopLevelFile(tTopLevelFile* d, Err* e) override { return Rec(136, A(d) && E(e)); }
};

const std::uint32_t kListed[] = {2,  3,  4,  5,  7,  9,  10, 11, 12, 13, 14, 15, 16,  18,  19,  20,  23, 48,
                                 49, 50, 53, 55, 56, 58, 60, 62, 63, 96, 97, 98, 100, 102, 129, 130, 136};

TEST(CommandTable, EachListedIdReachesItsOperationWithWhatTheHostPassed) {
    for (const std::uint32_t id : kListed) {
        for (const std::uint32_t count : {0x80000000u, 0u}) {
            SCOPED_TRACE(testing::Message() << "command " << id << " count " << count);
            RecordingModel model;
            char argument[16] = {};
            tErrorRecord err{};
            model.host = {0x1234567890, argument, count, &err};
            EXPECT_EQ(DispatchCommand(model, model.host.window, id,
                                      reinterpret_cast<std::uintptr_t>(argument), count, &err),
                      42);
            EXPECT_EQ(model.reached, (std::vector<std::pair<std::uint32_t, bool>>{{id, true}}));
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
        if (id != 21 && id != 99 && id != 4096 && id != 4097 &&
            std::find(std::begin(kListed), std::end(kListed), id) == std::end(kListed)) {
            EXPECT_EQ(DispatchCommand(model, 0, id, 0, 0, nullptr), 0) << id;
        }
    }
    EXPECT_EQ(DispatchCommand(model, 0, 0xFFFFFFFF, 0, 0, nullptr), 0);
    EXPECT_TRUE(model.reached.empty());
}

TEST(CExtInterface, UnusedPositionsKeepTheirBaseAnswers) {
    CExtModel model;
    CExtInterface& base = model;
    unsigned char record[64];
    std::memset(record, 0xAB, sizeof(record));
    EXPECT_EQ(base.Reserved22(record, nullptr), -1);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(record[i], (i >= 16 && i < 24) ? 0 : 0xAB) << "byte " << i;
    EXPECT_EQ(base.Reserved23(), -1);
    EXPECT_EQ(base.Reserved26(), -1);
    EXPECT_EQ(base.Reserved7(), 0);
}

// An error record between guard bytes, to catch a write outside its 264 bytes.
struct Guarded {
    unsigned char before[16];
    tErrorRecord record;
    unsigned char after[16];
    Guarded() { std::memset(this, 0xEE, sizeof(*this)); }
    bool GuardsIntact() const {
        return std::count(before, before + 16, 0xEE) + std::count(after, after + 16, 0xEE) == 32;
    }
};

TEST(ErrorRecord, ClearingZeroesAllBytesAndTextsAreCutTo255CharactersInsideTheRecord) {
    Guarded g;
    WriteText(&g.record, std::string(300, 'x') + "%s%n");
    EXPECT_EQ(std::string(g.record.szText), std::string(255, 'x'));
    EXPECT_EQ(g.record.iCode, static_cast<std::int32_t>(0xEEEEEEEE));  // offset 0 is never written
    WriteFormat(&g.record, "could not load <%s>", std::string(1000, 'p').c_str());
    EXPECT_EQ(std::string(g.record.szText), "could not load <" + std::string(255 - 16, 'p'));
    EXPECT_TRUE(g.GuardsIntact());
    WriteText(&g.record, "100% sure: %d %s");  // format characters are text, not directives
    EXPECT_STREQ(g.record.szText, "100% sure: %d %s");

    ClearRecord(&g.record);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&g.record);
    EXPECT_TRUE(std::all_of(bytes, bytes + sizeof(tErrorRecord), [](unsigned char b) { return b == 0; }));
    EXPECT_TRUE(g.GuardsIntact());
    ClearRecord(nullptr);  // a null record is never written
    WriteText(nullptr, "text");
    WriteFormat(nullptr, "%d", 1);
    WriteCallbackText(nullptr, "text");

    char callback[300];  // a callback's buffer holds the text from its first byte
    std::memset(callback, 0xEE, sizeof(callback));
    WriteCallbackText(callback, std::string(400, 'c'));
    EXPECT_EQ(std::string(callback), std::string(255, 'c'));
    EXPECT_EQ(static_cast<unsigned char>(callback[256]), 0xEE);
}

TEST(CRivuletApp, RegistersEachLiveInstanceOnce) {
    CRivuletApp app;
    CExtModel a, b;
    EXPECT_FALSE(app.RegisterInstance(nullptr));
    EXPECT_TRUE(app.RegisterInstance(&a));
    EXPECT_TRUE(app.RegisterInstance(&b));
    EXPECT_FALSE(app.RegisterInstance(&a));  // a duplicate is refused without effect
    EXPECT_EQ(app.InstanceCount(), 2u);
    app.UnregisterInstance(&b);
    app.UnregisterInstance(&b);  // removing an absent instance has no effect
    EXPECT_TRUE(app.IsRegistered(&a));
    EXPECT_FALSE(app.IsRegistered(&b));
    EXPECT_EQ(app.InstanceCount(), 1u);
}

}  // namespace
}  // namespace rivulet
