// Codes a picture's regions: a tree of rectangles whose pixels are new, kept or moved.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/screen/adaptive_model.h"
#include "codecs/screen/pixel_coder.h"
#include "codecs/screen/plane_view.h"

namespace codecs::screen {

/// How a region is parted, or coded where it is not.
enum class RegionKind : std::uint8_t {
    CutAcross,  // in lower and upper rows
    CutDown,    // in left and right columns
    OneColour,  // all its pixels have the index of the first one
    Pixels,     // all its pixels are new
    KeptWhole,  // inter frames only, from here on
    MovedWhole,
    MixedPixels,  // each says what it is
};

struct RegionNode {
    RegionKind kind = RegionKind::Pixels;
    int pivot = 0;  // rows or columns of the first part; at least 1 in both
    int first = 0;  // nodes
    int second = 0;
};

/// The root comes first.
using RegionTree = std::vector<RegionNode>;

/// What codes the regions of one slice, with all that has been learnt since the last key frame. A
/// copy is a snapshot.
class RegionCoder {
  public:
    RegionCoder();

    void Reset();

    /// Appends a whole arithmetic stream.
    /// @param indices  of the frame as a decoder will have them, those that are kept or moved too
    /// @param masks    PixelMask of each pixel in regions of mixed pixels; unused in key frames
    void Code(std::vector<std::uint8_t>& out, bool key, const RegionTree& tree, const Rect& slice,
              PlaneView indices, PlaneView masks);

  private:
    struct Frame {
        ArithmeticCoder out;
        bool key;
        const RegionTree& tree;
        PlaneView indices;
        PlaneView masks;
    };

    void CodeNode(Frame& frame, int node, const Rect& region);
    void CodePivot(ArithmeticCoder& out, int pivot, int length);
    void CodeColours(Frame& frame, const Rect& region, bool one);
    void CodeMixed(Frame& frame, const Rect& region);

    AdaptiveModel<3> split_;
    AdaptiveModel<2> edge_;
    AdaptiveModel<3> pivot_;
    AdaptiveModel<2> intra_;
    AdaptiveModel<2> inter_;
    PixelCoder colours_;
    PixelCoder masks_;
};

}  // namespace codecs::screen
