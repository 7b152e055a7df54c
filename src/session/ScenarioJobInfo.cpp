#include "session/ScenarioJobInfo.h"

#include <cctype>
#include <cstdlib>
#include <limits>

namespace rivulet {
namespace {

constexpr std::size_t kMaxNumberChars = 15;
constexpr std::size_t kMaxHostChars = 255;

// The variable's value cut to `maxChars`, or nothing when it is missing or empty.
bool ReadVariable(const char* name, std::size_t maxChars, std::string& value) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return false;
    value = std::string(text).substr(0, maxChars);
    return true;
}

std::int32_t ReadNumber(const char* name) {
    std::string text;
    if (!ReadVariable(name, kMaxNumberChars, text)) return -1;
    // Fifteen digits fit in a long long; clamp rather than wrap what does not fit an i32.
    long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (value > std::numeric_limits<std::int32_t>::max()) return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min()) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

}  // namespace

ScenarioJobInfo ScenarioJobInfo::FromEnvironment() {
    ScenarioJobInfo info;
    info.jobSlot = ReadNumber("QNC_JOBSLOT");
    info.jobId = ReadNumber("QNC_JOBID");
    if (ReadVariable("QNC_HOST", kMaxHostChars, info.host)) {
        for (char& c : info.host) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return info;
}

}  // namespace rivulet
