// What live sources have given and the session's streams have not taken yet.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "engine/base/av/av_ptr.h"
#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"
#include "engine/pipeline/pauses.h"

namespace engine {

/// One capturing thread a stream pushes, one consumer a stream pops; no Push waits.
///
/// The session's time 0 is that of the first frame, or of the first audio where no frame is
/// recorded or none comes for seconds: a recording begins with what is to be seen, and a sound
/// server that takes a second to wake costs none of it. Audio is kept however late its consumer is.
/// Of frames, the oldest one that waits gives way: what is on the screen last is then always
/// recorded, also when nothing changes any more for a long time.
///
/// What is captured during a pause is left out: the session's time stands still, and audio is cut
/// to the sample. The last frame of a pause is what the screen shows when it ends, and goes on
/// there.
class CaptureQueues {
  public:
    CaptureQueues(bool has_audio, bool has_video);

    /// The frame's pts is on the capture clock. False when the stream's consumer has gone.
    bool Push(MediaKind kind, FrameHandle frame);
    /// Waits for the session to begin. The frame's pts is session time, below 0 for what was
    /// captured before it. False when the source has ended and everything was taken.
    bool Pop(MediaKind kind, FrameHandle& frame);
    void Finish(MediaKind kind);  // by the capturing thread
    void Cancel(MediaKind kind);  // by the sink

    /// From now on, on the capture clock. Any thread, one call at a time.
    void Pause(Ticks now);
    void Resume(Ticks now);
    bool IsPaused() const;  // any thread

    /// In recorded time; none before the session has begun. Any thread.
    std::optional<Ticks> Start() const;
    Ticks Recorded(Ticks time) const;  // any thread
    /// Frames of the session that gave way since the last call. Any thread.
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
    bool LeaveOutPauses(MediaKind kind, AVFrame& frame) const;
    void Add(MediaKind kind, FrameHandle frame);
    FrameHandle TakeFront(Lane& lane);
    void MakeRoom(Lane& lane);
    void BeginIfKnown(Ticks now);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::array<Lane, 2> lanes_;
    Pauses pauses_;
    FrameHandle seen_in_pause_;  // last, its time being recorded time
    std::optional<Ticks> start_;
    std::int64_t dropped_ = 0;
};

}  // namespace engine
