// printf-style formatting into a string of whatever length the text needs.
#pragma once

#include <string>

namespace rivulet {

std::string FormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace rivulet
