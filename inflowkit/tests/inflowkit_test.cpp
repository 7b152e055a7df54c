#include "inflowkit/InflowKit.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
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

// Record fields at their byte offsets, as the simulator side lays them out.
constexpr std::size_t kOil = 16, kWater = 96, kGas = 176, kPressure = 256, kMass = 336, kTemperature = 416;
constexpr double kNoValue = 3.4e35;

template <typename T>
void put(void* record, std::size_t at, T v) {
    std::memcpy(static_cast<unsigned char*>(record) + at, &v, sizeof v);
}

// A small reservoir behind the callbacks. Each well's inflow table is a straight line of its
// productivity j: rate j*|pr - p| from p = pr outwards (injectors above pr, their rates negative).
// Every runTo leaves j at `decline` times what it was, so a well delivers less at a given pressure
// than the table read before the step promised, by exactly `decline`. Producers' water cut rises
// with every step too, so only the liquid rate (not the oil rate alone) shows that ratio.
struct SimWell {
    int32_t index;
    std::string name;
    bool producer, liquid;
    double pr, j0, decline, j = 0.0, target = 0.0, oilShare = 0.7;
};

struct Sim {
    void* model = nullptr;
    std::vector<SimWell> wells{{0, "P1", true, true, 3000, 10, 0.9},
                               {1, "G1", true, false, 2500, 0.02, 0.75},  // asked too much after a step
                               {2, "I1", false, true, 2000, 5, 0.8},
                               {3, "DEAD", true, true, 2000, 0, 0.5},
                               {4, "WEAK", true, true, 2000, 4, 0.01}};  // beyond what a factor may correct
    double clock = 0.0, overshoot = 0.0;          // overshoot: days the simulator runs past each request
    std::string failIn;                           // callback told to fail, or junk to answer with
    std::vector<std::pair<double, double>> runs;  // (clock, days) per runTo

    // Checks the message buffer came cleared; true when the call must fail, with the simulator's
    // text in `err`. Calls that succeed leave a note there, as some simulators do.
    bool fails(const char* name, char* err) {
        EXPECT_TRUE(err[0] == '\0' && err[1023] == '\0') << name << " got an uncleared message buffer";
        std::snprintf(err, 1024, "sim: %s %s", name, failIn == name ? "refused" : "done");
        return failIn == name;
    }
    // The well, if there is one and `record` (when given) is labelled for it.
    SimWell* find(int32_t index, const _tGetSetData* record = nullptr) {
        int32_t label[2] = {105368, index};
        if (record) std::memcpy(label, record, sizeof label);
        for (SimWell& w : wells) {
            if (w.index == index && label[0] == 105368 && label[1] == index) return &w;
        }
        return nullptr;
    }
};

Sim& sim(void* ctx) {
    return *static_cast<Sim*>(ctx);
}

// Writes rate magnitude `q` of the well's phase into `row`.
void putRate(_tGetSetData* r, const SimWell& w, int row, double q) {
    const std::size_t at = 8 * static_cast<std::size_t>(row);
    if (!w.liquid) return put(r, kGas + at, w.producer ? q : -q);
    put(r, kOil + at, w.producer ? w.oilShare * q : 0.0);
    put(r, kWater + at, w.producer ? (1.0 - w.oilShare) * q : -q);
}

