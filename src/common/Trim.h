// Texts without the white space at either end.
#pragma once

#include <string>
#include <string_view>

namespace rivulet {

inline std::string Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n\f\v";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(kBlanks);
    return std::string(text.substr(first, last - first + 1));
}

}  // namespace rivulet
