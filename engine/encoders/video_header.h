// The part of a video stream's header that follows from the plan alone.
#pragma once

#include "engine/base/stream_header.h"
#include "engine/plan/encode_plan.h"

namespace engine {

StreamHeader VideoStreamHeader(const VideoPlan& plan);

}  // namespace engine
