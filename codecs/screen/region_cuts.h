// Cuts a frame into rectangles that are kept, that have moved, and that are mixed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/screen/plane_view.h"
#include "codecs/screen/region_coder.h"

namespace codecs::screen {

/// What a cell's pixels may be said to be; a cell may have both, or neither.
enum CellState : std::uint8_t { kCanBeKept = 1, kCanBeMoved = 2 };

/// A rectangle that is not kept as a whole.
struct Leaf {
    int node = 0;
    Rect rect;  // pixels
};

class RegionCuts {
  public:
    /// Of the picture.
    RegionCuts(int width, int height);

    /// @param cells  CellState, rows of (width + 7) / 8 from the bottom up
    /// Replaces both; the nodes of `leaves` are of RegionKind::MixedPixels or MovedWhole.
    void Cut(std::span<const std::uint8_t> cells, RegionTree& tree, std::vector<Leaf>& leaves);

  private:
    // The smallest rectangle around cells, within a span of rows or columns.
    struct Extent {
        int left = std::numeric_limits<int>::max();
        int right = -1;
        int bottom = std::numeric_limits<int>::max();
        int top = -1;

        void Add(const Extent& other) {
            left = std::min(left, other.left);
            right = std::max(right, other.right);
            bottom = std::min(bottom, other.bottom);
            top = std::max(top, other.top);
        }
        std::int64_t Area() const {
            return right < 0 ? 0 : std::int64_t{right - left + 1} * (top - bottom + 1);
        }
    };
    struct Choice;

    int CutCells(const Rect& cells);
    int AddLeaf(RegionKind kind, const Rect& cells);
    Choice BestCut(const Rect& cells, const std::vector<std::uint64_t>& unlike);
    void SetUnlike(std::span<const std::uint8_t> cells);
    static constexpr int kWordBits = 64;
    static int FirstWord(const Rect& cells) { return cells.x / kWordBits; }
    static int LastWord(const Rect& cells) { return (cells.x + cells.width - 1) / kWordBits; }
    static std::uint64_t Inside(const Rect& cells, int word);
    std::size_t Place(int y, int word) const { return Index(y) * Index(words_) + Index(word); }
    Rect Pixels(const Rect& cells) const;

    int width_;
    int height_;
    int columns_;  // cells
    int rows_;
    int words_;  // of a row
    // A bit for each cell that cannot be kept, or moved.
    std::vector<std::uint64_t> unlike_kept_;
    std::vector<std::uint64_t> unlike_moved_;
    RegionTree* tree_ = nullptr;
    std::vector<Leaf>* leaves_ = nullptr;
    // Of cells that are unlike; kept for their memory.
    std::vector<Extent> extents_of_rows_;
    std::vector<Extent> extents_of_columns_;
    std::vector<std::uint64_t> seen_;
    std::vector<std::int64_t> after_;
};

}  // namespace codecs::screen
