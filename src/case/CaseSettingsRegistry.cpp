// The last-used case values in the current user's registry, which the case dialog offers for a model that
// has no case yet.
#include <locale.h>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <charconv>

#include "case/CaseSettings.h"
#include "common/Trim.h"
#include "platform/Registry.h"

namespace rivulet {

namespace {

// Reads a number in the classic locale, whatever the user's: true when the text starts a number.
bool ReadClassicReal(const std::string& text, double& value) {
    locale_t classic = newlocale(LC_NUMERIC_MASK, "C", static_cast<locale_t>(0));
    if (classic == static_cast<locale_t>(0)) return false;
    char* end = nullptr;
    const double read = strtod_l(text.c_str(), &end, classic);
    freelocale(classic);
    if (end == text.c_str()) return false;
    value = read;
    return true;
}

std::string ClassicReal(double value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
    return std::string(text, result.ptr);
}

}  // namespace

bool CaseSettings::LoadLastUsed() {
    RegistryValues values;
    Registry::ReadKey(kHkeyCurrentUser, kDriverRegistryKey, values);
    bool complete = true;
    auto text = [&](const char* name, std::string& field) {
        if (const auto value = Registry::StringValue(values, name)) {
            field = Trimmed(*value);
        } else {
            complete = false;
        }
    };
    auto number = [&](const char* name, std::int32_t& field) {
        if (const auto value = Registry::DwordValue(values, name)) {
            field = static_cast<std::int32_t>(*value);
        } else {
            complete = false;
        }
    };

    text("Case", FileName);
    std::int32_t local = IsLocalMachine ? 1 : 0;
    number("IsLocalMachine", local);
    IsLocalMachine = local != 0;
    text("HeadNodeName", HeadNodeName);
    number("HeadNodePort", HeadNodePort);
    text("WindowsEquivDir", WindowsEquivDir);
    number("RateControl", RateControl);
    const auto temperature = Registry::StringValue(values, "DefaultFluidTemp");
    if (!temperature || !ReadClassicReal(*temperature, DefaultFluidTemp)) complete = false;
    number("FluidTempUnit", FluidTempUnit);
    number("GlrThreshold", GlrThreshold);
    number("IprAlpha", IprAlpha);
    number("IprModel", IprModel);
    number("UnconnectedState", UnconnectedState);
    // "Parallel" is written but never read back: every case starts from the default count.
    ParallelCount = 0;
    // A missing queue empties the field without making the values incomplete.
    const auto queue = Registry::StringValue(values, "LinuxQueue");
    LinuxQueue = queue ? Trimmed(*queue) : std::string();
    return complete;
}

bool CaseSettings::SaveLastUsed() const {
    auto number = [](std::int32_t value) { return RegistryValue::Dword(static_cast<std::uint32_t>(value)); };
    const RegistryValues values{
        {"Case", RegistryValue::String(FileName)},
        {"IsLocalMachine", number(IsLocalMachine ? 1 : 0)},
        {"HeadNodeName", RegistryValue::String(HeadNodeName)},
        {"HeadNodePort", number(HeadNodePort)},
        {"WindowsEquivDir", RegistryValue::String(WindowsEquivDir)},
        {"RateControl", number(RateControl)},
        {"DefaultFluidTemp", RegistryValue::String(ClassicReal(DefaultFluidTemp))},
        {"FluidTempUnit", number(FluidTempUnit)},
        {"GlrThreshold", number(GlrThreshold)},
        {"IprAlpha", number(IprAlpha)},
        {"IprModel", number(IprModel)},
        {"UnconnectedState", number(UnconnectedState)},
        {"Parallel", number(ParallelCount)},
        {"LinuxQueue", RegistryValue::String(LinuxQueue)},
    };
    Registry::WriteValues(kHkeyCurrentUser, kDriverRegistryKey, values);
    return true;
}

}  // namespace rivulet
