// Smooths the edges where intra blocks meet at coarse quantisers (SMPTE ST 421, 8.5).
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/picture.h"

namespace codecs::wmv9 {

/// Holds what the transforms of a picture's intra blocks gave, before it is clipped.
class Overlap {
  public:
    /// In macroblocks.
    Overlap(int width, int height);

    void Take(int x, int y, const Blocks& residual);
    /// Smooths a row of macroblocks once all of it is taken, and writes the intra blocks that this
    /// completes to the picture's result: the last blocks of a row are smoothed with the row below.
    /// To be called for each row, from the top.
    void SmoothRow(const Picture& picture, int y);

    /// Sharpens the edges of blocks of a source, so that smoothing gives back what was there.
    static void Sharpen(Frame& source);

  private:
    struct Surface {
        int width = 0;  // blocks
        int height = 0;
        std::vector<std::int16_t> values;
        std::int16_t* At(int x, int y) {
            return values.data() + Index(y) * 8 * Index(width) + Index(x);
        }
    };
    bool IsIntra(const Picture& picture, int plane, int x, int y) const;
    // Rows of blocks of a plane.
    void SmoothWithin(const Picture& picture, int plane, int y);
    void SmoothAbove(const Picture& picture, int plane, int y);
    void Put(const Picture& picture, int plane, int y);

    Surface planes_[3];
};

}  // namespace codecs::wmv9
