#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "IprModel.h"

namespace inflowkit {

// The block SaveIPR writes into the caller's file, all integers little-endian:
//
//   offset 0       char[4]  magic "IKCF"
//          4       uint32   format version (1)
//          8       uint32   payload length N in bytes
//          12      payload: uint32 factor count, then per factor
//                           uint32 name length, name bytes (no terminator), float64 factor
//          12 + N  uint32   FNV-1a hash of bytes [0, 12 + N)
//
// The length in the header lets a reader take exactly the block and nothing after it.
class IprBlock {
  public:
    static constexpr std::size_t kHeaderSize = 12;
    static constexpr std::size_t kTrailerSize = 4;
    static constexpr uint32_t kVersion = 1;
    // Far above any real field; guards against allocating from a corrupt length.
    static constexpr uint32_t kMaxPayload = 64u << 20;

    static std::vector<unsigned char> encode(const std::vector<IprFactor>& factors);
    // Decodes a whole block; nullopt if it is not exactly one valid block.
    static std::optional<std::vector<IprFactor>> decode(std::span<const unsigned char> block);

    // Write/read one block at the descriptor's present position.
    static bool write(int fd, const std::vector<IprFactor>& factors);
    static std::optional<std::vector<IprFactor>> read(int fd);
};

}  // namespace inflowkit
