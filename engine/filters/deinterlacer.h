// Makes whole frames of frames that are woven of two fields: as many, of the same size.
#pragma once

#include <optional>

#include "engine/base/av/frame_sink.h"
#include "engine/filters/frame_filter.h"

namespace engine {

/// Keeps the lines of the field that comes first and finds those between them by where the image
/// moves and where it rests. A frame that does not say which field that is has the top one first.
///
/// One thread. Frames leave one later, with their own times.
class Deinterlacer {
  public:
    explicit Deinterlacer(FramePool& frames) : frames_(frames) {}

    /// False when the sink wants no more. Throws platform::Error.
    bool Push(FrameHandle frame, const FrameSink& next);
    bool Finish(const FrameSink& next);

  private:
    bool Pull(const FrameSink& next);

    FramePool& frames_;
    FrameShape shape_;
    std::optional<FrameFilter> filter_;  // none = nothing taken, or too small to have fields
};

}  // namespace engine
