#include "codecs/wmv9/overlap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBias = 128;

// Four samples across an edge, `step` apart; `line` counts along the edge.
void Smooth(std::int16_t* first, std::ptrdiff_t step, int line) {
    const int a = first[0];
    const int b = first[step];
    const int c = first[2 * step];
    const int d = first[3 * step];
    const int outer = a - d;
    const int all = a - d + b - c;
    const int r1 = (line & 1) == 0 ? 4 : 3;
    const int r2 = 7 - r1;
    const auto set = [&](std::ptrdiff_t place, int value) {
        first[place * step] = static_cast<std::int16_t>(value >> 3);
    };
    set(0, 8 * a - outer + r1);
    set(1, 8 * b - all + r2);
    set(2, 8 * c + all + r1);
    set(3, 8 * d + outer + r2);
}

void Unsmooth(std::uint8_t* first, std::ptrdiff_t step) {
    const double a = first[0];
    const double b = first[step];
    const double c = first[2 * step];
    const double d = first[3 * step];
    const double u = 4 * (a - d) / 3;
    const double w = 4 * (b - c) / 3 + 4 * (a - d) / 9;
    const auto set = [&](std::ptrdiff_t place, double value) {
        first[place * step] = static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
    };
    set(0, (a + d + u) / 2);
    set(1, (b + c + w) / 2);
    set(2, (b + c - w) / 2);
    set(3, (a + d - u) / 2);
}

}  // namespace

Overlap::Overlap(int width, int height) {
    for (int i = 0; i < 3; ++i) {
        Surface& plane = planes_[i];
        plane.width = i == 0 ? 2 * width : width;
        plane.height = i == 0 ? 2 * height : height;
        plane.values.resize(Index(plane.width) * Index(plane.height) * 64);
    }
}

void Overlap::Take(int x, int y, const Blocks& residual) {
    for (int n = 0; n < kBlocks; ++n) {
        const BlockPlace& place = kBlockPlaces[Index(n)];
        const int unit = place.plane == 0 ? 16 : 8;
        for (int row = 0; row < 8; ++row)
            std::copy_n(&residual[n][Index(8 * row)], 8,
                        planes_[place.plane].At(unit * x + place.x, unit * y + place.y + row));
    }
}

bool Overlap::IsIntra(const Picture& picture, int plane, int x, int y) const {
    return plane == 0 ? picture.grid.At(x >> 1, y >> 1).intra : picture.grid.At(x, y).intra;
}

void Overlap::SmoothRow(const Picture& picture, int y) {
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? 2 : 1;
        const int first = rows * y;
        const int end = first + rows;
        for (int row = first; row < end; ++row) {
            SmoothWithin(picture, plane, row);
            if (row > 0) SmoothAbove(picture, plane, row);
        }
        const int whole = y + 1 == picture.Height() ? end : end - 1;
        for (int row = std::max(first - 1, 0); row < whole; ++row) Put(picture, plane, row);
    }
}

void Overlap::SmoothWithin(const Picture& picture, int plane, int y) {
    Surface& surface = planes_[plane];
    for (int x = 1; x < surface.width; ++x)
        if (IsIntra(picture, plane, x - 1, y) && IsIntra(picture, plane, x, y))
            for (int line = 0; line < 8; ++line)
                Smooth(surface.At(8 * x - 2, 8 * y + line), 1, line);
}

void Overlap::SmoothAbove(const Picture& picture, int plane, int y) {
    Surface& surface = planes_[plane];
    const std::ptrdiff_t stride = std::ptrdiff_t{8} * surface.width;
    for (int x = 0; x < surface.width; ++x)
        if (IsIntra(picture, plane, x, y - 1) && IsIntra(picture, plane, x, y))
            for (int line = 0; line < 8; ++line)
                Smooth(surface.At(8 * x + line, 8 * y - 2), stride, line);
}

void Overlap::Put(const Picture& picture, int plane, int y) {
    Surface& surface = planes_[plane];
    const Plane& result = picture.result[plane];
    for (int x = 0; x < surface.width; ++x) {
        if (!IsIntra(picture, plane, x, y)) continue;
        Block block;
        for (int row = 0; row < 8; ++row)
            std::copy_n(surface.At(8 * x, 8 * y + row), 8, &block[Index(8 * row)]);
        picture.kernels.put(result.At(8 * x, 8 * y), result.stride, block.data(), kBias);
    }
}

void Overlap::Sharpen(Frame& source) {
    for (int i = 0; i < 3; ++i) {
        const Plane& plane = source[i];
        for (int y = 8; y < plane.height; y += 8)
            for (int x = 0; x < plane.width; ++x) Unsmooth(plane.At(x, y - 2), plane.stride);
        for (int y = 0; y < plane.height; ++y)
            for (int x = 8; x < plane.width; x += 8) Unsmooth(plane.At(x - 2, y), 1);
    }
}

}  // namespace codecs::wmv9
