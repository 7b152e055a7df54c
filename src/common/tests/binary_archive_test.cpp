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

namespace rivulet {
namespace {

// A count of items of a least size against what follows it: the remaining bytes and the ceiling decide
// before anything is read, in memory and in a file, with the descriptor's other readers accounted for.
TEST(BinaryArchiveTest, ReadCountChecksTheCeilingAndTheBytesThatRemain) {
    struct Case {
        std::int32_t count;
        std::size_t minItemBytes;
        std::size_t ceiling;
        std::size_t following;  // bytes stored after the count
        bool accepted;
    };
    const Case cases[] = {
        {0, 8, 10, 0, true},
        {3, 8, 10, 24, true},
        {3, 8, 10, 23, false},
        {4, 6 * 8, 100, 4 * 48, true},
        {4, 6 * 8, 100, 4 * 48 - 1, false},
        {10, 1, 9, 100, false},
        {10, 0, 10, 0, true},  // items that take no room are held to the ceiling alone
        {11, 0, 10, 0, false},
        {-1, 8, 10, 8, false},
        {std::numeric_limits<std::int32_t>::max(), 8, BinaryArchive::kMaxElements, 64, false},
        {std::numeric_limits<std::int32_t>::max(), 1, std::numeric_limits<std::size_t>::max(), 64, false},
        {std::numeric_limits<std::int32_t>::min(), 0, 10, 0, false},
    };
    for (const Case& c : cases) {
        Bytes bytes = Stored(0, c.count);
        bytes.resize(bytes.size() + c.following, 0xAB);
        const auto read = [&](BinaryArchive& a) {
            EXPECT_EQ(a.ReadCount(c.minItemBytes, c.ceiling), static_cast<std::size_t>(c.count));
            EXPECT_EQ(a.Remaining(), c.following);
        };
        // Too many for the bytes left fails after the last whole item; negative or above the ceiling, just
        // after the count.
        const bool tooMany = c.count > 0 && c.minItemBytes != 0 &&
                             static_cast<std::size_t>(c.count) > c.following / c.minItemBytes;
        const long offset = c.accepted ? -1
                            : tooMany  ? static_cast<long>(bytes.size() - c.following % c.minItemBytes)
                                       : 12;
        EXPECT_EQ(LoadBoth(bytes, read), std::pair(offset, offset)) << c.count << " of " << c.minItemBytes;
    }
}

TEST(BinaryArchiveTest, StringLengthsAreHeldToWhatRemainsBeforeAnythingIsReserved) {
    const std::tuple<std::int32_t, std::size_t, bool> cases[] = {
        {5, 5, true}, {5, 4, false}, {0, 0, true}, {1 << 30, 100, false}, {0x7FFFFFFF, 1000, false}};
    for (const auto& [length, following, accepted] : cases) {
        Bytes bytes = Stored(0, length);
        bytes.resize(bytes.size() + following, 'x');
        std::string text = "kept";
        const long offset = accepted ? -1 : 12;
        EXPECT_EQ(LoadBoth(bytes, [&](BinaryArchive& a) { a.Transfer(text); }), std::pair(offset, offset))
            << length;
        EXPECT_EQ(text, accepted ? std::string(static_cast<std::size_t>(length), 'x') : "kept");
    }
}

TEST(BinaryArchiveTest, RemainingFollowsTheDescriptorAndIsUnboundedWhenItCannotBeKnown) {
    TempFile file(Stored(0, std::int32_t{2}, std::int32_t{3}, 1.0));
    BinaryArchive archive(file.fd, ArchiveDirection::Load);
    EXPECT_EQ(archive.Remaining(), 16u);
    ASSERT_EQ(::lseek(file.fd, 4, SEEK_CUR), 12);  // another reader of the descriptor took the first count
    EXPECT_EQ(archive.Remaining(), 12u);
    EXPECT_EQ(FailureOffset([&] { archive.ReadCount(8, 10); }), 20);  // 3 doubles where 1 is left
    EXPECT_EQ(archive.Remaining(), 8u);

    Bytes buffer(64);
    BinaryArchive store(buffer.data(), buffer.size(), ArchiveDirection::Store);
    EXPECT_EQ(store.Remaining(), BinaryArchive::kUnbounded);
    std::int32_t count = 7;
    store.TransferCount(count, 1000, 1);  // a store is not checked
    EXPECT_EQ(store.Position(), 12u);

    // A pipe has no end to measure, so only the ceiling holds a count.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const Bytes piped = Stored(0, std::int32_t{1000}, std::int32_t{1001});
    ASSERT_EQ(::write(ends[1], piped.data(), piped.size()), static_cast<ssize_t>(piped.size()));
    ::close(ends[1]);
    BinaryArchive reader(ends[0], ArchiveDirection::Load);
    EXPECT_EQ(reader.Remaining(), BinaryArchive::kUnbounded);
    EXPECT_EQ(reader.ReadCount(8, 1000), 1000u);
    EXPECT_EQ(FailureOffset([&] { reader.ReadCount(8, 1000); }), 16);
    ::close(ends[0]);
}

}  // namespace
}  // namespace rivulet
