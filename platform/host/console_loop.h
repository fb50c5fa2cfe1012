// The event loop of a program without a window: posted tasks, one timer, one watched input.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/event_loop.h"
#include "platform/posix/event_fd.h"
#include "platform/widgets.h"

namespace platform::host {

/// The loop's timer. Ticks keep to a grid of whole intervals (monotonic clock); those that nobody
/// could take are dropped, not made up for.
class ConsoleTimer : public Timer {
  public:
    using Clock = std::chrono::steady_clock;

    int Interval() const override { return interval_; }
    void SetInterval(int milliseconds) override;
    bool Enabled() const override { return enabled_; }
    void SetEnabled(bool enabled) override;

    /// Nothing while no tick is to come.
    std::optional<Clock::time_point> NextTick() const { return next_; }
    /// Whether a tick is due; takes it.
    bool TakeTick(Clock::time_point now);

  private:
    void Restart();
    int interval_ = 0;
    bool enabled_ = false;
    std::optional<Clock::time_point> next_;
};

class ConsoleLoop : public EventLoop {
  public:
    ConsoleLoop();

    void Post(std::function<void()> task) override;
    /// A due tick goes before the tasks, one task before the next look at the timer.
    void RunUntil(const std::function<bool()>& done) override;

    ConsoleTimer& Timer1() { return timer_; }
    /// The remaining calls come from the loop's thread.
    void OnTick(std::function<void()> handler) { on_tick_ = std::move(handler); }
    /// Called when there is nothing more to do for now.
    void OnIdle(std::function<void()> handler) { on_idle_ = std::move(handler); }
    /// Calls `handler` while `descriptor` has something to read; -1 ends the watch.
    void Watch(int descriptor, std::function<void()> handler);

  private:
    void HandleOne();  // waits for an event when there is none
    std::function<void()> TakeTask();

    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;  // under mutex_
    EventFd wake_up_;                          // readable while tasks may be waiting
    ConsoleTimer timer_;
    std::function<void()> on_tick_;
    std::function<void()> on_idle_;
    int watched_ = -1;
    std::function<void()> on_readable_;
};

}  // namespace platform::host
