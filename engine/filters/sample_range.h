// Floating-point audio as files have it: samples that are no sound, held to a range.
#pragma once

#include "engine/base/av/av_ptr.h"

namespace engine {

/// Before anything is computed from them: one sample that is no number would spread over all that
/// filters and encoders remember. Frames of other formats are left as they are.
void HoldSamplesToRange(AVFrame& frame);

}  // namespace engine
