#include "codecs/wmv9/loop_filter.h"

#include <algorithm>

#include "codecs/common/index.h"
#include "codecs/wmv9/motion_vectors.h"
#include "codecs/wmv9/transform_types.h"

namespace codecs::wmv9 {
namespace {

// Quarters of a block: top left 8, top right 4, bottom left 2, bottom right 1.
constexpr int kTopLeft = 8;
constexpr int kTopRight = 4;
constexpr int kBottomLeft = 2;
constexpr int kBottomRight = 1;

bool Any(int quarters, int of) { return (quarters & of) != 0; }

// Without edges inside.
bool IsPlain(const Macroblock& macroblock) {
    return !macroblock.intra && !macroblock.four_mv && macroblock.coded == 0;
}

}  // namespace

LoopFilter::LoopFilter(int width, int height)
    : width_(width), busy_(Index(width) * Index(height)), busy_rows_(Index(height)) {
    for (int i = 0; i < 3; ++i) {
        PlaneState& plane = planes_[i];
        plane.width = i == 0 ? 2 * width : width;
        plane.height = i == 0 ? 2 * height : height;
        plane.blocks.resize(Index(plane.width) * Index(plane.height));
    }
    segments_.resize(4 * busy_.size());
}

void LoopFilter::FilterRow(const Picture& picture, int y) {
    if (picture.header.kind == PictureKind::kP) {
        FindBusy(picture.grid, y);
        // Edges of a busy row have the row above on their other side.
        const bool busy = busy_rows_[Index(y)] != 0;
        if (busy && y > 0 && busy_rows_[Index(y - 1)] == 0) Gather(picture, y - 1);
        if (busy) Gather(picture, y);
    }
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? 2 : 1;
        const int first = rows * y;
        const int end = first + rows;
        for (int row = std::max(first, 1); row < end; ++row) FilterAbove(picture, plane, row);
        // Vertical edges come after the horizontal ones that bound their row.
        const int whole = y + 1 == picture.Height() ? end : end - 1;
        for (int row = std::max(first - 1, 0); row < whole; ++row)
            FilterWithin(picture, plane, row);
    }
}

void LoopFilter::LeaveRow(int y) { busy_rows_[Index(y)] = 0; }

void LoopFilter::FindBusy(const MacroblockGrid& grid, int y) {
    const auto alike = [&](const Macroblock& a, const Macroblock& b) {
        return IsPlain(b) && a.vectors[0] == b.vectors[0];
    };
    std::uint8_t any = 0;
    for (int x = 0; x < width_; ++x) {
        const Macroblock& macroblock = grid.At(x, y);
        const bool quiet = IsPlain(macroblock) &&
                           (x == 0 || alike(macroblock, grid.At(x - 1, y))) &&
                           (y == 0 || alike(macroblock, grid.At(x, y - 1)));
        any |= busy_[Index(y) * Index(width_) + Index(x)] = quiet ? 0 : 1;
    }
    busy_rows_[Index(y)] = any;
}

void LoopFilter::Gather(const Picture& picture, int y) {
    for (int x = 0; x < picture.Width(); ++x) {
        const Macroblock& macroblock = picture.grid.At(x, y);
        const MotionVector chroma =
            macroblock.intra ? MotionVector() : ChromaVector(CombinedVector(macroblock));
        if (IsPlain(macroblock)) {
            BlockState state;
            state.vector = macroblock.vectors[0];
            for (int n = 0; n < 4; ++n) planes_[0].At(2 * x + (n & 1), 2 * y + (n >> 1)) = state;
            state.vector = chroma;
            planes_[1].At(x, y) = planes_[2].At(x, y) = state;
            continue;
        }
        for (int n = 0; n < kBlocks; ++n) {
            const auto index = Index(n);
            BlockState state;
            state.intra = macroblock.intra;
            state.vector = n < 4 ? macroblock.vectors[index] : chroma;
            if (!macroblock.intra && macroblock.IsCoded(n)) {
                const Shape shape = macroblock.shapes[index];
                state.quarters =
                    static_cast<std::uint8_t>(CodedQuarters(shape, macroblock.parts[index]));
                state.rows = shape == Shape::Wide8x4 || shape == Shape::Small4x4;
                state.columns = shape == Shape::Tall4x8 || shape == Shape::Small4x4;
            }
            if (n < 4)
                planes_[0].At(2 * x + (n & 1), 2 * y + (n >> 1)) = state;
            else
                planes_[n - 3].At(x, y) = state;
        }
    }
}

