#include "common/ValueArray.h"

#include <cstdlib>

namespace rivulet {

int ParseValueArrayText(const char* text, double* values, int count, std::string& error) {
    if (text == nullptr || *text == '\0') {
        error = "Badly formed value array string";
        return 1;
    }
    if (values == nullptr || count < 0) count = 0;

    int stored = 0;
    int result = 0;
    const char* at = text;
    while (*at != '}' && *at != '\0') {
        char element[256];
        std::size_t length = 0;
        for (; *at != '\0' && *at != '|' && *at != '}'; ++at) {
            if (length < sizeof element - 1) element[length++] = *at;
        }
        element[length] = '\0';
        if (stored >= count) {
            error = "Too many elements in array";
            result = 1;
            break;
        }
        values[stored++] = std::strtod(element, nullptr);
        if (*at == '\0') break;
        ++at;
    }
    if (stored < count) {
        error = "Too few elements in array";
        return 1;
    }
    return result;
}

}  // namespace rivulet
