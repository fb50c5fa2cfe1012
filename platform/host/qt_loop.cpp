#include "platform/host/qt_loop.h"

#include <QEventLoop>
#include <utility>

namespace platform::host {

void QtLoop::Post(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        if (tasks_.size() > 1) return;  // whoever posted the first has called for a pass
    }
    tasks_call_.Post();
}

void QtLoop::RunTasks() {
    for (;;) {
        // Qt hands out all that waits in one go: what comes after the awaited event is left.
        if (innermost_done_ != nullptr && (*innermost_done_)()) return;
        std::function<void()> task;
        {
            const std::lock_guard lock(mutex_);
            if (tasks_.empty()) return;
            task = std::move(tasks_.front());
            tasks_.pop_front();
            // A task may run the loop itself and must find the others on their way there.
            if (!tasks_.empty()) tasks_call_.Post();
        }
        task();
    }
}

void QtLoop::RunUntil(const std::function<bool()>& done) {
    const auto* outer = std::exchange(innermost_done_, &done);
    QEventLoop loop;
    while (!done()) loop.processEvents(QEventLoop::WaitForMoreEvents);
    innermost_done_ = outer;
    tasks_call_.Post();  // for those that were left
}

}  // namespace platform::host
