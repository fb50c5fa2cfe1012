// Numbers of a container as times.
#pragma once

#include <cstdint>
#include <limits>

#include "engine/base/av/av_ptr.h"
#include "engine/sources/files/source_times.h"

namespace engine {

/// What lies further from 0 than any film is cut. The time must not be AV_NOPTS_VALUE.
inline Ticks TicksOf(std::int64_t time, AVRational base) {
    const std::int64_t ticks = av_rescale_q(time, base, kTicksBase);
    // What does not fit comes back as the least number of all.
    if (ticks == std::numeric_limits<std::int64_t>::min())
        return BoundedTime({time < 0 ? ticks : std::numeric_limits<std::int64_t>::max()});
    return BoundedTime({ticks});
}

}  // namespace engine