const IPRElapsedTimeCallback kSimElapsed = [](void* c) {
    return sim(c).failIn == "elapsedTime" ? std::nan("") : sim(c).clock;
};
const IPRInitialiseForSimCalcCallback kSimInitialise = [](void* c, char* err) {
    Sim& s = sim(c);
    if (s.fails("initialise", err)) return 7;
    s.clock = 0.0;
    StartIPRAddWell(s.model);
    for (SimWell& w : s.wells) {
        w = {w.index, w.name, w.producer, w.liquid, w.pr, w.j0, w.decline, w.j0};  // the deck's state
        AddIPRWell(s.model, w.index, w.name.c_str(), w.producer, w.liquid);
    }
    EndIPRAddWell(s.model);
    return 0;
};
const IPRSetWellCtrlForSimCalcCallback kSimSetWellCtrl = [](void* c, int32_t well, double rate, char* err) {
    SimWell* w = sim(c).find(well);
    if (sim(c).fails("setWellCtrl", err) || !w) return 7;
    if (w->j > 0) w->target = rate;
    return 0;
};
const IPRRunToForSimCalcCallback kSimRunTo = [](void* c, double days, char* err) {
    Sim& s = sim(c);
    if (s.fails("runTo", err)) return 7;
    s.runs.emplace_back(s.clock, days);
    s.clock += days + s.overshoot;
    for (SimWell& w : s.wells) {
        w.j *= w.decline;
        w.oilShare -= 0.1;
    }
    return 0;
};
const IPRGetWellBlockIPRForSimCalcCallback kSimBlockIpr = [](void* c, int32_t well, _tGetSetData* r,
                                                             char* err) {
    const SimWell* w = sim(c).find(well, r);
    if (sim(c).fails("getWellBlockIpr", err) || !w) return 7;
    put(r, 496, int32_t{6});
    for (int row = 0; row < 6; ++row) {
        const int step = w->liquid ? row : 5 - row;  // gas tables in rising pressure
        put(r, kPressure + 8 * static_cast<std::size_t>(row),
            w->pr * (1.0 + (w->producer ? -0.2 : 0.2) * step));
        putRate(r, *w, row, w->j * w->pr * 0.2 * step);
    }
    return 0;
};
const IPRGetWellRatesForSimCalcCallback kSimRates = [](void* c, int32_t well, _tGetSetData* r, char* err) {
    const SimWell* w = sim(c).find(well, r);
    if (sim(c).fails("getWellRates", err) || !w) return 7;
    const double q = std::min(w->target, w->j * w->pr), pressure = w->pr + (w->producer ? -q : q) / w->j;
    const double junk = w->producer ? std::nan("") : kNoValue;
    put(r, kPressure, sim(c).failIn == "junkPressure" ? junk : pressure);
    putRate(r, *w, 0, q);
    if (sim(c).failIn == "noValueRates") {
        for (std::size_t at : {kOil, kWater, kGas}) put(r, at, kNoValue);
    }
    return 0;
};

void installSim(const Model& m, Sim& sim, bool complete = true) {
    sim.model = m.get();
    SetIPRCallbacks(m.get(), kSimElapsed, kSimInitialise, kSimSetWellCtrl, complete ? kSimRunTo : nullptr,
                    kSimBlockIpr, kSimRates);
}

double factorOf(const Model& m, const char* well) {
    double f = -1.0;
    return InflowKitInspectFactor(m.get(), well, &f) == 1 ? f : -1.0;
}

}  // namespace

TEST(InflowKitModel, KeepsWhatItIsGiven) {
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

    // A loaded block with factors counts as a done calculation; an empty one does not.
    ASSERT_EQ(loadBytes(m, blockWithFactors({{"G2", 0.85}})), 0);
    EXPECT_EQ(std::tuple(HasDoneScalingCalculation(m.get()), factorOf(m, "G2")), std::tuple(1, 0.85));
    ASSERT_EQ(loadBytes(m, blockWithFactors({})), 0);
    EXPECT_EQ(std::tuple(HasDoneScalingCalculation(m.get()), factorOf(m, "G2")), std::tuple(0, -1.0));
}

TEST(InflowKitCalibration, FitsTheWellsTheRestartRegisteredAndScalesOnlyTheirRates) {
    Sim sim;
    const Model m = newModel(&sim);
    installSim(m, sim);
    StartIPRAddWell(m.get());
    AddIPRWell(m.get(), 9, "OLD", true, true);  // replaced while the run restarts; the sim knows no well 9
    EndIPRAddWell(m.get());
    ASSERT_EQ(SetupIPR(0, m.get()), 0) << InflowKitInspectLastError(m.get());
    EXPECT_EQ(HasDoneScalingCalculation(m.get()), 1);
    EXPECT_STREQ(InflowKitInspectLastError(m.get()), "");
    for (const SimWell& w : sim.wells) {
        EXPECT_NEAR(factorOf(m, w.name.c_str()), w.j0 > 0 ? std::max(w.decline, 0.05) : -1.0, 1e-9) << w.name;
    }

    // Rates of the rows in use scale, no-value entries, pressures and temperatures stay.
    const double f = factorOf(m, "P1");
    for (const auto& [well, rows, scaled] : std::vector<std::tuple<const char*, int32_t, int>>{
             {"P1", 3, 3}, {"P1", -4, 0}, {"P1", std::numeric_limits<int32_t>::max(), 10}, {"DEAD", 10, 0}}) {
        Bytes table(105368), want(105368);
        for (std::size_t col : {kOil, kWater, kGas, kPressure, kMass, kTemperature}) {
            for (int row = 0; row < 10; ++row) {
                const double v =
                    (col == kGas && row == 1) ? kNoValue : static_cast<double>(col + 8 * row + 1);
                put(table.data(), col + 8 * row, v);
                const bool rate = col != kPressure && col != kTemperature && v != kNoValue;
                put(want.data(), col + 8 * row, row < scaled && rate ? v * f : v);
            }
        }
        put(table.data(), 496, rows);
        put(want.data(), 496, rows);
        EXPECT_EQ(TransformIPR(m.get(), well, nullptr, reinterpret_cast<_tGetSetData*>(table.data())), 0);
        EXPECT_EQ(table, want) << well << " with " << rows << " rows";
    }

    const Model reopened = newModel();
    ASSERT_EQ(loadBytes(reopened, savedBlock(m)), 0);
    EXPECT_EQ(HasDoneScalingCalculation(reopened.get()), 1);
    EXPECT_EQ(std::tuple(factorOf(reopened, "P1"), factorOf(reopened, "G1"), factorOf(reopened, "DEAD")),
              std::tuple(f, factorOf(m, "G1"), -1.0));
}

