#include "codecs/common/task_team.h"

namespace codecs {

TaskTeam::TaskTeam(int threads) {
    for (int i = 1; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

TaskTeam::~TaskTeam() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void TaskTeam::Run(int count, const std::function<void(int n)>& task) {
    if (threads_.empty() || count <= 1) {
        for (int n = 0; n < count; ++n) task(n);
        return;
    }
    count_ = count;
    task_ = &task;
    next_ = 0;
    {
        const std::lock_guard lock(mutex_);
        ++job_;
        working_ = static_cast<int>(threads_.size());
    }
    changed_.notify_all();
    DoTasks();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return working_ == 0; });
}

void TaskTeam::Work() {
    int last_job = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return ended_ || job_ != last_job; });
        if (ended_) return;
        last_job = job_;
        lock.unlock();
        DoTasks();
        lock.lock();
        if (--working_ == 0) changed_.notify_all();
    }
}

void TaskTeam::DoTasks() {
    for (int n = next_++; n < count_; n = next_++) (*task_)(n);
}

}  // namespace codecs
