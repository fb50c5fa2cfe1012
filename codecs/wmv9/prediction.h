// Predicts samples from other pictures (SMPTE ST 421, 8.3.6.5 and 8.4.5).
#pragma once

#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/motion_vectors.h"

namespace codecs::wmv9 {

/// A block of luma at (left, top) that is moved by `vector`, which WindowOf holds.
void PredictLuma(const Picture& picture, const Frame& reference, MotionVector vector, int left,
                 int top, int size, std::uint8_t* out, std::ptrdiff_t stride);

/// A whole macroblock as its vectors say. Those of chroma must fit, see ChromaFits.
void Predict(const Picture& picture, int x, int y, const Macroblock& macroblock, Samples& out);

/// Whether all decoders take the same samples for the chroma of a macroblock with 4MV.
bool ChromaFits(const Picture& picture, int x, int y, const Macroblock& macroblock);

}  // namespace codecs::wmv9
