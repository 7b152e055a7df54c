#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/NamedMutex.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Result = NamedMutex::WaitResult;
using Clock = std::chrono::steady_clock;

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe(fd), 0); }
    ~Pipe() {
        ::close(fd[0]);
        CloseWrite();
    }
    char Read() {
        char c = 0;
        return ::read(fd[0], &c, 1) == 1 ? c : 0;
    }
    void Write(char c) { EXPECT_EQ(::write(fd[1], &c, 1), 1); }
    void CloseWrite() {
        ::close(fd[1]);
        fd[1] = -1;
    }
    int fd[2] = {-1, -1};
};

// Runs body in a child process that exits with what it returns.
template <typename Body>
pid_t Spawn(Body body) {
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(body());
    return pid;
}

int ExitCode(pid_t pid) {
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A child that creates and owns the mutex, writes '1' to ready when it does, and holds it until the
// parent writes to (or closes) done.
pid_t SpawnOwner(const std::string& name, Pipe& ready, Pipe& done) {
    const pid_t pid = Spawn([&] {
        done.CloseWrite();
        bool existed = true;
        auto mutex = NamedMutex::Create(name, true, &existed);
        ready.Write(mutex && !existed && mutex->Owned() ? '1' : '0');
        done.Read();
        return 0;
    });
    ready.CloseWrite();
    return pid;
}

// Every test gets a lock directory of its own, which does not exist yet.
class NamedMutexTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string root = (fs::temp_directory_path() / "rivulet-mutex-XXXXXX").string();
        ASSERT_NE(::mkdtemp(root.data()), nullptr);
        root_ = root;
        ::setenv("RIVULET_LOCK_DIR", (root_ / "locks").c_str(), 1);
    }
    void TearDown() override {
        ::unsetenv("RIVULET_LOCK_DIR");
        fs::remove_all(root_);
    }
    fs::path root_;
};

TEST_F(NamedMutexTest, TheCreatorOwnsItAndOtherHandlesWaitForItsRelease) {
    bool existed = true;
    auto owner = NamedMutex::Create("Global\\Job", true, &existed);
    ASSERT_TRUE(owner);
    EXPECT_FALSE(existed);
    EXPECT_TRUE(owner->Owned());
    EXPECT_EQ(owner->Wait(0), Result::Acquired);

    auto other = NamedMutex::Create("Global\\Job", true, &existed);
    ASSERT_TRUE(other);
    EXPECT_TRUE(existed);
    EXPECT_FALSE(other->Owned());
    EXPECT_FALSE(other->Release());
    const auto start = Clock::now();
    EXPECT_EQ(other->Wait(50), Result::Timeout);
    EXPECT_GE(Clock::now() - start, 45ms);

    EXPECT_TRUE(owner->Release());
    EXPECT_FALSE(owner->Release());
    EXPECT_EQ(other->Wait(0), Result::Acquired);
    EXPECT_TRUE(other->Owned());
    EXPECT_EQ(owner->Wait(0), Result::Timeout);
}

TEST_F(NamedMutexTest, TheMutexIsGoneOnceItIsGivenUpAndClosed) {
    const std::string name = "Global\\Once";
    bool existed = true;
    auto first = NamedMutex::Create(name, true, &existed);
    ASSERT_TRUE(first);
    NamedMutex::Create(name, false, &existed).reset();  // closing a mere waiter leaves the owner's mutex
    EXPECT_TRUE(existed);
    EXPECT_TRUE(fs::exists(NamedMutex::PathFor(name)));

    EXPECT_TRUE(first->Release());
    first.reset();
    EXPECT_FALSE(fs::exists(NamedMutex::PathFor(name)));
    auto second = NamedMutex::Create(name, true, &existed);
    ASSERT_TRUE(second);
    EXPECT_FALSE(existed);
    EXPECT_TRUE(second->Owned());

    second.reset();  // closed while owning
    ASSERT_TRUE(NamedMutex::Create(name, false, &existed));
    EXPECT_FALSE(existed);
}

TEST_F(NamedMutexTest, AnOwnerKilledLeavesAnAbandonedMutexThatIsAcquiredAtOnce) {
    Pipe ready, done;
    const pid_t child = SpawnOwner("Global\\Killed", ready, done);
    ASSERT_GT(child, 0);
    ASSERT_EQ(ready.Read(), '1');
    ::kill(child, SIGKILL);
    EXPECT_EQ(ExitCode(child), 128 + SIGKILL);

    bool existed = false;
    auto mutex = NamedMutex::Create("Global\\Killed", true, &existed);
    ASSERT_TRUE(mutex);
    EXPECT_TRUE(existed);
    EXPECT_FALSE(mutex->Owned());
    EXPECT_EQ(mutex->Wait(0), Result::Acquired);
}

