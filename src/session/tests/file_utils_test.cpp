#include "session/FileUtils.h"

#include <array>
#include <optional>
#include <tuple>

#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

namespace fs = std::filesystem;
using Value = std::optional<std::string>;
using Values = std::vector<Value>;

TEST(FileUtils, SplitsPathsAndNames) {
    using Case = std::tuple<const char*, bool, std::string, std::string>;
    for (const auto& [path, split, directory, name] :
         {Case{"/a/b/c.dat", true, "/a/b/", "c.dat"}, Case{"c.dat", false, "", ""},
          Case{"/c.dat", false, "", ""}, Case{"a\\b/c", true, "a\\", "b/c"}}) {
        std::string gotDirectory = "old", gotName = "old";
        EXPECT_EQ(FileUtils::SplitCasePath(path, gotDirectory, gotName), split) << path;
        EXPECT_EQ(gotDirectory + "|" + gotName, directory + "|" + name) << path;
    }
    using Pieces = std::array<std::string, 3>;
    for (const auto& [name, base, extension] :
         {Pieces{"case.data", "case", "data"}, Pieces{".profile", ".profile", ""},
          Pieces{"a.b.c", "a.b", "c"}}) {
        std::string gotBase, gotExtension = "old";
        EXPECT_TRUE(FileUtils::SplitFileExtension(name, gotBase, gotExtension));
        EXPECT_EQ(gotBase + "|" + gotExtension, base + "|" + extension) << name;
    }
}

TEST(FileUtils, JoinsQuotesAndRecognisesNetworkPaths) {
    std::string out;
    for (const auto& [directory, joined] :
         {std::pair{"C:\\logs\\", "C:\\logs\\a.txt"}, std::pair{"/logs/", "/logs/a.txt"},
          std::pair{"logs", "logs\\a.txt"}}) {
        EXPECT_TRUE(FileUtils::JoinPath(out, directory, "a.txt"));
        EXPECT_EQ(out, joined);
    }
    EXPECT_FALSE(FileUtils::JoinPath(out, "", "a.txt"));

    for (const auto& [text, quoted] : {std::pair{"a b", "\"a b\""}, std::pair{"say \"x\"", "'say \"x\"'"}}) {
        std::string value = text;
        EXPECT_TRUE(FileUtils::QuoteString(value));
        EXPECT_EQ(value, quoted);
    }
    for (const auto& [path, network] : {std::pair{"\\\\srv\\share", true}, std::pair{"//srv/share", true},
                                        std::pair{"C:\\data", false}, std::pair{"/srv/share", false}}) {
        std::string universal = "none";
        EXPECT_EQ(FileUtils::IsUncPath(path), network) << path;
        EXPECT_EQ(FileUtils::GetUniversalPath(universal, path), network) << path;
        EXPECT_EQ(universal, network ? path : "none") << path;
    }
}

// Sets or, for a missing value, unsets the job slot, job id and host.
void SetVariables(const Values& values) {
    const char* const names[] = {"QNC_JOBSLOT", "QNC_JOBID", "QNC_HOST"};
    for (int i = 0; i < 3; ++i) values[i] ? ::setenv(names[i], values[i]->c_str(), 1) : ::unsetenv(names[i]);
}

using FileUtilsFiles = SessionTest;

TEST_F(FileUtilsFiles, ChecksDirectoriesAndFiles) {
    const std::string source = settings_.FileName;
    fs::create_directories(dir_ / "sub");
    EXPECT_TRUE(FileUtils::DirectoryExists(dir_.string()));
    EXPECT_FALSE(FileUtils::FileExists(dir_.string(), true));
    for (const std::string& path : {source, (dir_ / "missing").string(), std::string()}) {
        EXPECT_FALSE(FileUtils::DirectoryExists(path)) << path;
        EXPECT_FALSE(FileUtils::DirectoryIsWritable(path)) << path;
        EXPECT_EQ(FileUtils::FileExists(path, true), path == source) << path;
        EXPECT_EQ(FileUtils::FileExists(path, false), path == source) << path;
    }
    // The probe goes inside the directory, with or without a trailing slash, and is removed again.
    const auto entries = [this] { return std::distance(fs::directory_iterator(dir_), {}); };
    const auto before = entries();
    for (const std::string& directory : {(dir_ / "sub").string(), (dir_ / "sub/").string()}) {
        EXPECT_TRUE(FileUtils::DirectoryIsWritable(directory));
        EXPECT_TRUE(fs::is_empty(dir_ / "sub"));
        EXPECT_EQ(entries(), before);
    }
    fs::permissions(source, fs::perms::owner_read);
    EXPECT_TRUE(FileUtils::FileExists(source, true));
    if (::geteuid() != 0) {  // root opens it for writing all the same
        EXPECT_FALSE(FileUtils::FileExists(source, false));
    }
}

TEST_F(FileUtilsFiles, DuplicatesScenarioCaseForTheJob) {
    const std::string source = settings_.FileName;
    std::string out;
    EXPECT_FALSE(FileUtils::DuplicateScenarioFile(ScenarioJobInfo::FromEnvironment(), out, source, false));
    EXPECT_EQ(out, source);

    SetScenario("3", "17", "h");
    const ScenarioJobInfo job = ScenarioJobInfo::FromEnvironment();
    const std::string missing = (dir_ / "NONE.DATA").string();
    fs::current_path(dir_);
    for (const auto& [info, path, subdirectory, expected] :
         {std::tuple{job, source, false, (dir_ / "CASE_H_3.DATA").string()},
          std::tuple{job, source, true, (dir_ / "CASE_H_3/CASE.DATA").string()},
          std::tuple{job, source, true, (dir_ / "CASE_H_3/CASE.DATA").string()},  // the directory exists
          std::tuple{job, std::string("CASE.DATA"), true, std::string("CASE_H_3/CASE.DATA")},
          std::tuple{ScenarioJobInfo{-1, 0, ""}, source, false, (dir_ / "CASE__-1.DATA").string()},
          std::tuple{job, missing, false, missing}}) {
        EXPECT_EQ(FileUtils::DuplicateScenarioFile(info, out, path, subdirectory), expected != path);
        EXPECT_EQ(out, expected);
        if (expected != path) {
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(expected).rdbuf()), {}),
                      "RUNSPEC\n");
        }
    }
}

TEST_F(FileUtilsFiles, ReadsScenarioJobInfoFromEnvironment) {
    const Value none;
    for (const auto& [values, slot, id, host] :
         {std::tuple{Values{none, none, none}, -1, -1, std::string()},
          std::tuple{Values{"2", "0", "node-a"}, 2, 0, std::string("NODE-A")},
          std::tuple{Values{"12abc", "-4", ""}, 12, -4, std::string()},
          std::tuple{Values{"x", "0000000000000000099", std::string(300, 'n')}, 0, 0, std::string(255, 'N')},
          std::tuple{Values{none, "", none}, -1, -1, std::string()}}) {
        SetVariables(values);
        const ScenarioJobInfo info = ScenarioJobInfo::FromEnvironment();
        EXPECT_EQ(std::tuple(info.jobSlot, info.jobId, info.host), std::tuple(slot, id, host));
        EXPECT_EQ(info.IsScenarioRun(), id >= 0);
    }
}

}  // namespace
}  // namespace rivulet
