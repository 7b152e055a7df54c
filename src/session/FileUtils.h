// Path and file operations without state. Texts are taken by reference; results are reported as bool.
// Case paths may come with "\" or "/"; the scenario copy splits and builds paths with this platform's "/".
#pragma once

#include <string>

#include "session/ScenarioJobInfo.h"

namespace rivulet {

class FileUtils {
  public:
    virtual ~FileUtils() = default;

    // Splits at the earlier of the last "\" and the last "/" (not the path's last separator when both kinds
    // appear). The directory keeps that separator. False, with both outputs empty, when there is no
    // separator or it is the first character.
    static bool SplitCasePath(const std::string& path, std::string& directory, std::string& name);
    // Splits at the last point when it is not the first character; otherwise the whole name is the base.
    // The extension has no point. Always true.
    static bool SplitFileExtension(const std::string& name, std::string& base, std::string& extension);
    // `directory`, a "\" unless it already ends in "\" or "/", then `name`. False for an empty directory,
    // leaving `out` alone.
    static bool JoinPath(std::string& out, const std::string& directory, const std::string& name);
    static bool DirectoryExists(const std::string& path);
    // Writes and deletes a probe file "ConfluxDirAccessTest<n>.tmp" in the directory.
    static bool DirectoryIsWritable(const std::string& path);
    // The path is a file that opens for reading (`readOnly`) or for reading and writing. Directories fail.
    static bool FileExists(const std::string& path, bool readOnly);
    // A network path is copied unchanged; there are no mapped drives here, so anything else is false.
    static bool GetUniversalPath(std::string& out, const std::string& path);
    // Starts with two backslashes or two slashes.
    static bool IsUncPath(const std::string& path);
    // Wraps the text in double quotes, or in single quotes when it holds a double quote. No escaping.
    static bool QuoteString(std::string& text);
    // For a scenario run, copies `path` to a file of the job's own: CASE.DATA of host H in slot 3 becomes
    // CASE_H_3.DATA beside it, or CASE_H_3/CASE.DATA with `subdirectory`. `out` is the copy, or `path`
    // itself when there is no scenario run or the copy fails; the result is whether a copy was made.
    static bool DuplicateScenarioFile(const ScenarioJobInfo& info, std::string& out, const std::string& path,
                                      bool subdirectory);
};

}  // namespace rivulet
