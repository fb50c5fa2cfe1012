// From decoded frames to the frames of the session: begin and end mark, fields made into whole
// frames, film restored from telecine, frame-rate ceiling, conversion; a still image becomes a
// film.
#pragma once

#include <atomic>
#include <optional>

#include "engine/base/av/encoder.h"
#include "engine/base/av/frame_sink.h"
#include "engine/filters/deinterlacer.h"
#include "engine/filters/frame_converter.h"
#include "engine/filters/frame_rate_ceiling.h"
#include "engine/filters/telecine_remover.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread.
class VideoFilterChain {
  public:
    /// @param end   session time at which the video ends; 0 = with its source
    /// @param turn  degrees clockwise that set the image upright
    /// @param stop  ends the repeating of a still image
    VideoFilterChain(const VideoPlan& plan, const VideoFrameFormat& format, Ticks end, double turn,
                     const std::atomic<bool>& stop, FramePool& frames);

    /// False when no more frames are wanted, by `next` or because the end mark was passed.
    bool Push(FrameHandle frame, const FrameSink& next);
    bool Finish(const FrameSink& next);
    /// After Finish of a live stream: shows the last one again right before `end`, unless it came
    /// then anyway. A still screen gives few frames, and a recording is as long as it was.
    bool HoldUntil(Ticks end, const FrameSink& next);

  private:
    bool OpensWithWhatIsThere() const;
    bool FromBeginMark(FrameHandle frame, const FrameSink& next);
    bool Restore(FrameHandle frame, const FrameSink& next);
    bool Emit(FrameHandle frame, const FrameSink& next);
    bool Repeat(FrameHandle image, const FrameSink& next);
    FrameHandle Repeated(const AVFrame& shown);

    VideoPlan plan_;
    Ticks end_;
    const std::atomic<bool>& stop_;
    FramePool& frames_;
    FrameRateCeiling ceiling_;
    std::optional<Deinterlacer> deinterlacer_;
    std::optional<TelecineRemover> telecine_;
    FrameConverter converter_;
    FrameHandle before_begin_;  // the last frame that starts before the begin mark
    FrameHandle shown_;         // the last one of a live stream, as it was given on
};

}  // namespace engine
