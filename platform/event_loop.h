// The user-interface thread's queue: the way for other threads to reach the form, and the way for
// the form to wait without freezing.
#pragma once

#include <functional>

namespace platform {

class EventLoop {
  public:
    virtual ~EventLoop() = default;
    /// Runs `task` later on the user-interface thread, in the order of posting. Any thread; never
    /// blocks. Tasks that are still waiting when the loop is destroyed are dropped.
    virtual void Post(std::function<void()> task) = 0;
    /// Handles user and posted events until `done` answers true; it is asked first, and again
    /// after every event. User-interface thread; may be nested.
    virtual void RunUntil(const std::function<bool()>& done) = 0;
};

}  // namespace platform
