// Writing the caller's error record. A null record is never written, and no text reaches past its last byte.
#pragma once

#include <string_view>

#include "driver/ExtRecords.h"

namespace rivulet {

// Longest text taken from a string of unknown length before it is printed into the record.
inline constexpr std::size_t kMaxRecordText = 255;
// Bound of a formatted print into the record, terminator included.
inline constexpr std::size_t kRecordPrintBound = 256;

// Sets all 264 bytes to zero.
void ClearRecord(tErrorRecord* err);

// Cuts the text to its left 255 characters and prints it through "%s" at offset 4.
void WriteText(tErrorRecord* err, std::string_view text);

// Prints a formatted message at offset 4, bounded to 256 characters.
void WriteFormat(tErrorRecord* err, const char* format, ...) __attribute__((format(printf, 2, 3)));

// The variant used by the inflow library's callbacks: the text starts at the first byte of the buffer.
void WriteCallbackText(char* buffer, std::string_view text);

}  // namespace rivulet
