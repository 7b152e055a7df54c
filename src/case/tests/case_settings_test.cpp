#include "case/CaseSettings.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;

// The items each section version adds, in stream order (references, valid while `s` lives).
template <typename Settings>
auto SinceVersion1(Settings&& s) {
    return std::tie(s.FileName, s.IsLocalMachine, s.HeadNodeName, s.HeadNodePort, s.WindowsEquivDir,
                    s.RateControl, s.GlrThreshold, s.IprAlpha, s.IprModel, s.UnconnectedState);
}
template <typename Settings>
auto SinceVersion2(Settings&& s) {
    return std::tie(s.DefaultFluidTemp, s.FluidTempUnit);
}
template <typename Settings>
auto SinceVersion4(Settings&& s) {
    return std::tie(s.ParallelCount, s.LinuxQueue, s.Reserved1, s.Reserved2, s.ReservedReal1, s.ReservedReal2,
                    s.ReservedText1, s.ReservedText2);
}
template <typename Settings>
auto Fields(Settings&& s) {
    return std::tuple_cat(SinceVersion1(s), SinceVersion2(s), SinceVersion4(s));
}

// Every field differs from its default; numbers are distinct so a misplaced item shows (which puts
// UnconnectedState outside its table).
CaseSettings Customised() {
    CaseSettings s;
    Fields(s) = std::make_tuple("/data/run/CASE.DATA", false, "head01", 6001, "\\\\server\\run\\", 3, 900, 5,
                                1, 2, 80.5, 4, 16, "long", -7, 11, 1.25, -2.5, "alpha", "beta");
    return s;
}

void Put(BinaryArchive& archive, bool flag) {
    std::int32_t stored = flag ? 1 : 0;
    archive.Transfer(stored);
}
template <typename Item>
void Put(BinaryArchive& archive, Item item) {
    archive.Transfer(item);
}

Bytes Store(CaseSettings settings, std::int32_t version = 5) {
    Bytes buffer(1024);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    EXPECT_EQ(settings.StreamData(&archive, version), 0);
    buffer.resize(archive.Position());
    return buffer;
}

// A section of `version` written item by item in stream order, holding the values of `s`.
Bytes HandWritten(std::int32_t version, const CaseSettings& s = Customised()) {
    Bytes buffer(1024);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    const auto put = [&archive](auto... items) { (Put(archive, items), ...); };
    if (version >= 1) std::apply(put, SinceVersion1(s));
    if (version >= 2) std::apply(put, SinceVersion2(s));
    if (version >= 4) std::apply(put, SinceVersion4(s));
    buffer.resize(archive.Position());
    return buffer;
}

// Loads into `target` and checks the whole section was taken.
CaseSettings Load(const Bytes& bytes, std::int32_t version, CaseSettings target = Customised()) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_EQ(target.StreamData(&archive, version), 0);
    EXPECT_EQ(archive.Position(), bytes.size());
    return target;
}

TEST(CaseSettingsFieldsTest, DefaultsResetAndCopy) {
    CaseSettings s;
    EXPECT_EQ(Fields(s), std::make_tuple("", true, "", 5555, "", 1, 587, 1, 2, 0, 250.0, 2, 0, "", 0, 0, 0.0,
                                         0.0, "", ""));
    EXPECT_EQ(s.GetDataServerName(), "CaseDetails");
    s.CopyFrom(Customised());
    EXPECT_EQ(Fields(s), Fields(Customised()));
    s.ResetToDefaults();
    EXPECT_EQ(Fields(s), Fields(CaseSettings()));
}

TEST(CaseSettingsStreamTest, StoresTheWholeSectionInStreamOrder) {
    // The defaults have an empty FileName and a local machine; Customised() neither.
    for (const CaseSettings& s : {CaseSettings(), Customised()}) {
        EXPECT_EQ(Store(s), HandWritten(5, s));
        EXPECT_EQ(Store(s, 1), HandWritten(5, s));  // whatever version the writer is handed
        const CaseSettings other = s.IsLocalMachine ? Customised() : CaseSettings();
        EXPECT_EQ(Fields(Load(HandWritten(5, s), 5, other)), Fields(s));
    }
    Bytes bytes = HandWritten(5);
    bytes[8 + 4 + 19 + 1] = 0x02;  // IsLocalMachine, after the 19-character FileName, becomes 512
    EXPECT_TRUE(Load(bytes, 5).IsLocalMachine);
    EXPECT_EQ(CaseSettings().StreamData(nullptr, 5), 1);
}

TEST(CaseSettingsStreamTest, EachVersionLoadsWhatItHoldsAndResetsTheRest) {
    const CaseSettings defaults, custom = Customised();
    for (std::int32_t version = 0; version <= 5; ++version) {
        const CaseSettings s = Load(HandWritten(version), version);
        EXPECT_EQ(SinceVersion1(s), SinceVersion1(version >= 1 ? custom : defaults)) << version;
        EXPECT_EQ(SinceVersion2(s), SinceVersion2(version >= 2 ? custom : defaults)) << version;
        EXPECT_EQ(SinceVersion4(s), SinceVersion4(version >= 4 ? custom : defaults)) << version;
        if (version == 0) continue;
        Bytes cut = HandWritten(version);
        cut.pop_back();
        BinaryArchive archive(cut.data(), cut.size(), ArchiveDirection::Load);
        EXPECT_THROW(CaseSettings().StreamData(&archive, version), ArchiveException) << version;
    }
}

