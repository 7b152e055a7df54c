#include "case/CaseSettings.h"

#include <array>
#include <string_view>

#include "common/BinaryArchive.h"
#include "common/Trim.h"

namespace rivulet {

namespace {

// Stands for "no value" in the controller's data exchange.
constexpr double kUnsetValue = 3.4e35;
constexpr double kUnsetThreshold = 3.2e35;
constexpr double kDefaultIprAlpha = 1.6;

// First section version holding each group of items.
constexpr std::int32_t kVersionTemperature = 2;
constexpr std::int32_t kVersionCluster = 4;

struct Choice {
    int value;
    const char* text;
};

template <std::size_t N>
std::string LookUp(const std::array<Choice, N>& table, int value) {
    for (const Choice& choice : table) {
        if (choice.value == value) return choice.text;
    }
    return {};
}

constexpr std::array<Choice, 3> kRateControl = {{
    {1, "Driven by VANE well type"},
    {2, "Driven by Gas-to-Liquid Ratio"},
    {3, "Combined when multiple phases present"},
}};

constexpr std::array<Choice, 4> kFluidTempUnit = {{
    {1, "Deg C"},
    {2, "Deg F"},
    {3, "Deg R"},
    {4, "Deg K"},
}};

struct AlphaChoice {
    const char* text;
    double alpha;
};

// Indexed by the IprAlpha choice.
constexpr std::array<AlphaChoice, 6> kIprAlpha = {{
    {"Strong bias to low rates", 1.8},
    {"Bias to low rates (Default)", 1.6},
    {"Slight bias to low rates", 1.3},
    {"No bias (equal spacing)", 1.0},
    {"Slight bias to high rates", 0.85},
    {"Bias to high rates", 0.75},
}};

constexpr std::array<Choice, 2> kIprModel = {{
    {1, "Block"},
    {2, "Corrected (Quillon)"},
}};

constexpr std::array<Choice, 2> kUnconnectedState = {{
    {0, "Under Deck Control"},
    {1, "Shut"},
}};

constexpr std::string_view kSeparators = "/\\";

}  // namespace

void CaseSettings::ResetToDefaults() {
    FileName.clear();
    IsLocalMachine = true;
    HeadNodeName.clear();
    WindowsEquivDir.clear();
    HeadNodePort = 5555;
    RateControl = 1;
    DefaultFluidTemp = 250.0;
    FluidTempUnit = 2;
    GlrThreshold = 587;
    IprAlpha = 1;
    IprModel = 2;
    UnconnectedState = 0;
    ParallelCount = 0;
    LinuxQueue.clear();
    Reserved1 = 0;
    Reserved2 = 0;
    ReservedReal1 = 0.0;
    ReservedReal2 = 0.0;
    ReservedText1.clear();
    ReservedText2.clear();
}

void CaseSettings::CopyFrom(const CaseSettings& other) {
    FileName = other.FileName;
    IsLocalMachine = other.IsLocalMachine;
    HeadNodeName = other.HeadNodeName;
    WindowsEquivDir = other.WindowsEquivDir;
    HeadNodePort = other.HeadNodePort;
    RateControl = other.RateControl;
    DefaultFluidTemp = other.DefaultFluidTemp;
    FluidTempUnit = other.FluidTempUnit;
    GlrThreshold = other.GlrThreshold;
    IprAlpha = other.IprAlpha;
    IprModel = other.IprModel;
    UnconnectedState = other.UnconnectedState;
    ParallelCount = other.ParallelCount;
    LinuxQueue = other.LinuxQueue;
    Reserved1 = other.Reserved1;
    Reserved2 = other.Reserved2;
    ReservedReal1 = other.ReservedReal1;
    ReservedReal2 = other.ReservedReal2;
    ReservedText1 = other.ReservedText1;
    ReservedText2 = other.ReservedText2;
}

std::int32_t CaseSettings::StreamData(BinaryArchive* archive, std::int32_t version) {
    if (archive == nullptr) return 1;
    const bool storing = archive->IsStoring();
    if (storing) {
        version = kCurrentVersion;
    } else {
        ResetToDefaults();
    }
    if (version < 1) return 0;

    archive->Transfer(FileName);
    std::int32_t local = IsLocalMachine ? 1 : 0;
    archive->Transfer(local);
    IsLocalMachine = local != 0;
    archive->Transfer(HeadNodeName);
    archive->Transfer(HeadNodePort);
    archive->Transfer(WindowsEquivDir);
    archive->Transfer(RateControl);
    archive->Transfer(GlrThreshold);
    archive->Transfer(IprAlpha);
    archive->Transfer(IprModel);
    archive->Transfer(UnconnectedState);

    if (version < kVersionTemperature) return 0;
    archive->Transfer(DefaultFluidTemp);
    archive->Transfer(FluidTempUnit);

    if (version < kVersionCluster) return 0;
    archive->Transfer(ParallelCount);
    archive->Transfer(LinuxQueue);
    archive->Transfer(Reserved1);
    archive->Transfer(Reserved2);
    archive->Transfer(ReservedReal1);
    archive->Transfer(ReservedReal2);
    archive->Transfer(ReservedText1);
    archive->Transfer(ReservedText2);
    return 0;
}

std::string CaseSettings::CaseFileName() const {
    const auto separator = FileName.find_last_of(kSeparators);
    if (separator == std::string::npos) return Trimmed(FileName);
    return Trimmed(std::string_view(FileName).substr(separator + 1));
}

std::string CaseSettings::CaseDirectory() const {
    const auto separator = FileName.find_last_of(kSeparators);
    if (separator == std::string::npos) return {};
    return Trimmed(std::string_view(FileName).substr(0, separator + 1));
}

std::string CaseSettings::CaseBaseName() const {
    std::string name = CaseFileName();
    const auto dot = name.find_last_of('.');
    if (dot != std::string::npos) name.erase(dot);
    return name;
}

double CaseSettings::DefaultFluidTempF() const {
    const double t = DefaultFluidTemp;
    if (t > kUnsetThreshold) return kUnsetValue;
    switch (FluidTempUnit) {
        case 1:
            return t * 1.8 + 32.0;
        case 2:
            return t;
        case 3:
            return t - 459.67;
        case 4:
            return t * 1.8 - 459.67;
        default:
            return kUnsetValue;
    }
}

std::string CaseSettings::RateControlText(int choice) {
    return LookUp(kRateControl, choice);
}

std::string CaseSettings::FluidTempUnitText(int choice) {
    return LookUp(kFluidTempUnit, choice);
}

std::string CaseSettings::IprAlphaText(int choice) {
    if (choice < 0 || static_cast<std::size_t>(choice) >= kIprAlpha.size()) return {};
    return kIprAlpha[static_cast<std::size_t>(choice)].text;
}

std::string CaseSettings::IprModelText(int choice) {
    return LookUp(kIprModel, choice);
}

std::string CaseSettings::UnconnectedStateText(int choice) {
    return LookUp(kUnconnectedState, choice);
}

double CaseSettings::IprAlphaValue(std::int32_t choice) {
    if (choice < 0 || static_cast<std::size_t>(choice) >= kIprAlpha.size()) return kDefaultIprAlpha;
    return kIprAlpha[static_cast<std::size_t>(choice)].alpha;
}

}  // namespace rivulet
