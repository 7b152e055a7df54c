#include "common/BinaryArchive.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace rivulet {
namespace {

using Bytes = std::vector<unsigned char>;
const Bytes kHeader = {0x01, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x38};

// One value of every item kind, at the edges of their ranges, and its archive.
using Sample = std::tuple<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                          double, double, std::string, std::string>;
const Sample kSample{
    INT8_MIN, 0xFF, -12345, 0xBEEF, INT32_MIN, 0xDEADBEEF, -2.5, INFINITY, std::string("caf\xC3\xA9\0!", 7),
    ""};
const Bytes kStoredSample = {0x01, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x38, 0x80, 0xFF, 0xC7,
                             0xCF, 0xEF, 0xBE, 0x00, 0x00, 0x00, 0x80, 0xEF, 0xBE, 0xAD, 0xDE,
                             0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0xC0, 0x00, 0x00, 0x00,
                             0x00, 0x00, 0x00, 0xF0, 0x7F, 0x07, 0x00, 0x00, 0x00, 'c',  'a',
                             'f',  0xC3, 0xA9, 0x00, '!',  0x00, 0x00, 0x00, 0x00};

void Stream(BinaryArchive& archive, Sample& sample) {
    std::apply([&](auto&... items) { (archive.Transfer(items), ...); }, sample);
}

// The memory archive of `items` without its last `cut` bytes.
template <typename... Items>
Bytes Stored(std::size_t cut, Items... items) {
    Bytes buffer(256);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    (archive.Transfer(items), ...);
    buffer.resize(archive.Position() - cut);
    return buffer;
}

// Offset of the ArchiveException raised by `access`, or -1 when none is raised.
long FailureOffset(const std::function<void()>& access) {
    try {
        access();
    } catch (const ArchiveException& e) {
        return static_cast<long>(e.Offset());
    }
    return -1;
}

// Anonymous temporary file holding `bytes`.
struct TempFile {
    explicit TempFile(const Bytes& bytes = {}) : stream(std::tmpfile()), fd(::fileno(stream)) {
        EXPECT_EQ(::pwrite(fd, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }
    ~TempFile() { std::fclose(stream); }
    std::FILE* stream;
    int fd;
};

// Applies `read` to `bytes` loaded from memory, then from a file where `tail` follows them, and returns
// both failure offsets. A file archive must leave the descriptor after its last item.
std::pair<long, long> LoadBoth(const Bytes& bytes, const std::function<void(BinaryArchive&)>& read,
                               const Bytes& tail = {}) {
    Bytes in_file = bytes;
    in_file.insert(in_file.end(), tail.begin(), tail.end());
    TempFile file(in_file);
    return {FailureOffset([&] {
                BinaryArchive memory(bytes.data(), bytes.size(), ArchiveDirection::Load);
                read(memory);
            }),
            FailureOffset([&] {
                BinaryArchive archive(file.fd, ArchiveDirection::Load);
                read(archive);
                EXPECT_EQ(::lseek(file.fd, 0, SEEK_CUR), static_cast<off_t>(archive.Position()));
            })};
}

// The stored header itself is checked with every kind of item below.
TEST(BinaryArchiveTest, HeaderNeedsItsRoomAndIsCheckedOnLoad) {
    Bytes buffer(8);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    std::uint8_t more = 0;
    EXPECT_EQ(FailureOffset([&] { archive.Transfer(more); }), 8);
    EXPECT_EQ(FailureOffset([&] { BinaryArchive(buffer.data(), 7, ArchiveDirection::Store); }), 4);
    EXPECT_THROW(BinaryArchive(kHeader.data(), kHeader.size(), ArchiveDirection::Store),
                 std::invalid_argument);

    const std::pair<Bytes, long> bad_headers[] = {{{1, 0, 0, 0, 0x1A, 0xD2, 0x5F, 0x39}, 0},
                                                  {{2, 0, 0, 0, 0x1A, 0xD2, 0x5F, 0x38}, 0},
                                                  {Bytes(kHeader.begin(), kHeader.end() - 1), 4},
                                                  {{}, 0}};
    for (const auto& [bad, offset] : bad_headers)
        EXPECT_EQ(LoadBoth(bad, [](BinaryArchive&) {}), std::pair(offset, offset))
            << ::testing::PrintToString(bad);
}

TEST(BinaryArchiveTest, EveryKindIsLittleEndianWithoutPaddingInMemoryAndFile) {
    Sample original = kSample;
    Bytes stored(kStoredSample.size()), written(kStoredSample.size() + 1);
    BinaryArchive memory(stored.data(), stored.size(), ArchiveDirection::Store);
    Stream(memory, original);
    EXPECT_EQ(stored, kStoredSample);
    TempFile file;
    BinaryArchive writer(file.fd, ArchiveDirection::Store);
    Stream(writer, original);
    EXPECT_EQ(writer.Position(), kStoredSample.size());
    written.resize(static_cast<std::size_t>(::pread(file.fd, written.data(), written.size(), 0)));
    EXPECT_EQ(written, kStoredSample);

    const auto read = [&](BinaryArchive& a) {
        Sample loaded = {1, 2, 3, 4, 5, 6, 7.0, 8.0, "stale", "stale"};
        Stream(a, loaded);
        EXPECT_EQ(loaded, kSample);
        EXPECT_EQ(a.Position(), kStoredSample.size());
    };
    EXPECT_EQ(LoadBoth(kStoredSample, read, {0x01}), std::pair(-1L, -1L));
}

TEST(BinaryArchiveTest, ShortDataRaisesAtTheOffsetOfTheFailingAccessAndTakesNothing) {
    std::int32_t value = 0;
    std::string text = "kept";
    const auto read_text = [&](BinaryArchive& a) { a.Transfer(text); };
    const auto read_two = [&](BinaryArchive& a) { a.Transfer(value), a.Transfer(value); };
    const Bytes short_int = Stored(2, std::int32_t{10}, std::int32_t{20});
    const std::tuple<Bytes, std::function<void(BinaryArchive&)>, long> cases[] = {
        {short_int, read_two, 12},
        {Stored(1, std::string("abcdef")), read_text, 12},
        {Stored(0, std::int32_t{-1}), read_text, 8},
        {Stored(0, std::numeric_limits<std::int32_t>::max(), std::uint16_t{7}), read_text, 12}};
    for (const auto& [bytes, read, offset] : cases)
        EXPECT_EQ(LoadBoth(bytes, read), std::pair(offset, offset)) << ::testing::PrintToString(bytes);
    EXPECT_EQ(std::tie(value, text), std::tuple(10, "kept"));

    BinaryArchive reader(short_int.data(), short_int.size(), ArchiveDirection::Load);
    EXPECT_EQ(FailureOffset([&] { read_two(reader); }), 12);
    std::uint16_t rest = 0;  // the two bytes the failed access left can still be read
    reader.Transfer(rest);
    EXPECT_EQ(rest, 20u);
}

}  // namespace
}  // namespace rivulet
