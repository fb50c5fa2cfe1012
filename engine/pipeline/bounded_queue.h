// The queue between two stages: it blocks the producer while it is full (and then until half of it
// is free, so that the two do not wake each other for every item) and the consumer while it is
// empty.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace engine {

/// One producer, one consumer. Allocates on construction only.
template <typename T>
class BoundedQueue {
  public:
    explicit BoundedQueue(std::size_t capacity) : ring_(capacity) {}

    /// False when the consumer has gone: the item is dropped and the producer may end.
    bool Push(T item) {
        std::unique_lock lock(mutex_);
        if (count_ == ring_.size())
            freed_.wait(lock, [this] { return cancelled_ || count_ <= ring_.size() / 2; });
        if (cancelled_) return false;
        ring_[(first_ + count_) % ring_.size()] = std::move(item);
        ++count_;
        lock.unlock();
        filled_.notify_one();
        return true;
    }

    /// False when the producer has finished and everything was taken.
    bool Pop(T& item) {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [this] { return finished_ || count_ > 0; });
        if (count_ == 0) return false;
        item = std::move(ring_[first_]);
        first_ = (first_ + 1) % ring_.size();
        --count_;
        if (count_ <= ring_.size() / 2) freed_.notify_one();
        return true;
    }

    void Finish() {  // by the producer
        const std::lock_guard lock(mutex_);
        finished_ = true;
        filled_.notify_one();
    }

    void Cancel() {  // by the consumer
        const std::lock_guard lock(mutex_);
        cancelled_ = true;
        freed_.notify_one();
    }

  private:
    std::mutex mutex_;
    std::condition_variable filled_, freed_;
    std::vector<T> ring_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool finished_ = false;
    bool cancelled_ = false;
};

}  // namespace engine
