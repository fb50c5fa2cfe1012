// The parts of a frame that must be fetched again, joined into few boxes.
#pragma once

#include <vector>

#include "engine/base/pixel_box.h"

namespace engine {

/// Boxes that are close to each other become one where that costs less than another request to the
/// server. They may overlap, and cover at least what was added.
class DamageBoxes {
  public:
    void Add(PixelBox box);
    void Clear() { boxes_.clear(); }
    const std::vector<PixelBox>& boxes() const { return boxes_; }
    std::int64_t Pixels() const;

    static constexpr std::size_t kMost = 8;
    /// A request takes as long as fetching about so many pixels.
    static constexpr std::int64_t kRequestCost = 8192;

  private:
    std::vector<PixelBox> boxes_;
};

}  // namespace engine
