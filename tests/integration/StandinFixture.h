// Runs on the stand-in simulator through the plug-in's exports: a machine configuration brought in as the
// host brings it, a free port range of this process's own, and a cluster dispatcher when a test needs one.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "PluginHarness.h"
#include "tNavigator_API_RMA.h"

extern char** environ;

namespace rivulet::it {

inline const char* const kDriverKey = "Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator";
inline const char* const kSourceKey = "Software\\Quillon\\Conflux\\RivuletSessionTests";
inline constexpr int kRangeSize = 3;

// Polls until the condition holds or the limit passes; the last answer is returned.
inline bool Eventually(const std::function<bool()>& condition,
                       std::chrono::seconds limit = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

inline bool Accepts(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool connected = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    return connected;
}

inline bool CanListenOn(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    const int one = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool free =
        ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 && ::listen(fd, 1) == 0;
    ::close(fd);
    return free;
}

// The first of `count` consecutive free ports from `from` on, below the ephemeral range.
inline int FreePorts(int count, int from) {
    constexpr int kFirst = 20000, kLast = 32000;
    int base = from;
    for (int tried = 0; tried < 1000; ++tried) {
        if (base < kFirst || base + count > kLast) base = kFirst;
        bool free = true;
        for (int port = base; port < base + count && free; ++port) free = CanListenOn(port);
        if (free) return base;
        base += count;
    }
    return -1;
}

// Where this process starts looking, so that test processes running side by side look in different places.
inline int OwnFirstPort() {
    return 20000 + static_cast<int>(::getpid() % 1000) * 11;
}

inline std::string Dword(int value) {
    char text[32];
    std::snprintf(text, sizeof text, "dword:%08x", static_cast<unsigned>(value));
    return text;
}

inline std::string Crypted(const char* plain) {
    tNavigator_API_RMA_string crypted;
    EXPECT_EQ(tNavigator_API_RMA::encrypt_password(plain, crypted).id(), 0);
    return crypted.c_str();
}

// One report row of the stand-in's own run, by column name.
using Row = std::map<std::string, double>;

inline std::vector<Row> ReadCsv(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::vector<std::string> names;
    std::vector<Row> rows;
    while (std::getline(in, line)) {
        std::istringstream cells(line);
        std::string cell;
        std::vector<std::string> values;
        while (std::getline(cells, cell, ',')) values.push_back(cell);
        if (names.empty()) {
            names = values;
            continue;
        }
        Row row;
        for (std::size_t k = 1; k < values.size() && k < names.size(); ++k)
            row[names[k]] = std::strtod(values[k].c_str(), nullptr);  // a text column reads 0
        rows.push_back(row);
    }
    return rows;
}

class StandinTest : public ModelTest {
  protected:
    void SetUp() override {
        // The machine configuration belongs to the loaded plug-in, not to the test: it is written out first
        // (a copy from a missing key changes nothing and stores it all) and read back at the end.
        Keep("RIVULET_REGISTRY", saved_);
        std::string missing = std::string(kSourceKey) + "\\Missing";
        char* key = missing.data();
        Driver().CopyConfigure(0x80000001, &key);
        ::setenv("RIVULET_REGISTRY", registry_.c_str(), 1);
        Keep("RIVULET_LOCK_DIR", (scratch_.root / "locks").string());
        for (const char* name : {"QNC_JOBID", "QNC_JOBSLOT", "QNC_HOST"}) Keep(name, "");
        lower_ = FreePorts(kRangeSize, OwnFirstPort());
        ASSERT_GT(lower_, 0) << "no free ports";
        ModelTest::SetUp();
    }
    void TearDown() override {
        ModelTest::TearDown();  // deleting the model ends its session
        ::setenv("RIVULET_REGISTRY", saved_.c_str(), 1);
        std::string own = kDriverKey;
        own.resize(own.size() - std::string("\\tNavigator").size());
        char* name = own.data();
        Driver().CopyConfigure(0x80000001, &name);
        if (cluster_ > 0) {
            ::kill(cluster_, SIGTERM);
            int status = 0;
            if (!Eventually([&] { return ::waitpid(cluster_, &status, WNOHANG) == cluster_; },
                            std::chrono::seconds(5))) {
                ::kill(cluster_, SIGKILL);
                ::waitpid(cluster_, &status, 0);
            }
        }
        for (const auto& [name, value] : previous_) {
            if (value.empty()) {
                ::unsetenv(name.c_str());
            } else {
                ::setenv(name.c_str(), value.c_str(), 1);
            }
        }
    }
    void Keep(const char* name, const std::string& value) {
        const char* old = std::getenv(name);
        previous_.emplace_back(name, old != nullptr ? old : "");
        if (value.empty()) {
            ::unsetenv(name);
        } else {
            ::setenv(name, value.c_str(), 1);
        }
    }

    // Brings a machine configuration in through ExtCopyConfigure, as the host does; every value is written so
    // that nothing stays from an earlier test of this process.
    void Configure(const std::string& debugDirectory = "", const std::string& user = "",
                   const std::string& storedPassword = "") {
        std::ofstream(registry_) << "REGEDIT4\n\n[" << kSourceKey << "\\tNavigator]\n"
                                 << "\"SimExecutable\"=\"" << TNAV_STANDIN_EXE << "\"\n"
                                 << "\"DebugCommsDirectory\"=\"" << debugDirectory << "\"\n"
                                 << "\"LinuxUser\"=\"" << user << "\"\n"
                                 << "\"Tassoc\"=\"" << storedPassword << "\"\n\n"
                                 << "[" << kDriverKey << "]\n"
                                 << "\"LowerPort\"=" << Dword(lower_) << "\n"
                                 << "\"UpperPort\"=" << Dword(lower_ + kRangeSize - 1) << "\n";
        std::string key = kSourceKey;
        char* name = key.data();
        Driver().CopyConfigure(0x80000001, &name);
    }
    void LocalCase(const std::string& file) {
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.IsLocalMachine", "1"), 0);
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", file), 0);
    }
    std::string ModMsg() {
        host::Buffer text(512, 0xCD);
        EXPECT_EQ(Cmd(129, text.Address(), 512), 0);
        return text.Text(0, 512);
    }
    // The message of a model that should be running. Whether it runs is asked of the dispatcher with a short
    // deadline, so a loaded machine gets a few tries.
    std::string RunningModMsg() {
        std::string text;
        Eventually(
            [&] {
                text = ModMsg();
                return text.find("\nRunning on: ") != std::string::npos;
            },
            std::chrono::seconds(10));
        return text;
    }

    // The well's name and its type as Query gives it (1 producer, 2 injector).
    std::vector<std::pair<std::string, std::int32_t>> QueryWells() {
        std::vector<std::pair<std::string, std::int32_t>> wells;
        host::Buffer query(128);
        query.Put<std::int32_t>(28, -1);
        for (std::uint32_t relation = 2; Cmd(2, query.Address(), relation) == 0; relation = 1) {
            wells.emplace_back(query.Text(32, 64), query.Get<std::int32_t>(4));
        }
        return wells;
    }
    std::int32_t StepTo(double serial) {
        host::Buffer step(152);
        step.Put<std::int32_t>(0, 152);
        step.Put<std::uint8_t>(48 + 4, 1);
        step.Put<double>(48 + 8, serial);
        return Cmd(49, step.Address());
    }
    // The stand-in's own run of a deck, one row per report date.
    std::vector<Row> ReferenceRun(const std::string& deck) {
        const std::string csv = (scratch_.root / "reference.csv").string();
        const std::string command =
            std::string(TNAV_STANDIN_EXE) + " --run '" + deck + "' --csv '" + csv + "' > /dev/null";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return ReadCsv(csv);
    }

    // A cluster dispatcher of our own, accepting `user` with the crypted form of `password`.
    void StartClusterDispatcher(const std::string& user, const char* password) {
        clusterPort_ = FreePorts(1, lower_ + kRangeSize);
        ASSERT_GT(clusterPort_, 0);
        const std::string users = scratch_.File("users.txt", user + " " + Crypted(password) + "\n");
        const std::string port = std::to_string(clusterPort_);
        const char* argv[] = {TNAV_STANDIN_EXE, "--dispatcher", "--port",      port.c_str(), "--bind",
                              "127.0.0.1",      "--users",      users.c_str(), nullptr};
        ASSERT_EQ(
            ::posix_spawn(&cluster_, TNAV_STANDIN_EXE, nullptr, nullptr, const_cast<char**>(argv), environ),
            0);
        bool ended = false;
        Eventually([&] {
            int status = 0;
            ended = ::waitpid(cluster_, &status, WNOHANG) == cluster_;
            return ended || Accepts(clusterPort_);
        });
        if (ended) cluster_ = -1;  // reaped: its number is no longer ours to signal
        ASSERT_TRUE(!ended && Accepts(clusterPort_)) << "the cluster dispatcher did not come up";
    }
    void ClusterCase(const std::string& deck) {
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.IsLocalMachine", "0"), 0);
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodeName", "127.0.0.1"), 0);
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodePort", std::to_string(clusterPort_)), 0);
        ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", std::filesystem::absolute(deck).string()), 0);
    }

    ScratchDir scratch_;
    const std::string registry_ = (scratch_.root / "registry.reg").string();
    const std::string saved_ = (scratch_.root / "saved.reg").string();
    std::vector<std::pair<std::string, std::string>> previous_;
    int lower_ = -1;
    int clusterPort_ = -1;
    pid_t cluster_ = -1;
};

}  // namespace rivulet::it
