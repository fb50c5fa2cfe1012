// Threads that do the tasks of a job side by side.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace codecs {

/// Its threads wait between jobs. One job at a time, from one thread, which works along: a thread
/// that is slow to wake finds less to do, or nothing.
class TaskTeam {
  public:
    /// @param threads  that work, the caller's among them; at least 1
    explicit TaskTeam(int threads);
    ~TaskTeam();
    TaskTeam(const TaskTeam&) = delete;
    TaskTeam& operator=(const TaskTeam&) = delete;

    int Threads() const { return static_cast<int>(threads_.size()) + 1; }

    /// Calls `task(n)` for all n below `count`, beginning them in order. `task` must not throw.
    void Run(int count, const std::function<void(int n)>& task);

  private:
    using Lock = std::unique_lock<std::mutex>;
    void Work();
    void DoTasks(Lock& lock);

    std::mutex mutex_;
    std::condition_variable begun_;
    std::condition_variable done_;
    bool ended_ = false;
    int count_ = 0;  // tasks of the job
    int next_ = 0;
    std::atomic<int> left_ = 0;  // that are not done
    std::atomic<int> jobs_ = 0;
    const std::function<void(int)>* task_ = nullptr;
    std::vector<std::thread> threads_;
};

}  // namespace codecs
