#pragma once

#include <cstdint>
#include <string>

namespace rivulet {

class BinaryArchive;

// What the user decides about one reservoir case: where the case lives, where it runs and how the
// controller treats its wells. Streamed into the model string as the "CaseDetails" section.
class CaseSettings {
  public:
    // Section version written by this build.
    static constexpr std::int32_t kCurrentVersion = 5;

    CaseSettings() { ResetToDefaults(); }

    std::string FileName;
    bool IsLocalMachine;
    std::string HeadNodeName;
    std::string WindowsEquivDir;
    std::int32_t HeadNodePort;
    std::int32_t RateControl;
    double DefaultFluidTemp;
    std::int32_t FluidTempUnit;
    std::int32_t GlrThreshold;
    std::int32_t IprAlpha;
    std::int32_t IprModel;
    std::int32_t UnconnectedState;
    std::int32_t ParallelCount;
    std::string LinuxQueue;
    std::int32_t Reserved1;
    std::int32_t Reserved2;
    double ReservedReal1;
    double ReservedReal2;
    std::string ReservedText1;
    std::string ReservedText2;

    // Stores the whole section, or resets to defaults and loads what a section of `version` holds.
    // False only for a null archive; a section cut short raises ArchiveException from the archive.
    bool StreamData(BinaryArchive* archive, std::int32_t version);

    std::string GetDataServerName() const { return "CaseDetails"; }

    void CopyFrom(const CaseSettings& other);
    void ResetToDefaults();

    // Parts of FileName; '/' and '\' both separate directories.
    std::string CaseFileName() const;
    std::string CaseDirectory() const;  // with its closing separator
    std::string CaseBaseName() const;   // CaseFileName without extension

    // DefaultFluidTemp in Deg F, or 3.4e35 when the temperature is unset or the unit unknown.
    double DefaultFluidTempF() const;

    // Display texts of the choices; empty for a value outside the table.
    static std::string RateControlText(int choice);
    static std::string FluidTempUnitText(int choice);
    static std::string IprAlphaText(int choice);
    static std::string IprModelText(int choice);
    static std::string UnconnectedStateText(int choice);

    // Spacing exponent of the IPR table for an IprAlpha choice; 1.6 for anything unknown.
    static double IprAlphaValue(std::int32_t choice);
};

}  // namespace rivulet
