// The error record: cleared whole, written at offset 4, never past its last byte, never when null.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "driver/ErrorRecord.h"

namespace rivulet {
namespace {

// A record between guard bytes, to catch a write outside its 264 bytes.
struct Guarded {
    unsigned char before[16];
    tErrorRecord record;
    unsigned char after[16];
    Guarded() { std::memset(this, 0xEE, sizeof(*this)); }
    bool GuardsIntact() const {
        return std::count(before, before + 16, 0xEE) + std::count(after, after + 16, 0xEE) == 32;
    }
};

TEST(ErrorRecord, ClearingZeroesAllBytesAndOnlyThose) {
    Guarded g;
    ClearRecord(&g.record);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&g.record);
    EXPECT_TRUE(std::all_of(bytes, bytes + sizeof(tErrorRecord), [](unsigned char b) { return b == 0; }));
    EXPECT_TRUE(g.GuardsIntact());
    ClearRecord(nullptr);  // a null record is never written
    WriteText(nullptr, "text");
    WriteFormat(nullptr, "%d", 1);
    WriteCallbackText(nullptr, "text");
}

TEST(ErrorRecord, TextsAreCutTo255CharactersInsideTheRecord) {
    Guarded g;
    WriteText(&g.record, std::string(300, 'x') + "%s%n");
    EXPECT_EQ(std::string(g.record.szText), std::string(255, 'x'));
    EXPECT_EQ(g.record.iCode, static_cast<std::int32_t>(0xEEEEEEEE));  // offset 0 is never written
    WriteFormat(&g.record, "could not load <%s>", std::string(1000, 'p').c_str());
    EXPECT_EQ(std::string(g.record.szText), "could not load <" + std::string(255 - 16, 'p'));
    EXPECT_TRUE(g.GuardsIntact());
    WriteText(&g.record, "100% sure: %d %s");  // format characters are text, not directives
    EXPECT_STREQ(g.record.szText, "100% sure: %d %s");

    char callback[300];  // a callback's buffer holds the text from its first byte
    std::memset(callback, 0xEE, sizeof(callback));
    WriteCallbackText(callback, std::string(400, 'c'));
    EXPECT_EQ(std::string(callback), std::string(255, 'c'));
    EXPECT_EQ(static_cast<unsigned char>(callback[256]), 0xEE);
}

}  // namespace
}  // namespace rivulet
