#include "platform/NamedMutex.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace rivulet {

namespace {

constexpr const char* kDefaultLockDirectory = "/tmp/rivulet-locks";
// How often a timed wait tries the lock again.
constexpr std::chrono::milliseconds kPollInterval(2);

std::string LockDirectory() {
    const char* configured = std::getenv("RIVULET_LOCK_DIR");
    std::string dir = configured != nullptr && *configured != '\0' ? configured : kDefaultLockDirectory;
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    return dir;
}

// Makes the lock directory if it is missing, writable by every user and sticky like /tmp, so that the
// processes of all users share the mutexes while none can remove another user's lock file while it is used.
bool EnsureLockDirectory(const std::string& dir) {
    if (::mkdir(dir.c_str(), 01777) == 0) {
        (void)::chmod(dir.c_str(), 01777);  // the umask took some bits away
        return true;
    }
    return errno == EEXIST;
}

std::string FileNameFor(const std::string& name) {
    std::string file = name;
    for (char& c : file) {
        const bool safe = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                          c == '.' || c == '_' || c == '-';
        if (!safe) c = '_';
    }
    return file + ".lock";
}

int OpenRetrying(const std::string& path, int flags) {
    int fd;
    do fd = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    while (fd < 0 && errno == EINTR);
    return fd;
}

// Opens the lock file with the given creation flags; read-only when another user's umask left it
// unwritable for us, since flock does not need write access.
int OpenLockFile(const std::string& path, int creation) {
    const int fd = OpenRetrying(path, O_RDWR | creation);
    if (fd >= 0 || errno != EACCES) return fd;
    return OpenRetrying(path, O_RDONLY | creation);
}

int LockRetrying(int fd, int operation) {
    int result;
    do result = ::flock(fd, operation);
    while (result < 0 && errno == EINTR);
    return result;
}

// Whether the descriptor still is the file at the path. The file is removed when the mutex is given up, so
// a lock won on a file that has been removed (or replaced) since it was opened guards nothing.
bool IsFileAtPath(int fd, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    if (::fstat(fd, &opened) != 0 || ::stat(path.c_str(), &named) != 0) return false;
    return opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void CloseKeepingErrno(int fd) {
    const int error = errno;
    ::close(fd);
    errno = error;
}

}  // namespace

std::string NamedMutex::PathFor(const std::string& name) {
    return LockDirectory() + "/" + FileNameFor(name);
}

std::unique_ptr<NamedMutex> NamedMutex::Create(const std::string& name, bool initialOwner,
                                               bool* alreadyExisted) {
    const std::string dir = LockDirectory();
    if (!EnsureLockDirectory(dir)) return nullptr;
    const std::string path = dir + "/" + FileNameFor(name);
    for (;;) {
        bool created = true;
        int fd = OpenLockFile(path, O_CREAT | O_EXCL);
        if (fd < 0 && errno == EEXIST) {
            created = false;
            fd = OpenLockFile(path, 0);
            if (fd < 0 && errno == ENOENT) continue;  // removed by a handle closing meanwhile
        }
        if (fd < 0) return nullptr;

        bool owned = false;
        if (initialOwner && created) {
            if (LockRetrying(fd, LOCK_EX | LOCK_NB) == 0) {
                if (!IsFileAtPath(fd, path)) {  // opened by another handle and removed when it closed
                    ::close(fd);
                    continue;
                }
                owned = true;
            } else if (errno == EWOULDBLOCK) {
                // Another handle opened the new file and took the mutex before this one could: the two
                // creations overlapped and the other came first, so to this caller the mutex existed.
                created = false;
            } else {
                CloseKeepingErrno(fd);
                return nullptr;
            }
        }
        if (alreadyExisted != nullptr) *alreadyExisted = !created;
        return std::unique_ptr<NamedMutex>(new NamedMutex(path, fd, owned));
    }
}

NamedMutex::~NamedMutex() {
    // Removing the file while holding the lock on it is what makes the next creation report a new mutex;
    // anyone still waiting on the removed file notices when it wins the lock and moves to the path's file.
    if (owned_ || LockRetrying(fd_, LOCK_EX | LOCK_NB) == 0) {
        if (IsFileAtPath(fd_, path_)) ::unlink(path_.c_str());
    }
    ::close(fd_);  // drops the lock
}

NamedMutex::WaitResult NamedMutex::Wait(unsigned milliseconds) {
    if (owned_) return WaitResult::Acquired;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        if (LockRetrying(fd_, LOCK_EX | LOCK_NB) == 0) {
            if (IsFileAtPath(fd_, path_)) {
                owned_ = true;
                return WaitResult::Acquired;
            }
            // The file was removed after this handle opened it: move to the file now at the path (making it
            // if need be) and try again straight away.
            const int fd = OpenLockFile(path_, O_CREAT);
            if (fd < 0) {
                LockRetrying(fd_, LOCK_UN);
                return WaitResult::Failed;
            }
            ::close(fd_);
            fd_ = fd;
            continue;
        }
        if (errno != EWOULDBLOCK) return WaitResult::Failed;
        const Clock::time_point now = Clock::now();
        if (now >= deadline) return WaitResult::Timeout;
        std::this_thread::sleep_for(std::min<Clock::duration>(kPollInterval, deadline - now));
    }
}

bool NamedMutex::Release() {
    if (!owned_) return false;
    owned_ = false;
    // The file stays while this handle is open: the mutex still exists.
    LockRetrying(fd_, LOCK_UN);
    return true;
}

}  // namespace rivulet
