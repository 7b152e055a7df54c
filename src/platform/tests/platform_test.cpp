// The platform layer: named mutexes shared by processes, the registry store, automation dates and the
// process-wide user interface.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/NamedMutex.h"
#include "platform/OleDate.h"
#include "platform/Registry.h"
#include "platform/UserInterface.h"

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

// Every test gets a scratch directory of its own, for the lock directory (which does not exist yet) and the
// registry's file.
class ScratchDirectory : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string root = (fs::temp_directory_path() / "rivulet-platform-XXXXXX").string();
        ASSERT_NE(::mkdtemp(root.data()), nullptr);
        root_ = root;
        registry_ = (root_ / "sub" / "registry.reg").string();
        ::setenv("RIVULET_LOCK_DIR", (root_ / "locks").c_str(), 1);
        ::setenv("RIVULET_REGISTRY", registry_.c_str(), 1);
    }
    void TearDown() override {
        ::unsetenv("RIVULET_LOCK_DIR");
        ::unsetenv("RIVULET_REGISTRY");
        fs::remove_all(root_);
    }
    std::string RegistryText() const {
        std::ifstream in(registry_);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    fs::path root_;
    std::string registry_;
};

class NamedMutexTest : public ScratchDirectory {};
class RegistryStore : public ScratchDirectory {};

