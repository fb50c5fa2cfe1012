// Waits for what other threads are about to do.
#pragma once

#include <thread>

namespace codecs {

/// Whether `ready` has become true before it was asked often enough. Putting a thread to sleep and
/// waking it takes some ten microseconds; who waits for less had better stay awake. Others that
/// could run on its processor do so meanwhile.
template <typename Ready>
bool SpinUntil(Ready&& ready) {
    constexpr int kTurns = 200;
    for (int turn = 0; turn < kTurns; ++turn) {
        if (ready()) return true;
        std::this_thread::yield();
    }
    return ready();
}

}  // namespace codecs
