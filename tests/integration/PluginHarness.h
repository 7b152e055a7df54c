// What the integration tests share: the plug-in loaded once, as Conflux loads it, and error-record helpers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "host/Buffer.h"
#include "host/Plugin.h"

namespace rivulet::it {

inline host::Plugin& Driver() {
    static host::Plugin plugin(RIVULET_PLUGIN_PATH);
    return plugin;
}

// A record still holding the bytes of an earlier call: every export that clears it must wipe all 264.
inline host::ErrorRecord StaleRecord() {
    host::ErrorRecord err;
    err.code = static_cast<std::int32_t>(0xEEEEEEEE);
    std::memset(err.text, 0xEE, sizeof(err.text));
    return err;
}

inline bool IsBlank(const host::ErrorRecord& err) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&err);
    return std::all_of(bytes, bytes + sizeof(err), [](unsigned char b) { return b == 0; });
}

inline std::string Message(const host::ErrorRecord& err) {
    return std::string(err.text, strnlen(err.text, sizeof(err.text)));
}

inline std::uint64_t Arg(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

}  // namespace rivulet::it
