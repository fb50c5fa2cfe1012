// Makes whole pictures of pictures that are woven of two fields: as many, of the same size.
#pragma once

#include <optional>

#include "engine/base/av/frame_taker.h"
#include "engine/filters/picture_filter.h"

namespace engine {

/// Keeps the lines of the field that comes first and finds those between them by where the picture
/// moves and where it rests. A frame that does not say which field that is has the top one first.
///
/// One thread. Frames leave one later, with their own times.
class Deinterlacer {
  public:
    explicit Deinterlacer(FramePool& frames) : frames_(frames) {}

    /// False when the taker wants no more. Throws platform::Error.
    bool Take(FrameHandle frame, const FrameTaker& next);
    bool Finish(const FrameTaker& next);

  private:
    bool Pull(const FrameTaker& next);

    FramePool& frames_;
    PictureShape shape_;
    std::optional<PictureFilter> filter_;  // none = nothing taken, or too small to have fields
};

}  // namespace engine
