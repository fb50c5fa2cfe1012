// Where the reading of a file waits while its run is paused.
#pragma once

#include <condition_variable>
#include <mutex>

namespace engine {

/// Any thread.
class PauseGate {
  public:
    void SetClosed(bool closed) {
        const std::lock_guard lock(mutex_);
        closed_ = closed;
        if (!closed) opened_.notify_all();
    }
    /// From now on nobody waits, whatever is asked for.
    void OpenForGood() {
        const std::lock_guard lock(mutex_);
        for_good_ = true;
        opened_.notify_all();
    }
    void Wait() {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [&] { return !closed_ || for_good_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool closed_ = false;
    bool for_good_ = false;
};

}  // namespace engine
