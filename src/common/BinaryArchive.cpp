#include "common/BinaryArchive.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstring>
#include <limits>
#include <type_traits>

namespace rivulet {

namespace {

// Strings read from a file are taken in pieces so that a corrupt length cannot make us reserve
// gigabytes before the end of the file shows that the length was wrong.
constexpr std::size_t kFileStringChunk = 64 * 1024;

std::string SystemError(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

ArchiveException::ArchiveException(const std::string& message, std::size_t offset)
    : std::runtime_error(message + " (archive offset " + std::to_string(offset) + ")"), offset_(offset) {}

BinaryArchive::BinaryArchive(void* buffer, std::size_t size, ArchiveDirection direction)
    : direction_(direction),
      store_buffer_(static_cast<unsigned char*>(buffer)),
      load_buffer_(static_cast<const unsigned char*>(buffer)),
      size_(size) {
    if (buffer == nullptr && size != 0) throw std::invalid_argument("BinaryArchive: null buffer");
    TransferHeader();
}

BinaryArchive::BinaryArchive(const void* buffer, std::size_t size, ArchiveDirection direction)
    : direction_(direction), load_buffer_(static_cast<const unsigned char*>(buffer)), size_(size) {
    if (direction == ArchiveDirection::Store) {
        throw std::invalid_argument("BinaryArchive: cannot store into read-only memory");
    }
    if (buffer == nullptr && size != 0) throw std::invalid_argument("BinaryArchive: null buffer");
    TransferHeader();
}

BinaryArchive::BinaryArchive(int fd, ArchiveDirection direction) : direction_(direction), fd_(fd) {
    if (fd < 0) throw std::invalid_argument("BinaryArchive: invalid file descriptor");
    struct stat st {};
    if (direction == ArchiveDirection::Load && ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
        ::lseek(fd, 0, SEEK_CUR) >= 0) {
        file_end_ = static_cast<std::size_t>(st.st_size);
    }
    TransferHeader();
}

void BinaryArchive::TransferHeader() {
    std::uint32_t first = kHeaderFirst;
    std::uint32_t second = kHeaderSecond;
    Transfer(first);
    Transfer(second);
    if (first != kHeaderFirst || second != kHeaderSecond) {
        throw ArchiveException("not a Rivulet archive: unexpected header", 0);
    }
}

void BinaryArchive::Transfer(std::int8_t& value) {
    auto raw = static_cast<std::uint8_t>(value);
    TransferUnsigned(raw);
    value = static_cast<std::int8_t>(raw);
}

void BinaryArchive::Transfer(std::uint8_t& value) {
    TransferUnsigned(value);
}

void BinaryArchive::Transfer(std::int16_t& value) {
    auto raw = static_cast<std::uint16_t>(value);
    TransferUnsigned(raw);
    value = static_cast<std::int16_t>(raw);
}

void BinaryArchive::Transfer(std::uint16_t& value) {
    TransferUnsigned(value);
}

void BinaryArchive::Transfer(std::int32_t& value) {
    auto raw = static_cast<std::uint32_t>(value);
    TransferUnsigned(raw);
    value = static_cast<std::int32_t>(raw);
}

void BinaryArchive::Transfer(std::uint32_t& value) {
    TransferUnsigned(value);
}

void BinaryArchive::Transfer(double& value) {
    static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == 8);
    auto raw = std::bit_cast<std::uint64_t>(value);
    TransferUnsigned(raw);
    value = std::bit_cast<double>(raw);
}

void BinaryArchive::Transfer(std::string& value) {
    const std::size_t start = position_;
    if (IsStoring()) {
        if (value.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
            throw ArchiveException("string too long to store", start);
        }
        auto length = static_cast<std::int32_t>(value.size());
        Transfer(length);
        Put(reinterpret_cast<const unsigned char*>(value.data()), value.size());
        return;
    }

    std::int32_t length = 0;
    Transfer(length);
    if (length < 0) throw ArchiveException("negative string length " + std::to_string(length), start);
    const auto count = static_cast<std::size_t>(length);
    if (count > kMaxStringLength || count > Remaining()) {
        throw ArchiveException("string length " + std::to_string(count) + " exceeds the " +
                                   std::to_string(std::min(Remaining(), kMaxStringLength)) +
                                   " bytes that can follow",
                               position_);
    }
    if (fd_ < 0) {
        CheckBounds(count);
        value.assign(reinterpret_cast<const char*>(load_buffer_ + position_), count);
        position_ += count;
        return;
    }
    std::string text;
    while (text.size() < count) {
        const std::size_t piece = std::min(count - text.size(), kFileStringChunk);
        const std::size_t used = text.size();
        text.resize(used + piece);
        Get(reinterpret_cast<unsigned char*>(text.data() + used), piece);
    }
    value = std::move(text);
}

std::size_t BinaryArchive::Remaining() const {
    if (IsStoring()) return kUnbounded;
    if (fd_ < 0) return size_ - position_;
    if (file_end_ == kUnbounded) return kUnbounded;
    const off_t at = ::lseek(fd_, 0, SEEK_CUR);
    if (at < 0) return kUnbounded;
    const auto offset = static_cast<std::size_t>(at);
    return offset >= file_end_ ? 0 : file_end_ - offset;
}

std::size_t BinaryArchive::ReadCount(std::size_t minItemBytes, std::size_t ceiling) {
    std::int32_t stored = 0;
    Transfer(stored);
    if (stored < 0) throw ArchiveException("negative count " + std::to_string(stored), position_);
    const auto count = static_cast<std::size_t>(stored);
    CheckCount(count, minItemBytes, ceiling);
    return count;
}

void BinaryArchive::CheckCount(std::size_t count, std::size_t minItemBytes, std::size_t ceiling,
                               std::size_t readBytes) const {
    const std::size_t remaining = Remaining();
    if (minItemBytes != 0 && remaining != kUnbounded && count > remaining / minItemBytes) {
        // Reported where reading the items in pieces of `readBytes` would have run out.
        const std::size_t piece = readBytes != 0 ? readBytes : minItemBytes;
        throw ArchiveException("count " + std::to_string(count) + " of " + std::to_string(minItemBytes) +
                                   "-byte items exceeds the " + std::to_string(remaining) + " bytes left",
                               position_ + remaining - remaining % piece);
    }
    if (count > ceiling) {
        throw ArchiveException(
            "count " + std::to_string(count) + " is above the limit of " + std::to_string(ceiling),
            position_);
    }
}

void BinaryArchive::TransferCount(std::int32_t& count, std::size_t minItemBytes, std::size_t ceiling) {
    if (IsStoring()) {
        Transfer(count);
        return;
    }
    count = static_cast<std::int32_t>(ReadCount(minItemBytes, ceiling));
}

template <typename Unsigned>
void BinaryArchive::TransferUnsigned(Unsigned& value) {
    static_assert(std::is_unsigned_v<Unsigned>);
    unsigned char bytes[sizeof(Unsigned)];
    if (IsStoring()) {
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            bytes[i] = static_cast<unsigned char>((value >> (CHAR_BIT * i)) & 0xFFu);
        }
        Put(bytes, sizeof(Unsigned));
    } else {
        Get(bytes, sizeof(Unsigned));
        Unsigned result = 0;
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            result = static_cast<Unsigned>(result | (static_cast<Unsigned>(bytes[i]) << (CHAR_BIT * i)));
        }
        value = result;
    }
}

