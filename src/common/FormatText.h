// printf-style formatting into a string of whatever length the text needs.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace rivulet {

std::string FormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Copies as much of `text` as fits into a buffer of `size` bytes, always terminated; as snprintf "%s" does,
// at a fraction of its cost. A zero size writes nothing.
inline void CopyText(char* buffer, std::size_t size, std::string_view text) {
    if (buffer == nullptr || size == 0) return;
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

}  // namespace rivulet
