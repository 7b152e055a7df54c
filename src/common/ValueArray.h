// Arrays of reals written as one text, such as "1|2|3".
#pragma once

#include <string>

namespace rivulet {

// Reads `text` into `values`, which holds `count` entries. Elements end at "|", "}" or the end of the text
// and read as atof does, so an element that is not a number gives 0; a "}" where an element would start
// ends the array. 0 on success; 1 with "Badly formed value array string", "Too many elements in array" or
// "Too few elements in array" in `error`. Elements read before a failure stay in `values`.
int ParseValueArrayText(const char* text, double* values, int count, std::string& error);

}  // namespace rivulet
