// A record as the host allocates it: raw bytes, read and written at the offsets the plug-in's boundary
// fixes. The host never shares a struct definition with the plug-in.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace host {

class Buffer {
  public:
    explicit Buffer(std::size_t size, std::uint8_t fill = 0) : bytes_(size, fill) {}

    template <typename T>
    T Get(std::size_t offset) const {
        T value;
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return value;
    }
    template <typename T>
    void Put(std::size_t offset, T value) {
        std::memcpy(bytes_.data() + offset, &value, sizeof(T));
    }
    // The zero-terminated text at an offset, read no further than `limit` bytes.
    std::string Text(std::size_t offset, std::size_t limit) const {
        const char* start = reinterpret_cast<const char*>(bytes_.data() + offset);
        return std::string(start, strnlen(start, limit));
    }
    void PutText(std::size_t offset, const std::string& text) {
        std::memcpy(bytes_.data() + offset, text.c_str(), text.size() + 1);
    }

    std::uint8_t* data() { return bytes_.data(); }
    const std::uint8_t* data() const { return bytes_.data(); }
    std::size_t size() const { return bytes_.size(); }
    std::uint64_t Address() { return reinterpret_cast<std::uintptr_t>(bytes_.data()); }
    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

  private:
    std::vector<std::uint8_t> bytes_;
};

}  // namespace host
