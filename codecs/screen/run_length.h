// Palette indices as runs, in prefix codes made for the frame: quicker than regions, and larger.
#pragma once

#include "codecs/common/bit_writer.h"
#include "codecs/screen/plane_view.h"

namespace codecs::screen {

/// Appends whole bytes.
/// @param area   of a key frame all columns of a slice; of an inter frame what may have changed
/// @param masks  PixelMask of each pixel of an inter frame: kNew, or kKept
void CodeRuns(BitWriter& out, bool key, const Rect& area, PlaneView indices, PlaneView masks);

}  // namespace codecs::screen
