// A folder of this fuzzing process for the files a harness writes on every input, removed with everything in
// it at exit. It lives in memory (/dev/shm) where there is such a file system, since a disk's file syncs
// would bound the executions per second.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

class ScratchFolder {
  public:
    explicit ScratchFolder(const std::string& stem) {
        const std::string base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm/" : "/tmp/";
        std::string name = base + stem + "-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) __builtin_trap();
        path_ = name;
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};
