#include "case/CaseSettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "common/BinaryArchive.h"

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;

auto Fields(const CaseSettings& s) {
    return std::tie(s.FileName, s.IsLocalMachine, s.HeadNodeName, s.WindowsEquivDir, s.HeadNodePort,
                    s.RateControl, s.DefaultFluidTemp, s.FluidTempUnit, s.GlrThreshold, s.IprAlpha,
                    s.IprModel, s.UnconnectedState, s.ParallelCount, s.LinuxQueue, s.Reserved1, s.Reserved2,
                    s.ReservedReal1, s.ReservedReal2, s.ReservedText1, s.ReservedText2);
}

// Every field differs from its default; numbers are distinct so a misplaced item shows.
CaseSettings Customised() {
    CaseSettings s;
    std::tie(s.FileName, s.IsLocalMachine, s.HeadNodeName, s.WindowsEquivDir, s.HeadNodePort) =
        std::make_tuple("/data/run/CASE.DATA", false, "head01", "\\\\server\\run\\", 6001);
    std::tie(s.RateControl, s.DefaultFluidTemp, s.FluidTempUnit, s.GlrThreshold, s.IprAlpha, s.IprModel) =
        std::make_tuple(3, 80.5, 4, 900, 5, 1);
    std::tie(s.UnconnectedState, s.ParallelCount, s.LinuxQueue, s.Reserved1, s.Reserved2) =
        std::make_tuple(1, 16, "long", -7, 11);
    std::tie(s.ReservedReal1, s.ReservedReal2, s.ReservedText1, s.ReservedText2) =
        std::make_tuple(1.25, -2.5, "alpha", "beta");
    return s;
}

template <typename... Items>
void TransferAll(BinaryArchive& archive, Items&... items) {
    (archive.Transfer(items), ...);
}

Bytes Store(CaseSettings settings, std::int32_t version = 5) {
    Bytes buffer(1024);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    EXPECT_TRUE(settings.StreamData(&archive, version));
    buffer.resize(archive.Position());
    return buffer;
}

// An older section written by hand: the version-1 items, then the version-2 ones when asked.
Bytes StoreOldSection(bool with_temperature) {
    Bytes buffer(1024);
    BinaryArchive a(buffer.data(), buffer.size(), ArchiveDirection::Store);
    std::string file = "old.DATA", head = "node", windows = "W:\\";
    std::int32_t local = 0, port = 7000, rate = 2, glr = 600, alpha = 0, model = 1, unconnected = 1;
    TransferAll(a, file, local, head, port, windows, rate, glr, alpha, model, unconnected);
    double temp = 40.0;
    std::int32_t unit = 1;
    if (with_temperature) TransferAll(a, temp, unit);
    buffer.resize(a.Position());
    return buffer;
}

// Loads into `target` and checks the whole section was taken.
CaseSettings Load(const Bytes& bytes, std::int32_t version, CaseSettings target = Customised()) {
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
    EXPECT_TRUE(target.StreamData(&archive, version));
    EXPECT_EQ(archive.Position(), bytes.size());
    return target;
}

TEST(CaseSettingsFieldsTest, DefaultsResetAndCopy) {
    CaseSettings s;
    EXPECT_EQ(Fields(s), std::make_tuple("", true, "", "", 5555, 1, 250.0, 2, 587, 1, 2, 0, 0, "", 0, 0, 0.0,
                                         0.0, "", ""));
    EXPECT_EQ(s.GetDataServerName(), "CaseDetails");
    s.CopyFrom(Customised());
    EXPECT_EQ(Fields(s), Fields(Customised()));
    s.ResetToDefaults();
    EXPECT_EQ(Fields(s), Fields(CaseSettings()));
}

TEST(CaseSettingsStreamTest, RoundTripKeepsEveryField) {
    EXPECT_EQ(Fields(Load(Store(Customised()), 5, CaseSettings())), Fields(Customised()));
    // The writer always writes the whole section, whatever version it is handed.
    EXPECT_EQ(Store(Customised(), 1), Store(Customised()));
    CaseSettings s;
    EXPECT_FALSE(s.StreamData(nullptr, 5));
}

TEST(CaseSettingsStreamTest, ItemsFollowStreamOrder) {
    const Bytes bytes = Store(Customised());
    BinaryArchive a(bytes.data(), bytes.size(), ArchiveDirection::Load);
    std::string file, head, windows, queue, text1, text2;
    std::int32_t local = -1, port = 0, rate = 0, glr = 0, alpha = 0, model = 0, unconnected = 0;
    std::int32_t unit = 0, parallel = 0, reserved1 = 0, reserved2 = 0;
    double temp = 0.0, real1 = 0.0, real2 = 0.0;
    TransferAll(a, file, local, head, port, windows, rate, glr, alpha, model, unconnected, temp, unit);
    TransferAll(a, parallel, queue, reserved1, reserved2, real1, real2, text1, text2);
    EXPECT_EQ(std::tie(file, local, head, port, windows),
              std::make_tuple("/data/run/CASE.DATA", 0, "head01", 6001, "\\\\server\\run\\"));
    EXPECT_EQ(std::tie(rate, glr, alpha, model, unconnected, temp, unit),
              std::make_tuple(3, 900, 5, 1, 1, 80.5, 4));
    EXPECT_EQ(std::tie(parallel, queue, reserved1, reserved2, real1, real2, text1, text2),
              std::make_tuple(16, "long", -7, 11, 1.25, -2.5, "alpha", "beta"));
    EXPECT_EQ(a.Position(), bytes.size());
}

