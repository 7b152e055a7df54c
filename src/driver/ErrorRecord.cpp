#include "driver/ErrorRecord.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace rivulet {

void ClearRecord(tErrorRecord* err) {
    if (err != nullptr) std::memset(err, 0, sizeof(tErrorRecord));
}

void WriteText(tErrorRecord* err, std::string_view text) {
    if (err == nullptr) return;
    const std::string cut(text.substr(0, kMaxRecordText));
    std::snprintf(err->szText, sizeof(err->szText), "%s", cut.c_str());
}

void WriteFormat(tErrorRecord* err, const char* format, ...) {
    if (err == nullptr) return;
    va_list args;
    va_start(args, format);
    std::vsnprintf(err->szText, kRecordPrintBound, format, args);
    va_end(args);
}

void WriteCallbackText(char* buffer, std::string_view text) {
    if (buffer == nullptr) return;
    const std::string cut(text.substr(0, kMaxRecordText));
    std::snprintf(buffer, kRecordPrintBound, "%s", cut.c_str());
}

}  // namespace rivulet
