#include "codecs/wmv9/kernels_plain.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "codecs/wmv9/eight_taps.h"
#include "codecs/wmv9/transform_bases.h"

namespace codecs::wmv9 {
namespace {

std::uint8_t Clip8(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

std::int16_t Clip16(int value) {
    return static_cast<std::int16_t>(std::clamp(value, -32768, 32767));
}

// ---- Differences

std::uint32_t Sad(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                  std::ptrdiff_t b_stride, int width, int height) {
    int sum = 0;
    for (int y = 0; y < height; ++y, a += a_stride, b += b_stride)
        for (int x = 0; x < width; ++x) sum += std::abs(a[x] - b[x]);
    return static_cast<std::uint32_t>(sum);
}

void SadOfFour(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* const b[4],
               std::ptrdiff_t b_stride, std::uint32_t sums[4]) {
    for (int i = 0; i < 4; ++i) sums[i] = Sad(a, a_stride, b[i], b_stride, 16, 16);
}

std::uint32_t Squared(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                      std::ptrdiff_t b_stride, int width, int height) {
    int sum = 0;
    for (int y = 0; y < height; ++y, a += a_stride, b += b_stride)
        for (int x = 0; x < width; ++x) sum += (a[x] - b[x]) * (a[x] - b[x]);
    return static_cast<std::uint32_t>(sum);
}

// Of four values that lie `step` apart.
void Hadamard4(int* values, std::ptrdiff_t step) {
    const int sum01 = values[0] + values[step];
    const int difference01 = values[0] - values[step];
    const int sum23 = values[2 * step] + values[3 * step];
    const int difference23 = values[2 * step] - values[3 * step];
    values[0] = sum01 + sum23;
    values[step] = difference01 + difference23;
    values[2 * step] = sum01 - sum23;
    values[3 * step] = difference01 - difference23;
}

std::uint32_t Hadamard(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                       std::ptrdiff_t b_stride, int width, int height) {
    int sum = 0;
    for (int top = 0; top < height; top += 4)
        for (int left = 0; left < width; left += 4) {
            int block[16];
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 4; ++x)
                    block[4 * y + x] =
                        a[(top + y) * a_stride + left + x] - b[(top + y) * b_stride + left + x];
            for (int i = 0; i < 16; i += 4) Hadamard4(block + i, 1);
            for (int i = 0; i < 4; ++i) Hadamard4(block + i, 4);
            for (const int value : block) sum += std::abs(value);
        }
    return static_cast<std::uint32_t>(sum / 2);
}

void Moments(const std::uint8_t* a, std::ptrdiff_t stride, std::uint32_t& sum,
             std::uint32_t& squares) {
    sum = 0;
    squares = 0;
    for (int y = 0; y < 16; ++y, a += stride)
        for (int x = 0; x < 16; ++x) {
            sum += a[x];
            squares += static_cast<std::uint32_t>(a[x] * a[x]);
        }
}

// ---- Prediction

void Copy(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
          std::ptrdiff_t stride, int width, int height) {
    for (int y = 0; y < height; ++y) std::copy_n(source + y * stride, width, out + y * out_stride);
}

// Of a cubic between the second and third of four values that lie `step` apart; not yet scaled.
template <typename Value>
int Cubic(const Value* at, std::ptrdiff_t step, int quarter) {
    const int before = at[-step];
    const int left = at[0];
    const int right = at[step];
    const int after = at[2 * step];
    if (quarter == 1) return 53 * left + 18 * right - 4 * before - 3 * after;
    if (quarter == 2) return 9 * (left + right) - before - after;
    return 18 * left + 53 * right - 3 * before - 4 * after;
}

void BicubicOneWay(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                   std::ptrdiff_t stride, int width, int height, std::ptrdiff_t step, int quarter,
                   int rounding) {
    const int shift = quarter == 2 ? 4 : 6;
    const int half = (1 << (shift - 1)) - rounding;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            out[y * out_stride + x] =
                Clip8((Cubic(source + y * stride + x, step, quarter) + half) >> shift);
}

void Halve(std::uint8_t* out, const std::uint8_t* upper, const std::uint8_t* lower, int count) {
    for (int i = 0; i < count; ++i, upper += 2, lower += 2)
        out[i] = static_cast<std::uint8_t>((upper[0] + upper[1] + lower[0] + lower[1] + 2) >> 2);
}

void Bicubic(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
             std::ptrdiff_t stride, int width, int height, int x, int y, int rounding) {
    if (x == 0 && y == 0) return Copy(out, out_stride, source, stride, width, height);
    if (y == 0)
        return BicubicOneWay(out, out_stride, source, stride, width, height, 1, x, rounding);
    if (x == 0)
        return BicubicOneWay(out, out_stride, source, stride, width, height, stride, y,
                             1 - rounding);
    const int shift = ((x == 2 ? 1 : 5) + (y == 2 ? 1 : 5)) >> 1;
    const int half = (1 << (shift - 1)) + rounding - 1;
    for (int row = 0; row < height; ++row, source += stride, out += out_stride) {
        int between[19] = {};
        for (int column = 0; column < width + 3; ++column)
            between[column] = (Cubic(source + column - 1, stride, y) + half) >> shift;
        for (int column = 0; column < width; ++column)
            out[column] = Clip8((Cubic(between + column + 1, 1, x) + 64 - rounding) >> 7);
    }
}

// Weights in eighths; a neighbour of no weight is not read.
void Weighted(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
              std::ptrdiff_t stride, int width, int height, int x, int y, int half) {
    const std::ptrdiff_t right = x != 0 ? 1 : 0;
    const std::ptrdiff_t down = y != 0 ? stride : 0;
    for (int row = 0; row < height; ++row, source += stride, out += out_stride)
        for (int column = 0; column < width; ++column) {
            const std::uint8_t* at = source + column;
            const int upper = (8 - x) * at[0] + x * at[right];
            const int lower = (8 - x) * at[down] + x * at[down + right];
            out[column] = static_cast<std::uint8_t>(((8 - y) * upper + y * lower + half) >> 6);
        }
}

void Bilinear(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
              std::ptrdiff_t stride, int width, int height, int x, int y, int rounding) {
    const int part = x != 0 && y != 0 ? 16 : 32;  // of 64: where the rounding takes one sum off
    Weighted(out, out_stride, source, stride, width, height, 2 * x, 2 * y, 32 - part * rounding);
}

void Chroma(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
            std::ptrdiff_t stride, int x, int y, int rounding) {
    Weighted(out, out_stride, source, stride, 8, 8, 2 * x, 2 * y, 32 - 4 * rounding);
}

void Average(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* a,
             std::ptrdiff_t a_stride, const std::uint8_t* b, std::ptrdiff_t b_stride, int width,
             int height) {
    for (int y = 0; y < height; ++y, a += a_stride, b += b_stride, out += out_stride)
        for (int x = 0; x < width; ++x) out[x] = static_cast<std::uint8_t>((a[x] + b[x] + 1) >> 1);
}

template <typename Value>
int EightTap(const Value* at, std::ptrdiff_t step, int quarter) {
    int sum = 32;
    for (int i = 0; i < 8; ++i) sum += kEightTaps[quarter][i] * at[(i - 3) * step];
    return sum >> 6;
}

void EightTapBlock(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                   std::ptrdiff_t stride, int x, int y) {
    int between[23 * 16];
    for (int row = 0; row < 23; ++row)
        for (int column = 0; column < 16; ++column)
            between[16 * row + column] = EightTap(source + (row - 3) * stride + column, 1, x);
    for (int row = 0; row < 16; ++row)
        for (int column = 0; column < 16; ++column)
            out[row * out_stride + column] =
                Clip8(EightTap(&between[16 * (row + 3) + column], 16, y));
}

// ---- Temporal filter

void Blend(std::uint8_t* samples, std::ptrdiff_t stride, const std::uint8_t* others,
           std::ptrdiff_t other_size, const std::int16_t* strengths, int count, int reach,
           int size) {
    for (int y = 0; y < size; ++y, samples += stride)
        for (int x = 0; x < size; ++x) {
            int moved = 0;
            int weights = 128;
            for (int i = 0; i < count; ++i) {
                const int difference =
                    others[i * other_size + std::ptrdiff_t{size} * y + x] - samples[x];
                const int part = std::min((128 * std::abs(difference) * reach) >> 16, 128);
                const int root = 2 * std::max(16383 - part * part, 0);
                const int weight = (((root * root) >> 16) * strengths[i]) >> 16;
                moved += weight * difference;
                weights += weight;
            }
            const float change = static_cast<float>(moved) / static_cast<float>(weights);
            samples[x] = static_cast<std::uint8_t>(samples[x] + std::lrint(change));
        }
}

// ---- Transforms

BlockDifference Subtract(std::int16_t* out, const std::uint8_t* a, std::ptrdiff_t a_stride,
                         const std::uint8_t* b, std::ptrdiff_t b_stride) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            *out++ = static_cast<std::int16_t>(a[y * a_stride + x] - b[y * b_stride + x]);
    return {Sad(a, a_stride, b, b_stride, 8, 8), Squared(a, a_stride, b, b_stride, 8, 8)};
}

bool IsNarrow(Shape shape) { return shape == Shape::Tall4x8 || shape == Shape::Small4x4; }
bool IsLow(Shape shape) { return shape == Shape::Wide8x4 || shape == Shape::Small4x4; }

// The value at `place` of the basis function `frequency`.
int Basis(bool of_four, int frequency, int place) {
    return of_four ? kBasis4[frequency][place] : kBasis8[frequency][place];
}

void Forward(Shape shape, std::int16_t* coefficients, const std::int16_t* residual) {
    const bool narrow = IsNarrow(shape);
    const bool low = IsLow(shape);
    const int width = narrow ? 4 : 8;
    const int height = low ? 4 : 8;
    const std::int16_t* scale = kForwardScale.wide_tall[narrow ? 1 : 0][low ? 1 : 0];
    int across[64];
    for (int at = 0; at < 64; ++at) {
        const int u = at % width;
        across[at] = 0;
        for (int x = 0; x < width; ++x) across[at] += Basis(narrow, u, x) * residual[at - u + x];
    }
    for (int at = 0; at < 64; ++at) {
        const int v = at / 8 % height;
        int sum = 64;
        for (int y = 0; y < height; ++y) sum += Basis(low, v, y) * across[at + 8 * (y - v)];
        const int scaled = Clip16(sum >> 7) * scale[at];
        coefficients[at] = static_cast<std::int16_t>((scaled + (1 << 14)) >> 15);
    }
}

void Inverse(Shape shape, std::int16_t* residual, const std::int16_t* coefficients) {
    const bool narrow = IsNarrow(shape);
    const bool low = IsLow(shape);
    const int width = narrow ? 4 : 8;
    const int height = low ? 4 : 8;
    int across[64];
    for (int at = 0; at < 64; ++at) {
        const int x = at % width;
        int sum = 4;
        for (int u = 0; u < width; ++u) sum += Basis(narrow, u, x) * coefficients[at - x + u];
        across[at] = Clip16(sum >> 3);
    }
    for (int at = 0; at < 64; ++at) {
        const int y = at / 8 % height;
        int sum = y >= 4 ? 65 : 64;
        for (int v = 0; v < height; ++v) sum += Basis(low, v, y) * across[at + 8 * (v - y)];
        residual[at] = Clip16(sum >> 7);
    }
}

void Add(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual) {
    for (int y = 0; y < 8; ++y, samples += stride)
        for (int x = 0; x < 8; ++x) samples[x] = Clip8(samples[x] + *residual++);
}

void Put(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual, int bias) {
    for (int y = 0; y < 8; ++y, samples += stride)
        for (int x = 0; x < 8; ++x) samples[x] = Clip8(*residual++ + bias);
}

// ---- Quantiser

std::uint32_t Quantise(std::int16_t* levels, const std::int16_t* coefficients,
                       std::uint32_t reciprocal, int rounding) {
    std::uint32_t sum = 0;
    for (int i = 0; i < 64; ++i) {
        const auto size = static_cast<std::uint32_t>(std::abs(coefficients[i]) + rounding);
        const std::uint32_t level = (size * reciprocal) >> 16;
        sum += level;
        const int with_sign = static_cast<int>(level) * (coefficients[i] < 0 ? -1 : 1);
        levels[i] = static_cast<std::int16_t>(with_sign);
    }
    return sum;
}

std::uint64_t Differing(const std::int16_t* a, const std::int16_t* b) {
    std::uint64_t places = 0;
    for (int i = 0; i < 64; ++i)
        if (a[i] != b[i]) places |= std::uint64_t{1} << i;
    return places;
}

void Restore(std::int16_t* coefficients, const std::int16_t* levels, int step, int extra) {
    for (int i = 0; i < 64; ++i) {
        const int sign = levels[i] > 0 ? 1 : levels[i] < 0 ? -1 : 0;
        coefficients[i] = static_cast<std::int16_t>(levels[i] * step + sign * extra);
    }
}

// ---- Loop filter

// Smooths one line across an edge; `right` is the first sample behind it, the line's samples lie
// `step` apart. False if the line is no seam of blocks.
bool FilterLine(std::uint8_t* right, std::ptrdiff_t step, int quantiser) {
    const auto bend = [](int a, int b, int c, int d) {
        return (2 * (a - d) - 5 * (b - c) + 4) >> 3;
    };
    const std::uint8_t* left = right - step;
    const int seam = bend(left[-step], left[0], right[0], right[step]);
    if (std::abs(seam) >= quantiser) return false;
    const int before = std::abs(bend(left[-3 * step], left[-2 * step], left[-step], left[0]));
    const int after = std::abs(bend(right[0], right[step], right[2 * step], right[3 * step]));
    const int smoother = std::min(before, after);
    if (smoother >= std::abs(seam)) return false;
    const int jump = left[0] - right[0];
    const int limit = std::abs(jump) >> 1;
    if (limit == 0) return false;
    if ((seam >= 0) != (jump < 0)) return true;
    const int move = std::min((5 * (std::abs(seam) - smoother)) >> 3, limit);
    const int change = jump < 0 ? move : -move;
    right[-step] = Clip8(right[-step] + change);
    right[0] = Clip8(right[0] - change);
    return true;
}

// `along` is the distance of two lines of an edge, `across` that of two samples of a line.
void FilterEdge(std::uint8_t* at, std::ptrdiff_t along, std::ptrdiff_t across,
                const std::uint8_t* segments, int count, int quantiser) {
    for (int i = 0; i < count; ++i, at += 4 * along) {
        if (segments[i] == 0) continue;
        if (!FilterLine(at + 2 * along, across, quantiser)) continue;
        for (const int line : {0, 1, 3}) FilterLine(at + line * along, across, quantiser);
    }
}

void FilterHorizontal(std::uint8_t* below, std::ptrdiff_t stride, const std::uint8_t* segments,
                      int count, int quantiser) {
    FilterEdge(below, 1, stride, segments, count, quantiser);
}

void FilterVertical(std::uint8_t* right, std::ptrdiff_t stride, const std::uint8_t* segments,
                    int count, int quantiser) {
    FilterEdge(right, stride, 1, segments, count, quantiser);
}

}  // namespace

Kernels PlainKernels() {
    return {.name = "plain",
            .sad = Sad,
            .sad_of_four = SadOfFour,
            .squared = Squared,
            .hadamard = Hadamard,
            .moments = Moments,
            .halve = Halve,
            .bicubic = Bicubic,
            .bilinear = Bilinear,
            .chroma = Chroma,
            .average = Average,
            .eight_tap = EightTapBlock,
            .blend = Blend,
            .subtract = Subtract,
            .forward = Forward,
            .inverse = Inverse,
            .add = Add,
            .put = Put,
            .quantise = Quantise,
            .differing = Differing,
            .restore = Restore,
            .filter_horizontal = FilterHorizontal,
            .filter_vertical = FilterVertical};
}

}  // namespace codecs::wmv9
