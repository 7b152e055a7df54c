// ExtIdentify: the identification record Conflux reads when it scans the plug-in.
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

TEST(Identity, WritesTheDriverConstantsAndNothingElse) {
    host::Buffer ident(2048, 0xCD);  // larger than the record, to catch writes past its end
    host::ErrorRecord err = StaleRecord();
    ASSERT_EQ(Driver().Identify(ident.data(), &err), 0u);
    EXPECT_TRUE(IsBlank(err));
    EXPECT_EQ(ident.Text(8, 256), "tNavigator");
    EXPECT_EQ(ident.Text(1284, 260), "tNavigator reservoir simulator");
    EXPECT_EQ(ident.Get<std::int64_t>(264), 5);
    const std::pair<std::size_t, std::int32_t> words[] = {
        {4, 70},      {272, 1},  {276, 1},  {280, 2},         {1244, 4096},
        {1248, 4097}, {1544, 0}, {1552, 1}, {1556, 16842753}, {1688, 0}};
    for (const auto& [offset, value] : words) EXPECT_EQ(ident.Get<std::int32_t>(offset), value) << offset;
    for (const std::size_t slot : {0, 1}) {  // the view commands' short and long labels
        const char* label = slot == 0 ? "View case file" : "View log file";
        EXPECT_EQ(ident.Text(284 + 32 * slot, 32), label);
        EXPECT_EQ(ident.Text(604 + 64 * slot, 64), label);
    }
    // {offset, length}: the leading word, the word at 1548, command id slots 2 to 9, the unlisted span
    // before 1688 and everything after the record.
    const std::pair<std::size_t, std::size_t> untouched[] = {
        {0, 4}, {1548, 4}, {1252, 32}, {1560, 128}, {1692, 2048 - 1692}};
    for (const auto& [offset, length] : untouched) {
        for (std::size_t i = offset; i < offset + length; ++i) ASSERT_EQ(ident.data()[i], 0xCD) << i;
    }
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
