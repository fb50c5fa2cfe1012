// Opens the device or the screen that a plan records.
#pragma once

#include <memory>

#include "engine/plan/encode_plan.h"
#include "engine/sources/live_source.h"

namespace engine {

/// The pool must outlive the source. Throws platform::Error that names the device.
std::unique_ptr<LiveSource> OpenLiveSource(const CapturePlan& plan, FramePool& frames);

}  // namespace engine
