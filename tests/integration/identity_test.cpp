// ExtIdentify: the identification record Conflux reads when it scans the plug-in.
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

constexpr std::uint8_t kPattern = 0xCD;
constexpr std::size_t kIdentBytes = 2048;  // larger than the record, to catch writes past its end

host::Buffer Identified(host::ErrorRecord* err) {
    host::Buffer ident(kIdentBytes, kPattern);
    EXPECT_EQ(Driver().Identify(ident.data(), err), 0u);
    return ident;
}

TEST(Identity, WritesTheDriverConstants) {
    const host::Buffer ident = Identified(nullptr);
    EXPECT_EQ(ident.Get<std::int32_t>(4), 70);
    EXPECT_EQ(ident.Text(8, 256), "tNavigator");
    EXPECT_EQ(ident.Get<std::int64_t>(264), 5);
    EXPECT_EQ(ident.Get<std::int32_t>(272), 1);
    EXPECT_EQ(ident.Get<std::int32_t>(276), 1);
    EXPECT_EQ(ident.Get<std::int32_t>(280), 2);
    EXPECT_EQ(ident.Text(1284, 260), "tNavigator reservoir simulator");
    EXPECT_EQ(ident.Get<std::int32_t>(1544), 0);
    EXPECT_EQ(ident.Get<std::int32_t>(1552), 1);
    EXPECT_EQ(ident.Get<std::uint32_t>(1556), 16842753u);
    EXPECT_EQ(ident.Get<std::int32_t>(1688), 0);
}

TEST(Identity, ListsTheTwoViewCommandsWithMatchingLabels) {
    const host::Buffer ident = Identified(nullptr);
    const std::pair<const char*, std::int32_t> commands[] = {{"View case file", 4096},
                                                             {"View log file", 4097}};
    for (std::size_t slot = 0; slot < 2; ++slot) {
        SCOPED_TRACE(slot);
        EXPECT_EQ(ident.Text(284 + 32 * slot, 32), commands[slot].first);
        EXPECT_EQ(ident.Text(604 + 64 * slot, 64), commands[slot].first);
        EXPECT_EQ(ident.Get<std::int32_t>(1244 + 4 * slot), commands[slot].second);
    }
}

TEST(Identity, LeavesUnlistedBytesAsFound) {
    const host::Buffer ident = Identified(nullptr);
    // {offset, length}: the leading word, the word at 1548, command id slots 2 to 9, the unlisted span
    // before 1688 and everything after the record.
    const std::pair<std::size_t, std::size_t> untouched[] = {
        {0, 4}, {1548, 4}, {1252, 32}, {1560, 128}, {1692, kIdentBytes - 1692}};
    for (const auto& [offset, length] : untouched) {
        for (std::size_t i = offset; i < offset + length; ++i) {
            ASSERT_EQ(ident.data()[i], kPattern) << "byte " << i << " was written";
        }
    }
}

TEST(Identity, ClearsTheRecordOnSuccess) {
    host::ErrorRecord err = StaleRecord();
    Identified(&err);
    EXPECT_TRUE(IsBlank(err));
}

TEST(Identity, RefusesANullIdent) {
    host::ErrorRecord err = StaleRecord();
    EXPECT_EQ(Driver().Identify(nullptr, &err), 1u);
    EXPECT_EQ(Message(err), "ExtIdentify() was passed a null tModIdent object.");
    EXPECT_EQ(err.code, 0);
    EXPECT_EQ(Driver().Identify(nullptr, nullptr), 1u);
}

}  // namespace
}  // namespace rivulet::it
