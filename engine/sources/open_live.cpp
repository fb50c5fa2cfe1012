#include "engine/sources/open_live.h"

#include <fmt/format.h>

#include "platform/error.h"

namespace engine {

std::unique_ptr<LiveSource> OpenLiveSource(const CapturePlan& plan, FramePool&) {
    throw platform::Error(platform::kNotImplemented,
                          fmt::format("Recording from {} is not possible yet", plan.name));
}

}  // namespace engine
