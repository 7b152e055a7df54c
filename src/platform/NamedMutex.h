// A mutex shared by every process of the machine under a name, in place of Windows' named global mutexes
// ("Global\\SomeName").
//
// Each name has a lock file in the machine-wide lock directory ($RIVULET_LOCK_DIR, else /tmp/rivulet-locks).
// A handle owns the mutex while it holds flock(LOCK_EX) on a descriptor of its own, so two handles exclude
// each other even within one process, and the lock of an owner that dies is dropped by the kernel (the
// abandoned case, which a waiter simply acquires). The file stands for "the mutex exists": a handle that
// closes while owning it, or while nobody owns it, removes the file, whereas a file left by a killed process
// stays, so the next creator is told the mutex already existed.
#pragma once

#include <memory>
#include <string>
#include <utility>

namespace rivulet {

class NamedMutex {
  public:
    enum class WaitResult { Acquired, Timeout, Failed };

    // Creates or opens the mutex of that name. With initialOwner, the handle owns it when this call created
    // it (as on the platform, a mutex that already existed is opened without ownership). alreadyExisted (may
    // be null) tells whether it existed before. Null (with errno kept) when the lock file cannot be made.
    static std::unique_ptr<NamedMutex> Create(const std::string& name, bool initialOwner,
                                              bool* alreadyExisted);

    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;
    // Closes the handle; an owned mutex is given up (and its file removed, as is the file of a mutex that
    // nobody owns).
    ~NamedMutex();

    // Waits up to that long for ownership; 0 tries once. An owning handle gets Acquired at once, and so does
    // a waiter on a mutex whose owner died.
    WaitResult Wait(unsigned milliseconds);
    // Gives up ownership; false when this handle does not own the mutex.
    bool Release();
    bool Owned() const { return owned_; }

    // The lock file that stands for a mutex name (for tests and diagnostics).
    static std::string PathFor(const std::string& name);

  private:
    NamedMutex(std::string path, int fd, bool owned) : path_(std::move(path)), fd_(fd), owned_(owned) {}

    std::string path_;
    int fd_;
    bool owned_;
};

}  // namespace rivulet
