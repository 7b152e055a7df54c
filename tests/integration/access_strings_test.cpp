// A host that reads and writes the case and sends commands by text only, through commands 96, 97 and 98.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

class AccessStrings : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(Driver().CreateInstance(&model_, nullptr), 0u); }
    void TearDown() override { EXPECT_EQ(Driver().DestroyInstance(model_, nullptr), 0u); }

    struct Answer {
        std::int32_t result;
        std::string value;
        std::string message;
    };

    Answer Run(std::uint32_t command, std::uint64_t argument) {
        err_ = StaleRecord();
        const auto result = static_cast<std::int32_t>(Driver().Cmd(model_, 0, command, argument, 0, &err_));
        return {result, {}, Message(err_)};
    }
    // tGetVarData: the access string's pointer at 8, a 512-byte value text at 16.
    Answer Get(const std::string& access) {
        host::Buffer record(528, 0xCD);
        record.Put<std::uint64_t>(8, Arg(access.c_str()));
        Answer answer = Run(96, record.Address());
        answer.value.assign(reinterpret_cast<const char*>(record.data() + 16),
                            strnlen(reinterpret_cast<const char*>(record.data() + 16), 512));
        return answer;
    }
    // tSetVarData: the access string's pointer at 8, the value's pointer at 16.
    Answer Set(const std::string& access, const std::string& value) {
        host::Buffer record(24);
        record.Put<std::uint64_t>(8, Arg(access.c_str()));
        record.Put<std::uint64_t>(16, Arg(value.c_str()));
        return Run(97, record.Address());
    }
    Answer Do(const std::string& command) { return Run(98, Arg(command.c_str())); }

    void* model_ = nullptr;
    host::ErrorRecord err_{};
};

TEST_F(AccessStrings, CaseIsReadAndWrittenUnderItsRules) {
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", "/cases/SPE9.DATA").result, 0);
    const Answer file = Get("tnavigator.CASEDETAILS.fileName");
    EXPECT_EQ(file.result, 0);
    EXPECT_EQ(file.value, "/cases/SPE9.DATA");
    EXPECT_TRUE(IsBlank(err_));

    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodePort", "1023").message,
              "HeadNodePort must be from 1024 to 65535 (inclusive).");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.HeadNodePort", "65535").result, 0);
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.HeadNodePort").value, "65535");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", "").message, "FileName must not be empty.");
    EXPECT_EQ(Set("TNAVIGATOR.CaseDetails.IprAlpha", "3").result, 0);
    EXPECT_EQ(Get("TNAVIGATOR.CaseDetails.IprAlpha").value, "3");

    // The case saved in the model string carries what was written.
    host::Buffer saved(102400);
    err_ = StaleRecord();
    ASSERT_EQ(Driver().Cmd(model_, 0, 12, saved.Address(), 102400, &err_), 0u);
    const std::string bytes(reinterpret_cast<const char*>(saved.data()), saved.size());
    EXPECT_NE(bytes.find("/cases/SPE9.DATA"), std::string::npos);
}

TEST_F(AccessStrings, EverythingButTheCaseWaitsForTheSimulator) {
    const Answer count = Get("TNAVIGATOR.WELL.Count");
    EXPECT_EQ(count.result, 1);
    EXPECT_EQ(count.message, "Error: Only the CaseDetails can be read before the simulator is started.");
    const Answer unknown = Set("TNAVIGATOR.CaseDetails.Nothing", "1");
    EXPECT_EQ(unknown.result, 1);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Get("Other.CaseDetails.FileName").result, 1);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Run(96, 0).message, "A null data item was provided to GetVar().");
    EXPECT_EQ(Run(97, 0).message, "A null data item was provided to SetVar().");
}

TEST_F(AccessStrings, CommandsCheckTheirArguments) {
    EXPECT_EQ(Do("TNAVIGATOR.RunToTime").message, "Bad argument");
    EXPECT_EQ(Do("TNAVIGATOR.RunToTime()").message, "Bad number of arguments");
    EXPECT_EQ(Do("TNAVIGATOR.RunToTime(1,2)").message, "Bad number of arguments");
    EXPECT_EQ(Do("TNAVIGATOR.RunToTime(1").message, "Syntax error");
    const Answer run = Do("TNAVIGATOR.RunToTime(3650)");
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.message, "Timestep() called when the simulation process is not running.");
    EXPECT_EQ(Do("TNAVIGATOR.Stop()").result, 0);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Run(98, 0).message, "A null data item was provided to DoCmd().");
}

}  // namespace
}  // namespace rivulet::it
