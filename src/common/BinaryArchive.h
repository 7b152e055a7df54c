#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace rivulet {

enum class ArchiveDirection { Store, Load };

// Raised for every failed archive access: out of bounds, short read, failed write, bad header or a
// string length that cannot be right. Offset() is the cursor position at which the failing access began.
class ArchiveException : public std::runtime_error {
  public:
    ArchiveException(const std::string& message, std::size_t offset);

    std::size_t Offset() const noexcept { return offset_; }

  private:
    std::size_t offset_;
};

// Little-endian, untagged, unpadded serialiser over a memory buffer or an open file descriptor. The same
// Transfer call stores or loads depending on the direction, so a data object streams itself with one
// routine. The constructor stores or checks the two-word header.
class BinaryArchive {
  public:
    static constexpr std::uint32_t kHeaderFirst = 1;
    static constexpr std::uint32_t kHeaderSecond = 0x385FD21A;
    static constexpr std::size_t kHeaderSize = 8;
    // Ceilings for what a load accepts, whatever the stream says: the well list, any one array and any
    // one string.
    static constexpr std::size_t kMaxWells = 1'000'000;
    static constexpr std::size_t kMaxElements = 10'000'000;
    static constexpr std::size_t kMaxStringLength = 64u * 1024 * 1024;
    // Returned by Remaining() when the end is not known (storing, or a descriptor that cannot seek).
    static constexpr std::size_t kUnbounded = static_cast<std::size_t>(-1);

    // Memory archive over `size` bytes of `buffer`, either direction.
    BinaryArchive(void* buffer, std::size_t size, ArchiveDirection direction);
    // Memory archive over read-only data; only ArchiveDirection::Load is accepted (std::invalid_argument).
    BinaryArchive(const void* buffer, std::size_t size, ArchiveDirection direction);
    // File archive over an open descriptor. Reads exactly the bytes asked for, so the descriptor's position
    // is always just after the last item transferred. A regular file's size is taken when loading starts, so
    // Remaining() knows the end; other descriptors are unbounded. The descriptor is not closed.
    BinaryArchive(int fd, ArchiveDirection direction);

    BinaryArchive(const BinaryArchive&) = delete;
    BinaryArchive& operator=(const BinaryArchive&) = delete;

    bool IsStoring() const { return direction_ == ArchiveDirection::Store; }

    // Bytes produced or consumed so far, header included.
    std::size_t Position() const { return position_; }

    void Transfer(std::int8_t& value);
    void Transfer(std::uint8_t& value);
    void Transfer(std::int16_t& value);
    void Transfer(std::uint16_t& value);
    void Transfer(std::int32_t& value);
    void Transfer(std::uint32_t& value);
    void Transfer(double& value);
    // Stored as an i32 length followed by the characters, no terminator. A loaded length must be no more than
    // kMaxStringLength and the bytes that remain.
    void Transfer(std::string& value);

    // Bytes left to load: to the end of the memory, or to the end of the file from the descriptor's present
    // position (which others reading the same descriptor also move). kUnbounded when storing or not known.
    std::size_t Remaining() const;

    // Raises an ArchiveException, before anything is reserved, when `count` items that each take at least
    // `minItemBytes` in the stream are more than the bytes that remain could hold (reported where reading
    // them in pieces of `readBytes`, by default whole items, would have run out) or more than `ceiling`
    // (reported at the present offset).
    void CheckCount(std::size_t count, std::size_t minItemBytes, std::size_t ceiling,
                    std::size_t readBytes = 0) const;
    // Loads an i32 count and checks it through CheckCount; a negative count fails at the present offset.
    std::size_t ReadCount(std::size_t minItemBytes, std::size_t ceiling);
    // Stores `count`, or loads it through ReadCount, so that one routine serves both directions.
    void TransferCount(std::int32_t& count, std::size_t minItemBytes, std::size_t ceiling);

  private:
    template <typename Unsigned>
    void TransferUnsigned(Unsigned& value);
    void TransferHeader();

    void Put(const unsigned char* bytes, std::size_t count);
    void Get(unsigned char* bytes, std::size_t count);
    void CheckBounds(std::size_t count) const;

    ArchiveDirection direction_;
    unsigned char* store_buffer_ = nullptr;
    const unsigned char* load_buffer_ = nullptr;
    std::size_t size_ = 0;
    int fd_ = -1;
    std::size_t position_ = 0;
    std::size_t file_end_ = kUnbounded;  // a loaded regular file's size
};

}  // namespace rivulet
