// What live sources have given and the session's streams have not taken yet.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "engine/outputs/packet_sink.h"
#include "engine/pipeline/av_ptr.h"
#include "engine/ticks.h"

namespace engine {

/// One capturing thread a stream pushes, one taker a stream pops; no Push waits.
///
/// The session's time 0 is that of the first picture, or of the first sound where no picture is
/// recorded or none comes for seconds: a recording begins with what is to be seen, and a sound
/// server that takes a second to wake costs none of it. Sound is kept however late its taker is. Of
/// pictures, the oldest one that waits gives way: what is on the screen last is then always
/// recorded, also when nothing changes any more for a long time.
class CaptureQueues {
  public:
    CaptureQueues(bool has_audio, bool has_video);

    /// The frame's pts is on the capture clock. False when the stream's taker has gone.
    bool Push(MediaKind kind, FrameHandle frame);
    /// Waits for the session to begin. The frame's pts is session time, below 0 for what was
    /// captured before it. False when the source has ended and everything was taken.
    bool Pop(MediaKind kind, FrameHandle& frame);
    void Finish(MediaKind kind);  // by the capturing thread
    void Cancel(MediaKind kind);  // by the taker

    /// On the capture clock; none before the session has begun. Any thread.
    std::optional<Ticks> Start() const;
    /// Pictures of the session that gave way since the last call. Any thread.
    std::int64_t TakeDropped();

  private:
    struct Lane {
        std::deque<FrameHandle> frames;
        std::size_t bytes = 0;
        std::optional<Ticks> first;
        bool finished = true;
        bool cancelled = false;
    };

    Lane& Of(MediaKind kind) { return lanes_[kind == MediaKind::Audio ? 0 : 1]; }
    FrameHandle TakeFront(Lane& lane);
    void MakeRoom(Lane& lane);
    void BeginIfKnown(Ticks now);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::array<Lane, 2> lanes_;
    std::optional<Ticks> start_;
    std::int64_t dropped_ = 0;
};

}  // namespace engine
