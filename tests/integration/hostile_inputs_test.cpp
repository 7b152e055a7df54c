// Archive files, model strings and registry files that were damaged or made up: every count or length they
// hold is checked before anything is reserved, so each load is refused (or taken) at once and in little
// memory. The session exports answer a null instance with their failure.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "StandinFixture.h"

namespace rivulet::it {
namespace {

constexpr std::uint32_t kModelStringBytes = 102400;
// Under the sanitizers every allocation carries shadow memory and a quarantine, and every access costs more:
// the bounds there only catch a load that reserves what a count asks for before checking it.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kSanitizerFactor = 8;
#else
constexpr int kSanitizerFactor = 1;
#endif
constexpr double kMaxMilliseconds = 50.0 * kSanitizerFactor;
constexpr long kMaxGrowthKiB = 10 * 1024 * kSanitizerFactor;
using Bytes = std::vector<char>;

long ResidentKiB() {
    long pages = 0, resident = 0;
    if (std::FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(statm);
    }
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

long PeakKiB() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// The processor time of this thread: the work of a load, whatever else the machine runs meanwhile.
double ThreadMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// The worst time and memory growth over a run of loads; memory is the larger of the peak's rise and what
// stays resident afterwards.
struct Worst {
    double limit = kMaxMilliseconds;
    double milliseconds = 0.0;
    long growthKiB = 0;

    template <typename Load>
    void Measure(Load load, const std::string& what) {
        const long peak = PeakKiB(), resident = ResidentKiB();
        const double start = ThreadMilliseconds();
        load();
        const std::chrono::duration<double, std::milli> took{ThreadMilliseconds() - start};
        const long growth = std::max(PeakKiB() - peak, ResidentKiB() - resident);
        EXPECT_LT(took.count(), limit) << what;
        EXPECT_LT(growth, kMaxGrowthKiB) << what;
        milliseconds = std::max(milliseconds, took.count());
        growthKiB = std::max(growthKiB, growth);
    }
    void Report(const char* kind) const {
        std::printf("[ hostile  ] %s: worst %.2f ms, %ld KiB growth\n", kind, milliseconds, growthKiB);
    }
};

// Copies of `original` with a huge count written at every 4-byte boundary: two 32-bit ones, and 5 * 2^40
// where eight bytes fit.
std::vector<Bytes> HugeCountVariants(const Bytes& original, std::size_t from = 0) {
    std::vector<Bytes> variants;
    for (std::size_t at = from; at + 4 <= original.size(); at += 4) {
        for (const std::uint32_t huge : {0x7FFFFFFFu, 0xFFFFFFFFu}) {
            variants.push_back(original);
            std::memcpy(variants.back().data() + at, &huge, sizeof huge);
        }
        if (at + 8 <= original.size()) {
            const std::uint64_t huge = 5ULL << 40;
            variants.push_back(original);
            std::memcpy(variants.back().data() + at, &huge, sizeof huge);
        }
    }
    return variants;
}

// `prefix` followed by random bytes up to `size`.
Bytes Junk(const Bytes& prefix, std::size_t size, std::mt19937& random) {
    Bytes bytes(prefix.begin(), prefix.begin() + static_cast<std::ptrdiff_t>(std::min(prefix.size(), size)));
    while (bytes.size() < size) bytes.push_back(static_cast<char>(random() & 0xFF));
    return bytes;
}

class HostileInputs : public StandinTest {
  protected:
    void TearDown() override {
        if (other_ != nullptr) {
            EXPECT_EQ(Driver().DestroyInstance(other_, nullptr), 0u);
        }
        StandinTest::TearDown();
    }
    // A model that holds nothing yet, for the loads: the running one keeps its session to itself.
    std::int32_t OnOther(std::uint32_t command, std::uint64_t argument, std::uint32_t count) {
        if (other_ == nullptr) {
            EXPECT_EQ(Driver().CreateInstance(&other_, nullptr), 0u);
        }
        err_ = StaleRecord();
        return static_cast<std::int32_t>(Driver().Cmd(other_, 0, command, argument, count, &err_));
    }
    void StartSpe1() {
        Configure();
        LocalCase(std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA");
        ASSERT_EQ(Cmd(23), 0) << Message(err_);
    }
    Bytes Write(const std::string& path, const Bytes& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), std::ssize(bytes));
        return bytes;
    }
    // Loads the archive file at `path` into the other model; a refusal keeps the load's own message.
    void LoadArchive(const std::string& path, Worst& worst, const std::string& what) {
        std::int32_t result = 0;
        worst.Measure([&] { result = OnOther(20, Arg(path.c_str()), 1); }, what);
        if (result != 0) {
            EXPECT_EQ(Message(err_), "LoadFromArchiveFile() could not load <" + path + ">") << what;
        }
    }
    std::int32_t LoadString(const Bytes& string, std::int32_t length) {
        host::Buffer record(102424);
        std::memcpy(record.data() + 4, string.data(),
                    std::min<std::size_t>(string.size(), kModelStringBytes));
        record.Put<std::int32_t>(102404, length);
        record.Put<std::uint64_t>(102408, Arg("/cases/hostile.cfx"));
        record.Put<std::uint32_t>(102416, 1);
        return OnOther(13, record.Address(), 0);
    }

    void* other_ = nullptr;
};

TEST_F(HostileInputs, ArchiveFilesWithHugeCountsOrJunkAreRefusedAtOnce) {
    StartSpe1();
    const std::string saved = (scratch_.root / "spe1.arc").string();
    ASSERT_EQ(Cmd(20, Arg(saved.c_str()), 0), 0);
    ASSERT_EQ(Cmd(14), 0);
    std::ifstream file(saved, std::ios::binary);
    const Bytes original((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_GT(original.size(), 100u);

    Worst worst;
    const std::string path = (scratch_.root / "hostile.arc").string();
    Write(path, original);
    EXPECT_EQ(OnOther(20, Arg(path.c_str()), 1), 0) << Message(err_);  // the untouched archive loads
    for (const Bytes& variant : HugeCountVariants(original)) {
        Write(path, variant);
        LoadArchive(path, worst, "archive of " + std::to_string(variant.size()) + " bytes");
    }
    std::mt19937 random(20);
    const Bytes header(original.begin(), original.begin() + 12);
    for (const std::size_t size : {16u, 4096u, 1u << 20}) {
        for (const Bytes& prefix : {Bytes{}, header, original}) {
            Write(path, Junk(prefix, size, random));
            LoadArchive(path, worst,
                        "junk of " + std::to_string(size) + " after " + std::to_string(prefix.size()));
        }
    }
    worst.Report("archive files");
}

TEST_F(HostileInputs, ModelStringsWithHugeCountsOrJunkAreRefusedAtOnce) {
    StartSpe1();
    host::Buffer saved(kModelStringBytes);
    ASSERT_EQ(Cmd(12, saved.Address(), kModelStringBytes), 0) << Message(err_);
    // The string's used length: its last nonzero byte, rounded up to the next boundary.
    const auto& all = saved.Bytes();
    const auto last = std::find_if(all.rbegin(), all.rend(), [](std::uint8_t b) { return b != 0; });
    const std::size_t used = std::min<std::size_t>((all.rend() - last + 64) / 4 * 4, kModelStringBytes);
    const Bytes original(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(used));

    Worst worst;
    EXPECT_EQ(LoadString(original, static_cast<std::int32_t>(used)), 0) << Message(err_);
    for (const Bytes& variant : HugeCountVariants(original)) {
        for (const std::int32_t length :
             {static_cast<std::int32_t>(used), std::int32_t{-1}, std::int32_t{0x7FFFFFFF}}) {
            std::int32_t result = 0;
            worst.Measure([&] { result = LoadString(variant, length); }, "model string");
            if (result != 0) {
                EXPECT_FALSE(Message(err_).empty());
            }
        }
    }
    std::mt19937 random(13);
    for (const Bytes& prefix : {Bytes{}, Bytes(original.begin(), original.begin() + 8), original}) {
        const Bytes junk = Junk(prefix, kModelStringBytes, random);
        worst.Measure([&] { LoadString(junk, static_cast<std::int32_t>(kModelStringBytes)); }, "junk string");
    }
    worst.Report("model strings");
}

TEST_F(HostileInputs, JunkRegistryFilesAreReadInLinearTime) {
    Configure();  // the registry file named by RIVULET_REGISTRY is the fixture's own
    std::string key = kSourceKey;
    char* name = key.data();
    const auto copy = [&] { Driver().CopyConfigure(0x80000001, &name); };
    std::mt19937 random(4);
    const Bytes header = {'R', 'E', 'G', 'E', 'D', 'I', 'T', '4', '\n', '['};
    const std::string keyLine = "\n[" + std::string(kSourceKey) + "\\tNavigator]\n";
    Bytes longValue(keyLine.begin(), keyLine.end());
    const std::string dwordStart = "\"LowerPort\"=dword:";
    longValue.insert(longValue.end(), dwordStart.begin(), dwordStart.end());
    longValue.resize(1 << 20, 'f');
    Bytes manyLines;
    while (manyLines.size() < (1u << 20)) {
        const std::string line = "\"V\"=hex:" + std::to_string(random()) + ",ff,ff\n[";
        manyLines.insert(manyLines.end(), line.begin(), line.end());
    }
    const Bytes files[] = {
        Junk({}, 1 << 20, random), Junk(header, 1 << 20, random), longValue, manyLines, Bytes(1 << 20, '\n'),
        Bytes(1 << 20, '"')};
    // Copying the configuration also writes it back, file sync included: the bound holds for both.
    Worst worst;
    copy();  // warm-up
    for (const Bytes& contents : files) {
        Write(registry_, contents);
        worst.Measure(copy, "registry file starting " + std::string(contents.begin(), contents.begin() + 16));
    }
    worst.Report("registry files");
}

TEST(NullInstance, EveryExportAnswersItsFailureAndWritesNothing) {
    const host::ErrorRecord stale = StaleRecord();
    host::ErrorRecord err = stale;
    EXPECT_EQ(Driver().ConnectToApp(nullptr, 1, 2, &err), 1u);
    EXPECT_EQ(std::memcmp(&err, &stale, sizeof err), 0);
    EXPECT_EQ(Driver().ConnectToApp(nullptr, 0, 0, nullptr), 1u);
    EXPECT_EQ(Driver().StartApp(nullptr, 1, &err), 1u);
    EXPECT_EQ(std::memcmp(&err, &stale, sizeof err), 0);
    EXPECT_EQ(Driver().StartApp(nullptr, 0, nullptr), 1u);
    EXPECT_EQ(Driver().StopApp(nullptr), 1u);

    const ScratchDir scratch;
    const std::string xml = (scratch.root / "null.xml").string();
    EXPECT_EQ(Driver().EquipXml(nullptr, xml.c_str(), 0, nullptr), 1u);
    EXPECT_FALSE(std::filesystem::exists(xml));
    EXPECT_EQ(Driver().Cmd(nullptr, 0, 20, 0, 1, nullptr), 1u);
    Driver().CopyConfigure(0x80000001, nullptr);
    char* none = nullptr;
    Driver().CopyConfigure(0x80000001, &none);
}

}  // namespace
}  // namespace rivulet::it
