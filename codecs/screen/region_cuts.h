// Cuts a frame into rectangles that are kept, that have moved, and that are mixed.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

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
    struct Extent;
    struct Choice;

    int CutCells(const Rect& cells);
    int AddLeaf(RegionKind kind, const Rect& cells);
    Choice BestCut(const Rect& cells, std::uint8_t wanted) const;
    Rect Pixels(const Rect& cells) const;

    int width_;
    int height_;
    int columns_;
    std::span<const std::uint8_t> cells_;
    RegionTree* tree_ = nullptr;
    std::vector<Leaf>* leaves_ = nullptr;
};

}  // namespace codecs::screen
