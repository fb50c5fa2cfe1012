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

}  // namespace codecs::screen
