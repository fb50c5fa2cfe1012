// Brings the coded frames of a session's streams into one order of dts.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

#include "engine/base/coded_frame.h"
#include "engine/base/stream_header.h"
#include "engine/plan/frame_memory.h"

namespace engine {

/// One encoder a stream pushes, one writer pops. The next frame is known once every stream that
/// has not finished shows its own; a stream that cannot show one (`starved` says so: the input's
/// reader waits for room in the other stream) is not waited for when the other one is full. In a
/// session of live sources no frame waits for longer than a second, of its own time or on the
/// clock: a still screen has nothing to say, a sound server may have to wake its device, and what
/// was captured meanwhile must reach the disk.
class Interleaver {
  public:
    /// @param watched  somebody may see what comes out at once
    Interleaver(bool has_audio, bool has_video, bool live, bool watched,
                std::function<bool()> starved);

    /// Blocks while the stream's queue is full. False when the writer has gone.
    bool Push(MediaKind kind, CodedFrame frame);
    void Finish(MediaKind kind);
    enum class Popped : std::uint8_t {
        Frame,
        Quiet,    // of live sources that are watched, once since the last frame
        Nothing,  // of live sources, for a second
        End       // all streams have finished and everything was taken
    };
    /// Dts never decrease: a frame that came too late takes that of the one before it.
    Popped Pop(MediaKind& kind, CodedFrame& frame);
    void Cancel();  // by the writer

  private:
    static constexpr Ticks kLongestWait{Ticks::kPerSecond};

    using Clock = std::chrono::steady_clock;

    struct Waiting {
        CodedFrame frame;
        Clock::time_point since;
    };
    struct Lane {
        std::deque<Waiting> frames;
        std::size_t bytes = 0;
        bool finished = true;
        bool Full() const { return frames.size() >= kMostCodedFrames || bytes >= kMostCodedBytes; }
        bool Awaited() const { return !finished && frames.empty(); }
        bool HasWaited(Clock::time_point now) const;
    };

    Lane& Of(MediaKind kind) { return kind == MediaKind::Audio ? audio_ : video_; }
    bool KnowsNext() const;
    Clock::time_point WaitsUntil() const;
    bool IsFull() const { return audio_.Full() || video_.Full(); }
    Lane* Next();

    std::mutex mutex_;
    std::condition_variable filled_, freed_;
    Lane audio_, video_;
    bool live_;
    bool watched_;
    bool quiet_ = false;  // has been told
    std::function<bool()> starved_;
    Ticks last_dts_;
    Clock::time_point idle_since_;
    bool cancelled_ = false;
};

}  // namespace engine
