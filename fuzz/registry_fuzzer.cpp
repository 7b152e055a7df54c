// Arbitrary text as a registry file: whatever is read must write out and read back to the same keys and
// values, so that rewriting the store never changes what it holds.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/RegFile.h"

using namespace rivulet;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const RegistryKeys keys = ParseRegFile(text);
    if (ParseRegFile(FormatRegFile(keys)) != keys) __builtin_trap();
    return 0;
}
