// How the colours of frames are coded: what players assume, and what has to be done for it.
#pragma once

#include <string>

#include "engine/filters/frame_filter.h"

namespace engine {

/// The matrix that players take for a stream that does not say its own, by its size: none of the
/// formats that are written can say it. BT.709, or BT.601 of small pictures.
AVColorSpace AssumedMatrix(int width, int height);

/// libavfilter's name of a matrix that AssumedMatrix gives.
const char* MatrixName(AVColorSpace matrix);

/// Gives a frame of luma and chroma that does not say how its colours are coded what its size and
/// its transfer let expect.
void CompleteColours(AVFrame& frame);

/// Whether the frame's numbers mean in this matrix, in limited range, what they mean in their own.
bool HasColoursOf(const FrameShape& shape, AVColorSpace matrix);

/// Filters that bring a wide gamut to that of BT.709, and a dynamic range that is high to the usual
/// one, with a ',' behind them; "" where there is nothing to do.
std::string GamutChain(const FrameShape& shape);

}  // namespace engine
