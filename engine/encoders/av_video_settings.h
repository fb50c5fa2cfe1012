// A video plan in the terms of libavcodec's encoders.
#pragma once

#include <string>

#include "engine/encoders/make_encoder.h"
#include "engine/pipeline/av_ptr.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Rate control. Quality mode: a fixed quantiser of 2 (quality 100) to 31 (0). Constant and peak
/// mode: the receiver's buffer bounds every stretch. Bit-rate mode: the average alone. Sharpness
/// above 75 lowers the coarsest quantiser, 31 down to 12 at 100: pictures stay sharp, and frames
/// are left out when the rate then cannot be held; up to 75 no frame needs to be.
/// Rates above 0 in codec.rc_max_rate are what the receiver's buffer drains by.
void SetRateControl(AVCodecContext& codec, const VideoPlan& plan);

/// The coarsest quantiser that a sharpness allows.
int CoarsestQuantiser(std::int32_t sharpness);

/// Speed against quality: 0 fastest to 100 best.
void SetEffort(AVCodecContext& codec, std::int32_t performance);

/// The quantiser of quality mode, in libavcodec's lambda units.
int QualityLambda(std::int32_t quality);

}  // namespace engine
