// A fresh model, with no simulator and no reservoir data, driven through ExtCmd as Conflux drives it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "PluginHarness.h"

namespace rivulet::it {
namespace {

constexpr std::uint32_t kModelStringBytes = 102400;
const char* const kNoSimulator = "Could not start the simulator process: <";
const char* const kOverflowOnSave = "Failed to write all model data - buffer overflow";
const char* const kOverflowOnLoad = "Failed in reading all case data - buffer overflow";

class FreshModel : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(Driver().CreateInstance(&model_, nullptr), 0u);
        ASSERT_NE(model_, nullptr);
    }
    void TearDown() override { EXPECT_EQ(Driver().DestroyInstance(model_, nullptr), 0u); }

    // Runs a command with a stale record in err_, or with no record at all.
    std::int32_t Cmd(std::uint32_t command, std::uint64_t argument = 0, std::uint32_t count = 0,
                     bool withRecord = true) {
        err_ = StaleRecord();
        return static_cast<std::int32_t>(
            Driver().Cmd(model_, 0, command, argument, count, withRecord ? &err_ : nullptr));
    }
    std::int32_t Text(std::uint32_t command, const std::string& text, std::uint32_t count = 0) {
        return Cmd(command, Arg(text.c_str()), count);
    }
    std::int32_t Save(host::Buffer& string) {
        return Cmd(12, string.Address(), static_cast<std::uint32_t>(string.size()));
    }
    std::int32_t Load(const host::Buffer& string, std::int32_t length) {
        host::Buffer record(102424);
        std::memcpy(record.data() + 4, string.data(),
                    std::min<std::size_t>(string.size(), kModelStringBytes));
        record.Put<std::int32_t>(102404, length);
        record.Put<std::uint64_t>(102408, Arg(modelPath_.c_str()));
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

    void* model_ = nullptr;
    host::ErrorRecord err_;
    std::string modelPath_ = "/cases/reopened.cfx";
};

TEST_F(FreshModel, UnlistedCommandsAnswerZeroAndTouchNothing) {
    std::vector<std::uint32_t> ids = {0,  1,  6,  8,   17,   22,   51,   52,        54,
                                      57, 59, 61, 101, 4095, 4098, 5000, 0xFFFFFFFF};
    for (std::uint32_t id = 24; id <= 47; ++id) ids.push_back(id);
    for (std::uint32_t id = 64; id <= 95; ++id) ids.push_back(id);
    for (std::uint32_t id = 103; id <= 128; ++id) ids.push_back(id);
    for (std::uint32_t id = 131; id <= 135; ++id) ids.push_back(id);
    for (std::uint32_t id = 137; id < 4095; id += 37) ids.push_back(id);
    host::Buffer argument(4096, 0xAB);
    for (const std::uint32_t id : ids) {
        SCOPED_TRACE(id);
        EXPECT_EQ(Cmd(id, argument.Address(), 7), 0);
        EXPECT_TRUE(IsBlank(err_));
    }
    EXPECT_EQ(argument.Bytes(), std::vector<std::uint8_t>(4096, 0xAB));
}

TEST_F(FreshModel, FixedAnswersIgnoreTheModel) {
    EXPECT_EQ(Cmd(99), -1);
    for (const std::uint32_t count : {0u, 1u, 2u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(Cmd(3, 0, count), -999);
    for (const std::uint32_t id : {4u, 60u, 63u, 100u, 102u}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(Cmd(id, 0, 1), 0);
        EXPECT_TRUE(IsBlank(err_));
    }
    EXPECT_EQ(Cmd(130, 0, 1), 1);
    EXPECT_EQ(Message(err_), "Compositional import to tNavigator is not supported.");
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
    {49, 0, 152, 0, 152, 1, nullptr, "Timestep() called when the simulation process is not running."},
    {11, 0, 32, 4, 0, 1, nullptr, "The start date has not been set."},
    {62, 0, 32, 4, 0, 1, nullptr, ""},  // no next event is said with a blank record
    {16, 0, 2048, 4, 1, -1, nullptr, "GetFileListEntry() iHandle was non-zero."},
    {55, 0, 0, 0, 0, 0, nullptr, ""},
    {56, 0, 0, 0, 0, 0, nullptr, ""},
    {10, 0, 0, 0, 0, 0, "/data/cases", ""},
    {20, 1, 0, 0, 0, 1, "", "An empty file path was passed to SetArchiveFile()"},
    {20, 0xFFFFFFFF, 0, 0, 0, 0, "/nonexistent/rivulet/model.arc", ""},  // a missing archive is not loaded
    {21, 0, 0, 0, 0, 1, "   ", "Error: Alias cannot be empty or whitespace-only."},
    {21, 0, 0, 0, 0, 1, "", "Error: Alias cannot be empty or whitespace-only."},
    {21, 0, 0, 0, 0, 0, " \t Reservoir A \t ", ""},
    {98, 0, 0, 0, 0, 0, "TNAVIGATOR.NoSuchCommand(1)", ""},
    {98, 0, 0, 0, 0, 1, "Eclipse.RunToTime(1)", ""},
};

TEST_F(FreshModel, CommandsAnswerWithTheirMessages) {
    for (const Answer& a : kAnswers) {
        SCOPED_TRACE(testing::Message() << "command " << a.command << " size " << a.size << " value "
                                        << a.value << " text '" << (a.text ? a.text : "(null)") << "'");
        host::Buffer record(a.size);
        if (a.size > 0) record.Put<std::int32_t>(a.field, a.value);
        const std::uint64_t argument = a.text ? Arg(a.text) : a.size > 0 ? record.Address() : 0;
        EXPECT_EQ(Cmd(a.command, argument, a.count), a.result);
        EXPECT_EQ(Message(err_), a.message);
        if (*a.message == '\0') {
            EXPECT_TRUE(IsBlank(err_));
        }
        EXPECT_EQ(Cmd(a.command, argument, a.count, false), a.result);
    }
    host::Buffer getVar(528, 0xCD);
    const std::string access = "Eclipse.Case.FileName";
    getVar.Put<std::uint64_t>(8, Arg(access.c_str()));
    EXPECT_EQ(Cmd(96, getVar.Address()), 1);
    EXPECT_TRUE(IsBlank(err_));
}

TEST_F(FreshModel, HeadlessDialogsViewersAndApplicationCalls) {
    host::Buffer modified(4, 0x07);
    EXPECT_EQ(Cmd(5, modified.Address()), -1);  // the case dialog is cancelled
    EXPECT_EQ(modified.Get<std::int32_t>(0), 0);
    for (const std::uint32_t view : {4096u, 4097u}) {
        EXPECT_EQ(Cmd(view), 1) << view;  // the missing case is told in a message box
        EXPECT_TRUE(IsBlank(err_));
    }
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
    host::Buffer full(kModelStringBytes, 0xCD), tiny(11);
    ASSERT_EQ(Save(full), 0);
    EXPECT_TRUE(IsBlank(err_));
    const std::vector<std::uint8_t> header = {1, 0, 0, 0, 0x1A, 0xD2, 0x5F, 0x38, 5, 0, 0, 0};
    EXPECT_EQ(std::vector<std::uint8_t>(full.data(), full.data() + 12), header);
    EXPECT_EQ(Save(tiny), 1);
    EXPECT_EQ(Message(err_), kOverflowOnSave);

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
    EXPECT_EQ(date.Get<std::uint8_t>(4), 1);
    EXPECT_EQ(date.Get<double>(8), -1.0);
    EXPECT_EQ(date.Get<std::uint32_t>(0), 0xCDCDCDCDu);
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
    host::Buffer shortText(16, 0xCD);
    EXPECT_EQ(Cmd(129, shortText.Address(), 5), 0);
    EXPECT_EQ(std::string(shortText.data(), shortText.data() + 6), "/case\xCD");
}

// A folder of its own for each test process, removed with everything in it.
class ScratchDir {
  public:
    ScratchDir()
        : root_(std::filesystem::temp_directory_path() / ("rivulet_it_" + std::to_string(getpid()))) {}
    ~ScratchDir() { std::filesystem::remove_all(root_); }
    std::string Path(const std::string& relative) const {
        std::filesystem::create_directories((root_ / relative).parent_path());
        return (root_ / relative).string();
    }
    std::string File(const std::string& relative, const std::string& contents) const {
        const std::string path = Path(relative);
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

  private:
    std::filesystem::path root_;
};

TEST_F(FreshModel, ArchiveFileSavesAndLoadsTheReservoirData) {
    EXPECT_EQ(Cmd(14), 1);  // no archive file named yet: silent failures
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(Cmd(15), 1);
    EXPECT_TRUE(IsBlank(err_));
    const ScratchDir scratch;
    EXPECT_EQ(Text(20, scratch.File("empty.arc", ""), 1), 0);  // an empty file is not loaded
    GTEST_SKIP() << "the archive file's fluid and well sections are not written by this build yet";
    const std::string path = scratch.Path("model.arc");
    ASSERT_EQ(Text(20, path, 0), 0);
    EXPECT_EQ(Cmd(14), 0);
    std::vector<char> head(12);
    std::ifstream(path, std::ios::binary).read(head.data(), 12);
    EXPECT_EQ(head, (std::vector<char>{1, 0, 0, 0, 0x1A, char(0xD2), 0x5F, 0x38, 5, 0, 0, 0}));
    EXPECT_EQ(Cmd(15), 0);
    EXPECT_EQ(Text(20, path, 1), 0);
    EXPECT_TRUE(IsBlank(err_));
    EXPECT_EQ(QueryFirstWell(), -1);  // saving made empty reservoir data
    EXPECT_EQ(Message(err_), "The requested well index <0> does not exist (function call Query).");
}

TEST_F(FreshModel, LongMessagesStayInsideTheRecord) {
    const ScratchDir scratch;
    const std::string path =
        scratch.File(std::string(200, 'd') + "/" + std::string(120, 'f') + ".arc", "junk");
    host::Buffer guarded(sizeof(host::ErrorRecord) + 64, 0xEE);
    auto* err = reinterpret_cast<host::ErrorRecord*>(guarded.data());
    EXPECT_NE(Driver().Cmd(model_, 0, 20, Arg(path.c_str()), 1, err), 0u);
    const std::string message = Message(*err);
    EXPECT_LT(message.size(), sizeof(err->text));
    EXPECT_EQ(message.rfind("LoadFromArchiveFile() could not load <" + path.substr(0, 40), 0), 0u) << message;
    for (std::size_t i = sizeof(host::ErrorRecord); i < guarded.size(); ++i) {
        ASSERT_EQ(guarded.data()[i], 0xEE) << "byte " << i << " past the record was written";
    }
}

}  // namespace
}  // namespace rivulet::it
