#include "common/BinaryArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace rivulet {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<unsigned char>;

template <typename Fill>
Bytes StoreToMemory(Fill fill) {
    Bytes buffer(256);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    fill(archive);
    buffer.resize(archive.Position());
    return buffer;
}

template <typename... Items>
void TransferAll(BinaryArchive& archive, Items&... items) {
    (archive.Transfer(items), ...);
}

// Offset of the ArchiveException raised by `access`, or -1 when none is raised.
template <typename Access>
long FailureOffset(Access access) {
    try {
        access();
    } catch (const ArchiveException& e) {
        return static_cast<long>(e.Offset());
    }
    return -1;
}

// An unlinked temporary file, closed on destruction.
struct TempFile {
    TempFile() {
        char name[] = "/tmp/rivulet_archive_XXXXXX";
        fd = ::mkstemp(name);
        if (fd >= 0) ::unlink(name);
    }
    ~TempFile() { ::close(fd); }
    int fd = -1;
};

// One value of every item kind, at the edges of their ranges.
struct Sample {
    std::int8_t i8 = std::numeric_limits<std::int8_t>::min();
    std::uint8_t u8 = 0xFF;
    std::int16_t i16 = -12345;
    std::uint16_t u16 = 0xBEEF;
    std::int32_t i32 = std::numeric_limits<std::int32_t>::min();
    std::uint32_t u32 = 0xDEADBEEF;
    double f64 = -1.0e-300;
    double inf = std::numeric_limits<double>::infinity();
    std::string text = std::string("caf\xC3\xA9\0!", 7);
    std::string empty;

    void Stream(BinaryArchive& a) { TransferAll(a, i8, u8, i16, u16, i32, u32, f64, inf, text, empty); }
    auto Fields() const { return std::tie(i8, u8, i16, u16, i32, u32, f64, inf, text, empty); }
    static Sample Stale() { return {1, 2, 3, 4, 5, 6, 7.0, 8.0, "stale", "stale"}; }
};
constexpr std::size_t kSampleEnd = 8 + 1 + 1 + 2 + 2 + 4 + 4 + 8 + 8 + (4 + 7) + 4;

TEST(BinaryArchiveHeaderTest, EightByteStoreHoldsOnlyTheHeader) {
    Bytes buffer(8);
    BinaryArchive archive(buffer.data(), buffer.size(), ArchiveDirection::Store);
    EXPECT_TRUE(archive.IsStoring());
    EXPECT_EQ(archive.Position(), 8u);
    EXPECT_THAT(buffer, ElementsAre(0x01, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x38));
    std::uint8_t more = 0;
    EXPECT_EQ(FailureOffset([&] { archive.Transfer(more); }), 8);

    Bytes small(7);
    EXPECT_THROW(BinaryArchive(small.data(), small.size(), ArchiveDirection::Store), ArchiveException);
}

TEST(BinaryArchiveHeaderTest, LoadChecksBothValues) {
    const Bytes good = StoreToMemory([](BinaryArchive&) {});
    BinaryArchive reader(good.data(), good.size(), ArchiveDirection::Load);
    EXPECT_FALSE(reader.IsStoring());
    EXPECT_EQ(reader.Position(), 8u);

    const Bytes wrong_second = {0x01, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x39};
    const Bytes wrong_first = {0x02, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x38};
    for (const Bytes& bad : {wrong_second, wrong_first, Bytes(good.begin(), good.end() - 1)}) {
        EXPECT_THROW(BinaryArchive(bad.data(), bad.size(), ArchiveDirection::Load), ArchiveException);
    }
    EXPECT_THROW(BinaryArchive(good.data(), good.size(), ArchiveDirection::Store), std::invalid_argument);
}

TEST(BinaryArchiveLayoutTest, ItemsAreLittleEndianWithoutPadding) {
    const Bytes stored = StoreToMemory([](BinaryArchive& a) {
        std::int8_t i8 = -2;
        std::uint16_t u16 = 0x0102;
        std::int32_t i32 = -2;
        double f64 = 1.0;
        std::string text = "ab";
        TransferAll(a, i8, u16, i32, f64, text);
    });
    EXPECT_EQ(stored,
              (Bytes{0x01, 0x00, 0x00, 0x00, 0x1A, 0xD2, 0x5F, 0x38, 0xFE, 0x02, 0x01, 0xFE, 0xFF, 0xFF, 0xFF,
                     0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F, 0x02, 0x00, 0x00, 0x00, 'a',  'b'}));
}

