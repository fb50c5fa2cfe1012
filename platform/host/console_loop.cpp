#include "platform/host/console_loop.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/posix/system_error.h"

namespace platform::host {

void ConsoleTimer::SetInterval(int milliseconds) {
    interval_ = std::max(milliseconds, 0);
    Restart();
}

void ConsoleTimer::SetEnabled(bool enabled) {
    if (std::exchange(enabled_, enabled) != enabled) Restart();
}

void ConsoleTimer::Restart() {
    next_.reset();
    if (enabled_ && interval_ > 0) next_ = Clock::now() + std::chrono::milliseconds(interval_);
}

bool ConsoleTimer::TakeTick(Clock::time_point now) {
    if (!next_ || now < *next_) return false;
    // Set before the tick is handled: its handler may run the loop and must get ticks there.
    const auto interval = std::chrono::milliseconds(interval_);
    *next_ += interval * (1 + (now - *next_) / interval);
    return true;
}

ConsoleLoop::ConsoleLoop() {
    if (!wake_up_.IsOpen()) throw SystemError("Cannot start the event loop", errno);
}

void ConsoleLoop::Post(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    wake_up_.Write();
}

void ConsoleLoop::RunUntil(const std::function<bool()>& done) {
    while (!done()) HandleOne();
}

void ConsoleLoop::Watch(int descriptor, std::function<void()> handler) {
    watched_ = descriptor;
    on_readable_ = std::move(handler);
}

std::function<void()> ConsoleLoop::TakeTask() {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty()) {
        wake_up_.Clear();
        return {};
    }
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    return task;
}

void ConsoleLoop::HandleOne() {
    if (timer_.TakeTick(ConsoleTimer::Clock::now())) {
        if (on_tick_) on_tick_();
        return;
    }
    if (const std::function<void()> task = TakeTask()) {
        task();
        return;
    }
    if (on_idle_) on_idle_();

    std::array<pollfd, 2> sources{{{wake_up_.Descriptor(), POLLIN, 0}, {watched_, POLLIN, 0}}};
    int timeout = -1;
    if (const auto next = timer_.NextTick()) {
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(*next - ConsoleTimer::Clock::now());
        timeout = static_cast<int>(
            std::clamp<std::int64_t>(wait.count(), 0, std::numeric_limits<int>::max()));
    }
    if (::poll(sources.data(), sources.size(), timeout) <= 0) return;
    if (sources[1].revents == 0) return;
    // A copy: the handler may end its own watch.
    const std::function<void()> handler = on_readable_;
    if (handler) handler();
}

}  // namespace platform::host
