// The per-user registry file in the .reg text format:
//
//   REGEDIT4
//
//   [Software\Quillon\Conflux\ExtensionDlls110_64\tNavigator]
//   "SimExecutable"="/opt/tnav/tnav-standin"
//   "LowerPort"=dword:00003e58
//
// Key and value names compare without regard to case, as the registry's do. Lines of other value kinds are
// kept as they stand, so that rewriting the file loses nothing.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace rivulet {

struct CaseInsensitiveLess {
    bool operator()(const std::string& a, const std::string& b) const;
};

struct RegistryValue {
    enum class Kind { String, Dword, Other };
    Kind kind = Kind::String;
    std::string text;          // a string's text, or what follows "=" for another kind
    std::uint32_t number = 0;  // a dword

    static RegistryValue String(std::string text) { return {Kind::String, std::move(text), 0}; }
    static RegistryValue Dword(std::uint32_t number) { return {Kind::Dword, {}, number}; }
    bool operator==(const RegistryValue&) const = default;
};

using RegistryValues = std::map<std::string, RegistryValue, CaseInsensitiveLess>;
using RegistryKeys = std::map<std::string, RegistryValues, CaseInsensitiveLess>;

// What a registry file may hold: its size, a line's length, and the keys and values together. The store
// holds tens of values; anything past these is not ours and is not read.
inline constexpr std::size_t kMaxRegFileBytes = 16u * 1024 * 1024;
inline constexpr std::size_t kMaxRegLineLength = 1024u * 1024;
inline constexpr std::size_t kMaxRegEntries = 65'536;

// Reads the text of a registry file in one pass. Lines that are not understood are skipped, and so are
// values that stand before any key. A text above kMaxRegFileBytes reads as empty; a line above
// kMaxRegLineLength is skipped; keys and values
// beyond kMaxRegEntries are not kept.
RegistryKeys ParseRegFile(const std::string& text);

// The file's text: the header, then each key and its values in name order.
std::string FormatRegFile(const RegistryKeys& keys);

}  // namespace rivulet
