// Port selection and the process creation guard between real processes of one machine.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <utility>

#include "platform/NamedMutex.h"
#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

std::string PortMutex(int port) {
    return "Global\\QuillonConfluxPortMutex" + std::to_string(port);
}

// A pipe whose read end blocks until the write end sends a number or closes.
struct Pipe {
    int fds[2] = {-1, -1};
    Pipe() { EXPECT_EQ(::pipe(fds), 0); }
    ~Pipe() {
        for (int fd : fds) ::close(fd);
    }
    void CloseWrite() { ::close(std::exchange(fds[1], -1)); }
    void Send(int value) {
        EXPECT_EQ(::write(fds[1], &value, sizeof value), static_cast<ssize_t>(sizeof value));
    }
    int Receive() {
        int value = -1;
        return ::read(fds[0], &value, sizeof value) == static_cast<ssize_t>(sizeof value) ? value : -1;
    }
};

// Runs `body` in a child process, which ends when it returns.
pid_t Spawn(const std::function<void()>& body) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        body();
        ::_exit(0);
    }
    return pid;
}

bool EndedCleanly(pid_t pid) {
    int status = 0;
    return ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A child that owns the named mutex until the parent closes `release`; `ready` says it owns it.
pid_t Owner(const std::string& name, Pipe& ready, Pipe& release) {
    return Spawn([&] {
        auto mutex = NamedMutex::Create(name, false, nullptr);
        ready.Send(mutex && mutex->Wait(1000) == NamedMutex::WaitResult::Acquired ? 1 : 0);
        release.CloseWrite();
        release.Receive();
    });
}

// A lock file for a mutex that exists but that nobody owns.
void Existing(const std::string& name) {
    const int fd = ::open(NamedMutex::PathFor(name).c_str(), O_CREAT | O_RDWR, 0666);
    ASSERT_GE(fd, 0);
    ::close(fd);
}

using PortSelection = SessionTest;

TEST_F(PortSelection, FirstPassPrefersAPortNobodyHasUsed) {
    Existing(PortMutex(15960));
    Existing(PortMutex(15961));
    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(session.AcquirePort(15960, 15962));
    EXPECT_EQ(session.Port(), 15962);
}

TEST_F(PortSelection, SecondPassSkipsTheLiveOwnersPortAndReclaimsTheDeadOnes) {
    Pipe liveReady, liveRelease, deadReady, deadRelease;
    const pid_t live = Owner(PortMutex(15960), liveReady, liveRelease);
    const pid_t dead = Owner(PortMutex(15961), deadReady, deadRelease);
    ASSERT_EQ(liveReady.Receive(), 1);
    ASSERT_EQ(deadReady.Receive(), 1);
    ::kill(dead, SIGKILL);
    ::waitpid(dead, nullptr, 0);
    Existing(PortMutex(15962));

    CWindowsJobSession session(&settings_, config_);
    ASSERT_TRUE(session.AcquirePort(15960, 15962));
    EXPECT_EQ(session.Port(), 15961);
    liveRelease.CloseWrite();
    EXPECT_TRUE(EndedCleanly(live));
}

TEST_F(PortSelection, TwentyProcessesStartingAtOnceGetDistinctPorts) {
    constexpr int kProcesses = 20;
    config_.LowerPort = 16000;
    config_.UpperPort = 16000 + kProcesses - 1;
    Pipe go, results, release;
    std::vector<pid_t> children;
    for (int k = 0; k < kProcesses; ++k) {
        children.push_back(Spawn([&] {
            go.CloseWrite();
            go.Receive();  // all start when the parent closes it
            CWindowsJobSession session(&settings_, config_);
            std::string error;
            results.Send(session.SelectPort(error) ? session.Port() : -1);
            release.CloseWrite();
            release.Receive();
        }));
    }
    go.CloseWrite();
    std::set<int> ports;
    for (int k = 0; k < kProcesses; ++k) {
        const int port = results.Receive();
        EXPECT_GE(port, 16000);
        EXPECT_LE(port, config_.UpperPort);
        ports.insert(port);
    }
    EXPECT_EQ(ports.size(), static_cast<std::size_t>(kProcesses));
    release.CloseWrite();
    for (pid_t child : children) EXPECT_TRUE(EndedCleanly(child));
}

TEST_F(PortSelection, AHeldCreationMutexFailsTheStartWithoutAText) {
    Pipe ready, release;
    const pid_t holder = Owner("Global\\QuillonConfluxTnavigatorProcessCreationMutex", ready, release);
    ASSERT_EQ(ready.Receive(), 1);
    CWindowsJobSession session(&settings_, config_);
    std::string error;
    EXPECT_EQ(session.StartProcess(error), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(Calls("tnav_create_manager"), 0);
    release.CloseWrite();
    EXPECT_TRUE(EndedCleanly(holder));

    // With the mutex free again the next start goes through.
    EXPECT_EQ(session.StartProcess(error), 0) << error;
}

}  // namespace
}  // namespace rivulet