TEST_F(NamedMutexTest, OneHandleOwnsItAtATimeAndItIsGoneOnceGivenUpAndClosed) {
    const std::string name = "Global\\Job";
    const fs::path path = NamedMutex::PathFor(name);
    bool existed = true;
    auto owner = NamedMutex::Create(name, true, &existed);
    ASSERT_TRUE(owner);
    EXPECT_TRUE(!existed && owner->Owned());
    EXPECT_EQ(owner->Wait(0), Result::Acquired);

    auto other = NamedMutex::Create(name, true, &existed);
    ASSERT_TRUE(other);
    EXPECT_TRUE(existed && !other->Owned());
    EXPECT_FALSE(other->Release());
    const auto start = Clock::now();
    EXPECT_EQ(other->Wait(50), Result::Timeout);
    EXPECT_GE(Clock::now() - start, 45ms);
    NamedMutex::Create(name, false, nullptr).reset();  // closing a mere waiter leaves the owner's mutex
    EXPECT_TRUE(fs::exists(path));

    EXPECT_TRUE(owner->Release());
    EXPECT_FALSE(owner->Release());
    EXPECT_EQ(other->Wait(0), Result::Acquired);
    EXPECT_TRUE(other->Owned());
    EXPECT_EQ(owner->Wait(0), Result::Timeout);
    other.reset();  // closed while owning
    EXPECT_FALSE(fs::exists(path));

    auto again = NamedMutex::Create(name, true, &existed);
    ASSERT_TRUE(again);
    EXPECT_TRUE(!existed && again->Owned());
    EXPECT_TRUE(again->Release());
    again.reset();  // given up, then closed
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(NamedMutexTest, AnOwnerInAnotherProcessHoldsItUntilItClosesOrIsKilled) {
    for (const bool killed : {false, true}) {
        SCOPED_TRACE(killed);
        const std::string name = killed ? "Global\\Killed" : "Global\\Held";
        Pipe ready, done;  // the child owns the mutex when it writes '1' to ready, until done is written to
        const pid_t child = Spawn([&] {
            done.CloseWrite();
            bool existed = true;
            auto owner = NamedMutex::Create(name, true, &existed);
            ready.Write(owner && !existed && owner->Owned() ? '1' : '0');
            done.Read();
            return 0;
        });
        ready.CloseWrite();
        ASSERT_GT(child, 0);
        ASSERT_EQ(ready.Read(), '1');
        if (killed) {  // leaves its file behind, so the mutex still exists
            ::kill(child, SIGKILL);
            EXPECT_EQ(ExitCode(child), 128 + SIGKILL);
        }
        bool existed = false;
        auto mutex = NamedMutex::Create(name, killed, &existed);
        ASSERT_TRUE(mutex);
        EXPECT_TRUE(existed && !mutex->Owned());
        if (!killed) {
            const auto start = Clock::now();
            EXPECT_EQ(mutex->Wait(200), Result::Timeout);
            EXPECT_LT(Clock::now() - start, 2000ms);
            EXPECT_FALSE(mutex->Owned());
            done.Write('x');
            EXPECT_EQ(ExitCode(child), 0);
        }
        // An abandoned mutex is acquired at once. An owner that closed removed the file this handle had
        // opened; the mutex taken then is the one of that name.
        EXPECT_EQ(mutex->Wait(killed ? 0 : 1000), Result::Acquired);
        auto later = NamedMutex::Create(name, false, &existed);
        ASSERT_TRUE(later);
        EXPECT_TRUE(existed);
        EXPECT_EQ(later->Wait(0), Result::Timeout);
    }
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

TEST_F(RegistryStore, ValuesRoundTripThroughTheFile) {
    RegistryValues written{{"Queues", RegistryValue::String("short\nlong \"night\" C:\\q")},
                           {"LowerPort", RegistryValue::Dword(15960)}};
    ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, kDriverRegistryKey, written));
    EXPECT_EQ(fs::status(registry_).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(RegistryText().find("\"LowerPort\"=dword:00003e58"), std::string::npos) << RegistryText();

    RegistryValues read;
    ASSERT_TRUE(Registry::ReadKey(kHkeyCurrentUser,
                                  "software\\QUILLON\\conflux\\ExtensionDlls110_64\\tNavigator", read));
    EXPECT_EQ(Registry::StringValue(read, "queues"), "short\nlong \"night\" C:\\q");
    EXPECT_EQ(Registry::DwordValue(read, "LOWERPORT"), 15960u);
    EXPECT_EQ(Registry::DwordValue(read, "Queues"), std::nullopt);  // a value of another kind
    EXPECT_EQ(Registry::StringValue(read, "LowerPort"), std::nullopt);
    EXPECT_EQ(Registry::StringValue(read, "Missing"), std::nullopt);
}

TEST_F(RegistryStore, KeysAreCreatedOnReadAndOtherHivesAreEmpty) {
    RegistryValues values{{"x", RegistryValue::Dword(1)}};
    EXPECT_FALSE(Registry::WriteValues(0x80000002, "Software\\Other", values));
    EXPECT_FALSE(Registry::ReadKey(0x80000002, "Software\\Other", values));
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(Registry::WriteValues(kHkeyCurrentUser, "Bad\nKey", values));

    EXPECT_TRUE(
        Registry::ReadKey(0xFFFFFFFF80000001, "Software\\New", values));  // as a 64-bit host passes it
    EXPECT_TRUE(values.empty());
    EXPECT_NE(RegistryText().find("[Software\\New]"), std::string::npos);
}

TEST_F(RegistryStore, UnknownLinesOfAKeyAreKept) {
    fs::create_directories(fs::path(registry_).parent_path());
    std::ofstream(registry_)
        << "REGEDIT4\r\n\r\n[Software\\A]\r\n\"Bin\"=hex:01,02\r\n\"S\"=\"v\"\r\nnoise\r\n";
    ASSERT_TRUE(Registry::WriteValues(kHkeyCurrentUser, "Software\\A", {{"S", RegistryValue::String("w")}}));
    const RegistryKeys keys = ParseRegFile(RegistryText());
    const RegistryValues& a = keys.at("Software\\A");
    EXPECT_EQ(a.at("Bin"), (RegistryValue{RegistryValue::Kind::Other, "hex:01,02", 0}));
    EXPECT_EQ(a.at("S"), RegistryValue::String("w"));
    EXPECT_EQ(ParseRegFile(FormatRegFile(keys)), keys);
}

TEST_F(RegistryStore, ConcurrentWritersLoseNoValue) {
    constexpr int kWrites = 40;
    const auto write = [](const std::string& who) {
        for (int i = 0; i < kWrites; ++i) {
            Registry::WriteValues(
                kHkeyCurrentUser, "Software\\Race",
                {{who + std::to_string(i), RegistryValue::Dword(static_cast<std::uint32_t>(i))}});
        }
        return 0;
    };
    const pid_t child = Spawn([&] { return write("child"); });
    ASSERT_GT(child, 0);
    write("parent");
    EXPECT_EQ(ExitCode(child), 0);
    RegistryValues values;
    ASSERT_TRUE(Registry::ReadKey(kHkeyCurrentUser, "Software\\Race", values));
    EXPECT_EQ(values.size(), 2u * kWrites);
}

TEST(OleDate, CalendarDaysMatchTheAutomationEpochAndImpossibleDaysAreInvalid) {
    // There is no 29 February 1900, and before day 0 the fraction runs forward.
    using C = std::pair<CalendarTime, std::optional<double>>;
    for (const auto& [time, days] :
         {C{{1899, 12, 30}, 0.0}, C{{1899, 12, 31}, 1.0}, C{{1900, 3, 1}, 61.0}, C{{2000, 1, 1, 12}, 36526.5},
          C{{2024, 2, 29}, 45351.0}, C{{1899, 12, 29, 6}, -1.25}, C{{2023, 2, 29}, std::nullopt},
          C{{2023, 4, 31}, std::nullopt}, C{{2023, 13, 1}, std::nullopt}}) {
        const OleDate date = OleDate::FromCalendar(time);
        EXPECT_EQ(date.IsValid() ? std::optional(date.Days()) : std::nullopt, days)
            << time.year << "-" << time.month;
    }
}

TEST(OleDate, RoundTripsThroughTheCalendarToTheNearestSecond) {
    for (const double days : {0.0, 1.5, -1.25, -400.75, 36526.5, 45000.123456, 2958465.0}) {
        const auto t = OleDate::FromDays(days).ToCalendar();
        ASSERT_TRUE(t.has_value()) << days;
        EXPECT_NEAR(OleDate::FromCalendar(*t).Days(), days, 0.5 / 86400.0) << days;
    }
    const auto late = OleDate::FromDays(1.0 + 86399.6 / 86400.0).ToCalendar();  // rounds up to midnight
    ASSERT_TRUE(late.has_value());
    EXPECT_EQ(std::tie(late->year, late->month, late->day, late->hour), std::tuple(1900, 1, 1, 0));
    EXPECT_FALSE(OleDate::FromDays(5e7).ToCalendar().has_value());
}

TEST(OleDate, EqualityAllowsHalfASecondAndOrderFoldsNegativeDays) {
    const double halfSecond = 1.0 / 172800.0;
    EXPECT_EQ(OleDate::FromDays(100.0), OleDate::FromDays(100.0 + 0.9 * halfSecond));
    EXPECT_FALSE(OleDate::FromDays(100.0) == OleDate::FromDays(100.0 + 1.1 * halfSecond));
    // Order has no tolerance: of two equal dates a fraction of a second apart, the earlier is before.
    EXPECT_TRUE(OleDate::FromDays(100.0) < OleDate::FromDays(100.0 + 0.9 * halfSecond));
    EXPECT_FALSE(OleDate::FromDays(100.5) <= OleDate::FromDays(100.25));
    // -1.25 is 29 December 06:00 and -1.75 the same day at 18:00: later, though the number is smaller.
    EXPECT_TRUE(OleDate::FromDays(-1.25) < OleDate::FromDays(-1.75));
    EXPECT_FALSE(OleDate::FromDays(-1.75) < OleDate::FromDays(-1.25));
    // Null and invalid dates are neither before nor after anything.
    EXPECT_FALSE(OleDate::Null() < OleDate::FromDays(1.0));
    EXPECT_FALSE(OleDate::FromDays(1.0) < OleDate::Invalid());
    EXPECT_EQ(OleDate::Null(), OleDate::Null());
    EXPECT_FALSE(OleDate::Invalid() == OleDate::Invalid());
    EXPECT_FALSE(OleDate::Null() == OleDate::FromDays(0.0));
    EXPECT_FALSE(OleDate::Null() <= OleDate::FromDays(0.0));
    EXPECT_FALSE(OleDate::Null() >= OleDate::FromDays(0.0));
}

TEST(OleDate, DaysAddOnTheContinuousAxis) {
    // 29 December 1899 06:00 plus a day and a half is 30 December 18:00; 1 January less 3.25 days is
    // 28 December 18:00, day -2 with the fraction running forwards.
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(-1.25) + 1.5), 0.75);
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(2.0) - 3.25), -2.75);
    EXPECT_DOUBLE_EQ(OleDate::FromContinuous(OleDate::Continuous(-1.25)), -1.25);
    EXPECT_EQ(OleDate::FromDays(42000.5).Format("%d %b %Y %H"), "27 Dec 2014 12");
}

