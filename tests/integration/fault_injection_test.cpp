// A simulator killed while the model uses it: the call that notices gives the one text of a simulator that
// ended, within two seconds, the model keeps what it had read, Stop ends the run and the next start takes
// the same port again.
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

using Clock = std::chrono::steady_clock;

const std::string kDeck = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";
// What a simulator that died is reported as, whichever call notices first: its end, on its own or as the
// failing call's reason, or a step asked of a simulator that is no longer there. Never a Stop.
bool TellsOfAnEndedSimulator(const std::string& text) {
    return text.find("The tNavigator Simulation has ended.") != std::string::npos ||
           text == "Timestep() called when the simulation process is not running." ||
           text == "Timestep() called when the simulation has already ended." ||
           text == "Simulator ended during a Timestep().";
}
constexpr auto kBound = std::chrono::seconds(2);
constexpr std::size_t kGetSetSize = 105368;

// The local dispatcher this process started on `port`: a child of ours with that port on its command line.
pid_t SimulatorPid(int port) {
    const std::string wanted = std::string("--port") + '\0' + std::to_string(port) + '\0';
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        std::getline(stat, line);
        const std::size_t close = line.rfind(')');
        if (close == std::string::npos) continue;
        char state = 0;
        int parent = 0;
        if (std::sscanf(line.c_str() + close + 1, " %c %d", &state, &parent) != 2) continue;
        if (parent != ::getpid() || state == 'Z') continue;
        std::ifstream in(entry.path() / "cmdline");
        const std::string command((std::istreambuf_iterator<char>(in)), {});
        if (command.find(wanted) != std::string::npos) return static_cast<pid_t>(std::stoi(name));
    }
    return -1;
}

std::atomic<pid_t> s_victim{-1};
std::atomic<Clock::rep> s_killedAt{0};

void Kill(pid_t pid, int signal = SIGKILL) {
    s_killedAt = Clock::now().time_since_epoch().count();
    ::kill(pid, signal);
}

// The host's progress callback of an Initialise that runs to the start date: the simulator dies there.
void KillOnProgress(const char*, void*) {
    if (s_victim > 0) Kill(s_victim);
}

class FaultInjection : public StandinTest {
  protected:
    void SetUp() override {
        StandinTest::SetUp();
        if (HasFatalFailure()) return;
        Configure();
        LocalCase(kDeck);
    }
    void StartRun() {
        ASSERT_EQ(Cmd(23), 0) << Message(err_);
        host::Buffer start(32);
        ASSERT_EQ(Cmd(11, start.Address()), 0) << Message(err_);
        first_ = start.Get<double>(8);
        wells_ = QueryWells();
        ASSERT_EQ(wells_.size(), 2u);
        pid_ = SimulatorPid(lower_);
        ASSERT_GT(pid_, 0) << "no simulator found on port " << lower_;
    }
    // How long the failing call ran after the simulator was signalled (or after it began, when later).
    std::chrono::milliseconds Since(Clock::time_point began) const {
        const Clock::time_point killed{Clock::duration(s_killedAt.load())};
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - std::max(began, killed));
    }
    // Steps on through the deck until a step fails; the answer is that step's text.
    std::string StepUntilFailure(Clock::time_point& began) {
        for (int day = 1; day < 4000; day += 7) {
            began = Clock::now();
            if (StepTo(first_ + day) != 0) return Message(err_);
        }
        return "every step succeeded";
    }
    // After the failure: the model string still saves, the wells are still there, Stop ends the run, and the
    // next start takes the same port.
    void ExpectTheModelSurvives() {
        host::Buffer saved(102400);
        EXPECT_EQ(Cmd(12, saved.Address(), 102400), 0) << Message(err_);
        EXPECT_NE(std::string(saved.data(), saved.data() + saved.size()).find("SPE1CASE1.DATA"),
                  std::string::npos);
        EXPECT_EQ(QueryWells(), wells_);
        host::Buffer ipr(kGetSetSize);
        ipr.Put<std::int32_t>(4, 0);
        EXPECT_EQ(Cmd(50, ipr.Address()), 0) << Message(err_);
        EXPECT_EQ(Cmd(56), 0);
        EXPECT_EQ(ModMsg(), kDeck + "\n<Not currently running>");
        EXPECT_TRUE(Eventually([&] { return !Accepts(lower_); })) << "the port is still held";
        ASSERT_EQ(Cmd(23), 0) << Message(err_);
        EXPECT_TRUE(Accepts(lower_)) << "the next run did not take the same port";
        EXPECT_EQ(StepTo(first_ + 31), 0) << Message(err_);
        EXPECT_EQ(Cmd(56), 0);
    }

    double first_ = 0.0;
    pid_t pid_ = -1;
    std::vector<std::pair<std::string, std::int32_t>> wells_;
};

