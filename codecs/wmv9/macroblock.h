// What a macroblock is coded as, and the picture it stands in.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

constexpr int kBlocks = 6;  // four of luma in raster order, blue and red difference

/// In quarters of a luma sample.
struct MotionVector {
    std::int16_t x = 0;
    std::int16_t y = 0;
    constexpr bool operator==(const MotionVector&) const = default;
};

/// Which anchors predict a macroblock of a B picture (BMVTYPE; DIRECTBBIT).
enum class Direction : std::uint8_t { Forward, Backward, Both, Direct };

/// Of the predictors above (A) and to the left (C), the one that the stream names (HYBRIDPRED).
enum class Hybrid : std::uint8_t { None, Left, Above };

/// Values that intra blocks to the right of and below this one are predicted from.
struct BlockEdge {
    std::int16_t dc;
    std::array<std::int16_t, 7> row;     // levels 1 to 7 of the first row
    std::array<std::int16_t, 7> column;  // of the first column
};

struct Macroblock {
    bool intra = false;
    bool four_mv = false;         // 4MV: a vector for each block of luma
    bool skipped = false;         // SKIPMBBIT: neither residual nor vector difference
    bool ac_predicted = false;    // ACPRED
    std::uint8_t from_above = 0;  // bit n: block n's levels are predicted from the block above
    bool block_types = false;     // TTMB, TTBLK: each block names its transform
    std::uint8_t quantiser = 1;   // MQUANT
    std::uint8_t coded = 0;       // CBPCY; bit 5 - n: block n has levels
    Direction direction = Direction::Forward;   // BMVTYPE
    std::array<MotionVector, 4> vectors{};      // by block; of intra ones 0. Of B pictures [0] only
    MotionVector backward;                      // of B pictures
    std::array<MotionVector, 4> differences{};  // MVDATA, BLKMVDATA, BMV1, BMV2
    MotionVector backward_difference;
    std::array<Hybrid, 4> hybrid{};  // HYBRIDPRED
    std::array<Shape, kBlocks> shapes{};
    /// Which of a block's transforms are coded (SUBBLKPAT), the first one in the highest bit of 4,
    /// 2 or 1.
    std::array<std::uint8_t, kBlocks> parts{};
    std::array<std::int16_t, kBlocks> dc{};  // DCCOEF: differences, as they are written

    bool IsCoded(int block) const { return (coded >> (5 - block) & 1) != 0; }
    void SetCoded(int block, bool is) {
        const int bit = 1 << (5 - block);
        coded = static_cast<std::uint8_t>(is ? coded | bit : coded & ~bit);
    }
};

/// Transforms of a block of that shape.
constexpr int PartCount(Shape shape) {
    return shape == Shape::Whole8x8 ? 1 : shape == Shape::Small4x4 ? 4 : 2;
}

/// The macroblocks of a picture, visited as by a Wavefront, each half of the picture in one range
/// of rows: it keeps the edges of two rows of each.
class MacroblockGrid {
  public:
    MacroblockGrid(int width, int height)
        : width_(width),
          height_(height),
          macroblocks_(Index(width) * Index(height)),
          edges_(4 * Index(width)) {}

    int Width() const { return width_; }
    int Height() const { return height_; }
    Macroblock& At(int x, int y) { return macroblocks_[Place(x, y)]; }
    const Macroblock& At(int x, int y) const { return macroblocks_[Place(x, y)]; }
    double IntraPart() const {
        const auto count = std::count_if(macroblocks_.begin(), macroblocks_.end(),
                                         [](const Macroblock& one) { return one.intra; });
        return static_cast<double>(count) / static_cast<double>(macroblocks_.size());
    }
    /// Of the macroblock's blocks; stale where it is not intra, and from when the one that is two
    /// rows below it is visited.
    std::array<BlockEdge, kBlocks>& Edges(int x, int y) { return edges_[Place(x, Kept(y))]; }
    const std::array<BlockEdge, kBlocks>& Edges(int x, int y) const {
        return edges_[Place(x, Kept(y))];
    }

  private:
    int Kept(int y) const { return y % 2 + (2 * y < height_ ? 0 : 2); }
    std::size_t Place(int x, int y) const { return Index(y) * Index(width_) + Index(x); }

    int width_;
    int height_;
    std::vector<Macroblock> macroblocks_;
    std::vector<std::array<BlockEdge, kBlocks>> edges_;
};

}  // namespace codecs::wmv9