TEST(InflowKitCalibration, PeriodsStayWithinAYearOfTheRestart) {
    for (const auto& [overshoot, runs] : {std::pair(0.0, 2u), std::pair(320.0, 2u), std::pair(400.0, 1u)}) {
        Sim sim;
        sim.overshoot = overshoot;
        const Model m = newModel(&sim);
        installSim(m, sim);
        ASSERT_EQ(SetupIPR(0, m.get()), 0) << InflowKitInspectLastError(m.get());
        EXPECT_NEAR(factorOf(m, "P1"), 0.9, 1e-9);
        EXPECT_EQ(sim.runs.size(), runs) << overshoot;
        for (const auto& [clock, days] : sim.runs) EXPECT_TRUE(days > 0 && clock + days <= 360) << overshoot;
    }
}

TEST(InflowKitCalibration, AFailedCalculationKeepsTheEarlierOneAndSaysWhy) {
    const std::pair<std::string, std::string> cases[] = {{"initialise", "sim: initialise refused"},
                                                         {"getWellBlockIpr", "sim: getWellBlockIpr refused"},
                                                         {"setWellCtrl", "sim: setWellCtrl refused"},
                                                         {"runTo", "sim: runTo refused"},
                                                         {"getWellRates", "sim: getWellRates refused"},
                                                         {"elapsedTime", "elapsed"},
                                                         {"junkPressure", "no well"},
                                                         {"noValueRates", "no well"},
                                                         {"unset", "callbacks not set: runTo"}};
    for (const auto& [failIn, why] : cases) {
        Sim sim;
        const Model m = newModel(&sim);
        for (const bool earlier : {false, true}) {
            if (earlier) {
                sim.failIn.clear();
                installSim(m, sim);
                ASSERT_EQ(SetupIPR(0, m.get()), 0) << failIn;
                for (SimWell& w : sim.wells) w.decline = 0.5;  // what a new calculation would find
            }
            sim.failIn = failIn;
            installSim(m, sim, failIn != "unset");
            EXPECT_NE(SetupIPR(0, m.get()), 0) << failIn;
            EXPECT_NE(std::string(InflowKitInspectLastError(m.get())).find(why), std::string::npos)
                << failIn << ": " << InflowKitInspectLastError(m.get());
            EXPECT_EQ(HasDoneScalingCalculation(m.get()), earlier ? 1 : 0) << failIn;
            EXPECT_NEAR(factorOf(m, "P1"), earlier ? 0.9 : -1.0, 1e-9) << failIn;
        }
    }
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
    EXPECT_EQ(InflowKitInspectFactor(nullptr, "P1", nullptr), 0);
    EXPECT_STREQ(InflowKitInspectLastError(nullptr), "");

    const Model m = newModel();
    ASSERT_EQ(loadBytes(m, blockWithFactors({{"P1", 0.5}})), 0);
    Bytes table(105368);
    EXPECT_NE(TransformIPR(m.get(), nullptr, nullptr, reinterpret_cast<_tGetSetData*>(table.data())), 0);
    EXPECT_NE(TransformIPR(m.get(), "P1", nullptr, nullptr), 0);
    EXPECT_EQ(InflowKitInspectFactor(m.get(), nullptr, nullptr), 0);
}
