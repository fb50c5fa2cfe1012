// The queue of frames between two stages: it blocks the producer while it is full (and then until
// half of it is free, so that the two do not wake each other for every frame) and the consumer
// while it is empty.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>

#include "engine/base/av/av_ptr.h"
#include "engine/base/av/frame_bytes.h"
#include "engine/plan/frame_memory.h"

namespace engine {

/// One producer, one consumer. Allocates nothing.
class FrameQueue {
  public:
    /// False when the consumer has gone: the frame is dropped and the producer may end.
    bool Push(FrameHandle frame) {
        const std::size_t bytes = BytesOf(*frame);
        std::unique_lock lock(mutex_);
        if (IsFull()) freed_.wait(lock, [this] { return cancelled_ || HasRoom(); });
        if (cancelled_) return false;
        ring_[(first_ + count_) % ring_.size()] = {std::move(frame), bytes};
        ++count_;
        bytes_ += bytes;
        filled_.notify_one();
        // The producer's next one is as large: it is not begun before this one is taken.
        if (bytes > kMostQueuedBytes)
            freed_.wait(lock, [this] { return cancelled_ || count_ == 0; });
        return true;
    }

    /// False when the producer has finished and everything was taken.
    bool Pop(FrameHandle& frame) {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [this] { return finished_ || count_ > 0; });
        if (count_ == 0) return false;
        frame = std::move(ring_[first_].frame);
        bytes_ -= ring_[first_].bytes;
        first_ = (first_ + 1) % ring_.size();
        --count_;
        if (HasRoom()) freed_.notify_one();
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
    struct Queued {
        FrameHandle frame;
        std::size_t bytes = 0;
    };

    bool IsFull() const { return count_ == ring_.size() || bytes_ >= kMostQueuedBytes; }
    bool HasRoom() const { return count_ <= ring_.size() / 2 && bytes_ <= kMostQueuedBytes / 2; }

    std::mutex mutex_;
    std::condition_variable filled_, freed_;
    std::array<Queued, kMostQueuedFrames> ring_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;
    bool finished_ = false;
    bool cancelled_ = false;
};

}  // namespace engine
