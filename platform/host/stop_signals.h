// The signals that ask a program to end.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "platform/event_loop.h"
#include "platform/posix/file_descriptor.h"

namespace platform::host {

/// From now on a closed pipe, and a file that has grown to the limit that was set for files, show
/// as failed writes.
void LetWritesFail();

/// Takes over SIGINT, SIGTERM and SIGHUP for its lifetime, but for those that the process was
/// started to ignore, and lets writes fail. The first signal posts `on_stop` to the loop, and again
/// each second for as long as the program still runs; a second signal ends the process at once,
/// also while the loop's thread is held up. Make it before any other thread: those inherit the
/// blocked signals. One at a time.
class StopSignals {
  public:
    StopSignals(EventLoop& loop, std::function<void()> on_stop);
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Whether a signal has come. Any thread.
    bool Received() const { return received_; }

  private:
    void Watch();

    EventLoop& loop_;
    std::function<void()> on_stop_;
    FileDescriptor signals_;
    FileDescriptor quit_;
    std::atomic<bool> received_ = false;
    std::thread watcher_;
};

}  // namespace platform::host
