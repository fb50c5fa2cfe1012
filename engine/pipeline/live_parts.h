// What a run asks of the world to record it; tests put their own in.
#pragma once

#include <functional>
#include <memory>

#include "engine/base/av/live_source.h"
#include "engine/plan/encode_plan.h"

namespace engine {

struct LiveParts {
    /// Throws platform::Error when the device cannot be opened. The pool outlives the source.
    std::function<std::unique_ptr<LiveSource>(const CapturePlan& plan, FramePool& frames)> open;
    /// The capture clock. Any thread.
    std::function<Ticks()> now = CaptureNow;
};

}  // namespace engine