void BinaryArchive::CheckBounds(std::size_t count) const {
    // position_ never exceeds size_ for a memory archive, so the subtraction cannot wrap.
    if (count > size_ - position_) {
        throw ArchiveException("memory archive of " + std::to_string(size_) + " bytes cannot hold " +
                                   std::to_string(count) + " more bytes",
                               position_);
    }
}

void BinaryArchive::Put(const unsigned char* bytes, std::size_t count) {
    if (fd_ < 0) {
        CheckBounds(count);
        if (count != 0) std::memcpy(store_buffer_ + position_, bytes, count);
        position_ += count;
        return;
    }
    std::size_t done = 0;
    while (done < count) {
        const ssize_t written = ::write(fd_, bytes + done, count - done);
        if (written < 0) {
            if (errno == EINTR) continue;
            throw ArchiveException(SystemError("archive write failed"), position_);
        }
        if (written == 0) throw ArchiveException("archive write made no progress", position_);
        done += static_cast<std::size_t>(written);
    }
    position_ += count;
}

void BinaryArchive::Get(unsigned char* bytes, std::size_t count) {
    if (fd_ < 0) {
        CheckBounds(count);
        if (count != 0) std::memcpy(bytes, load_buffer_ + position_, count);
        position_ += count;
        return;
    }
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::read(fd_, bytes + done, count - done);
        if (got < 0) {
            if (errno == EINTR) continue;
            throw ArchiveException(SystemError("archive read failed"), position_);
        }
        if (got == 0) {
            throw ArchiveException("archive file ends " + std::to_string(count - done) + " bytes early",
                                   position_);
        }
        done += static_cast<std::size_t>(got);
    }
    position_ += count;
}

}  // namespace rivulet
