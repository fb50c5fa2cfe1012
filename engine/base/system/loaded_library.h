// A shared library of the system that is loaded when it is first needed, by its C functions: it
// need not be installed, and brings what it needs along only where it is used.
#pragma once

#include <dlfcn.h>

namespace engine {

/// Stays loaded: what it has started may still run.
class LoadedLibrary {
  public:
    explicit LoadedLibrary(const char* file_name)
        : library_(dlopen(file_name, RTLD_NOW | RTLD_LOCAL)), complete_(library_ != nullptr) {}

    /// False when it is not installed or lacks a function; then none may be called.
    bool IsComplete() const { return complete_; }

  protected:
    template <typename Function>
    void Load(Function& function, const char* name) {
        if (library_ == nullptr) return;
        function = reinterpret_cast<Function>(dlsym(library_, name));
        complete_ = complete_ && function != nullptr;
    }

  private:
    void* library_;
    bool complete_;
};

}  // namespace engine
