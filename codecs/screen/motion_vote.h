// Finds how far a scrolled or dragged area has moved.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/screen/plane_view.h"
#include "codecs/screen/rectangle_coder.h"

namespace codecs::screen {

/// Keeps its memory. One thread at a time.
class MotionVote {
  public:
    MotionVote();

    /// The vector from pixels of `now` to those of `before` that most pieces of rows which are not
    /// flat agree on; none where few do. Never (0, 0).
    /// @param area     around what has changed, within the pictures
    /// @param changed  cells, rows of `columns` from the bottom up
    std::optional<Vector> Find(PixelView now, PixelView before, const Rect& area,
                               std::span<const std::uint8_t> changed, int columns);

  private:
    static constexpr int kSlotBits = 14;
    struct Piece {
        std::uint32_t hash;
        std::int16_t x;
        std::int16_t y;
        std::int32_t next;  // with the same slot
    };
    struct Votes {
        std::uint32_t key;
        int count;
    };

    void Collect(PixelView now, const Rect& area, std::span<const std::uint8_t> changed,
                 int columns);
    void Vote(PixelView before, const Rect& area);
    void VoteFor(Vector vector);

    std::vector<Piece> pieces_;
    std::vector<std::int32_t> slots_;  // first piece; -1 = none
    std::vector<Votes> votes_;
};

}  // namespace codecs::screen
