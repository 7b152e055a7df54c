// Arbitrary text as a value array ("1|2|3"), for a count of entries chosen by the first byte, read directly
// and through an access-string cursor in set mode. Both readers must agree. An array that reads must write
// out, with every element in full precision and joined by "|", and read back to the same values; written as
// the getters write reals ("%g"), it must read back to the numbers of that text.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "common/ValueArray.h"
#include "dataserver/ExtDataServerTag.h"

using namespace rivulet;

namespace {

bool SameValue(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return a == b && std::signbit(a) == std::signbit(b);
}

bool SameValues(const std::vector<double>& a, const std::vector<double>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!SameValue(a[i], b[i])) return false;
    return true;
}

std::string Write(const std::vector<double>& values, const char* format) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        char element[64];
        std::snprintf(element, sizeof element, format, values[i]);
        if (i > 0) text += '|';
        text += element;
    }
    return text;
}

// Reads `text` into `count` entries that start out as a pattern no reader writes, so that an entry left
// alone can be told from one written.
int Read(const std::string& text, int count, std::vector<double>& values, std::string& error) {
    values.assign(static_cast<std::size_t>(count), -7.25e-300);
    return ParseValueArrayText(text.c_str(), values.data(), count, error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const int count = data[0] % 40;
    // The text ends at its first zero byte, as the C string the host passes does.
    const std::string raw(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::string text(raw.c_str());

    std::vector<double> values;
    std::string error;
    const int result = Read(text, count, values, error);
    if (result != 0 && result != 1) __builtin_trap();
    if ((result == 0) != error.empty()) __builtin_trap();
    if (result == 1 && error != "Badly formed value array string" && error != "Too many elements in array" &&
        error != "Too few elements in array")
        __builtin_trap();

    // The cursor's reader sees the same text and must give the same answer.
    {
        std::vector<double> through(static_cast<std::size_t>(count), -7.25e-300);
        std::string reason;
        auto tag = CExtDataServerTag::ForSet("x", raw.c_str());
        if (tag.ParseValueArray(through.data(), count, reason) != result || reason != error) __builtin_trap();
        if (!SameValues(through, values)) __builtin_trap();
    }
    // A null or empty array reads as badly formed, whatever the count.
    {
        std::string reason;
        if (ParseValueArrayText(nullptr, values.data(), count, reason) != 1) __builtin_trap();
        if (ParseValueArrayText(text.c_str(), nullptr, 0, reason) != (text.empty()     ? 1
                                                                      : text[0] == '}' ? 0
                                                                                       : 1))
            __builtin_trap();
    }
    if (result != 0 || count == 0) return 0;

    std::vector<double> again;
    std::string againError;
    if (Read(Write(values, "%.17g"), count, again, againError) != 0) __builtin_trap();
    if (!SameValues(again, values)) __builtin_trap();

    const std::string shortText = Write(values, "%g");
    if (Read(shortText, count, again, againError) != 0) __builtin_trap();
    if (Write(again, "%g") != shortText) __builtin_trap();
    return 0;
}