std::span<std::uint8_t> LoopFilter::Segments(int plane, int y) {
    const auto place = 4 * Index(InMacroblocks(plane, y)) * Index(width_);
    return std::span(segments_).subspan(place, 2 * Index(planes_[plane].width));
}

bool LoopFilter::BelowEdge(const PlaneState& state, int y, std::span<std::uint8_t> segments) {
    std::uint8_t any = 0;
    for (int x = 0; x < state.width; ++x) {
        const BlockState& above = state.At(x, y - 1);
        const BlockState& below = state.At(x, y);
        const bool both = above.intra || below.intra || !(above.vector == below.vector);
        std::uint8_t* const segment = &segments[2 * Index(x)];
        segment[0] = both || Any(above.quarters, kBottomLeft) || Any(below.quarters, kTopLeft);
        segment[1] = both || Any(above.quarters, kBottomRight) || Any(below.quarters, kTopRight);
        any |= segment[0] | segment[1];
    }
    return any != 0;
}

bool LoopFilter::InsideRows(const PlaneState& state, int y, std::span<std::uint8_t> segments) {
    std::uint8_t any = 0;
    for (int x = 0; x < state.width; ++x) {
        const BlockState& block = state.At(x, y);
        std::uint8_t* const segment = &segments[2 * Index(x)];
        segment[0] = block.rows && Any(block.quarters, kTopLeft | kBottomLeft);
        segment[1] = block.rows && Any(block.quarters, kTopRight | kBottomRight);
        any |= segment[0] | segment[1];
    }
    return any != 0;
}

// The edge above a row of blocks. But for P pictures, all edges between blocks are filtered, and
// none inside.
void LoopFilter::FilterAbove(const Picture& picture, int plane, int y) {
    const PlaneState& state = planes_[plane];
    const std::span<std::uint8_t> segments = Segments(plane, y);
    if (picture.header.kind == PictureKind::kP) {
        if (!RowIsBusy(plane, y) || !BelowEdge(state, y, segments)) return;
    } else {
        std::fill(segments.begin(), segments.end(), std::uint8_t{1});
    }
    const Plane& samples = picture.result[plane];
    picture.kernels.filter_horizontal(samples.At(0, 8 * y), samples.stride, segments.data(),
                                      2 * state.width, picture.header.quantiser);
}

// All other edges of a row of blocks.
void LoopFilter::FilterWithin(const Picture& picture, int plane, int y) {
    const Plane& samples = picture.result[plane];
    const PlaneState& state = planes_[plane];
    const Kernels& kernels = picture.kernels;
    const int quantiser = picture.header.quantiser;
    if (picture.header.kind != PictureKind::kP) {
        constexpr std::uint8_t kAll[2] = {1, 1};
        for (int x = 1; x < state.width; ++x)
            kernels.filter_vertical(samples.At(8 * x, 8 * y), samples.stride, kAll, 2, quantiser);
        return;
    }
    if (!RowIsBusy(plane, y)) return;
    const std::span<std::uint8_t> inside = Segments(plane, y);
    if (InsideRows(state, y, inside))
        kernels.filter_horizontal(samples.At(0, 8 * y + 4), samples.stride, inside.data(),
                                  2 * state.width, quantiser);
    const std::uint8_t* const busy = &busy_[Index(InMacroblocks(plane, y)) * Index(width_)];
    for (int x = 1; x < state.width; ++x) {
        if (busy[InMacroblocks(plane, x)] == 0) continue;
        const BlockState& left = state.At(x - 1, y);
        const BlockState& right = state.At(x, y);
        const bool both = left.intra || right.intra || !(left.vector == right.vector);
        const std::uint8_t segments[2] = {
            both || Any(left.quarters, kTopRight) || Any(right.quarters, kTopLeft),
            both || Any(left.quarters, kBottomRight) || Any(right.quarters, kBottomLeft)};
        if ((segments[0] | segments[1]) != 0)
            kernels.filter_vertical(samples.At(8 * x, 8 * y), samples.stride, segments, 2,
                                    quantiser);
    }
    // An edge inside a block reads the samples of the edges on its both sides.
    for (int x = 0; x < state.width; ++x) {
        const BlockState& block = state.At(x, y);
        if (!block.columns) continue;
        const std::uint8_t segments[2] = {Any(block.quarters, kTopLeft | kTopRight),
                                          Any(block.quarters, kBottomLeft | kBottomRight)};
        kernels.filter_vertical(samples.At(8 * x + 4, 8 * y), samples.stride, segments, 2,
                                quantiser);
    }
}

}  // namespace codecs::wmv9