TEST(CaseSettingsStreamTest, EmptyFileNameIsZeroLength) {
    CaseSettings original = Customised();
    original.FileName.clear();
    const Bytes bytes = Store(original);
    EXPECT_EQ(Bytes(bytes.begin() + 8, bytes.begin() + 12), Bytes(4, 0));
    EXPECT_EQ(Load(bytes, 5).FileName, "");
}

TEST(CaseSettingsStreamTest, AnyNonZeroFlagMeansLocal) {
    Bytes bytes = Store(Customised());
    bytes[8 + 4 + 19 + 1] = 0x02;  // IsLocalMachine, after the 19-character FileName, becomes 512
    EXPECT_TRUE(Load(bytes, 5).IsLocalMachine);
}

TEST(CaseSettingsStreamTest, OldVersionsResetWhatTheyLack) {
    const CaseSettings v1 = Load(StoreOldSection(false), 1);
    EXPECT_EQ(std::tie(v1.FileName, v1.IsLocalMachine, v1.HeadNodePort, v1.UnconnectedState),
              std::make_tuple("old.DATA", false, 7000, 1));
    EXPECT_EQ(std::tie(v1.DefaultFluidTemp, v1.FluidTempUnit), std::make_tuple(250.0, 2));

    for (std::int32_t version : {2, 3}) {
        const CaseSettings s = Load(StoreOldSection(true), version);
        EXPECT_EQ(std::tie(s.DefaultFluidTemp, s.FluidTempUnit), std::make_tuple(40.0, 1)) << version;
        EXPECT_EQ(std::tie(s.ParallelCount, s.LinuxQueue, s.Reserved1, s.ReservedReal2, s.ReservedText2),
                  std::make_tuple(0, "", 0, 0.0, ""))
            << version;
    }
}

TEST(CaseSettingsStreamTest, CutShortSectionRaises) {
    Bytes full = Store(Customised());
    full.pop_back();
    const Bytes old = StoreOldSection(true);
    for (const auto& [bytes, version] : {std::pair{full, 5}, std::pair{old, 4}}) {
        BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Load);
        CaseSettings s;
        EXPECT_THROW(s.StreamData(&archive, version), ArchiveException) << version;
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
    EXPECT_EQ(Parts(""), std::make_tuple("", "", ""));
}

TEST(CaseSettingsChoiceTest, TablesAndOutOfRangeValues) {
    EXPECT_EQ(CaseSettings::RateControlText(2), "Driven by Gas-to-Liquid Ratio");
    EXPECT_EQ(CaseSettings::FluidTempUnitText(4), "Deg K");
    EXPECT_EQ(CaseSettings::IprAlphaText(0), "Strong bias to low rates");
    EXPECT_EQ(CaseSettings::IprAlphaText(5), "Bias to high rates");
    EXPECT_EQ(CaseSettings::IprModelText(2), "Corrected (Quillon)");
    EXPECT_EQ(CaseSettings::UnconnectedStateText(0), "Under Deck Control");
    EXPECT_EQ(CaseSettings::UnconnectedStateText(1), "Shut");
    for (int outside : {-1, 6}) {
        EXPECT_EQ(CaseSettings::IprAlphaText(outside), "");
        EXPECT_EQ(CaseSettings::IprAlphaValue(outside), 1.6);
    }
    EXPECT_EQ(CaseSettings::RateControlText(4) + CaseSettings::IprModelText(0) +
                  CaseSettings::UnconnectedStateText(2) + CaseSettings::FluidTempUnitText(5),
              "");
    EXPECT_EQ(CaseSettings::IprAlphaValue(0), 1.8);
    EXPECT_EQ(CaseSettings::IprAlphaValue(4), 0.85);
    EXPECT_EQ(CaseSettings::IprAlphaValue(5), 0.75);
}

TEST(CaseSettingsTemperatureTest, ConvertsEachUnitToFahrenheit) {
    CaseSettings s;
    const std::pair<int, double> boiling[] = {{1, 100.0}, {2, 212.0}, {3, 671.67}, {4, 373.15}};
    for (const auto& [unit, temperature] : boiling) {
        std::tie(s.FluidTempUnit, s.DefaultFluidTemp) = std::make_tuple(unit, temperature);
        EXPECT_NEAR(s.DefaultFluidTempF(), 212.0, 1e-9) << CaseSettings::FluidTempUnitText(unit);
    }
}

TEST(CaseSettingsTemperatureTest, UnknownUnitOrUnsetTemperatureGivesUnsetValue) {
    CaseSettings s;
    s.FluidTempUnit = 0;
    EXPECT_EQ(CaseSettings::FluidTempUnitText(s.FluidTempUnit), "");
    EXPECT_EQ(s.DefaultFluidTempF(), 3.4e35);
    s.FluidTempUnit = 1;
    s.DefaultFluidTemp = 3.3e35;
    EXPECT_EQ(s.DefaultFluidTempF(), 3.4e35);
    s.DefaultFluidTemp = 3.1e35;
    EXPECT_DOUBLE_EQ(s.DefaultFluidTempF(), 3.1e35 * 1.8 + 32.0);
}

}  // namespace
}  // namespace rivulet
