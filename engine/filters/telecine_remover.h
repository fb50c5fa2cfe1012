// Gives back the film frames of video that was made from film by 2:3 pulldown; other video passes
// through untouched.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>

#include "engine/base/av/av_ptr.h"
#include "engine/base/av/frame_sink.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Pulldown spreads four film frames A B C D over five video frames: A, B, top of B with bottom of
/// C, top of C with bottom of D, D (or with top and bottom exchanged). So the third repeats one
/// field of the frame before it, the fifth the other. Only where two cycles in a row show that
/// cadence, with motion to prove it, is C woven from the third and the fourth and are the times
/// spread evenly; the cadence is kept through still stretches and given up at the first
/// contradiction. A cadence that is told is neither looked for nor given up, and half a film frame
/// at either end of the video is left out.
///
/// One thread. Frames leave up to ten later, in order.
class TelecineRemover {
  public:
    /// @param told  the cadence, counted from the first frame; none = it is looked for
    TelecineRemover(const std::optional<TelecinePattern>& told, FramePool& frames);

    /// Times strictly increase. False when the sink wants no more.
    bool Push(FrameHandle frame, const FrameSink& next);
    bool Finish(const FrameSink& next);

  private:
    static constexpr int kCycle = 5;
    static constexpr std::size_t kLookAhead = 10;  // two cycles

    // What a frame repeats of the one before it.
    enum class Repeat : std::uint8_t { Nothing, Top, Bottom, Unclear };

    struct Cadence {
        int phase = 0;  // frame index modulo 5 of the first repeat
        bool bottom_first = false;
    };

    struct Pending {
        FrameHandle frame;
        Repeat repeat = Repeat::Unclear;
        std::int64_t index = 0;
        bool used = false;  // woven into the frame before
    };

    static Repeat Compare(const AVFrame& frame, const AVFrame* before);
    Repeat Expected(const Cadence& cadence, std::int64_t index) const;
    bool Agrees(const Cadence& cadence, std::size_t frames, int least_repeats) const;
    void FindCadence();
    bool EmitFront(const FrameSink& next);
    FrameHandle Weave(const AVFrame& third, const AVFrame& fourth, bool bottom_first);

    FramePool& frames_;
    bool told_;
    std::size_t look_ahead_;
    std::deque<Pending> pending_;
    FrameHandle last_;  // the frame taken last, for comparison
    std::int64_t taken_ = 0;
    bool locked_;
    Cadence cadence_;
    std::optional<std::int64_t> start_;  // of the first film frame, until it has left
    std::size_t buffer_bytes_ = 0;
    AvPtr<AVBufferPool> buffers_;
};

}  // namespace engine
