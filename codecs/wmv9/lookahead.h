// Looks at small copies of the pictures that come: what moves where, and what is referred to.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

#include "codecs/common/task_team.h"
#include "codecs/common/wavefront.h"
#include "codecs/wmv9/b_fractions.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/global_motion.h"
#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

/// Keeps pictures of one size by their number, from 0 on in the order in which they are shown. A
/// block is 8x8 samples of the copy, a macroblock of the picture. One thread at a time.
class Lookahead {
  public:
    struct Move {
        int x = 0;  // halves of a sample of the copy
        int y = 0;
        std::uint32_t cost = 0;
    };

    /// @param width, height  of the pictures, in samples of luma
    /// @param rounds         of the motion search; 0 = nothing is taken to move
    /// @param team           does the work of each call
    Lookahead(int width, int height, int rounds, TaskTeam& team);

    /// The next picture. Returns how much of it is new beside the one before it: 0 = nothing, 1 =
    /// all of it.
    double Add(const PictureView& picture);
    /// The last one was not there, after all. Once for each; none was dropped meanwhile.
    void TakeBack();
    /// Those before that one are needed no more.
    void DropBefore(int number);
    int End() const { return first_ + static_cast<int>(pictures_.size()); }
    bool Has(int number) const { return number >= first_ && number < End(); }

    /// How many of the `count` pictures from `first` on, the last of which would be a P picture,
    /// are better coded as B pictures.
    /// @param before  the number of the I or P picture before them
    int Choose(int before, int first, int count);

    /// Where a block of a picture was in an earlier one, by the moves of those between. From any
    /// thread while no picture is added or dropped.
    Displacement Trace(int number, int earlier, int column, int row) const;

    int Columns() const { return columns_; }  // blocks
    int Rows() const { return rows_; }
    /// How much of a picture is new, which Add returned.
    double PartNew(int number) const { return At(number).part_new; }
    /// Of a picture's blocks, from the picture before it; what they cost by themselves.
    const std::vector<Move>& Moves(int number) const { return At(number).moves; }
    const std::vector<std::uint32_t>& OwnCosts(int number) const { return At(number).own; }
    /// Of those, what the moves save, 0 to 1; where a block stands still, and where it moves.
    const std::vector<float>& SavedByStill(int number) const { return At(number).saved; }
    struct Saving {
        int place = 0;
        float part = 0;
    };
    const std::vector<Saving>& SavedByMoving(int number) const { return At(number).moving; }

  private:
    // Luma at half the size, in whole blocks, with a margin.
    struct Small {
        std::vector<std::uint8_t> memory;
        std::vector<std::uint32_t> own;
        std::vector<Move> moves;
        std::vector<float> saved;  // by blocks that stand still
        std::vector<Saving> moving;
        double part_new = 1;
        const std::uint8_t* At(int x, int y, std::ptrdiff_t stride) const;
    };

    const Small& At(int number) const;
    static void FindSavings(Small& small);
    template <typename Visit>
    void ForBlocks(Visit&& visit);
    /// What stands in a row of blocks, and the margin that follows from it.
    void LoadRow(const PictureView& picture, Small& small, int row) const;
    /// From picture `number` to an earlier one.
    void FindMoves(int number, int earlier, std::vector<Move>& moves);
    static std::int64_t MovedCost(const Small& picture, const std::vector<Move>& moves);
    /// Of picture `number` between two others.
    std::int64_t BCost(int number, int earlier, const std::vector<Move>& to_earlier, int later);
    /// Where the prediction stands: in the reference, or in `room` of 8x8.
    const std::uint8_t* Predict(const Small& reference, const Move& move, int column, int row,
                                std::uint8_t* room, std::ptrdiff_t& stride) const;
    std::uint32_t MoveCost(const Small& picture, const Small& reference, const Move& move,
                           int column, int row) const;
    /// `likely()`: where else the block is looked for.
    template <typename Likely>
    Move FindMove(const Small& picture, const Small& reference, int column, int row,
                  const std::vector<Move>& found, const Likely& likely) const;
    bool Holds(Displacement move, int column, int row) const;
    std::uint32_t OwnBlockCost(const Small& picture, int column, int row) const;
    std::size_t Place(int column, int row) const;

    const Kernels& kernels_;
    const int width_;  // of the pictures
    const int height_;
    const int columns_;
    const int rows_;
    const std::ptrdiff_t stride_;
    const int rounds_;
    std::deque<Small> pictures_;
    std::vector<Small> spare_;
    int first_ = 0;  // number of the first of them
    // Of those that may become B pictures, and of the P picture after them, to the one before them.
    std::array<std::vector<Move>, kMostBPictures + 1> to_earlier_;
    std::vector<Move> to_later_;
    GlobalMotion global_motion_;
    std::vector<std::uint32_t> b_costs_;  // of blocks
    TaskTeam& team_;
    Wavefront wavefront_;
};

}  // namespace codecs::wmv9
