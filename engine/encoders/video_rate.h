// How a plan's rate options steer the coding of pictures.
#pragma once

#include "codecs/common/gop_rate_control.h"
#include "codecs/common/rate_settings.h"
#include "engine/base/ticks.h"
#include "engine/encoders/make_encoder.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// What the pictures of footage take before anything is known of them.
codecs::RateExperience UsualExperience(const VideoPlan& plan);

/// In quality mode the one quantiser that the quality stands for.
codecs::RateSettings VideoRate(const VideoPlan& plan, const EncoderPass& pass);

/// Whether pictures are coded one after the other, their rows side by side, and not GOPs of them:
/// what our own encoder does where GOPs are longer than that, and with what is recorded.
bool CodesRows(const VideoPlan& plan);

/// The asked key-frame distance; in as many equal parts as the frames' memory makes necessary,
/// unless rows are coded side by side.
Ticks GopLength(const VideoPlan& plan);

}  // namespace engine
