// The detailed API log: the forms in which the session writes each library call, its arguments and some
// of its results. Every function takes the log as a pointer and does nothing when it is null, so that a
// write site costs one pointer test while the log is off. Numbers use the stream's plain format.
#pragma once

#include <ostream>
#include <type_traits>
#include <vector>

#include "tNavigator_API_RMA.h"

namespace rivulet::apilog {

// "\n<call>\n", before each library call.
inline void Call(std::ostream* log, const char* call) {
    if (log != nullptr) *log << '\n' << call << '\n';
}

// A heading such as "\n*** ReadCurrentData ***\n", written as it is.
inline void Text(std::ostream* log, const char* text) {
    if (log != nullptr) *log << text;
}

// An array going in: type "[" count "]\n", each element followed by ", ", then "\n". Enumerations are
// written as their numbers.
template <class T>
void Array(std::ostream* log, const char* type, const T* values, int count) {
    if (log == nullptr) return;
    *log << type << '[' << count << "]\n";
    for (int k = 0; values != nullptr && k < count; ++k) {
        if constexpr (std::is_enum_v<T>) {
            *log << static_cast<long long>(values[k]) << ", ";
        } else {
            *log << values[k] << ", ";
        }
    }
    *log << '\n';
}

template <class T>
void Array(std::ostream* log, const char* type, const std::vector<T>& values) {
    Array(log, type, values.data(), static_cast<int>(values.size()));
}

// The count that follows an array: "int=" value "\n".
inline void Count(std::ostream* log, int value) {
    if (log != nullptr) *log << "int=" << value << '\n';
}

// An array coming out, before the call: type "[" count "]\n"; its values are not shown.
inline void OutputSize(std::ostream* log, const char* type, int count) {
    if (log != nullptr) *log << type << '[' << count << "]\n";
}

// After a failed call: "\n" and the whole message and "\n".
inline void Error(std::ostream* log, const char* message) {
    if (log != nullptr) *log << '\n' << message << '\n';
}

}  // namespace rivulet::apilog
