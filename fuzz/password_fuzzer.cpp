// Arbitrary text for the password reader, in its string and buffer forms. Both must agree, never give more
// characters than the text holds, and a password read must store and read back to itself. The input also
// drives a Blowfish round trip in every mode.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "common/Blowfish.h"
#include "common/PasswordStore.h"

using namespace rivulet;

namespace {

void CheckCipherRoundTrip(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return;
    const auto mode = static_cast<Blowfish::Mode>(data[0] % 3);
    std::vector<std::uint8_t> plain(data + 1, data + size);
    plain.resize((plain.size() + 7) / 8 * 8);
    Blowfish cipher(data + 1, size - 1, Blowfish::Tables::kOwn, 0x0123456789ABCDEF);
    std::vector<std::uint8_t> text(plain.size());
    cipher.Encrypt(plain.data(), text.data(), text.size(), mode);
    cipher.ResetChain();
    cipher.Decrypt(text.data(), text.data(), text.size(), mode);
    if (text != plain) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string stored(reinterpret_cast<const char*>(data), size);
    std::string plain;
    const int result = ReadStoredPassword(stored, plain);
    if (result != kPasswordRead && result != kPasswordRejected) __builtin_trap();
    if (plain.size() > stored.size()) __builtin_trap();
    if (result == kPasswordRejected && !plain.empty()) __builtin_trap();
    if (plain.find('\0') != std::string::npos) __builtin_trap();  // the password ends at the first pad byte

    // The buffer form sees the text up to its first zero byte, in a buffer sized by the input so that any
    // write past the end is caught by the sanitizer.
    const std::string prefix(stored.c_str());
    std::string prefixPlain;
    const int prefixResult = ReadStoredPassword(prefix, prefixPlain);
    std::vector<char> out(size % 64 + 1);
    const int bufferResult = ReadStoredPassword(prefix.c_str(), out.data(), out.size());
    if (prefix != "" && prefix != kPasswordMask) {
        if (bufferResult != prefixResult) __builtin_trap();
        if (prefixPlain.compare(0, out.size() - 1, out.data()) != 0) __builtin_trap();
    }

    if (result == kPasswordRead && !plain.empty()) {
        const std::string again = StorePassword(plain);
        std::string back;
        if (ReadStoredPassword(again, back) != kPasswordRead || back != plain) __builtin_trap();
        if (plain != kPasswordMask && again.size() != 16 + (plain.size() + 7) / 8 * 16) __builtin_trap();
    }

    CheckCipherRoundTrip(data, size);
    return 0;
}
