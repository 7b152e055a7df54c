#include "common/FormatText.h"

#include <cstdarg>
#include <cstdio>

namespace rivulet {

std::string FormatText(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int size = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    if (size > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
    va_end(args);
    return text;
}

}  // namespace rivulet
