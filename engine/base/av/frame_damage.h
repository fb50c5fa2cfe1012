// What has changed in a recorded frame, told along with its pixels.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/base/av/av_ptr.h"
#include "engine/base/pixel_box.h"

namespace engine {

struct FrameDamage {
    std::int64_t number = 0;  // its source counts; a frame that is given again keeps its number
    PixelBox changed;         // at least all that is not as it was at the number before
};

/// Throws std::bad_alloc.
void TellDamage(AVFrame& frame, const FrameDamage& damage);
/// None where nothing was told, or the pixels are no longer those that it was told of.
std::optional<FrameDamage> DamageOf(const AVFrame& frame);

/// Sums up what has changed while frames come by.
class DamageSum {
  public:
    /// In their order; some may be left out, and some come twice.
    void Add(const AVFrame& frame);
    /// From the frame added last on.
    void Restart() { changed_ = {}; }
    /// In the frame added last, since the one after which it was restarted; all of the frame when
    /// that is not known.
    const PixelBox& Changed() const { return changed_; }

  private:
    std::optional<std::int64_t> number_;
    PixelBox changed_;
};

}  // namespace engine