// CaseFileName, CaseBaseName and CaseDirectory of `file_name`.
std::tuple<std::string, std::string, std::string> Parts(const std::string& file_name) {
    CaseSettings s;
    s.FileName = file_name;
    return {s.CaseFileName(), s.CaseBaseName(), s.CaseDirectory()};
}

TEST(CaseSettingsPathTest, SplitsOnEitherSeparator) {
    EXPECT_EQ(Parts("/data/run/CASE.DATA"), std::make_tuple("CASE.DATA", "CASE", "/data/run/"));
    EXPECT_EQ(Parts("C:\\cases\\field.v2\\NORTH.SIM.DATA"),
              std::make_tuple("NORTH.SIM.DATA", "NORTH.SIM", "C:\\cases\\field.v2\\"));
    EXPECT_EQ(Parts("  D:\\share/run\\ CASE.DATA \t"),
              std::make_tuple("CASE.DATA", "CASE", "D:\\share/run\\"));
    EXPECT_EQ(Parts(" CASE "), std::make_tuple("CASE", "CASE", ""));
}

TEST(CaseSettingsChoiceTest, TablesAndOutOfRangeValues) {
    using S = CaseSettings;
    EXPECT_EQ(S::RateControlText(2), "Driven by Gas-to-Liquid Ratio");
    EXPECT_EQ(S::FluidTempUnitText(4), "Deg K");
    EXPECT_EQ(S::IprAlphaText(0), "Strong bias to low rates");
    EXPECT_EQ(S::IprAlphaText(5), "Bias to high rates");
    EXPECT_EQ(S::IprModelText(2), "Corrected (Quillon)");
    EXPECT_EQ(S::UnconnectedStateText(0) + "|" + S::UnconnectedStateText(1), "Under Deck Control|Shut");
    EXPECT_EQ(S::RateControlText(4) + S::IprModelText(0) + S::UnconnectedStateText(2) +
                  S::FluidTempUnitText(0) + S::FluidTempUnitText(5) + S::IprAlphaText(-1) +
                  S::IprAlphaText(6),
              "");
    const std::pair<int, double> alphas[] = {{0, 1.8}, {4, 0.85}, {5, 0.75}, {-1, 1.6}, {6, 1.6}};
    for (const auto& [choice, alpha] : alphas) EXPECT_EQ(S::IprAlphaValue(choice), alpha) << choice;
}

TEST(CaseSettingsTemperatureTest, ConvertsToFahrenheitOrGivesTheUnsetValue) {
    const std::tuple<int, double, double> cases[] = {
        {1, 100.0, 212.0},  {2, 212.0, 212.0},  {3, 671.67, 212.0},  {4, 373.15, 212.0},
        {0, 100.0, 3.4e35}, {5, 100.0, 3.4e35}, {1, 3.3e35, 3.4e35}, {1, 3.1e35, 3.1e35 * 1.8 + 32.0}};
    CaseSettings s;
    for (const auto& [unit, temperature, fahrenheit] : cases) {
        std::tie(s.FluidTempUnit, s.DefaultFluidTemp) = std::make_tuple(unit, temperature);
        EXPECT_DOUBLE_EQ(s.DefaultFluidTempF(), fahrenheit) << unit << " " << temperature;
    }
}

class CaseSettingsLastUsedTest : public ::testing::Test {
  protected:
    void SetUp() override { ::setenv("RIVULET_REGISTRY", path_.c_str(), 1); }
    void TearDown() override {
        ::unsetenv("RIVULET_REGISTRY");
        std::filesystem::remove(path_);
        std::filesystem::remove(path_.string() + ".lock");
    }
    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / ("rivulet-last-used-" + std::to_string(::getpid()));
};

TEST_F(CaseSettingsLastUsedTest, SavedValuesComeBackButTheParallelCount) {
    CaseSettings saved = Customised();
    EXPECT_TRUE(saved.SaveLastUsed());
    CaseSettings loaded;
    EXPECT_TRUE(loaded.LoadLastUsed());
    saved.ParallelCount = 0;
    EXPECT_EQ(std::tuple_cat(SinceVersion1(loaded), SinceVersion2(loaded),
                             std::tie(loaded.ParallelCount, loaded.LinuxQueue)),
              std::tuple_cat(SinceVersion1(saved), SinceVersion2(saved),
                             std::tie(saved.ParallelCount, saved.LinuxQueue)));

}

TEST_F(CaseSettingsLastUsedTest, MissingOrBadValuesLeaveTheirFields) {
    std::ofstream(path_) << "REGEDIT4\n\n[Software\\Quillon\\Conflux\\ExtensionDlls110_64\\tNavigator]\n"
                         << "\"Case\"=\"  /cases/A.DATA \"\n\"DefaultFluidTemp\"=\"hot\"\n"
                         << "\"IprAlpha\"=\"3\"\n";
    CaseSettings loaded;
    loaded.LinuxQueue = "short";
    loaded.ParallelCount = 4;
    EXPECT_FALSE(loaded.LoadLastUsed());
    EXPECT_EQ(loaded.FileName, "/cases/A.DATA");
    EXPECT_EQ(loaded.DefaultFluidTemp, 250.0);
    EXPECT_EQ(loaded.IprAlpha, 1);  // a text where a number belongs is not read
    EXPECT_EQ(loaded.LinuxQueue, "");
    EXPECT_EQ(loaded.ParallelCount, 0);
}

}  // namespace
}  // namespace rivulet
