#pragma once

#include <cstddef>
#include <cstdint>

namespace rivulet {

// Blowfish block cipher: 64-bit blocks, 16 rounds, keys of 1 to 56 bytes. Words load big-endian, so the
// first byte of a block is the highest byte of its left word.
//
// Two sets of initial tables exist: the published digits of pi, and this system's own tables derived from
// them, which the password store uses. Data written with one set cannot be read with the other.
class Blowfish {
  public:
    enum class Tables { kStandard, kOwn };
    enum class Mode { kEcb = 0, kCbc = 1, kCfb = 2 };  // kCfb is 64-bit cipher feedback

    static constexpr std::size_t kBlockSize = 8;
    static constexpr std::size_t kMaxKeyLength = 56;

    // Sets up the key; bytes beyond kMaxKeyLength are ignored. The chaining value (both initial and
    // current) is `initialChain`, its high word being the left one. Throws std::invalid_argument
    // "Incorrect key length" for an empty key.
    Blowfish(const std::uint8_t* key, std::size_t keyLength, Tables tables = Tables::kOwn,
             std::uint64_t initialChain = 0);

    // Transform `length` bytes from `in` to `out` (which may be the same buffer). CBC and CFB run on, and
    // advance, the current chaining value. Throws std::invalid_argument "Incorrect buffer length" when
    // `length` is 0 or not a multiple of kBlockSize.
    void Encrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t length, Mode mode = Mode::kEcb);
    void Decrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t length, Mode mode = Mode::kEcb);

    // Restores the current chaining value to the initial one.
    void ResetChain() {
        chain_[0] = initialChain_[0];
        chain_[1] = initialChain_[1];
    }

  private:
    std::uint32_t Round(std::uint32_t x) const;
    void EncryptBlock(std::uint32_t& left, std::uint32_t& right) const;
    void DecryptBlock(std::uint32_t& left, std::uint32_t& right) const;

    std::uint32_t initialChain_[2];
    std::uint32_t chain_[2];
    std::uint32_t p_[18];
    std::uint32_t s_[4][256];
};

}  // namespace rivulet
