#include "IprBlock.h"

#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>
#include <string>

namespace inflowkit {
namespace {

constexpr unsigned char kMagic[4] = {'I', 'K', 'C', 'F'};

uint32_t fnv1a(std::span<const unsigned char> bytes) {
    uint32_t hash = 2166136261u;
    for (unsigned char b : bytes) {
        hash ^= b;
        hash *= 16777619u;
    }
    return hash;
}

void putU32(std::vector<unsigned char>& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

void putU64(std::vector<unsigned char>& out, uint64_t v) {
    for (int i = 0; i < 8; ++i) out.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

uint32_t getU32(const unsigned char* p) {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= static_cast<uint32_t>(p[i]) << (8 * i);
    return v;
}

uint64_t getU64(const unsigned char* p) {
    uint64_t v = 0;
    for (int i = 0; i < 8; ++i) v |= static_cast<uint64_t>(p[i]) << (8 * i);
    return v;
}

// Bounds-checked reads from the payload; each advances `pos` only on success.
bool takeU32(std::span<const unsigned char> in, std::size_t& pos, uint32_t& v) {
    if (in.size() - pos < 4) return false;
    v = getU32(in.data() + pos);
    pos += 4;
    return true;
}

bool takeU64(std::span<const unsigned char> in, std::size_t& pos, uint64_t& v) {
    if (in.size() - pos < 8) return false;
    v = getU64(in.data() + pos);
    pos += 8;
    return true;
}

bool takeText(std::span<const unsigned char> in, std::size_t& pos, std::size_t n, std::string& s) {
    if (in.size() - pos < n) return false;
    s.assign(reinterpret_cast<const char*>(in.data() + pos), n);
    pos += n;
    return true;
}

bool writeAll(int fd, const unsigned char* data, std::size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool readAll(int fd, unsigned char* data, std::size_t size) {
    while (size > 0) {
        ssize_t n = ::read(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;  // error or end of file: a short block
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

std::vector<unsigned char> IprBlock::encode(const std::vector<IprFactor>& factors) {
    std::vector<unsigned char> out(std::begin(kMagic), std::end(kMagic));
    putU32(out, kVersion);
    putU32(out, 0);  // payload length, patched below
    putU32(out, static_cast<uint32_t>(factors.size()));
    for (const IprFactor& f : factors) {
        putU32(out, static_cast<uint32_t>(f.wellName.size()));
        out.insert(out.end(), f.wellName.begin(), f.wellName.end());
        putU64(out, std::bit_cast<uint64_t>(f.factor));
    }
    const uint32_t payload = static_cast<uint32_t>(out.size() - kHeaderSize);
    for (int i = 0; i < 4; ++i) out[8 + i] = static_cast<unsigned char>(payload >> (8 * i));
    putU32(out, fnv1a(out));
    return out;
}

std::optional<std::vector<IprFactor>> IprBlock::decode(std::span<const unsigned char> block) {
    if (block.size() < kHeaderSize + kTrailerSize) return std::nullopt;
    if (std::memcmp(block.data(), kMagic, sizeof kMagic) != 0) return std::nullopt;
    if (getU32(block.data() + 4) != kVersion) return std::nullopt;
    const uint32_t payloadSize = getU32(block.data() + 8);
    if (block.size() != kHeaderSize + payloadSize + kTrailerSize) return std::nullopt;
    const std::span<const unsigned char> hashed = block.first(kHeaderSize + payloadSize);
    if (getU32(block.data() + hashed.size()) != fnv1a(hashed)) return std::nullopt;

    const std::span<const unsigned char> payload = block.subspan(kHeaderSize, payloadSize);
    std::size_t pos = 0;
    uint32_t count = 0;
    if (!takeU32(payload, pos, count)) return std::nullopt;
    std::vector<IprFactor> factors;
    std::set<std::string> seen;
    for (uint32_t i = 0; i < count; ++i) {
        IprFactor f;
        uint32_t nameSize = 0;
        uint64_t bits = 0;
        if (!takeU32(payload, pos, nameSize) || !takeText(payload, pos, nameSize, f.wellName) ||
            !takeU64(payload, pos, bits)) {
            return std::nullopt;
        }
        f.factor = std::bit_cast<double>(bits);
        if (!std::isfinite(f.factor) || !seen.insert(f.wellName).second) return std::nullopt;
        factors.push_back(std::move(f));
    }
    if (pos != payload.size()) return std::nullopt;
    return factors;
}

bool IprBlock::write(int fd, const std::vector<IprFactor>& factors) {
    const std::vector<unsigned char> block = encode(factors);
    if (block.size() - kHeaderSize - kTrailerSize > kMaxPayload) return false;  // could not be read back
    return writeAll(fd, block.data(), block.size());
}

std::optional<std::vector<IprFactor>> IprBlock::read(int fd) {
    std::vector<unsigned char> block(kHeaderSize);
    if (!readAll(fd, block.data(), kHeaderSize)) return std::nullopt;
    // Check what identifies the block before trusting its length.
    if (std::memcmp(block.data(), kMagic, sizeof kMagic) != 0) return std::nullopt;
    if (getU32(block.data() + 4) != kVersion) return std::nullopt;
    const uint32_t payloadSize = getU32(block.data() + 8);
    if (payloadSize > kMaxPayload) return std::nullopt;
    block.resize(kHeaderSize + payloadSize + kTrailerSize);
    if (!readAll(fd, block.data() + kHeaderSize, payloadSize + kTrailerSize)) return std::nullopt;
    return decode(block);
}

}  // namespace inflowkit
