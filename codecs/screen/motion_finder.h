// Finds what has been scrolled or dragged, and which cells show it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "codecs/screen/motion_vote.h"
#include "codecs/screen/screen_state.h"

namespace codecs::screen {

struct MovedCells {
    std::span<const std::uint8_t> changed;  // not 0 where a cell is not what it was
    std::span<std::uint8_t> moved;          // becomes 1 where it has the vector's content
};

/// One thread at a time; keeps its memory.
class MotionFinder {
  public:
    explicit MotionFinder(const Grid& grid) : grid_(grid) {}

    /// The vector of what has moved, where enough has. `cells.moved` is 0 before.
    std::optional<Vector> Find(PixelView source, PixelView before, const MovedCells& cells,
                               const ScreenState& state);

  private:
    const Grid grid_;
    MotionVote vote_;
};

}  // namespace codecs::screen
