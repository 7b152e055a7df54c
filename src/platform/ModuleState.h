// The library's module state, entered first by every export and left on every path. On this platform the
// state holds no resources and the guard records nothing: it keeps its place in every export. (It holds no
// thread-local counter either: a thread-local block in the plug-in trips LeakSanitizer's walk of dynamic
// thread-local storage at exit, with glibc 2.36 and GCC 12's sanitizers, in a host that never touched it.)
#pragma once

namespace rivulet {

class ModuleStateGuard {
  public:
    // Provided rather than defaulted, so that an unused-looking guard in every export draws no warning.
    ModuleStateGuard() noexcept {}
    ~ModuleStateGuard() {}
    ModuleStateGuard(const ModuleStateGuard&) = delete;
    ModuleStateGuard& operator=(const ModuleStateGuard&) = delete;
};

}  // namespace rivulet
