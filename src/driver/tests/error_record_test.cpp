// The error record: cleared whole, written at offset 4, never past its last byte, never when null.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "driver/ErrorRecord.h"

namespace rivulet {
namespace {

// A record with guard bytes on both sides, to catch a write outside its 264 bytes.
struct Guarded {
    unsigned char before[16];
    tErrorRecord record;
    unsigned char after[16];
    Guarded() { std::memset(this, 0xEE, sizeof(*this)); }
    bool GuardsIntact() const {
        for (unsigned char b : before)
            if (b != 0xEE) return false;
        for (unsigned char b : after)
            if (b != 0xEE) return false;
        return true;
    }
};

TEST(ErrorRecord, ClearingZeroesAllBytesAndOnlyThose) {
    Guarded g;
    ClearRecord(&g.record);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&g.record);
    for (std::size_t i = 0; i < sizeof(tErrorRecord); ++i) ASSERT_EQ(bytes[i], 0) << "byte " << i;
    EXPECT_TRUE(g.GuardsIntact());
}

TEST(ErrorRecord, TextOfUnknownLengthIsCutTo255CharactersAndPrintedVerbatim) {
    Guarded g;
    ClearRecord(&g.record);
    const std::string longText = std::string(300, 'x') + "%s%n";
    WriteText(&g.record, longText);
    EXPECT_EQ(std::strlen(g.record.szText), 255u);
    EXPECT_EQ(g.record.iCode, 0);  // offset 0 is never written
    EXPECT_TRUE(g.GuardsIntact());

    WriteText(&g.record, "100% sure: %d %s");  // format characters are text, not directives
    EXPECT_STREQ(g.record.szText, "100% sure: %d %s");
}

TEST(ErrorRecord, FormattedTextIsBoundedTo256Bytes) {
    Guarded g;
    ClearRecord(&g.record);
    const std::string path(1000, 'p');
    WriteFormat(&g.record, "LoadFromArchiveFile() could not load <%s>", path.c_str());
    EXPECT_EQ(std::strlen(g.record.szText), 255u);
    EXPECT_EQ(std::string(g.record.szText).rfind("LoadFromArchiveFile() could not load <", 0), 0u);
    EXPECT_TRUE(g.GuardsIntact());
}

TEST(ErrorRecord, NullRecordIsNeverWritten) {
    ClearRecord(nullptr);
    WriteText(nullptr, "text");
    WriteFormat(nullptr, "%d", 1);
    WriteCallbackText(nullptr, "text");
    SUCCEED();  // reaching here without a fault is the behaviour
}

TEST(ErrorRecord, CallbackTextStartsAtTheFirstByte) {
    char buffer[300];
    std::memset(buffer, 0xEE, sizeof(buffer));
    WriteCallbackText(buffer, std::string(400, 'c'));
    EXPECT_EQ(buffer[0], 'c');
    EXPECT_EQ(std::strlen(buffer), 255u);
    EXPECT_EQ(static_cast<unsigned char>(buffer[257]), 0xEE);
}

}  // namespace
}  // namespace rivulet
