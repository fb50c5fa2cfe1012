// How much later pictures depend on each macroblock of a picture.
#pragma once

#include <span>
#include <vector>

#include "codecs/wmv9/lookahead.h"

namespace codecs::wmv9 {

/// Follows the motion of the look-ahead from the last picture back to the one in hand: what a
/// block is predicted with carries the part of its cost that prediction saves, and all that in turn
/// depends on it.
class MacroblockTree {
  public:
    /// Of the picture, which `lookahead` has, always the same one: for each macroblock in raster
    /// order, what depends on it, itself counted, as a multiple of its own cost; 1 where no later
    /// picture refers to it. Until the next call.
    std::span<const float> Worth(const Lookahead& lookahead, int number);

  private:
    void Propagate(const Lookahead& lookahead, int number);

    // What later pictures carry to the blocks of each, from the last one back: those before stay as
    // they are until another one comes.
    std::vector<std::vector<float>> carried_;
    int end_ = 0;    // number after the last one
    int known_ = 0;  // of them
    std::vector<float> worth_;
};

}  // namespace codecs::wmv9
