// A fresh model, with no simulator and no reservoir data, driven through ExtCmd as Conflux drives it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

constexpr std::uint32_t kModelStringBytes = 102400;
const char* const kNoSimulator = "Could not start the simulator process: <";
const char* const kOverflowOnSave = "Failed to write all model data - buffer overflow";
const char* const kOverflowOnLoad = "Failed in reading all case data - buffer overflow";
const char* const kNotRunning = "Timestep() called when the simulation process is not running.";

class FreshModel : public ModelTest {
  protected:
    std::int32_t Save(host::Buffer& string) {
        return Cmd(12, string.Address(), static_cast<std::uint32_t>(string.size()));
    }
    // tLoadModelData: the string at 4, its length at 102404, the model's path at 102408, no case search.
    std::int32_t Load(const host::Buffer& string, std::int32_t length) {
        host::Buffer record(102424);
        std::memcpy(record.data() + 4, string.data(), kModelStringBytes);
        record.Put<std::int32_t>(102404, length);
        record.Put<std::uint64_t>(102408, Arg("/cases/reopened.cfx"));
        record.Put<std::uint32_t>(102416, 1);
        return Cmd(13, record.Address());
    }
    std::int32_t SetTopLevelFile(const std::string& path, const std::string& options) {
        host::Buffer record(2048);
        record.PutText(4, path);
        record.PutText(1028, options);
        return Cmd(136, record.Address());
    }
    std::int32_t QueryFirstWell() {
        host::Buffer query(160);
        query.Put<std::int32_t>(28, -1);
        return Cmd(2, query.Address(), 2);
    }
};

TEST_F(FreshModel, UnlistedCommandsAnswerZeroAndTouchNothing) {
    host::Buffer argument(4096, 0xAB);
    for (const std::uint32_t id : {0u, 1u, 22u, 64u, 101u, 137u, 4095u, 4098u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Cmd(id, argument.Address(), 7), 0) << id;
        EXPECT_TRUE(IsBlank(err_)) << id;
    }
    EXPECT_EQ(argument.Bytes(), std::vector<std::uint8_t>(4096, 0xAB));
}

