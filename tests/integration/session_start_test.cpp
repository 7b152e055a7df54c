// Starting a run through command 23 with the real client library: a local dispatcher of tnav-standin on a
// port of the configured range, and a connection to a cluster dispatcher that checks its users.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "StandinFixture.h"
#include "common/PasswordStore.h"

namespace rivulet::it {
namespace {

const std::string kDeck = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";

class SessionStart : public StandinTest {};

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

TEST_F(SessionStart, LocalRunHoldsTheFirstPortOfTheRangeUntilItStops) {
    Configure();
    LocalCase(kDeck);
    host::Buffer date(32);
    EXPECT_EQ(Cmd(11, date.Address()), 1);  // no dates before the deck is read
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_EQ(Message(err_), "");
    EXPECT_EQ(RunningModMsg(), kDeck + "\nRunning on: Local host");
    EXPECT_TRUE(Accepts(lower_));
    EXPECT_EQ(Cmd(11, date.Address()), 0) << Message(err_);

    EXPECT_EQ(Cmd(56), 0);
    EXPECT_TRUE(Eventually([&] { return !Accepts(lower_); })) << "the dispatcher still listens";
    EXPECT_EQ(ModMsg(), kDeck + "\n<Not currently running>");

    // The stopped run gave its port back: the next one takes it again.
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(Accepts(lower_));
    EXPECT_EQ(RunningModMsg(), kDeck + "\nRunning on: Local host");
    EXPECT_EQ(Cmd(55), 0);
    EXPECT_TRUE(Eventually([&] { return !Accepts(lower_); })) << "the dispatcher still listens";
}

TEST_F(SessionStart, ARunBesideAnotherTakesTheNextPortAndEndsWithItsModel) {
    Configure();
    LocalCase(kDeck);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    void* const first = model_;
    ASSERT_EQ(Driver().CreateInstance(&model_, nullptr), 0u);
    LocalCase(kDeck);
    EXPECT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(Accepts(lower_ + 1));
    EXPECT_EQ(Driver().DestroyInstance(model_, nullptr), 0u);
    model_ = first;
    EXPECT_TRUE(Eventually([&] { return !Accepts(lower_ + 1); })) << "the second dispatcher still listens";
    EXPECT_TRUE(Accepts(lower_));
}

TEST_F(SessionStart, AMissingCaseFileFailsTheStartAndLeavesThePortFree) {
    Configure();
    const std::string missing = (scratch_.root / "NOWHERE.DATA").string();
    LocalCase(missing);
    EXPECT_EQ(Cmd(23), 1);
    EXPECT_EQ(Message(err_),
              "Could not start the simulator process: <The case file " + missing + " does not exist.>");
    EXPECT_EQ(ModMsg(), missing + "\n<Not currently running>");
    EXPECT_FALSE(Accepts(lower_));

    LocalCase(kDeck);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(Accepts(lower_));
}

TEST_F(SessionStart, DebugDirectoryGetsTheCommsLogAndOnRequestTheDetailedApiLog) {
    const std::filesystem::path detailed = scratch_.root / "IncDetailedApiLog";
    const std::filesystem::path plain = scratch_.root / "debug";
    std::filesystem::create_directories(detailed);
    std::filesystem::create_directories(plain);
    const std::string comms = "DebugTNav" + std::to_string(lower_) + ".txt";
    const std::string api = "DebugTNav" + std::to_string(lower_) + "_DetailedApiLog.txt";
    LocalCase(kDeck);

    Configure(detailed.string());
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(std::filesystem::is_regular_file(detailed / comms));
    EXPECT_TRUE(std::filesystem::is_regular_file(detailed / api));
    ASSERT_EQ(Cmd(56), 0);

    Configure(plain.string());
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(std::filesystem::is_regular_file(plain / comms));
    EXPECT_FALSE(std::filesystem::exists(plain / api));
    ASSERT_EQ(Cmd(56), 0);
    std::ifstream in(plain / comms);
    const std::string log(std::istreambuf_iterator<char>(in), {});
    EXPECT_NE(log.find("on port " + std::to_string(lower_)), std::string::npos) << log;
}

TEST_F(SessionStart, ClusterRunConnectsAsTheConfiguredUser) {
    StartClusterDispatcher("engineer", "s3cret");
    Configure("", "engineer", StorePassword(Crypted("s3cret")));
    ClusterCase(kDeck);
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    EXPECT_TRUE(EndsWith(RunningModMsg(), "\nRunning on: 127.0.0.1"));
    EXPECT_EQ(Cmd(56), 0);
    EXPECT_TRUE(EndsWith(ModMsg(), "\n<Not currently running>"));
    EXPECT_TRUE(Accepts(clusterPort_));  // a cluster's dispatcher outlives the run
}

TEST_F(SessionStart, ClusterRunWithAWrongPasswordReportsTheRefusal) {
    StartClusterDispatcher("engineer", "s3cret");
    Configure("", "engineer", StorePassword(Crypted("guess")));
    ClusterCase(kDeck);
    EXPECT_EQ(Cmd(23), 1);
    const std::string text = Message(err_);
    EXPECT_EQ(
        text.rfind(
            "Could not start the simulator process: <Failed to connect to linux dispatcher.\nError code: ",
            0),
        0u)
        << text;
    EXPECT_NE(text.find("Wrong password for user engineer"), std::string::npos) << text;
    EXPECT_TRUE(EndsWith(ModMsg(), "\n<Not currently running>"));
}

}  // namespace
}  // namespace rivulet::it
