// What is done to every pixel of a frame, in vectors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs::screen {

/// Pixels along each side of a cell, the smallest area that is told to have changed.
constexpr int kCell = 8;

/// Of a row of cells: `changed[n]` becomes 1 where cell n differs in any pixel's lower 24 bits,
/// else 0. Strides in pixels; `rows` is 1 to 8. `changed` has room for (width + 7) / 8.
/// Any thread; cannot fail.
void CompareCells(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                  std::ptrdiff_t b_stride, int width, int rows, std::uint8_t* changed);

/// Of pixels in which two rectangles differ.
struct PixelChanges {
    std::int64_t all = 0;
    std::int64_t slight = 0;  // each channel by no more than what was asked for
};
/// Strides in pixels; `slight` is 0 to 255. Any thread; cannot fail.
PixelChanges CountChanges(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                          std::ptrdiff_t b_stride, int width, int rows, int slight);

/// 16x16 pixels as full-range BT.601 samples in 4:2:0: four blocks of luma, one of blue and one of
/// red difference, 64 samples each in rows of 8. Stride in pixels. Any thread; cannot fail.
void ConvertMacroblock(const std::uint32_t* pixels, std::ptrdiff_t stride, std::int16_t* samples);

}  // namespace codecs::screen
