#include "codecs/screen/region_coder.h"

#include "codecs/common/index.h"

namespace codecs::screen {
namespace {

constexpr int kAcross = 0;
constexpr int kDown = 1;
constexpr int kNoCut = 2;

constexpr int kOneValue = 0;
constexpr int kManyValues = 1;

constexpr int kNearPivots = 2;  // have symbols of their own

void CodePixels(PixelCoder& coder, ArithmeticCoder& out, PlaneView plane, const Rect& region) {
    coder.CodeDirect(out, plane.At(region.x, region.y));
    for (int y = 0; y < region.height; ++y)
        for (int x = y == 0 ? 1 : 0; x < region.width; ++x)
            coder.CodeInContext(out, plane, region, x, y);
}

}  // namespace

RegionCoder::RegionCoder()
    : split_(3, ModelLimit::High),
      edge_(2, ModelLimit::High),
      pivot_(3, ModelLimit::Low),
      intra_(2, ModelLimit::Adaptive),
      inter_(2, ModelLimit::Adaptive),
      colours_(8),
      masks_(3) {}

void RegionCoder::Reset() {
    split_.Reset();
    edge_.Reset();
    pivot_.Reset();
    intra_.Reset();
    inter_.Reset();
    colours_.Reset();
    masks_.Reset();
}

void RegionCoder::Code(std::vector<std::uint8_t>& out, bool key, const RegionTree& tree,
                       const Rect& slice, PlaneView indices, PlaneView masks) {
    Frame frame{ArithmeticCoder(out), key, tree, indices, masks};
    CodeNode(frame, 0, slice);
    frame.out.Finish();
}

void RegionCoder::CodeNode(Frame& frame, int number, const Rect& region) {
    const RegionNode& node = frame.tree[Index(number)];
    Rect first = region;
    Rect second = region;
    switch (node.kind) {
        case RegionKind::CutAcross:
            split_.Code(frame.out, kAcross);
            CodePivot(frame.out, node.pivot, region.height);
            first.height = node.pivot;
            second.y += node.pivot;
            second.height -= node.pivot;
            break;
        case RegionKind::CutDown:
            split_.Code(frame.out, kDown);
            CodePivot(frame.out, node.pivot, region.width);
            first.width = node.pivot;
            second.x += node.pivot;
            second.width -= node.pivot;
            break;
        case RegionKind::OneColour:
        case RegionKind::Pixels:
            split_.Code(frame.out, kNoCut);
            if (!frame.key) {
                inter_.Code(frame.out, kOneValue);
                masks_.CodeDirect(frame.out, kNew);
            }
            return CodeColours(frame, region, node.kind == RegionKind::OneColour);
        case RegionKind::KeptWhole:
        case RegionKind::MovedWhole:
            split_.Code(frame.out, kNoCut);
            inter_.Code(frame.out, kOneValue);
            return masks_.CodeDirect(frame.out,
                                     node.kind == RegionKind::KeptWhole ? kKept : kMoved);
        case RegionKind::MixedPixels:
            split_.Code(frame.out, kNoCut);
            return CodeMixed(frame, region);
    }
    CodeNode(frame, node.first, first);
    CodeNode(frame, node.second, second);
}

void RegionCoder::CodePivot(ArithmeticCoder& out, int pivot, int length) {
    const int more = (length + 1) / 2 - kNearPivots;
    const bool from_start = pivot <= kNearPivots || (more > 0 && pivot <= more + kNearPivots);
    const int distance = from_start ? pivot : length - pivot;
    edge_.Code(out, from_start ? 0 : 1);
    if (distance <= kNearPivots) return pivot_.Code(out, distance - 1);
    pivot_.Code(out, kNearPivots);
    out.Number(distance - kNearPivots - 1, more);
}

void RegionCoder::CodeColours(Frame& frame, const Rect& region, bool one) {
    intra_.Code(frame.out, one ? kOneValue : kManyValues);
    if (one)
        colours_.CodeDirect(frame.out, frame.indices.At(region.x, region.y));
    else
        CodePixels(colours_, frame.out, frame.indices, region);
}

void RegionCoder::CodeMixed(Frame& frame, const Rect& region) {
    inter_.Code(frame.out, kManyValues);
    CodePixels(masks_, frame.out, frame.masks, region);
    for (int y = 0; y < region.height; ++y) {
        const std::uint8_t* const masks = frame.masks.Row(region.y + y) + region.x;
        for (int x = 0; x < region.width; ++x) {
            if (masks[x] != kNew) continue;
            if (x == 0 && y == 0)
                colours_.CodeDirect(frame.out, frame.indices.At(region.x, region.y));
            else
                colours_.CodeInContext(frame.out, frame.indices, region, x, y);
        }
    }
}

}  // namespace codecs::screen
