#include "session/FileUtils.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

namespace rivulet {
namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool CanOpenForReading(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) return false;
    std::fclose(file);
    return true;
}

// A path in the pieces the scenario copy builds its names from. There are no drives on this platform; the
// directory keeps its trailing "/" and the extension its point.
struct PathPieces {
    std::string directory;
    std::string name;
    std::string extension;
};

PathPieces SplitPathPieces(const std::string& path) {
    PathPieces pieces;
    const std::size_t slash = path.rfind('/');
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    pieces.directory = path.substr(0, nameStart);
    const std::string file = path.substr(nameStart);
    const std::size_t point = file.rfind('.');
    pieces.name = file.substr(0, point);
    if (point != std::string::npos) pieces.extension = file.substr(point);
    return pieces;
}

}  // namespace

bool FileUtils::SplitCasePath(const std::string& path, std::string& directory, std::string& name) {
    directory.clear();
    name.clear();
    const std::size_t backslash = std::min(path.rfind('\\'), path.size());
    const std::size_t slash = std::min(path.rfind('/'), path.size());
    const std::size_t split = std::min(backslash, slash);
    if (split == 0 || split == path.size()) return false;
    directory = path.substr(0, split + 1);
    name = path.substr(split + 1);
    return true;
}

bool FileUtils::SplitFileExtension(const std::string& name, std::string& base, std::string& extension) {
    const std::size_t point = name.rfind('.');
    if (point != std::string::npos && point > 0) {
        base = name.substr(0, point);
        extension = name.substr(point + 1);
    } else {
        base = name;
        extension.clear();
    }
    return true;
}

bool FileUtils::JoinPath(std::string& out, const std::string& directory, const std::string& name) {
    if (directory.empty()) return false;
    out = directory;
    if (!IsSeparator(directory.back())) out += '\\';
    out += name;
    return true;
}

bool FileUtils::DirectoryExists(const std::string& path) {
    struct stat info {};
    // A path with a zero byte in it names nothing: the system would see only the part before it.
    return !path.empty() && path.find('\0') == std::string::npos && ::stat(path.c_str(), &info) == 0 &&
           S_ISDIR(info.st_mode);
}

bool FileUtils::DirectoryIsWritable(const std::string& path) {
    if (!DirectoryExists(path)) return false;
    std::minstd_rand random(static_cast<std::minstd_rand::result_type>(
        std::chrono::steady_clock::now().time_since_epoch().count()));
    std::uniform_int_distribution<int> draw(0, 0x7fff);
    // JoinPath would put a "\" after a directory without a trailing separator, which is no separator here.
    const std::string directory = IsSeparator(path.back()) ? path : path + '/';
    std::string probe;
    // A name not yet taken; a directory full of probes is given up on rather than searched for ever.
    int tries = 0;
    do {
        if (++tries > 1000) return false;
        char fileName[64];
        std::snprintf(fileName, sizeof fileName, "ConfluxDirAccessTest%d.tmp", draw(random));
        JoinPath(probe, directory, fileName);
    } while (CanOpenForReading(probe));

    std::FILE* file = std::fopen(probe.c_str(), "w+");
    if (file == nullptr) return false;
    const bool written = std::fwrite("test", 1, 4, file) == 4;
    std::fclose(file);
    std::remove(probe.c_str());
    return written;
}

bool FileUtils::FileExists(const std::string& path, bool readOnly) {
    if (path.empty() || path.find('\0') != std::string::npos) return false;
    const int fd = ::open(path.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return false;
    struct stat info {};
    const bool isFile = ::fstat(fd, &info) == 0 && !S_ISDIR(info.st_mode);
    ::close(fd);
    return isFile;
}

bool FileUtils::GetUniversalPath(std::string& out, const std::string& path) {
    // A drive path ("X:\...") has no universal form without mapped network drives.
    if (IsUncPath(path)) {
        out = path;
        return true;
    }
    return false;
}

bool FileUtils::IsUncPath(const std::string& path) {
    return path.rfind("\\\\", 0) == 0 || path.rfind("//", 0) == 0;
}

bool FileUtils::QuoteString(std::string& text) {
    const char quote = text.find('"') == std::string::npos ? '"' : '\'';
    text = quote + text + quote;
    return true;
}

bool FileUtils::DuplicateScenarioFile(const ScenarioJobInfo& info, std::string& out, const std::string& path,
                                      bool subdirectory) {
    out = path;
    if (info.jobId < 0) return false;

    const PathPieces pieces = SplitPathPieces(path);
    const std::string jobName = pieces.name + "_" + info.host + "_" + std::to_string(info.jobSlot);
    std::string target = pieces.directory + jobName + pieces.extension;
    if (subdirectory) {
        // The directory piece is empty or ends in "/", so the job's directory sits beside the source file.
        const std::string jobDirectory = pieces.directory + jobName;
        if (::mkdir(jobDirectory.c_str(), 0777) == 0 || errno == EEXIST) {
            target = jobDirectory + "/" + pieces.name + pieces.extension;
        }
    }

    std::error_code error;
    if (!std::filesystem::copy_file(path, target, std::filesystem::copy_options::overwrite_existing, error)) {
        return false;
    }
    out = target;
    return true;
}

}  // namespace rivulet
