// How decoded frames go from stage to stage.
#pragma once

#include <functional>

#include "engine/base/av/av_ptr.h"

namespace engine {

/// Takes a frame whose pts and pkt_duration count ticks of session time; the pts may be negative
/// (before the begin mark) and strictly increases. False = no more frames are wanted.
using FrameSink = std::function<bool(FrameHandle frame)>;

}  // namespace engine
