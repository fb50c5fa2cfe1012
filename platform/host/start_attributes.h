// How this process starts others.
#pragma once

#include <spawn.h>

#include <csignal>

namespace platform::host {

/// A started program gets the signals as a program expects them, whatever this process blocks.
class StartAttributes {
  public:
    StartAttributes() {
        ::posix_spawnattr_init(&attributes_);
        sigset_t none;
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        sigset_t defaults;
        ::sigemptyset(&defaults);
        ::sigaddset(&defaults, SIGPIPE);
        ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~StartAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    StartAttributes(const StartAttributes&) = delete;
    StartAttributes& operator=(const StartAttributes&) = delete;

    const posix_spawnattr_t* Get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

}  // namespace platform::host