struct AlwaysOk : UserInterface {
    int shown = 0;
    void ShowMessage(const std::string&, MessageIcon) override { ++shown; }
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        dialog.OnOpen();
        return dialog.OnClicked(kIdOk) == DialogAction::CloseOk ? DialogAnswer::Ok : DialogAnswer::Cancel;
    }
    std::optional<std::string> ChooseFile(const std::string&, const std::string&,
                                          const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> ChooseDirectory(const std::string&) override { return std::nullopt; }
    void ShowHelp(int) override {}
};

struct Dialog : ModalDialog {
    bool okCalled = false;
    std::string Title() const override { return "Test"; }
    void OnOpen() override {}
    DialogAction OnClicked(int id) override {
        okCalled = id == kIdOk;
        return DialogAction::CloseOk;
    }
};

TEST(UserInterface, HeadlessUntilAnotherIsInstalledAndAfterItIsRemoved) {
    // A front end that cannot be loaded leaves the headless interface in place.
    ::unsetenv("RIVULET_HEADLESS");
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("RIVULET_UI_LIBRARY", "/nonexistent/librivulet-ui.so", 1);
    Dialog dialog;
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Cancel);
    EXPECT_FALSE(dialog.okCalled);
    ::unsetenv("QT_QPA_PLATFORM");
    ::unsetenv("RIVULET_UI_LIBRARY");
    ::setenv("RIVULET_HEADLESS", "1", 1);

    auto ok = std::make_shared<AlwaysOk>();
    EXPECT_EQ(InstallUserInterface(ok), nullptr);
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Ok);
    CurrentUserInterface().ShowMessage("hello", MessageIcon::Warning);
    EXPECT_EQ(ok->shown, 1);
    EXPECT_EQ(InstallUserInterface(nullptr), ok);
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Cancel);
}

}  // namespace
}  // namespace rivulet
