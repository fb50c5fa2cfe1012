// Smooths what blocks have left at their edges (SMPTE ST 421, 8.6).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

/// Keeps scratch memory for pictures of one size.
class LoopFilter {
  public:
    /// In macroblocks.
    LoopFilter(int width, int height);

    /// What a row of macroblocks completes of the result of `picture`, once it is reconstructed:
    /// the last block above an edge is filtered with the row below. To be called for each row, from
    /// the top.
    void FilterRow(const Picture& picture, int y);
    /// Of a P picture, a row that has nothing to filter; before any row is filtered. Rows that are
    /// parted by one that is left and not called for may be filtered side by side.
    void LeaveRow(int y);

  private:
    // Of a block of 8x8 samples: what its edges are filtered by.
    struct BlockState {
        MotionVector vector;
        bool intra = false;
        bool rows = false;          // transforms meet at a horizontal edge inside
        bool columns = false;       // at a vertical one
        std::uint8_t quarters = 0;  // that a coded transform touches
    };
    struct PlaneState {
        int width = 0;  // blocks
        int height = 0;
        std::vector<BlockState> blocks;
        const BlockState& At(int x, int y) const {
            return blocks[Index(y) * Index(width) + Index(x)];
        }
        BlockState& At(int x, int y) { return blocks[Index(y) * Index(width) + Index(x)]; }
    };

    void Gather(const Picture& picture, int y);
    // Rows of blocks of a plane.
    void FilterAbove(const Picture& picture, int plane, int y);
    void FilterWithin(const Picture& picture, int plane, int y);
    // Whether a row has `segments` to filter along the edge above it, or along the one inside.
    static bool BelowEdge(const PlaneState& state, int y, std::span<std::uint8_t> segments);
    static bool InsideRows(const PlaneState& state, int y, std::span<std::uint8_t> segments);
    // Room for those of a plane's row of blocks.
    std::span<std::uint8_t> Segments(int plane, int y);
    void FindBusy(const MacroblockGrid& grid, int y);
    bool RowIsBusy(int plane, int y) const {
        return busy_rows_[Index(InMacroblocks(plane, y))] != 0;
    }
    // The place of a plane's block among macroblocks.
    static int InMacroblocks(int plane, int block) { return plane == 0 ? block / 2 : block; }

    PlaneState planes_[3];
    std::vector<std::uint8_t> segments_;  // of rows of macroblocks
    int width_;                           // macroblocks
    // Macroblocks that have an edge to filter, inside or to the left or above; rows with any.
    std::vector<std::uint8_t> busy_;
    std::vector<std::uint8_t> busy_rows_;
};

}  // namespace codecs::wmv9
