// The arithmetic on samples, in one set of functions for each instruction set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace codecs::wmv9 {

/// Shapes of a transform block, in the order of the format's two bits for a picture's type.
enum class Shape : std::uint8_t { Whole8x8, Wide8x4, Tall4x8, Small4x4 };

/// Of two blocks of samples.
struct BlockDifference {
    std::uint32_t absolute = 0;  // sums
    std::uint32_t squared = 0;
};

/// Samples are eight bits; a stride is the distance of two rows in samples. Blocks of coefficients,
/// levels and residuals are 64 values in rows of 8, aligned to 32 bytes; those of smaller shapes
/// stand in their own corner of the block. Every set gives the same results; nothing reads or
/// writes beyond the block but where it says so. No function fails; all may be called from any
/// thread.
struct Kernels {
    const char* name;

    // Differences of two blocks. `width` is 8 or 16, `height` 8 or 16.
    std::uint32_t (*sad)(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                         std::ptrdiff_t b_stride, int width, int height);
    /// Of one 16x16 block and four others of one stride, at once.
    void (*sad_of_four)(const std::uint8_t* a, std::ptrdiff_t a_stride,
                        const std::uint8_t* const b[4], std::ptrdiff_t b_stride,
                        std::uint32_t sums[4]);
    std::uint32_t (*squared)(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                             std::ptrdiff_t b_stride, int width, int height);
    /// Half the sum of the absolute 4x4 Hadamard transforms of the difference.
    std::uint32_t (*hadamard)(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                              std::ptrdiff_t b_stride, int width, int height);
    /// Sum, and sum of squares, of the samples of a 16x16 block.
    void (*moments)(const std::uint8_t* a, std::ptrdiff_t stride, std::uint32_t& sum,
                    std::uint32_t& squares);
    /// Means of each two samples of a row and the two below, rounded to the nearest, halves up.
    void (*halve)(std::uint8_t* out, const std::uint8_t* upper, const std::uint8_t* lower,
                  int count);

    // Prediction. `source` is the sample at the whole position; `x`, `y` are quarters 0..3.
    // Reads one row above and two below, one column left and up to 16 right of the block.
    void (*bicubic)(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                    std::ptrdiff_t stride, int width, int height, int x, int y, int rounding);
    /// `x`, `y` are 0 or 2.
    void (*bilinear)(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                     std::ptrdiff_t stride, int width, int height, int x, int y, int rounding);
    /// An 8x8 block of chroma.
    void (*chroma)(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                   std::ptrdiff_t stride, int x, int y, int rounding);
    /// The mean of two blocks, rounded up.
    void (*average)(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* a,
                    std::ptrdiff_t a_stride, const std::uint8_t* b, std::ptrdiff_t b_stride,
                    int width, int height);

    /// A 16x16 block by the filter of ITU-T H.265, 8.5.3.3.3, rounded after the columns of each
    /// row, too. Reads three rows above and four below, three columns left and four right of the
    /// block.
    void (*eight_tap)(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                      std::ptrdiff_t stride, int x, int y);

    // Temporal filter.
    /// Draws each sample of a square of `size` 8 or 16 towards those of `count` others, up to four,
    /// which stand in rows of that size and `other_size` apart: adds the sum of weight * difference
    /// over 128 and the sum of weights, to the nearest, halves to even. A weight is strength / 4 *
    /// (1 - (difference * reach / 65536)^2)^2, in fixed point, and 0 where that has a root below 0.
    /// Strengths are at most 640, reach from 512 to 32767.
    void (*blend)(std::uint8_t* samples, std::ptrdiff_t stride, const std::uint8_t* others,
                  std::ptrdiff_t other_size, const std::int16_t* strengths, int count, int reach,
                  int size);

    // Transforms.
    /// a - b of an 8x8 block, and how much that is.
    BlockDifference (*subtract)(std::int16_t* out, const std::uint8_t* a, std::ptrdiff_t a_stride,
                                const std::uint8_t* b, std::ptrdiff_t b_stride);
    /// The adjoint of the inverse, over the whole 8x8 block in transforms of this shape; in eighths
    /// of what the inverse takes. Within 1 of the exact value; residuals are within 340 of zero.
    void (*forward)(Shape shape, std::int16_t* coefficients, const std::int16_t* residual);
    /// Of the whole 8x8 block, all transforms of this shape. Clipped to sixteen bits only, after
    /// the rows and at the end.
    void (*inverse)(Shape shape, std::int16_t* residual, const std::int16_t* coefficients);
    /// Adds a residual to an 8x8 block of samples and clips.
    void (*add)(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual);
    /// Writes residual + bias, clipped, to an 8x8 block.
    void (*put)(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual,
                int bias);

    // Quantiser.
    /// levels = sign * (((|coefficient| + rounding) * reciprocal) >> 16), of coefficients in
    /// eighths; |coefficient| + rounding is below 32768, reciprocal below 65536. Returns the sum of
    /// the absolute levels.
    std::uint32_t (*quantise)(std::int16_t* levels, const std::int16_t* coefficients,
                              std::uint32_t reciprocal, int rounding);
    /// The places of a block at which two sets of levels differ: bit 8 * row + column.
    std::uint64_t (*differing)(const std::int16_t* a, const std::int16_t* b);
    /// coefficients = level * step + sign(level) * extra.
    void (*restore)(std::int16_t* coefficients, const std::int16_t* levels, int step, int extra);

    // Loop filter (SMPTE ST 421, 8.6). Segments are four samples of an edge; those with a zero in
    // `segments` stay as they are, but may be written anew.
    /// `below` is the first sample of the row under a horizontal edge.
    void (*filter_horizontal)(std::uint8_t* below, std::ptrdiff_t stride,
                              const std::uint8_t* segments, int count, int quantiser);
    /// `right` is the top sample of the column right of a vertical edge; segments go down.
    void (*filter_vertical)(std::uint8_t* right, std::ptrdiff_t stride,
                            const std::uint8_t* segments, int count, int quantiser);
};

/// The fastest set of this machine.
const Kernels& BestKernels();

/// All that this machine can run; the first one is plain C++.
std::span<const Kernels> AllKernels();

}  // namespace codecs::wmv9
