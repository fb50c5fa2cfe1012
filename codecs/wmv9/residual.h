// Codes what a prediction from other pictures has left of a macroblock (SMPTE ST 421, 8.3.6).
#pragma once

#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/estimates.h"
#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {

/// Sets of shapes: bit n stands for the n-th.
constexpr unsigned ShapeBit(Shape shape) { return 1U << static_cast<unsigned>(shape); }
constexpr unsigned kAllShapes = 15;

struct ResidualOptions {
    unsigned shapes = ShapeBit(Shape::Whole8x8);  // that may be used, unless the picture has one
    bool rd = false;                              // levels by bits and error
    /// Smaller transforms are tried where a block takes this many bits.
    int try_from_bits = 0;
    /// What costs as much or more, error + lambda * bits, is given up.
    std::int64_t limit = kNoLimit;
};

/// The macroblock's vectors and quantiser are set, and the samples are what they predict; this sets
/// what is coded of the residual, the samples, the error, and adds the bits of pattern, types and
/// levels. Returns false, with nothing of that done, where it is given up.
bool CodeResidual(const Picture& picture, const Estimates& estimates, const Quantiser& quantiser,
                  const ResidualOptions& options, int x, int y, Candidate& candidate);

/// Whether what `prediction` leaves of the macroblock has levels in 8x8 transforms.
bool HasLevels(const Picture& picture, const Quantiser& quantiser, int x, int y,
               const Samples& prediction);

/// The same as CodeResidual with nothing of it coded.
void LeaveResidual(const Picture& picture, int x, int y, Candidate& candidate);

}  // namespace codecs::wmv9
