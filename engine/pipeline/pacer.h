// Holds frames of a file back until they are due on the clock, for those who watch them as they
// come.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "engine/base/ticks.h"

namespace engine {

/// One thread awaits; the rest from any.
class Pacer {
  public:
    /// Media time runs from the first frame that is awaited. False when the run was stopped before
    /// the frame was due: it does not belong to what was streamed.
    bool Await(Ticks time) {
        std::unique_lock lock(mutex_);
        if (!origin_) origin_ = Now() - Length(time);
        for (;;) {
            if (!paused_since_ && Now() >= *origin_ + Length(time)) return true;
            if (stopped_) return false;
            if (paused_since_)
                changed_.wait(lock);
            else
                changed_.wait_until(lock, *origin_ + Length(time));
        }
    }
    /// Time stands still in between.
    void SetPaused(bool paused) {
        const std::lock_guard lock(mutex_);
        if (paused == paused_since_.has_value()) return;
        if (paused) {
            paused_since_ = Now();
        } else {
            if (origin_) *origin_ += Now() - *paused_since_;
            paused_since_.reset();
        }
        changed_.notify_all();
    }
    void Stop() {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        changed_.notify_all();
    }

  private:
    using Clock = std::chrono::steady_clock;
    static Clock::time_point Now() { return Clock::now(); }
    static Clock::duration Length(Ticks time) {
        return std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<std::int64_t, std::ratio<1, Ticks::kPerSecond>>(time.count));
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Clock::time_point> origin_;
    std::optional<Clock::time_point> paused_since_;
    bool stopped_ = false;
};

}  // namespace engine
