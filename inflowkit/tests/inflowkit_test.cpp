#include "inflowkit/InflowKit.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Model = std::unique_ptr<void, void (*)(void*)>;

Model newModel(void* context = nullptr) {
    return {CreateIPRModel(context), DestroyIPRModel};
}

// Anonymous temporary file holding `bytes`, positioned at its start.
struct TempFile {
    explicit TempFile(const Bytes& bytes = {}) : stream(std::tmpfile()), fd(::fileno(stream)) {
        EXPECT_EQ(::pwrite(fd, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }
    ~TempFile() { std::fclose(stream); }
    void* file() const { return reinterpret_cast<void*>(static_cast<intptr_t>(fd)); }
    std::FILE* stream;
    int fd;
};

Bytes savedBlock(const Model& model) {
    TempFile tmp;
    EXPECT_EQ(SaveIPR(model.get(), tmp.file()), 0);
    Bytes bytes(static_cast<std::size_t>(::lseek(tmp.fd, 0, SEEK_END)));
    EXPECT_EQ(::pread(tmp.fd, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    return bytes;
}

int32_t loadBytes(const Model& model, const Bytes& bytes) {
    return LoadIPR(model.get(), TempFile(bytes).file());
}

// Builds a block the way the library lays it out, independently of its own writer; `junk` ends the payload.
Bytes blockWithFactors(const std::vector<std::pair<std::string, double>>& factors, const Bytes& junk = {}) {
    Bytes block = {'I', 'K', 'C', 'F', 1, 0, 0, 0, 0, 0, 0, 0};
    auto put = [&block](uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) block.push_back(static_cast<unsigned char>(v >> (8 * i)));
    };
    put(factors.size(), 4);
    for (const auto& [name, factor] : factors) {
        put(name.size(), 4);
        block.insert(block.end(), name.begin(), name.end());
        put(std::bit_cast<uint64_t>(factor), 8);
    }
    block.insert(block.end(), junk.begin(), junk.end());
    const std::size_t payload = block.size() - 12;
    for (int i = 0; i < 4; ++i) block[8 + i] = static_cast<unsigned char>(payload >> (8 * i));
    uint32_t hash = 2166136261u;
    for (unsigned char b : block) hash = (hash ^ b) * 16777619u;
    put(hash, 4);
    return block;
}

// Distinct bodies, so no two callbacks can share an address.
const IPRElapsedTimeCallback kElapsed = [](void*) { return 1.0; };
const IPRInitialiseForSimCalcCallback kInitialise = [](void*, char*) { return 2; };
const IPRSetWellCtrlForSimCalcCallback kSetWellCtrl = [](void*, int32_t, double, char*) { return 3; };
const IPRRunToForSimCalcCallback kRunTo = [](void*, double, char*) { return 4; };
const IPRGetWellBlockIPRForSimCalcCallback kBlockIpr = [](void*, int32_t, _tGetSetData*, char*) { return 5; };
const IPRGetWellRatesForSimCalcCallback kWellRates = [](void*, int32_t, _tGetSetData*, char*) { return 6; };

}  // namespace

TEST(InflowKitModel, KeepsWhatItIsGivenAndCalculatesNothingYet) {
    int context = 0;
    const Model m = newModel(&context);
    EXPECT_EQ(InflowKitInspectContext(m.get()), &context);
    SetIPRCallbacks(m.get(), kElapsed, kInitialise, kSetWellCtrl, kRunTo, kBlockIpr, kWellRates);
    auto got = std::make_tuple(IPRElapsedTimeCallback{}, IPRInitialiseForSimCalcCallback{},
                               IPRSetWellCtrlForSimCalcCallback{}, IPRRunToForSimCalcCallback{},
                               IPRGetWellBlockIPRForSimCalcCallback{}, IPRGetWellRatesForSimCalcCallback{});
    auto& [e, i, s, r, b, w] = got;
    ASSERT_EQ(InflowKitInspectCallbacks(m.get(), &e, &i, &s, &r, &b, &w), 1);
    EXPECT_EQ(got, std::make_tuple(kElapsed, kInitialise, kSetWellCtrl, kRunTo, kBlockIpr, kWellRates));

    EXPECT_EQ(InflowKitInspectWellListState(m.get()), 0);
    StartIPRAddWell(m.get());
    AddIPRWell(m.get(), 0, "P1", true, true);
    EndIPRAddWell(m.get());
    StartIPRAddWell(m.get());  // drops P1
    EXPECT_EQ(InflowKitInspectWellListState(m.get()), 1);
    AddIPRWell(m.get(), 7, "G2", true, false);
    AddIPRWell(m.get(), 3, nullptr, false, true);
    EndIPRAddWell(m.get());
    EXPECT_EQ(InflowKitInspectWellListState(m.get()), 2);
    ASSERT_EQ(InflowKitInspectWellCount(m.get()), 2);
    int32_t index = -1;
    const char* name = nullptr;
    bool producer = false, liquid = true;
    ASSERT_EQ(InflowKitInspectWell(m.get(), 0, &index, &name, &producer, &liquid), 1);
    EXPECT_EQ(std::tuple(index, std::string(name), producer, liquid), std::tuple(7, "G2", true, false));
    ASSERT_EQ(InflowKitInspectWell(m.get(), 1, &index, &name, &producer, &liquid), 1);
    EXPECT_EQ(std::tuple(index, std::string(name), producer, liquid), std::tuple(3, "", false, true));
    EXPECT_EQ(InflowKitInspectWell(m.get(), 2, &index, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(InflowKitInspectWell(m.get(), -1, &index, nullptr, nullptr, nullptr), 0);

    const Bytes block = blockWithFactors({{"G2", 0.85}});
    ASSERT_EQ(loadBytes(m, block), 0);
    EXPECT_NE(SetupIPR(0, m.get()), 0);
    EXPECT_EQ(HasDoneScalingCalculation(m.get()), 0);
    EXPECT_EQ(InflowKitInspectWellCount(m.get()), 2);
    EXPECT_EQ(savedBlock(m), block);
    const Bytes present(105368, 0x11);
    Bytes table(105368, 0x22);
    EXPECT_EQ(TransformIPR(m.get(), "G2", reinterpret_cast<const _tGetSetData*>(present.data()),
                           reinterpret_cast<_tGetSetData*>(table.data())),
              0);
    EXPECT_EQ(table, Bytes(105368, 0x22));
}

TEST(InflowKitBlock, SaveAndLoadWorkAtTheFilePositionAndLoadReplacesTheFactors) {
    const Bytes block = blockWithFactors({{"P1", 0.85}, {"WELL-2", 1.25}});
    const Model m = newModel(), loaded = newModel();
    EXPECT_EQ(savedBlock(m), blockWithFactors({}));
    ASSERT_EQ(loadBytes(m, block), 0);
    ASSERT_EQ(loadBytes(loaded, blockWithFactors({{"OLD", 2.0}})), 0);

    TempFile tmp({'h', 'e', 'a', 'd'});
    ASSERT_EQ(::lseek(tmp.fd, 4, SEEK_SET), 4);
    ASSERT_EQ(SaveIPR(m.get(), tmp.file()), 0);
    ASSERT_EQ(::write(tmp.fd, "SENT", 4), 4);  // lands on the block if Save left the position elsewhere
    ASSERT_EQ(::lseek(tmp.fd, 4, SEEK_SET), 4);
    ASSERT_EQ(LoadIPR(loaded.get(), tmp.file()), 0);
    EXPECT_EQ(::lseek(tmp.fd, 0, SEEK_CUR), static_cast<off_t>(4 + block.size()));
    EXPECT_EQ(savedBlock(loaded), block);
}

TEST(InflowKitBlock, RefusesBadBlocksKeepingTheModel) {
    const Bytes good = blockWithFactors({{"P1", 0.85}});
    std::vector<Bytes> bad = {Bytes(64, 0xff), blockWithFactors({{"P1", 1.0}}, {0}),
                              blockWithFactors({{"P1", 1.0}, {"P1", 2.0}}),
                              blockWithFactors({{"P1", std::numeric_limits<double>::quiet_NaN()}}),
                              blockWithFactors({{"P1", std::numeric_limits<double>::infinity()}})};
    for (std::size_t at = 0; at < good.size(); ++at) {
        bad.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at));  // truncated
        bad.push_back(good);
        bad.back()[at] ^= 0x40;  // one byte altered
    }
    const Model m = newModel();
    ASSERT_EQ(loadBytes(m, good), 0);
    for (std::size_t i = 0; i < bad.size(); ++i) EXPECT_NE(loadBytes(m, bad[i]), 0) << "case " << i;
    EXPECT_EQ(savedBlock(m), good);
}

TEST(InflowKitModel, NullModelAndBadDescriptorAreHarmless) {
    void* const badFile = reinterpret_cast<void*>(intptr_t{-1});
    TempFile tmp;
    DestroyIPRModel(nullptr);
    SetIPRCallbacks(nullptr, kElapsed, kInitialise, kSetWellCtrl, kRunTo, kBlockIpr, kWellRates);
    StartIPRAddWell(nullptr);
    AddIPRWell(nullptr, 0, "P1", true, true);
    EndIPRAddWell(nullptr);
    EXPECT_NE(SaveIPR(newModel().get(), badFile), 0);
    EXPECT_NE(LoadIPR(newModel().get(), badFile), 0);
    EXPECT_NE(SaveIPR(nullptr, tmp.file()), 0);
    EXPECT_NE(LoadIPR(nullptr, tmp.file()), 0);
    EXPECT_NE(SetupIPR(0, nullptr), 0);
    EXPECT_NE(TransformIPR(nullptr, "P1", nullptr, nullptr), 0);
    EXPECT_EQ(HasDoneScalingCalculation(nullptr), 0);
    EXPECT_EQ(::lseek(tmp.fd, 0, SEEK_END), 0);
    EXPECT_EQ(InflowKitInspectWellCount(nullptr), 0);
    EXPECT_EQ(InflowKitInspectWell(nullptr, 0, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(InflowKitInspectWellListState(nullptr), 0);
    EXPECT_EQ(InflowKitInspectContext(nullptr), nullptr);
    EXPECT_EQ(InflowKitInspectCallbacks(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}
