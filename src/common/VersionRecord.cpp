#include "common/VersionRecord.h"

#include <charconv>

namespace rivulet {

std::string VersionRecord::Text() const {
    std::string text;
    for (std::size_t k = 0; k < parts.size(); ++k) {
        const bool given = parts[k] >= 0 && !(k == 3 && parts[k] == 65535);
        if (!given) break;
        if (k > 0) text += '.';
        text += std::to_string(parts[k]);
    }
    return text;
}

VersionRecord VersionRecord::FromText(const std::string& text) {
    VersionRecord version;
    const char* at = text.data();
    const char* end = text.data() + text.size();
    for (std::size_t k = 0; k < version.parts.size() && at < end; ++k) {
        std::int32_t part = -1;
        const auto [stop, error] = std::from_chars(at, end, part);
        if (error != std::errc() || part < 0 || part > 65535) break;
        version.parts[k] = part;
        if (stop == end || *stop != '.') break;
        at = stop + 1;
    }
    return version;
}

}  // namespace rivulet