TEST(BinaryArchiveLayoutTest, EmptyStringTakesFourBytes) {
    const Bytes stored = StoreToMemory([](BinaryArchive& a) {
        std::string empty;
        a.Transfer(empty);
    });
    EXPECT_EQ(stored.size(), 12u);
    BinaryArchive reader(stored.data(), stored.size(), ArchiveDirection::Load);
    std::string text = "stale";
    reader.Transfer(text);
    EXPECT_EQ(text, "");
}

TEST(BinaryArchiveRoundTripTest, MemoryKeepsEveryKind) {
    Sample original;
    const Bytes stored = StoreToMemory([&](BinaryArchive& a) { original.Stream(a); });
    ASSERT_EQ(stored.size(), kSampleEnd);
    BinaryArchive reader(stored.data(), stored.size(), ArchiveDirection::Load);
    Sample loaded = Sample::Stale();
    loaded.Stream(reader);
    EXPECT_EQ(loaded.Fields(), original.Fields());
    EXPECT_EQ(reader.Position(), kSampleEnd);
}

TEST(BinaryArchiveRoundTripTest, FileKeepsEveryKindAndStopsAfterTheItems) {
    TempFile file;
    ASSERT_GE(file.fd, 0);
    Sample original;
    BinaryArchive writer(file.fd, ArchiveDirection::Store);
    original.Stream(writer);
    EXPECT_EQ(writer.Position(), kSampleEnd);
    ASSERT_EQ(::write(file.fd, "Z", 1), 1);  // someone else continues through the same descriptor

    ::lseek(file.fd, 0, SEEK_SET);
    BinaryArchive reader(file.fd, ArchiveDirection::Load);
    Sample loaded = Sample::Stale();
    loaded.Stream(reader);
    EXPECT_EQ(loaded.Fields(), original.Fields());
    EXPECT_EQ(::lseek(file.fd, 0, SEEK_CUR), static_cast<off_t>(kSampleEnd));
    char next = 0;
    EXPECT_EQ(::read(file.fd, &next, 1), 1);
    EXPECT_EQ(next, 'Z');
}

TEST(BinaryArchiveBoundsTest, ShortMemoryRaisesAtTheExactByte) {
    Bytes stored = StoreToMemory([](BinaryArchive& a) {
        std::int32_t first = 10, second = 20;
        TransferAll(a, first, second);
    });
    stored.resize(14);
    BinaryArchive reader(stored.data(), stored.size(), ArchiveDirection::Load);
    std::int32_t value = 0;
    reader.Transfer(value);
    EXPECT_EQ(value, 10);
    EXPECT_EQ(FailureOffset([&] { reader.Transfer(value); }), 12);
    std::uint16_t rest = 0;  // the two bytes that are there can still be taken
    reader.Transfer(rest);
    EXPECT_EQ(rest, 20u);
}

TEST(BinaryArchiveBoundsTest, BadStringLengthsRaise) {
    Bytes cut = StoreToMemory([](BinaryArchive& a) {
        std::string text = "abcdef";
        a.Transfer(text);
    });
    cut.pop_back();
    BinaryArchive cut_reader(cut.data(), cut.size(), ArchiveDirection::Load);
    std::string text;
    EXPECT_EQ(FailureOffset([&] { cut_reader.Transfer(text); }), 12);

    const Bytes negative = StoreToMemory([](BinaryArchive& a) {
        std::int32_t length = -1;
        a.Transfer(length);
    });
    BinaryArchive negative_reader(negative.data(), negative.size(), ArchiveDirection::Load);
    EXPECT_EQ(FailureOffset([&] { negative_reader.Transfer(text); }), 8);
}

TEST(BinaryArchiveBoundsTest, ShortFileRaises) {
    TempFile file;
    ASSERT_GE(file.fd, 0);
    EXPECT_THROW(BinaryArchive(file.fd, ArchiveDirection::Load), ArchiveException);

    BinaryArchive writer(file.fd, ArchiveDirection::Store);
    std::int32_t huge_length = std::numeric_limits<std::int32_t>::max();
    std::uint16_t half = 7;
    TransferAll(writer, huge_length, half);
    ::lseek(file.fd, 0, SEEK_SET);
    BinaryArchive reader(file.fd, ArchiveDirection::Load);
    std::string text = "kept";
    EXPECT_THROW(reader.Transfer(text), ArchiveException);
    EXPECT_EQ(text, "kept");

    ::lseek(file.fd, 0, SEEK_SET);
    BinaryArchive second_reader(file.fd, ArchiveDirection::Load);
    std::int32_t length = 0;
    std::uint32_t beyond = 0;
    second_reader.Transfer(length);
    EXPECT_EQ(FailureOffset([&] { second_reader.Transfer(beyond); }), 12);
}

}  // namespace
}  // namespace rivulet
