#include "platform/Registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace rivulet {

namespace {

namespace fs = std::filesystem;

// Holds a flock on the store's lock file for its life.
class StoreLock {
  public:
    StoreLock(const std::string& path, int operation) {
        fd_ = ::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd_ < 0) return;
        while (::flock(fd_, operation) != 0) {
            if (errno != EINTR) {
                ::close(fd_);
                fd_ = -1;
                return;
            }
        }
    }
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;
    ~StoreLock() {
        if (fd_ >= 0) ::close(fd_);  // closing releases the lock
    }
    bool Held() const { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

// The whole file, or the empty text when there is none yet; false when it exists but cannot be read or is
// larger than a registry file can be, so that it is neither read into memory nor written over.
bool ReadFile(const std::string& path, std::string& text) {
    text.clear();
    std::ifstream in(path, std::ios::binary);
    if (!in) return !fs::exists(path);
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > kMaxRegFileBytes) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
    return !in.bad();
}

// Writes a temporary file beside the store and renames it over the store.
bool ReplaceFile(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".tmp." + std::to_string(::getpid());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        done += static_cast<std::size_t>(written);
    }
    const bool complete = done == text.size() && ::fsync(fd) == 0;
    ::close(fd);
    if (!complete || ::rename(temporary.c_str(), path.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool PrepareDirectory(const std::string& path) {
    std::error_code error;
    const fs::path parent = fs::path(path).parent_path();
    if (!parent.empty()) fs::create_directories(parent, error);
    return !error;
}

// The current user's hive, as a 32-bit handle or sign-extended to 64 bits as a 64-bit host passes it.
bool IsCurrentUser(std::uint64_t hive) {
    return hive == kHkeyCurrentUser || hive == (0xFFFFFFFF00000000ULL | kHkeyCurrentUser);
}

bool HasLineBreak(const std::string& text) {
    return text.find_first_of("\r\n") != std::string::npos;
}

// Reads the store, lets `change` edit it, and writes it back when `change` says so; all under the exclusive
// lock.
template <typename Change>
bool UpdateStore(Change change) {
    const std::string path = Registry::FilePath();
    if (!PrepareDirectory(path)) return false;
    StoreLock lock(path, LOCK_EX);
    if (!lock.Held()) return false;
    std::string text;
    if (!ReadFile(path, text)) return false;
    RegistryKeys keys = ParseRegFile(text);
    if (!change(keys)) return true;
    return ReplaceFile(path, FormatRegFile(keys));
}

}  // namespace

std::string Registry::FilePath() {
    if (const char* chosen = std::getenv("RIVULET_REGISTRY"); chosen != nullptr && *chosen != '\0')
        return chosen;
    std::string base;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != '\0') {
        base = config;
    } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        base = std::string(home) + "/.config";
    } else {
        base = ".config";
    }
    return base + "/rivulet/registry.reg";
}

bool Registry::ReadKey(std::uint64_t hive, const std::string& key, RegistryValues& values) {
    values.clear();
    if (!IsCurrentUser(hive) || HasLineBreak(key)) return false;
    const std::string path = FilePath();
    {
        StoreLock lock(path, LOCK_SH);
        std::string text;
        if (lock.Held() && ReadFile(path, text)) {
            const RegistryKeys keys = ParseRegFile(text);
            if (const auto found = keys.find(key); found != keys.end()) {
                values = found->second;
                return true;
            }
        }
    }
    // A missing key is created by opening it.
    return UpdateStore([&](RegistryKeys& keys) {
        if (keys.count(key) != 0) {
            values = keys[key];
            return false;
        }
        keys[key];
        return true;
    });
}

bool Registry::WriteValues(std::uint64_t hive, const std::string& key, const RegistryValues& values) {
    if (!IsCurrentUser(hive) || HasLineBreak(key)) return false;
    return UpdateStore([&](RegistryKeys& keys) {
        RegistryValues& target = keys[key];
        for (const auto& [name, value] : values) target[name] = value;
        return true;
    });
}

std::optional<std::string> Registry::StringValue(const RegistryValues& values, const std::string& name) {
    const auto found = values.find(name);
    if (found == values.end() || found->second.kind != RegistryValue::Kind::String) return std::nullopt;
    return found->second.text;
}

std::optional<std::uint32_t> Registry::DwordValue(const RegistryValues& values, const std::string& name) {
    const auto found = values.find(name);
    if (found == values.end() || found->second.kind != RegistryValue::Kind::Dword) return std::nullopt;
    return found->second.number;
}

}  // namespace rivulet
