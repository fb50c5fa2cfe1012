// The part of an audio stream's header that follows from the plan alone.
#pragma once

#include "engine/base/stream_header.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Block alignment and average bytes are the encoder's to fill in.
StreamHeader AudioStreamHeader(const AudioPlan& plan);

/// Time of a sample, rounded to a tick.
Ticks SampleTime(std::int64_t sample, int sampling_rate);

}  // namespace engine
