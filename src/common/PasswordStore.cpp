#include "common/PasswordStore.h"

#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "common/Blowfish.h"

namespace rivulet {
namespace {

constexpr std::size_t kKeyChars = 16;    // hex characters of the key at the head of a stored text
constexpr std::size_t kGroupChars = 16;  // hex characters of one cipher block

std::uint64_t MonotonicMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000u +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000000u;
}

std::atomic<PasswordTickSource> tickSource{&MonotonicMilliseconds};

// Process-wide divisor of the tick count. Deliberately unguarded as a whole (load, then store): a race only
// changes the random characters. Atomic so that such a race stays defined behaviour.
std::atomic<double> tickDivisor{1.0};

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

// Sixteen hex characters from successive tick counts, each divided by the next value of the divisor.
std::string RandomHexCharacters() {
    std::string chars;
    while (chars.size() < kKeyChars) {
        const double divisor = tickDivisor.load(std::memory_order_relaxed);
        const double quotient = static_cast<double>(tickSource.load()()) / divisor;
        const double next = divisor + 0.1;
        tickDivisor.store(next > 50.0 ? 1.0 : next, std::memory_order_relaxed);

        const unsigned long long whole =
            quotient >= 18446744073709551615.0 ? ~0ull : static_cast<unsigned long long>(quotient);
        char text[24];
        std::snprintf(text, sizeof text, "%llX", whole);
        chars += text;
    }
    chars.resize(kKeyChars);
    return chars;
}

// Reads a group of 16 hex characters as 8 bytes.
void ParseGroup(const char* text, std::uint8_t* bytes) {
    for (std::size_t i = 0; i < Blowfish::kBlockSize; ++i) bytes[i] = password_hex::Parse(text + 2 * i, 2);
}

std::string Encode(const char* plain, std::size_t length) {
    std::string stored = RandomHexCharacters();
    std::uint8_t key[Blowfish::kBlockSize];
    ParseGroup(stored.data(), key);
    Blowfish cipher(key, sizeof key);

    char group[kGroupChars];
    std::size_t filled = 0;
    const auto appendGroup = [&]() {
        std::uint8_t block[Blowfish::kBlockSize];
        ParseGroup(group, block);
        cipher.Encrypt(block, block, sizeof block);
        char hex[2];
        for (const std::uint8_t byte : block) {
            password_hex::Format(byte, hex);
            stored.append(hex, 2);
        }
    };
    for (std::size_t i = 0; i < length; ++i) {
        char hex[2];
        password_hex::Format(static_cast<std::uint8_t>(plain[i]), hex);
        group[filled++] = hex[1];  // low nibble first
        group[filled++] = hex[0];
        if (filled == kGroupChars) {
            appendGroup();
            filled = 0;
        }
    }
    if (filled > 0) {
        std::fill(group + filled, group + kGroupChars, '0');
        appendGroup();
    }
    return stored;
}

// All decoded bytes of a stored text, pad bytes included; a trailing group under 16 characters is ignored.
int Decode(const char* stored, std::size_t length, std::string& bytes) {
    bytes.clear();
    if (length < kKeyChars + 1 || !std::all_of(stored, stored + length, IsHexDigit)) return kPasswordRejected;

    std::uint8_t key[Blowfish::kBlockSize];
    ParseGroup(stored, key);
    Blowfish cipher(key, sizeof key);
    for (std::size_t offset = kKeyChars; length - offset >= kGroupChars; offset += kGroupChars) {
        std::uint8_t block[Blowfish::kBlockSize];
        ParseGroup(stored + offset, block);
        cipher.Decrypt(block, block, sizeof block);
        for (const std::uint8_t byte : block) {
            char hex[2];
            password_hex::Format(byte, hex);
            const char swapped[2] = {hex[1], hex[0]};
            bytes += static_cast<char>(password_hex::Parse(swapped, 2));
        }
    }
    return kPasswordRead;
}

bool PassesThrough(const std::string& text) {
    return text.empty() || text == kPasswordMask;
}

}  // namespace

namespace password_hex {

void Format(std::uint8_t byte, char* out) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    out[0] = kDigits[byte >> 4];
    out[1] = kDigits[byte & 0x0F];
}

std::uint8_t Parse(const char* text, std::size_t length) {
    unsigned value = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(length, 2) && IsHexDigit(text[i]); ++i) {
        value = value * 16 + static_cast<unsigned>(text[i] <= '9' ? text[i] - '0' : text[i] - 'A' + 10);
    }
    return static_cast<std::uint8_t>(value);
}

}  // namespace password_hex

bool StorePassword(const char* plain, char* out, std::size_t outSize) {
    if (out == nullptr || outSize == 0) return false;
    out[0] = '\0';
    if (plain == nullptr) return false;
    const std::size_t length = std::strlen(plain);
    if (length == 0) return true;
    const std::string stored = Encode(plain, length);
    if (stored.size() >= outSize) return false;
    std::memcpy(out, stored.c_str(), stored.size() + 1);
    return true;
}

int ReadStoredPassword(const char* stored, char* out, std::size_t outSize) {
    std::string bytes;
    const int result =
        Decode(stored == nullptr ? "" : stored, stored == nullptr ? 0 : std::strlen(stored), bytes);
    if (out != nullptr && outSize > 0) {
        const std::size_t length = std::min(std::strlen(bytes.c_str()), outSize - 1);
        std::memcpy(out, bytes.data(), length);
        out[length] = '\0';
    }
    return result;
}

std::string StorePassword(const std::string& plain) {
    return PassesThrough(plain) ? plain : Encode(plain.data(), plain.size());
}

int ReadStoredPassword(const std::string& stored, std::string& plain) {
    if (PassesThrough(stored)) {
        plain = stored;
        return kPasswordRead;
    }
    std::string bytes;
    const int result = Decode(stored.data(), stored.size(), bytes);
    plain.assign(bytes.c_str(), std::min(std::strlen(bytes.c_str()), stored.size()));
    return result;
}

PasswordTickSource SetPasswordTickSource(PasswordTickSource source) {
    return tickSource.exchange(source != nullptr ? source : &MonotonicMilliseconds);
}

}  // namespace rivulet
