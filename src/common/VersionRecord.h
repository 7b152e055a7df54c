// A version of up to four parts, such as the Model document's "1.0.0", and its text.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace rivulet {

struct VersionRecord {
    // A part not given is -1; a fourth part of 65535 counts as not given.
    std::array<std::int32_t, 4> parts{-1, -1, -1, -1};

    // "%d.%d.%d.%d" down to "%d" by the parts given; the empty text with none.
    std::string Text() const;
    // Up to four numbers separated by "."; reading stops at the first part that is not a number of 0 to
    // 65535.
    static VersionRecord FromText(const std::string& text);
};

}  // namespace rivulet
