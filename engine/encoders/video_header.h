// The part of a video stream's header that follows from the plan alone.
#pragma once

#include "engine/outputs/packet_sink.h"
#include "engine/plan/encode_plan.h"

namespace engine {

StreamHeader VideoStreamHeader(const VideoPlan& plan);

/// The frame rate that rate control and header count with, in thousandths: never 0.
std::int32_t CodedFrameRate(const VideoPlan& plan);

}  // namespace engine