TEST_F(NamedMutexTest, AnOwnerInAnotherProcessMakesWaitsTimeOutUntilItCloses) {
    Pipe ready, done;
    const pid_t child = SpawnOwner("Global\\Held", ready, done);
    ASSERT_GT(child, 0);
    ASSERT_EQ(ready.Read(), '1');

    bool existed = false;
    auto mutex = NamedMutex::Create("Global\\Held", false, &existed);
    ASSERT_TRUE(mutex);
    EXPECT_TRUE(existed);
    const auto start = Clock::now();
    EXPECT_EQ(mutex->Wait(200), Result::Timeout);
    const auto waited = Clock::now() - start;
    EXPECT_GE(waited, 190ms);
    EXPECT_LT(waited, 2000ms);
    EXPECT_FALSE(mutex->Owned());

    done.Write('x');
    EXPECT_EQ(ExitCode(child), 0);
    // The owner removed the file this handle had opened; the mutex taken now is the one of that name.
    EXPECT_EQ(mutex->Wait(1000), Result::Acquired);
    auto later = NamedMutex::Create("Global\\Held", false, &existed);
    ASSERT_TRUE(later);
    EXPECT_TRUE(existed);
    EXPECT_EQ(later->Wait(0), Result::Timeout);
}

TEST_F(NamedMutexTest, ProcessesContendingForItNeverOwnItTogether) {
    constexpr int kChildren = 8;
    constexpr int kRounds = 40;
    const std::string inside = (root_ / "inside").string();
    const std::string counter = (root_ / "counter").string();
    Pipe go;
    std::vector<pid_t> children;
    for (int i = 0; i < kChildren; ++i) {
        children.push_back(Spawn([&] {
            go.CloseWrite();
            go.Read();  // all start together when the parent closes the pipe
            for (int round = 0; round < kRounds; ++round) {
                // Creating with ownership races the waiters for a file just made: an owning handle
                // gets Acquired from Wait at once.
                auto mutex = NamedMutex::Create("Global\\Busy", round % 2 == 0, nullptr);
                if (!mutex || mutex->Wait(5000) != Result::Acquired) return 2;
                const int marker = ::open(inside.c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600);
                if (marker < 0) return errno == EEXIST ? 3 : 4;  // 3: another owner is inside
                ::close(marker);
                const int fd = ::open(counter.c_str(), O_CREAT | O_RDWR, 0600);
                int count = 0;
                if (fd < 0 || ::pread(fd, &count, sizeof count, 0) < 0) return 4;
                ::usleep(100);
                ++count;
                if (::pwrite(fd, &count, sizeof count, 0) != sizeof count) return 4;
                ::close(fd);
                ::unlink(inside.c_str());
                if (!mutex->Release()) return 5;
            }
            return 0;
        }));
        ASSERT_GT(children.back(), 0);
    }
    go.CloseWrite();
    for (const pid_t child : children) EXPECT_EQ(ExitCode(child), 0);

    const int fd = ::open(counter.c_str(), O_RDONLY);
    int count = 0;
    EXPECT_EQ(::pread(fd, &count, sizeof count, 0), static_cast<ssize_t>(sizeof count));
    ::close(fd);
    EXPECT_EQ(count, kChildren * kRounds);
}

TEST_F(NamedMutexTest, NamesMapToDistinctSafeFilesInASharedDirectory) {
    const fs::path a1 = NamedMutex::PathFor("Global\\A1");
    const fs::path a2 = NamedMutex::PathFor("Global\\A2");
    EXPECT_NE(a1, a2);
    for (const fs::path& path : {a1, a2, fs::path(NamedMutex::PathFor("a/../b c\\d"))}) {
        EXPECT_EQ(path.parent_path(), root_ / "locks");
        EXPECT_EQ(path.string().find('\\'), std::string::npos) << path;
    }

    auto mutex = NamedMutex::Create("Global\\A1", false, nullptr);
    ASSERT_TRUE(mutex);
    EXPECT_TRUE(fs::is_regular_file(a1));
    const fs::perms shared = fs::perms::all | fs::perms::sticky_bit;
    EXPECT_EQ(fs::status(root_ / "locks").permissions() & shared, shared);

    ::setenv("RIVULET_LOCK_DIR", (a1 / "sub").c_str(), 1);  // beneath a regular file
    errno = 0;
    EXPECT_FALSE(NamedMutex::Create("Global\\A1", false, nullptr));
    EXPECT_EQ(errno, ENOTDIR);
}

}  // namespace
}  // namespace rivulet
