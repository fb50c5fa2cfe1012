// Speed against quality in the terms of libavcodec's encoders.
#pragma once

#include <cstdint>

#include "engine/base/av/av_ptr.h"

namespace engine {

/// @param performance  0 fastest to 100 best
void ApplyPreset(AVCodecContext& codec, std::int32_t performance);

}  // namespace engine
