#include "codecs/common/task_team.h"

#include "codecs/common/spin.h"

namespace codecs {

TaskTeam::TaskTeam(int threads) {
    for (int i = 1; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

TaskTeam::~TaskTeam() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    begun_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void TaskTeam::Run(int count, const std::function<void(int n)>& task) {
    if (threads_.empty() || count <= 1) {
        for (int n = 0; n < count; ++n) task(n);
        return;
    }
    Lock lock(mutex_);
    task_ = &task;
    count_ = left_ = count;
    next_ = 0;
    ++jobs_;
    begun_.notify_all();
    DoTasks(lock);
    lock.unlock();
    if (SpinUntil([this] { return left_ == 0; })) return;
    lock.lock();
    done_.wait(lock, [this] { return left_ == 0; });
}

void TaskTeam::Work() {
    Lock lock(mutex_);
    for (int seen = 0;;) {
        lock.unlock();
        SpinUntil([&] { return jobs_ != seen; });
        lock.lock();
        begun_.wait(lock, [this] { return ended_ || next_ < count_; });
        if (ended_) return;
        seen = jobs_;
        DoTasks(lock);
    }
}

void TaskTeam::DoTasks(Lock& lock) {
    while (next_ < count_) {
        const int n = next_++;
        const std::function<void(int)>& task = *task_;
        lock.unlock();
        task(n);
        lock.lock();
        if (--left_ == 0) done_.notify_one();
    }
}

}  // namespace codecs
