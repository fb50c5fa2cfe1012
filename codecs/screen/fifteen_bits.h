// Pictures of 15 bits a pixel, every one exact, as runs.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/screen/plane_view.h"

namespace codecs::screen {

/// Appends the pixels of `area`: of a key frame the whole picture.
/// @param pixels  0RRRRRGG GGGBBBBB, rows of the picture's width
/// @param before  the frame before; empty for a key frame
void CodeFifteenBits(std::vector<std::uint8_t>& out, const Rect& area, int width,
                     std::span<const std::uint16_t> pixels, std::span<const std::uint16_t> before);

}  // namespace codecs::screen
