// A host that reads and writes the case by text only, through commands 96 and 97.
#include <gtest/gtest.h>

#include <string>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

using AccessStrings = ModelTest;

TEST_F(AccessStrings, CaseIsReadAndWrittenUnderItsRules) {
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", "/cases/SPE9.DATA"), 0);
    EXPECT_EQ(Get("tnavigator.CASEDETAILS.fileName"), "/cases/SPE9.DATA");
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodePort", "1023"), 1);
    EXPECT_EQ(Message(err_), "HeadNodePort must be from 1024 to 65535 (inclusive).");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodePort", "65535"), 0);
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.HeadNodePort"), "65535");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", ""), 1);
    EXPECT_EQ(Message(err_), "FileName must not be empty.");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "3"), 0);
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IprAlpha"), "3");

    // The case saved in the model string carries what was written.
    host::Buffer saved(102400);
    ASSERT_EQ(Cmd(12, saved.Address(), 102400), 0);
    EXPECT_NE(std::string(saved.data(), saved.data() + saved.size()).find("/cases/SPE9.DATA"),
              std::string::npos);
}

TEST_F(AccessStrings, UnknownNamesAndOtherDriversAreRefusedWithABlankRecord) {
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.Nothing", "1"), 1);
    EXPECT_TRUE(IsBlank(err_));
    Get("Other.CaseDetails.FileName", 1);
    EXPECT_TRUE(IsBlank(err_));
}

}  // namespace
}  // namespace rivulet::it
