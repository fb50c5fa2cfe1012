// The samples of a macroblock of a rectangle, from the pixels that show.
#pragma once

#include <cstdint>

#include "codecs/screen/plane_view.h"
#include "codecs/wmv9/candidate.h"

namespace codecs::screen {

constexpr int kMacroblock = 16;  // pixels along each side

/// Samples in raster order of each block, full range, ITU-R BT.601; pixels that do not show have
/// the mean of those that do. A block of none has no samples.
/// @param area  at most kMacroblock by kMacroblock pixels
/// @param mask  the index of the pixels that show; below 0, all of them
/// @return  a bit for each block that shows anything, the first one's the highest of six
std::uint8_t LoadMacroblock(PixelView source, PlaneView indices, int mask, const Rect& area,
                            wmv9::Blocks& samples);

/// 24 bits of red, green and blue.
std::uint32_t ShownColour(int luma, int blue_difference, int red_difference);

}  // namespace codecs::screen
