// Finds out what has become of each pixel since the frame before.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "codecs/screen/colour_table.h"
#include "codecs/screen/encoder.h"
#include "codecs/screen/motion_finder.h"
#include "codecs/screen/rectangle_coder.h"
#include "codecs/screen/region_coder.h"
#include "codecs/screen/region_cuts.h"
#include "codecs/screen/screen_state.h"

namespace codecs::screen {

/// Why a tile is painted; 0 = it is not.
enum PaintKind : std::uint8_t { kDetail = 1, kResting = 2, kMoving = 3 };

/// One thread at a time; keeps its memory.
class FrameAnalysis {
  public:
    FrameAnalysis(int width, int height, int tolerance);

    /// A new palette, and the index of each pixel.
    void AnalyseKey(PixelView source, double seconds, ScreenState& state);
    /// The indices by what has changed. False when only a key frame will do.
    bool AnalyseChanges(PixelView source, PixelView before, const FrameRequest& request,
                        ScreenState& state);
    /// After AnalyseChanges, when it is known which tiles are painted: the tree, and the masks of
    /// the regions that are mixed.
    /// @param all_masks  also of those that are not
    void CutRegions(std::span<const std::uint8_t> paint, ScreenState& state, bool all_masks);

    bool AnyChange() const { return any_change_; }
    std::optional<Vector> Motion() const { return motion_; }
    /// Pixels of the frame before, and of this one.
    PlaneView Indices() const { return {next_.data(), grid_.width}; }
    PlaneView Masks() const { return {masks_.data(), grid_.width}; }
    const RegionTree& Tree() const { return tree_; }
    /// Tiles that change has to be painted in.
    const std::vector<std::uint8_t>& Paint() const { return paint_; }
    bool Exact() const { return exact_; }

    /// The frame analysed last has been coded, or has not.
    void Keep();
    void Forget();
    /// Sets up what AnalyseChanges looks colours up in.
    void UsePalette(const ScreenState& state);

  private:
    bool HasFewColours(PixelView source);
    void FindChanges(PixelView source, PixelView before, const Rect& where);
    void TakeMoved(const Rect& cell, ScreenState& state);
    bool MapTile(PixelView source, int x, int y, double seconds, ScreenState& state);
    struct Mapped {
        int missing = 0;  // pixels that have no place in the palette
        int colours = 0;  // of the others
    };
    static bool IsPainted(const Mapped& mapped, int pixels, bool photo, bool film);
    Mapped MapCell(PixelView source, const Rect& cell, int mask);
    void MaskCell(const Rect& cell, int mask);
    std::uint8_t StateOf(int x, int y) const;
    void MoveLeaf(const Rect& leaf, ScreenState& state);
    RegionKind MixLeaf(const Rect& leaf, std::span<const std::uint8_t> paint,
                       const ScreenState& state);
    void FillMasks(const Rect& region, PixelMask mask);

    const Grid grid_;
    const int tolerance_;
    ColourCount counts_;
    PaletteTable table_;
    MotionFinder finder_;
    RegionCuts cuts_;
    std::vector<std::uint8_t> indices_;  // of the frame before
    std::vector<std::uint8_t> next_;
    std::vector<std::uint8_t> masks_;
    std::vector<std::uint8_t> changed_;  // cells
    std::vector<std::uint8_t> moved_;    // cells that have the vector's content
    std::vector<std::uint8_t> cells_;    // CellState
    std::vector<std::uint8_t> paint_;    // tiles, PaintKind
    std::vector<Rect> touched_;          // where next_ is not indices_
    std::optional<Vector> motion_;
    RegionTree tree_;
    std::vector<Leaf> leaves_;
    bool any_change_ = false;
    bool exact_ = false;
    std::int64_t newly_missed_ = 0;  // pixels
};

}  // namespace codecs::screen
