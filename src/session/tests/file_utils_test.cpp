#include "session/FileUtils.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

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
    using Parts = std::array<std::string, 3>;
    for (const auto& [name, base, extension] :
         {Parts{"case.data", "case", "data"}, Parts{".profile", ".profile", ""},
          Parts{"a.b.c", "a.b", "c"}}) {
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

const char* const kVariables[] = {"QNC_JOBSLOT", "QNC_JOBID", "QNC_HOST"};

void SetVariables(const Values& values) {
    for (int i = 0; i < 3; ++i) {
        values[i] ? ::setenv(kVariables[i], values[i]->c_str(), 1) : ::unsetenv(kVariables[i]);
    }
}

// A fresh directory, and the scenario variables cleared for the test and restored after it.
class FileUtilsFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : kVariables) {
            const char* value = std::getenv(name);
            saved_.push_back(value ? Value(value) : std::nullopt);
        }
        SetVariables({std::nullopt, std::nullopt, std::nullopt});
        fs::remove_all(root_);
        fs::create_directories(root_ / "sub");
        std::ofstream(root_ / "CASE.DATA") << "deck";
    }
    void TearDown() override {
        SetVariables(saved_);
        fs::current_path(fs::temp_directory_path());
        fs::remove_all(root_);
    }
    const fs::path root_ = fs::temp_directory_path() / ("rivulet_file_utils_" + std::to_string(::getpid()));
    const std::string source_ = (root_ / "CASE.DATA").string();
    Values saved_;
};

TEST_F(FileUtilsFiles, ChecksDirectoriesAndFiles) {
    EXPECT_TRUE(FileUtils::DirectoryExists(root_.string()));
    EXPECT_FALSE(FileUtils::FileExists(root_.string(), true));
    for (const std::string& path : {source_, (root_ / "missing").string(), std::string()}) {
        EXPECT_FALSE(FileUtils::DirectoryExists(path)) << path;
        EXPECT_FALSE(FileUtils::DirectoryIsWritable(path)) << path;
        EXPECT_EQ(FileUtils::FileExists(path, true), path == source_) << path;
        EXPECT_EQ(FileUtils::FileExists(path, false), path == source_) << path;
    }
    // The probe goes inside the directory, with or without a trailing slash, and is removed again.
    for (const std::string& directory : {(root_ / "sub").string(), (root_ / "sub/").string()}) {
        EXPECT_TRUE(FileUtils::DirectoryIsWritable(directory));
        EXPECT_TRUE(fs::is_empty(root_ / "sub"));
        EXPECT_EQ(std::distance(fs::directory_iterator(root_), fs::directory_iterator()), 2);
    }
    fs::permissions(source_, fs::perms::owner_read);
    EXPECT_TRUE(FileUtils::FileExists(source_, true));
    if (::geteuid() != 0) {  // root opens it for writing all the same
        EXPECT_FALSE(FileUtils::FileExists(source_, false));
    }
}

TEST_F(FileUtilsFiles, DuplicatesScenarioCaseForTheJob) {
    std::string out;
    EXPECT_FALSE(FileUtils::DuplicateScenarioFile(ScenarioJobInfo::FromEnvironment(), out, source_, false));
    EXPECT_EQ(out, source_);

    SetVariables({"3", "17", "h"});
    const ScenarioJobInfo job = ScenarioJobInfo::FromEnvironment();
    const std::string missing = (root_ / "NONE.DATA").string();
    fs::current_path(root_);
    for (const auto& [info, path, subdirectory, expected] :
         {std::tuple{job, source_, false, (root_ / "CASE_H_3.DATA").string()},
          std::tuple{job, source_, true, (root_ / "CASE_H_3/CASE.DATA").string()},
          std::tuple{job, source_, true, (root_ / "CASE_H_3/CASE.DATA").string()},  // the directory exists
          std::tuple{job, std::string("CASE.DATA"), true, std::string("CASE_H_3/CASE.DATA")},
          std::tuple{ScenarioJobInfo{-1, 0, ""}, source_, false, (root_ / "CASE__-1.DATA").string()},
          std::tuple{job, missing, false, missing}}) {
        EXPECT_EQ(FileUtils::DuplicateScenarioFile(info, out, path, subdirectory), expected != path);
        EXPECT_EQ(out, expected);
        if (expected != path) {
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(std::ifstream(expected).rdbuf()), {}),
                      "deck");
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