// One command on a fresh model. Its argument is the text when there is one, else a zeroed record of
// `size` bytes holding `value` at `field`, else null. The same result must come without an error record.
struct Answer {
    std::uint32_t command, count;
    std::size_t size, field;
    std::int32_t value, result;
    const char* text;
    const char* message;
};
const Answer kAnswers[] = {
    {99, 0, 0, 0, 0, -1, nullptr, ""},
    {3, 0xFFFFFFFF, 0, 0, 0, -999, nullptr, ""},
    {4, 1, 0, 0, 0, 0, nullptr, ""},
    {60, 1, 0, 0, 0, 0, nullptr, ""},
    {63, 1, 0, 0, 0, 0, nullptr, ""},
    {100, 1, 0, 0, 0, 0, nullptr, ""},
    {102, 1, 0, 0, 0, 0, nullptr, ""},
    {130, 1, 0, 0, 0, 1, nullptr, "Compositional import to tNavigator is not supported."},
    {2, 2, 0, 0, 0, -1, nullptr, "A null data item was provided to Query()."},
    {9, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to QueryComp()."},
    {18, 0, 0, 0, 0, -1, nullptr, "A null composition item was provided to QueryCompByStream()."},
    {50, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to GetIPR()."},
    {19, 0, 0, 0, 0, 1, nullptr, "A null data item was sent to SetConnection()."},
    {53, 0, 0, 0, 0, 1, nullptr, "A null data item was sent to SetOpPt()."},
    {58, 0, 0, 0, 0, 0, nullptr, "A null data store was provided to DoGetExtraNodeResults()."},
    {49, 0, 0, 0, 0, 1, nullptr, "Timestep() called with a null pstTimestep."},
    {11, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to GetStartDate()."},
    {62, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to GetNextEvent()."},
    {12, 100, 0, 0, 0, 1, nullptr, "A null data item was provided to SaveModelString()."},
    {13, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to LoadModelString()."},
    {20, 1, 0, 0, 0, 1, nullptr, "Null file path passed to SetArchiveFile()"},
    {136, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to SetTopLevelFile()."},
    {16, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to GetFileListEntry()."},
    {129, 64, 0, 0, 0, 1, nullptr, "A null data item was provided to GetModMsg()."},
    {96, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to GetVar()."},
    {97, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to SetVar()."},
    {98, 0, 0, 0, 0, 1, nullptr, "A null data item was provided to DoCmd()."},
    {2, 2, 160, 28, -1, -1, nullptr, "No data present for Query()."},
    {2, 2, 160, 28, 0, -1, nullptr,
     "Query() was called with dwRelation == EX_CHILD && pstQueryData->iHandle >= 0."},
    {2, 1, 160, 28, 0, -1, nullptr, "No data present for Query()."},
    {9, 0, 93720, 4, 0, 1, nullptr, "QueryComp() was called before the initial model data has been read."},
    {18, 0, 93720, 4, 0, -1, nullptr,
     "QueryCompByStream() was called before the initial model data has been read."},
    {50, 0, 105368, 4, 0, 1, nullptr, "No data present for GetIPR()."},
    {19, 0, 16, 4, 0, 1, nullptr, "SetConnection() was called before reservoir data was created."},
    {53, 0, 105368, 4, 0, 1, nullptr, "SetOpPt() called when the simulation process is not running."},
    {58, 0, 208, 4, 0, 0, nullptr, "No data present for DoGetExtraNodeResults()."},
    {58, 0, 208, 4, -1, 0, nullptr,
     "An invalid (negative) iResultIndex was provided to DoGetExtraNodeResults()."},
    {49, 0, 152, 0, 152, 1, nullptr, kNotRunning},
    {11, 0, 32, 4, 0, 1, nullptr, "The start date has not been set."},
    {62, 0, 32, 4, 0, 1, nullptr, ""},  // no next event is said with a blank record
    {16, 0, 2048, 4, 1, -1, nullptr, "GetFileListEntry() iHandle was non-zero."},
    {55, 0, 0, 0, 0, 0, nullptr, ""},
    {56, 0, 0, 0, 0, 0, nullptr, ""},
    {10, 0, 0, 0, 0, 0, "/data/cases", ""},
    {20, 1, 0, 0, 0, 1, "", "An empty file path was passed to SetArchiveFile()"},
    {20, 0xFFFFFFFF, 0, 0, 0, 0, "/nonexistent/rivulet/model.arc", ""},  // a missing archive is not loaded
    {21, 0, 0, 0, 0, 1, "   ", "Error: Alias cannot be empty or whitespace-only."},
    {21, 0, 0, 0, 0, 0, " \t Reservoir A \t ", ""},
    {98, 0, 0, 0, 0, 1, "TNAVIGATOR.RunToTime", "Bad argument"},
    {98, 0, 0, 0, 0, 1, "TNAVIGATOR.RunToTime()", "Bad number of arguments"},
    {98, 0, 0, 0, 0, 1, "TNAVIGATOR.RunToTime(1,2)", "Bad number of arguments"},
    {98, 0, 0, 0, 0, 1, "TNAVIGATOR.RunToTime(1", "Syntax error"},
    {98, 0, 0, 0, 0, 1, "TNAVIGATOR.RunToTime(3650)", kNotRunning},
    {98, 0, 0, 0, 0, 1, "tnavigator.runtotime({abc})", kNotRunning},
    {98, 0, 0, 0, 0, 0, "TNAVIGATOR.NoSuchCommand(1)", ""},  // an unknown command counts as done
    {98, 0, 0, 0, 0, 1, "Eclipse.RunToTime(1)", ""},
};

TEST_F(FreshModel, CommandsAnswerWithTheirMessages) {
    for (const Answer& a : kAnswers) {
        SCOPED_TRACE(testing::Message() << a.command << " " << a.size << " " << a.value << " " << a.text);
        host::Buffer record(a.size);
        if (a.size > 0) record.Put<std::int32_t>(a.field, a.value);
        const std::uint64_t argument = a.text ? Arg(a.text) : a.size > 0 ? record.Address() : 0;
        EXPECT_EQ(Cmd(a.command, argument, a.count), a.result);
        EXPECT_EQ(Message(err_), a.message);
        EXPECT_TRUE(*a.message != '\0' || IsBlank(err_));
        EXPECT_EQ(Cmd(a.command, argument, a.count, false), a.result);
    }
}

TEST_F(FreshModel, HeadlessDialogsViewersAndApplicationCalls) {
    host::Buffer modified(4, 0x07);
    EXPECT_EQ(Cmd(5, modified.Address()), -1);  // the case dialog is cancelled
    EXPECT_EQ(modified.Get<std::int32_t>(0), 0);
    host::ErrorRecord err{};
    EXPECT_EQ(Driver().ConnectToApp(model_, 1, 2, &err), 1u);
    EXPECT_EQ(Message(err), "ConnectToApplication is not implemented");
    err = {};
    EXPECT_EQ(Driver().StartApp(model_, 1, &err), 1u);
    EXPECT_EQ(Message(err).rfind(kNoSimulator, 0), 0u) << Message(err);
    EXPECT_EQ(Driver().StopApp(model_), 0u);
    host::Buffer start(1064);
    EXPECT_EQ(Cmd(23, start.Address()), 1);
    EXPECT_EQ(Message(err_).rfind(kNoSimulator, 0), 0u) << Message(err_);
    EXPECT_EQ(Cmd(23), 1);
    EXPECT_EQ(QueryFirstWell(), -1);  // a start that failed made no reservoir data
    EXPECT_EQ(Message(err_), "No data present for Query().");
}

TEST_F(FreshModel, ModelStringIsExactlyAsLongAsItsContents) {
    host::Buffer full(kModelStringBytes, 0xCD);
    ASSERT_EQ(Save(full), 0);
    EXPECT_TRUE(IsBlank(err_));
    const std::vector<std::uint8_t> header = {1, 0, 0, 0, 0x1A, 0xD2, 0x5F, 0x38, 5, 0, 0, 0};
    EXPECT_EQ(std::vector<std::uint8_t>(full.data(), full.data() + 12), header);

    std::uint32_t fails = 11, fits = kModelStringBytes;  // bisect for the string's length
    while (fits - fails > 1) {
        const std::uint32_t mid = fails + (fits - fails) / 2;
        host::Buffer probe(mid);
        (Save(probe) == 0 ? fits : fails) = mid;
    }
    ASSERT_GT(fits, 12u + 5 * 8 + 4);  // settings, five dates and the step count
    host::Buffer exact(fits), shortOne(fits - 1);
    EXPECT_EQ(Save(exact), 0);
    EXPECT_TRUE(std::equal(exact.data(), exact.data() + fits, full.data()));
    EXPECT_EQ(Save(shortOne), 1);
    EXPECT_EQ(Message(err_), kOverflowOnSave);

    EXPECT_EQ(Load(full, static_cast<std::int32_t>(fits) - 1), 1);  // the step count is cut short
    EXPECT_EQ(Message(err_), kOverflowOnLoad);
    full.Put<std::uint32_t>(4, 945803803);
    EXPECT_EQ(Load(full, kModelStringBytes), 1);  // a wrong header
    EXPECT_EQ(Message(err_), kOverflowOnLoad);
    full.Put<std::uint32_t>(4, 945803802);
    full.Put<std::int32_t>(8, 6);
    EXPECT_EQ(Load(full, kModelStringBytes), 1);
    EXPECT_EQ(Message(err_), "Unable to load model: stored version is too new");
    host::Buffer date(32);
    EXPECT_EQ(Cmd(11, date.Address()), 1);  // refused before the dates: the model stays reset
    EXPECT_EQ(Message(err_), "The start date has not been set.");
}

TEST_F(FreshModel, ReloadedModelHasValidNullDatesAndNoWells) {
    host::Buffer saved(kModelStringBytes), again(kModelStringBytes);
    ASSERT_EQ(Save(saved), 0);
    ASSERT_EQ(Load(saved, kModelStringBytes), 0);
    EXPECT_TRUE(IsBlank(err_));

    host::Buffer date(32, 0xCD), next(32, 0xCD);
    EXPECT_EQ(Cmd(11, date.Address()), 0);
    EXPECT_EQ(date.Get<std::uint32_t>(0), 0xCDCDCDCDu);
    EXPECT_EQ(date.Get<std::uint8_t>(4), 1);
    EXPECT_EQ(date.Get<double>(8), -1.0);
    EXPECT_EQ(Cmd(62, next.Address()), 1);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(next.Bytes(), std::vector<std::uint8_t>(32, 0xCD));

    EXPECT_EQ(QueryFirstWell(), -1);
    EXPECT_EQ(Message(err_), "The requested well index <0> does not exist (function call Query).");
    host::Buffer well(105368);
    EXPECT_EQ(Cmd(50, well.Address()), 1);
    EXPECT_EQ(Message(err_), "The requested well No. 1 does not exist (function call GetIPR).");
    EXPECT_EQ(Cmd(58, well.Address()), 0);
    EXPECT_EQ(Message(err_), "No data present for DoGetExtraNodeResults().");

    host::Buffer start(1064);
    EXPECT_EQ(Cmd(23, start.Address()), 0);  // a restored model does not start a simulator by itself
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Save(again), 0);
    EXPECT_EQ(again.Bytes(), saved.Bytes());
}

TEST_F(FreshModel, TopLevelFileOptionsComeBackInTheFileListEntry) {
    struct Case {
        const char* options;
        std::uint8_t local;
        const char* sharedPath;
        const char* listed;
    };
    const Case cases[] = {
        {"Linux|true|SharedPath|/s h/|HeadNode|hn|HeadNodePort|7000", 1, "/sh/", "Linux|false"},
        {"Linux|false|SharedPath|/shared/|HeadNode|hn|HeadNodePort|7000", 0, "/shared/",
         "Linux|true|SharedPath|/shared/|HeadNode|hn|HeadNodePort|7000"},
        // The empty value vanishes, so names and values pair up one token late.
        {"Linux|false|SharedPath||HeadNode|hn|HeadNodePort|7000", 0, "HeadNode",
         "Linux|true|SharedPath|HeadNode|HeadNode||HeadNodePort|0"},
        // The first of two values counts, only "true" is local, the port is read in decimal.
        {"Linux|True|Linux|true|HeadNode| h n |HeadNodePort|0x10|SharedPath", 0, "",
         "Linux|true|SharedPath||HeadNode|hn|HeadNodePort|0"},
    };
    const std::string path = "/cases/spe 1/SPE1.DATA";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options);
        ASSERT_EQ(SetTopLevelFile(path, c.options), 0);
        EXPECT_TRUE(IsBlank(err_));
        host::Buffer entry(2048, 0xCD);
        entry.Put<std::int32_t>(4, 0);
        ASSERT_EQ(Cmd(16, entry.Address()), 0);
        EXPECT_TRUE(IsBlank(err_));
        EXPECT_EQ(entry.Text(8, 256), path);
        EXPECT_EQ(entry.Text(264, 256), "Main simulator data file");
        EXPECT_EQ(entry.Get<std::uint8_t>(520), c.local);
        EXPECT_EQ(entry.Text(521, 256), c.sharedPath);
        EXPECT_EQ(entry.Text(777, 2048 - 777), c.listed);
    }
}

TEST_F(FreshModel, ModMsgNamesTheCaseFileAndStopsAtTheLength) {
    host::Buffer text(128, 0xCD);
    EXPECT_EQ(Cmd(129, text.Address(), 128), 0);
    EXPECT_EQ(text.Text(0, 128), "<No file>");
    ASSERT_EQ(SetTopLevelFile("/cases/A.DATA", "Linux|false"), 0);
    EXPECT_EQ(Cmd(129, text.Address(), 128), 0);
    EXPECT_EQ(text.Text(0, 128), "/cases/A.DATA\n<Not currently running>");
    host::Buffer cut(16, 0xCD);
    EXPECT_EQ(Cmd(129, cut.Address(), 5), 0);
    EXPECT_EQ(std::string(cut.data(), cut.data() + 6), "/case\xCD");
}

TEST_F(FreshModel, ArchiveFileSavesAndLoadsTheReservoirData) {
    EXPECT_EQ(Cmd(14), 1);  // no archive file named yet: silent failures
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Cmd(15), 1);
    EXPECT_TRUE(IsBlank(err_));
    const ScratchDir scratch;
    const std::string empty = scratch.File("empty.arc", ""), junk = scratch.File("junk.arc", "junk");
    EXPECT_EQ(Cmd(20, Arg(empty.c_str()), 1), 0);  // an empty file is not loaded
    EXPECT_EQ(Cmd(20, Arg(junk.c_str()), 1), 1);
    EXPECT_EQ(Message(err_), "LoadFromArchiveFile() could not load <" + junk + ">");
    const std::string path = (scratch.root / "model.arc").string();
    ASSERT_EQ(Cmd(20, Arg(path.c_str()), 0), 0);
    EXPECT_EQ(Cmd(14), 0);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> saved((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // Header and version, the inflow block, an empty unit system name, the fluid and a well count of 0.
    ASSERT_GE(saved.size(), 12u + 4 + 4);
    EXPECT_EQ(std::vector<char>(saved.begin(), saved.begin() + 12),
              (std::vector<char>{1, 0, 0, 0, 0x1A, char(0xD2), 0x5F, 0x38, 5, 0, 0, 0}));
    EXPECT_EQ(std::vector<char>(saved.end() - 4, saved.end()), std::vector<char>(4, 0));
    EXPECT_EQ(Cmd(15), 0);
    EXPECT_EQ(Cmd(20, Arg(path.c_str()), 1), 0);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(QueryFirstWell(), -1);  // saving made empty reservoir data
    EXPECT_EQ(Message(err_), "The requested well index <0> does not exist (function call Query).");
    // Without the well count at its end the reservoir sections run short.
    const std::string cut = scratch.File("cut.arc", std::string(saved.begin(), saved.end() - 1));
    EXPECT_EQ(Cmd(20, Arg(cut.c_str()), 1), 1);
    EXPECT_EQ(Message(err_), "LoadFromArchiveFile() could not load <" + cut + ">");
}

}  // namespace
}  // namespace rivulet::it
