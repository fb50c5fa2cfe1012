// From decoded frames to the frames of the session: begin and end mark, fields made into whole
// pictures, film restored from telecine, frame-rate ceiling, conversion; a still picture becomes a
// film.
#pragma once

#include <atomic>
#include <optional>

#include "engine/base/av/encoder.h"
#include "engine/base/av/frame_sink.h"
#include "engine/filters/deinterlacer.h"
#include "engine/filters/frame_rate_ceiling.h"
#include "engine/filters/picture_converter.h"
#include "engine/filters/telecine_remover.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread.
class VideoFilterChain {
  public:
    /// @param end   session time at which the picture ends; 0 = with its source
    /// @param turn  degrees clockwise that set the picture upright
    /// @param stop  ends the repeating of a still picture
    VideoFilterChain(const VideoPlan& plan, const PictureFormat& format, Ticks end, double turn,
                     const std::atomic<bool>& stop, FramePool& frames);

    /// False when no more frames are wanted, by `next` or because the end mark was passed.
    bool Push(FrameHandle frame, const FrameSink& next);
    bool Finish(const FrameSink& next);
    /// After Finish of a live picture: shows the last one again right before `end`, unless it came
    /// then anyway. A still screen gives few pictures, and a recording is as long as it was.
    bool HoldUntil(Ticks end, const FrameSink& next);

  private:
    bool OpensWithWhatIsThere() const;
    bool FromBeginMark(FrameHandle frame, const FrameSink& next);
    bool Restore(FrameHandle frame, const FrameSink& next);
    bool Emit(FrameHandle frame, const FrameSink& next);
    bool Repeat(FrameHandle picture, const FrameSink& next);
    FrameHandle SamePicture(const AVFrame& picture);

    VideoPlan plan_;
    Ticks end_;
    const std::atomic<bool>& stop_;
    FramePool& frames_;
    FrameRateCeiling ceiling_;
    std::optional<Deinterlacer> deinterlacer_;
    std::optional<TelecineRemover> telecine_;
    PictureConverter converter_;
    FrameHandle before_begin_;  // the last frame that starts before the begin mark
    FrameHandle shown_;         // the last one of a live picture, as it was given on
};

}  // namespace engine
