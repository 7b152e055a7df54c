#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace rivulet {

// The stored form of the cluster user's password: 16 hex characters of key, then the password's characters
// encrypted with Blowfish (our own tables, ECB) as hex, 16 characters for every 8 password characters. It
// conceals the password from casual view only; the key stands in the clear at the head of the text.

// Shown by the dialog in place of a stored password; it passes through both string operations unchanged,
// as does the empty text.
inline constexpr char kPasswordMask[] = "********";

// Results of reading a stored text.
inline constexpr int kPasswordRead = 0;
inline constexpr int kPasswordRejected = 1;  // under 17 characters or not all of "0-9A-F"

namespace password_hex {

// Writes the byte as two characters of "0123456789ABCDEF", high nibble first, to out[0] and out[1].
void Format(std::uint8_t byte, char* out);

// The byte encoded by at most the first two of `length` characters; stops at the first character that is
// not a digit or "A" to "F" (lower case included), so "7Z" reads 0x07 and "Z7" reads 0.
std::uint8_t Parse(const char* text, std::size_t length);

}  // namespace password_hex

// Stores the zero-terminated `plain` into `out` as a zero-terminated text; an empty password stays empty.
// A buffer of twice the plain length plus 32 always suffices; one too small for the text gets an empty
// text (when it has room for that) and false.
bool StorePassword(const char* plain, char* out, std::size_t outSize);

// Reads the zero-terminated stored text into `out`, cut to outSize - 1 characters and zero-terminated.
// A rejected text gives an empty password. `out` may be the buffer holding `stored`.
int ReadStoredPassword(const char* stored, char* out, std::size_t outSize);

// String forms; "" and kPasswordMask pass through unchanged (reading them gives kPasswordRead).
std::string StorePassword(const std::string& plain);
int ReadStoredPassword(const std::string& stored, std::string& plain);

// Milliseconds from a monotonic clock; the key characters are drawn from it. Replaceable for tests:
// returns the previous source, and nullptr restores CLOCK_MONOTONIC.
using PasswordTickSource = std::uint64_t (*)();
PasswordTickSource SetPasswordTickSource(PasswordTickSource source);

}  // namespace rivulet
