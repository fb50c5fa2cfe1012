// Opens the device or the screen that a plan records.
#pragma once

#include <memory>

#include "engine/base/av/live_source.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// The pool must outlive the source. Throws platform::Error that names the device.
std::unique_ptr<LiveSource> OpenLiveSource(const CapturePlan& plan, FramePool& frames);

}  // namespace engine