TEST_F(FaultInjection, ASimulatorKilledDuringATimestepEndsTheSimulationWhateverTheMoment) {
    for (const int delayUs : {0, 200, 1000, 3000, 10000}) {
        SCOPED_TRACE("killed after " + std::to_string(delayUs) + " us");
        StartRun();
        if (HasFatalFailure()) return;
        Clock::time_point began = Clock::now();
        s_killedAt = began.time_since_epoch().count();
        std::thread killer([&, pid = pid_] {
            std::this_thread::sleep_for(std::chrono::microseconds(delayUs));
            Kill(pid);
        });
        const std::string text = StepUntilFailure(began);
        killer.join();
        EXPECT_TRUE(TellsOfAnEndedSimulator(text)) << text;
        EXPECT_LT(Since(began), kBound);
        ExpectTheModelSurvives();
    }
}

// A simulator that stops answering without ending (its process stopped) is reported as ended, during a step
// or at the step after; Stop then ends it.
TEST_F(FaultInjection, AStalledSimulatorEndsTheSimulation) {
    for (const int delayUs : {1000, -1}) {
        SCOPED_TRACE(delayUs < 0 ? "stalled between steps" : "stalled during a step");
        StartRun();
        if (HasFatalFailure()) return;
        Clock::time_point began = Clock::now();
        std::string text;
        if (delayUs < 0) {
            ASSERT_EQ(StepTo(first_ + 31), 0) << Message(err_);
            Kill(pid_, SIGSTOP);
            began = Clock::now();
            text = StepTo(first_ + 62) == 0 ? "the step succeeded" : Message(err_);
        } else {
            s_killedAt = began.time_since_epoch().count();
            std::thread staller([&, pid = pid_] {
                std::this_thread::sleep_for(std::chrono::microseconds(delayUs));
                Kill(pid, SIGSTOP);
            });
            text = StepUntilFailure(began);
            staller.join();
        }
        EXPECT_TRUE(TellsOfAnEndedSimulator(text)) << text;
        EXPECT_LT(Since(began), kBound);
        ExpectTheModelSurvives();
    }
}

TEST_F(FaultInjection, ASimulatorKilledBetweenCallsEndsTheSimulationAtTheNextOne) {
    StartRun();
    if (HasFatalFailure()) return;
    ASSERT_EQ(StepTo(first_ + 31), 0) << Message(err_);
    host::Buffer ipr(kGetSetSize);
    ipr.Put<std::int32_t>(4, 1);
    ASSERT_EQ(Cmd(50, ipr.Address()), 0) << Message(err_);
    const std::string table(ipr.data(), ipr.data() + ipr.size());
    Kill(pid_);
    // The inflow tables were read with the step: they answer from the model without the simulator.
    EXPECT_EQ(Cmd(50, ipr.Address()), 0) << Message(err_);
    EXPECT_EQ(std::string(ipr.data(), ipr.data() + ipr.size()), table);
    const Clock::time_point began = Clock::now();
    EXPECT_EQ(StepTo(first_ + 62), 1);
    EXPECT_TRUE(TellsOfAnEndedSimulator(Message(err_))) << Message(err_);
    EXPECT_LT(Since(began), kBound);
    ExpectTheModelSurvives();
}

TEST_F(FaultInjection, ASimulatorKilledDuringInitialiseEndsTheSimulation) {
    StartRun();
    if (HasFatalFailure()) return;
    host::Buffer init(176);
    init.Put<std::uint8_t>(32 + 4, 1);
    init.Put<double>(32 + 8, first_ + 90);
    init.Put<std::uint64_t>(136, reinterpret_cast<std::uint64_t>(&KillOnProgress));
    init.Put<std::uint32_t>(156, 1);
    s_victim = pid_;
    const Clock::time_point began = Clock::now();
    EXPECT_EQ(Cmd(48, init.Address()), 1);
    s_victim = -1;
    EXPECT_TRUE(TellsOfAnEndedSimulator(Message(err_))) << Message(err_);
    EXPECT_LT(Since(began), kBound);
    ExpectTheModelSurvives();
}

}  // namespace
}  // namespace rivulet::it
