#include "inflowkit/InflowKit.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Model handle that is destroyed at the end of the test.
struct Model {
    explicit Model(void* context = nullptr) : handle(CreateIPRModel(context)) {}
    ~Model() { DestroyIPRModel(handle); }
    void* handle;
};

// Anonymous temporary file, removed from the directory as soon as it is made.
struct TempFile {
    TempFile() {
        std::string path = ::testing::TempDir() + "inflowkit_XXXXXX";
        fd = ::mkstemp(path.data());
        if (fd >= 0) ::unlink(path.c_str());
    }
    ~TempFile() {
        if (fd >= 0) ::close(fd);
    }
    void* file() const { return reinterpret_cast<void*>(static_cast<intptr_t>(fd)); }
    void rewind() const { ASSERT_EQ(::lseek(fd, 0, SEEK_SET), 0); }
    void write(const std::vector<unsigned char>& bytes) const {
        ASSERT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    std::vector<unsigned char> contents() const {
        std::vector<unsigned char> bytes(static_cast<std::size_t>(::lseek(fd, 0, SEEK_END)));
        EXPECT_EQ(::pread(fd, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        return bytes;
    }
    int fd = -1;
};

std::vector<unsigned char> savedBlock(void* model) {
    TempFile tmp;
    EXPECT_EQ(SaveIPR(model, tmp.file()), 0);
    return tmp.contents();
}

// Loads `bytes` (written to a fresh file) into the model and returns LoadIPR's result.
int32_t loadBytes(void* model, const std::vector<unsigned char>& bytes) {
    TempFile tmp;
    tmp.write(bytes);
    tmp.rewind();
    return LoadIPR(model, tmp.file());
}

// Builds a block the way the library lays it out, independently of its own writer.
std::vector<unsigned char> blockWithFactors(const std::vector<std::pair<std::string, double>>& factors) {
    std::vector<unsigned char> payload;
    auto put = [&payload](uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) payload.push_back(static_cast<unsigned char>(v >> (8 * i)));
    };
    put(factors.size(), 4);
    for (const auto& [name, factor] : factors) {
        put(name.size(), 4);
        payload.insert(payload.end(), name.begin(), name.end());
        uint64_t bits;
        std::memcpy(&bits, &factor, sizeof bits);
        put(bits, 8);
    }
    std::vector<unsigned char> block = {'I', 'K', 'C', 'F', 1, 0, 0, 0};
    for (int i = 0; i < 4; ++i) block.push_back(static_cast<unsigned char>(payload.size() >> (8 * i)));
    block.insert(block.end(), payload.begin(), payload.end());
    uint32_t hash = 2166136261u;
    for (unsigned char b : block) hash = (hash ^ b) * 16777619u;
    for (int i = 0; i < 4; ++i) block.push_back(static_cast<unsigned char>(hash >> (8 * i)));
    return block;
}

double elapsed(void*) {
    return 0.0;
}
int32_t initialise(void*, char*) {
    return 0;
}
int32_t setWellCtrl(void*, int32_t, double, char*) {
    return 0;
}
int32_t runTo(void*, double, char*) {
    return 0;
}
int32_t getWellBlockIpr(void*, int32_t, _tGetSetData*, char*) {
    return 0;
}
int32_t getWellRates(void*, int32_t, _tGetSetData*, char*) {
    return 0;
}

}  // namespace

TEST(InflowKitWells, StartingANewListReplacesTheEarlierOne) {
    Model m;
    StartIPRAddWell(m.handle);
    AddIPRWell(m.handle, 0, "P1", true, true);
    AddIPRWell(m.handle, 1, "I1", false, false);
    EndIPRAddWell(m.handle);
    StartIPRAddWell(m.handle);
    EXPECT_EQ(InflowKitInspectWellListState(m.handle), 1);
    AddIPRWell(m.handle, 7, "G2", true, false);
    AddIPRWell(m.handle, 3, nullptr, false, true);
    EndIPRAddWell(m.handle);

    EXPECT_EQ(InflowKitInspectWellListState(m.handle), 2);
    ASSERT_EQ(InflowKitInspectWellCount(m.handle), 2);
    int32_t index = -1;
    const char* name = nullptr;
    bool producer = false, liquid = true;
    ASSERT_EQ(InflowKitInspectWell(m.handle, 0, &index, &name, &producer, &liquid), 1);
    EXPECT_EQ(index, 7);
    EXPECT_STREQ(name, "G2");
    EXPECT_TRUE(producer);
    EXPECT_FALSE(liquid);
    ASSERT_EQ(InflowKitInspectWell(m.handle, 1, &index, &name, &producer, &liquid), 1);
    EXPECT_EQ(index, 3);
    EXPECT_STREQ(name, "");
    EXPECT_FALSE(producer);
    EXPECT_TRUE(liquid);
    EXPECT_EQ(InflowKitInspectWell(m.handle, 2, &index, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(InflowKitInspectWell(m.handle, -1, &index, nullptr, nullptr, nullptr), 0);
}

TEST(InflowKitModel, KeepsContextAndCallbacks) {
    int context = 0;
    Model m(&context);
    EXPECT_EQ(InflowKitInspectContext(m.handle), &context);
    SetIPRCallbacks(m.handle, elapsed, initialise, setWellCtrl, runTo, getWellBlockIpr, getWellRates);

    IPRElapsedTimeCallback e = nullptr;
    IPRInitialiseForSimCalcCallback i = nullptr;
    IPRSetWellCtrlForSimCalcCallback s = nullptr;
    IPRRunToForSimCalcCallback r = nullptr;
    IPRGetWellBlockIPRForSimCalcCallback b = nullptr;
    IPRGetWellRatesForSimCalcCallback w = nullptr;
    ASSERT_EQ(InflowKitInspectCallbacks(m.handle, &e, &i, &s, &r, &b, &w), 1);
    EXPECT_EQ(e, &elapsed);
    EXPECT_EQ(i, &initialise);
    EXPECT_EQ(s, &setWellCtrl);
    EXPECT_EQ(r, &runTo);
    EXPECT_EQ(b, &getWellBlockIpr);
    EXPECT_EQ(w, &getWellRates);
    EXPECT_EQ(InflowKitInspectContext(m.handle), &context);
}

TEST(InflowKitModel, SetupReportsNoCalculationAndTransformLeavesTablesAlone) {
    Model m;
    StartIPRAddWell(m.handle);
    AddIPRWell(m.handle, 0, "P1", true, true);
    EndIPRAddWell(m.handle);
    const std::vector<unsigned char> blockBefore = savedBlock(m.handle);

    EXPECT_NE(SetupIPR(0, m.handle), 0);
    EXPECT_EQ(HasDoneScalingCalculation(m.handle), 0);
    EXPECT_EQ(InflowKitInspectWellCount(m.handle), 1);
    EXPECT_EQ(savedBlock(m.handle), blockBefore);

    std::vector<unsigned char> present(105368), table(105368);
    present[0] = 0x11;
    table[100] = 0x22;
    const std::vector<unsigned char> presentCopy = present, tableCopy = table;
    EXPECT_EQ(TransformIPR(m.handle, "P1", reinterpret_cast<const _tGetSetData*>(present.data()),
                           reinterpret_cast<_tGetSetData*>(table.data())),
              0);
    EXPECT_EQ(table, tableCopy);
    EXPECT_EQ(present, presentCopy);
}

TEST(InflowKitBlock, LoadLeavesTheFilePositionRightAfterTheBlock) {
    Model m;
    TempFile tmp;
    tmp.write({'h', 'e', 'a', 'd'});
    ASSERT_EQ(SaveIPR(m.handle, tmp.file()), 0);
    tmp.write({'S', 'E', 'N', 'T'});
    const std::vector<unsigned char> all = tmp.contents();
    ASSERT_EQ(::lseek(tmp.fd, 4, SEEK_SET), 4);

    Model loaded;
    ASSERT_EQ(LoadIPR(loaded.handle, tmp.file()), 0);
    EXPECT_EQ(::lseek(tmp.fd, 0, SEEK_CUR), static_cast<off_t>(all.size() - 4));
    char sentinel[4] = {};
    ASSERT_EQ(::read(tmp.fd, sentinel, 4), 4);
    EXPECT_EQ(std::string(sentinel, 4), "SENT");
}

TEST(InflowKitBlock, EmptyModelSavesAnEmptyFactorList) {
    Model m;
    EXPECT_EQ(savedBlock(m.handle), blockWithFactors({}));
}

TEST(InflowKitBlock, FactorsSurviveLoadAndSaveUnchanged) {
    const std::vector<unsigned char> block = blockWithFactors({{"P1", 0.85}, {"WELL-2", 1.25}});
    Model m;
    ASSERT_EQ(loadBytes(m.handle, block), 0);
    EXPECT_EQ(savedBlock(m.handle), block);
}

TEST(InflowKitBlock, RefusesTruncatedForeignAndCorruptBlocksKeepingTheModel) {
    const std::vector<unsigned char> good = blockWithFactors({{"P1", 0.85}});
    Model m;
    ASSERT_EQ(loadBytes(m.handle, good), 0);

    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_NE(loadBytes(m.handle, {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)}), 0)
            << "truncated to " << size;
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::vector<unsigned char> flipped = good;
        flipped[at] ^= 0x40;
        EXPECT_NE(loadBytes(m.handle, flipped), 0) << "byte " << at << " altered";
    }
    EXPECT_NE(loadBytes(m.handle, std::vector<unsigned char>(64, 0xff)), 0);
    EXPECT_EQ(savedBlock(m.handle), good);
}

TEST(InflowKitBlock, RefusesDuplicateAndNonFiniteFactors) {
    Model m;
    EXPECT_NE(loadBytes(m.handle, blockWithFactors({{"P1", 1.0}, {"P1", 2.0}})), 0);
    EXPECT_NE(loadBytes(m.handle, blockWithFactors({{"P1", std::strtod("nan", nullptr)}})), 0);
    EXPECT_NE(loadBytes(m.handle, blockWithFactors({{"P1", std::strtod("inf", nullptr)}})), 0);
    EXPECT_EQ(savedBlock(m.handle), blockWithFactors({}));
}

TEST(InflowKitBlock, BadDescriptorFailsForSaveAndLoad) {
    Model m;
    EXPECT_NE(SaveIPR(m.handle, reinterpret_cast<void*>(intptr_t{-1})), 0);
    EXPECT_NE(LoadIPR(m.handle, reinterpret_cast<void*>(intptr_t{-1})), 0);
}

TEST(InflowKitModel, NullModelIsHarmlessEverywhere) {
    TempFile tmp;
    std::vector<unsigned char> table(105368);
    DestroyIPRModel(nullptr);
    SetIPRCallbacks(nullptr, elapsed, initialise, setWellCtrl, runTo, getWellBlockIpr, getWellRates);
    StartIPRAddWell(nullptr);
    AddIPRWell(nullptr, 0, "P1", true, true);
    EndIPRAddWell(nullptr);
    EXPECT_NE(SetupIPR(0, nullptr), 0);
    EXPECT_EQ(HasDoneScalingCalculation(nullptr), 0);
    EXPECT_NE(TransformIPR(nullptr, "P1", nullptr, reinterpret_cast<_tGetSetData*>(table.data())), 0);
    EXPECT_NE(SaveIPR(nullptr, tmp.file()), 0);
    EXPECT_NE(LoadIPR(nullptr, tmp.file()), 0);
    EXPECT_TRUE(tmp.contents().empty());
    EXPECT_EQ(InflowKitInspectWellCount(nullptr), 0);
    EXPECT_EQ(InflowKitInspectWell(nullptr, 0, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(InflowKitInspectWellListState(nullptr), 0);
    EXPECT_EQ(InflowKitInspectContext(nullptr), nullptr);
    EXPECT_EQ(InflowKitInspectCallbacks(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}
