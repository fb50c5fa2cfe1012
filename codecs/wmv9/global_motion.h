// Finds the few moves that most of a picture has: of a camera, of what scrolls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "codecs/common/task_team.h"

namespace codecs::wmv9 {

/// In samples of luma: halves of a sample of the look-ahead's copy.
struct Displacement {
    int x = 0;
    int y = 0;
    bool operator==(const Displacement&) const = default;
};

/// Looks for a few blocks far and wide. A search that goes on from where the blocks around were
/// found does not get there: text and fine detail look alike nowhere but at the right place. One
/// for a sequence of pictures.
class GlobalMotion {
  public:
    static constexpr std::size_t kMostMoves = 4;

    /// What a block's prediction differs by when it was so far away; the largest number where there
    /// is none.
    using CostOf = std::function<std::uint32_t(int column, int row, Displacement)>;

    /// @param columns  blocks in a row
    /// @param own      what blocks cost by themselves, row by row
    /// @param cost     of blocks of the same picture; called by all threads
    /// Returns at most kMostMoves, first what most of the picture has; none where little moves.
    std::span<const Displacement> Find(int columns, std::span<const std::uint32_t> own,
                                       const CostOf& cost, TaskTeam& team);

    /// As if the last picture had not been there.
    void TakeBack() { state_ = before_; }

  private:
    static constexpr int kNearest = 4;  // chosen by hand on the clips of bench/quality

    struct Found {
        Displacement move;
        std::uint32_t saved = 0;  // of the block's own cost; 0 = it was not found elsewhere
        bool wide = false;        // and had to be searched for widely
    };
    Found Search(std::uint32_t own, const std::function<std::uint32_t(Displacement)>& cost) const;
    void CountVotes();

    struct Vote {
        Displacement move;
        std::uint64_t saved = 0;
    };
    std::vector<Found> searched_;
    std::vector<Vote> votes_;
    // From picture to picture.
    struct State {
        std::vector<Displacement> moves;  // of the last one
        int distance = kNearest;          // of blocks that are looked for
    };
    State state_;
    State before_;
};

}  // namespace codecs::wmv9
