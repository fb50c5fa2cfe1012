// The event loop of the window.
#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "platform/event_loop.h"
#include "platform/host/queued_call.h"

namespace platform::host {

/// Lives on the thread of the application object, which must outlive it.
class QtLoop : public EventLoop {
  public:
    void Post(std::function<void()> task) override;
    void RunUntil(const std::function<bool()>& done) override;

  private:
    void RunTasks();

    QueuedCall tasks_call_{[this] { RunTasks(); }};
    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;                // under mutex_
    const std::function<bool()>* innermost_done_ = nullptr;  // of the RunUntil that runs
};

}  // namespace platform::host
