// What a run asks of the world; tests put their own in.
#pragma once

#include <functional>
#include <memory>

#include "engine/base/av/live_source.h"
#include "engine/base/output_sink.h"
#include "engine/plan/encode_plan.h"

namespace engine {

struct RunParts {
    /// The output, which has not begun yet.
    std::function<std::unique_ptr<OutputSink>(const OutputPlan& plan, const OutputNotices& notices)>
        make_output;
    /// Throws platform::Error when the device cannot be opened. The pool outlives the source.
    std::function<std::unique_ptr<LiveSource>(const CapturePlan& plan, FramePool& frames)>
        open_live = {};
    /// The capture clock. Any thread.
    std::function<Ticks()> now = CaptureNow;
};

}  // namespace engine
