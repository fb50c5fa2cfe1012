// The packets of one input on their way to its streams' decoders, one bounded queue a stream.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "engine/base/av/av_ptr.h"
#include "engine/base/stream_header.h"
#include "engine/plan/frame_memory.h"

namespace engine {

/// One reader pushes, one decoder a stream pops. All members may be called from any thread.
class PacketRouter {
  public:
    /// Blocks while the stream's queue is full, and then until half of it is free: threads that
    /// wake each other for every packet do little else. False when that stream's decoder has gone.
    bool Push(MediaKind kind, PacketHandle packet);
    /// False when the input has ended and everything was taken.
    bool Pop(MediaKind kind, PacketHandle& packet);
    void Finish();                // by the reader, for both streams
    void Cancel(MediaKind kind);  // by a decoder, or for a stream that nobody wants
    bool AllCancelled() const;
    /// The reader waits for room in one stream's queue while the other stream waits for packets:
    /// whoever waits for both streams to advance together must go on with what it has.
    bool Starved() const;

  private:
    struct Lane {
        std::array<PacketHandle, kMostPackets> ring;
        std::size_t first = 0;
        std::size_t count = 0;
        std::size_t bytes = 0;
        bool cancelled = false;
        bool wanted = false;  // its decoder waits
        std::condition_variable filled;
        bool Full() const {
            return count == kMostPackets || (count > 0 && bytes >= kMostPacketBytes);
        }
        bool HasRoom() const { return count <= kMostPackets / 2 && bytes <= kMostPacketBytes / 2; }
    };

    Lane& Of(MediaKind kind) { return lanes_[kind == MediaKind::Audio ? 0 : 1]; }

    mutable std::mutex mutex_;
    std::condition_variable freed_;
    std::array<Lane, 2> lanes_;
    bool finished_ = false;
    bool pushing_ = false;  // the reader waits for room
};

}  // namespace engine
