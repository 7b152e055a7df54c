#pragma once

#include <cstdint>
#include <string>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

class BinaryArchive;
class CExtDataServerTag;

// What the user decides about one reservoir case: where the case lives, where it runs and how the
// controller treats its wells. Streamed into the model string as the "CaseDetails" section.
class CaseSettings : public CExtDataServerObject {
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

    // The lowest and highest port a head node may listen on.
    static constexpr std::int32_t kMinimumPort = 1024;
    static constexpr std::int32_t kMaximumPort = 65535;

    // Stores the whole section, or resets to defaults and loads what a section of `version` holds.
    // 1 only for a null archive; a section cut short raises ArchiveException from the archive.
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;

    std::string GetDataServerName() const override { return "CaseDetails"; }
    // "CaseDetails." and one of the case variables, read or written as they stand: no rule applies here.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;
    // A write through an access string under the rules of the run's state: made on a copy, refused with a
    // message in the cursor while `running`, refused for the file, machine, head node and port once
    // `started`, and checked for an empty file name or a port out of range before that. The settings change
    // only when the write is recognised and nothing was refused. The answer is ProcessAccessString's.
    std::int32_t UpdateFromAccessString(CExtDataServerTag& tag, bool running, bool started);

    void CopyFrom(const CaseSettings& other);
    // The last-used values of the current user. A missing value leaves its field as it was and makes the
    // answer false; the parallel count always returns to 0, and a missing queue empties the queue.
    bool LoadLastUsed();
    // Writes every last-used value, the parallel count included; always true.
    bool SaveLastUsed() const;
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
