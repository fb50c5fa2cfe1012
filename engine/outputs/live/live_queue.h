// What waits for one who gets the stream: bounded, and short of whole groups of frames where it
// would be longer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

#include "engine/outputs/live/live_stream.h"

namespace engine {

/// One thread.
class LiveQueue {
  public:
    struct Limits {
        std::size_t bytes = 16U << 20U;
        std::int64_t span_ms = 20'000;  // the longest history, and as much again
        int overruns = 4;               // in a row
    };
    LiveQueue() : LiveQueue(Limits{}) {}
    explicit LiveQueue(Limits limits) : limits_(limits) {}

    /// What comes before the first packet that can be joined at is left out. A queue
    /// that grows too long loses what lies before the last such packet.
    void Push(LivePacketPtr packet);
    /// Null when nothing waits.
    LivePacketPtr Pop();

    bool IsEmpty() const { return packets_.empty(); }
    /// Nothing waits any more, and what comes begins where it can be joined.
    void BeginAnew();
    /// Frames that were left out for being too late, since this was asked last.
    std::uint64_t TakeWithheld();
    /// Grew too long again and again, and was never empty in between.
    bool IsHopeless() const { return overruns_ >= limits_.overruns; }

  private:
    bool IsTooLong() const;
    void DropGroups();
    void DropFront();

    Limits limits_;
    std::deque<LivePacketPtr> packets_;
    std::size_t bytes_ = 0;
    bool joined_ = false;  // once
    bool waits_ = true;    // for a packet that can be joined at
    int overruns_ = 0;
    std::uint64_t withheld_ = 0;
};

}  // namespace engine
