// The library's module state, entered first by every export and left on every path. On this platform the
// state holds no resources; the guard keeps its place in every export and counts how deep the calling
// thread is inside the library, so that a call can tell whether it came through an export.
#pragma once

namespace rivulet {

class ModuleStateGuard {
  public:
    ModuleStateGuard() noexcept { ++depth_; }
    ~ModuleStateGuard() { --depth_; }
    ModuleStateGuard(const ModuleStateGuard&) = delete;
    ModuleStateGuard& operator=(const ModuleStateGuard&) = delete;

    // How many guards the calling thread holds now.
    static int Depth() noexcept { return depth_; }

  private:
    static inline thread_local int depth_ = 0;
};

}  // namespace rivulet
