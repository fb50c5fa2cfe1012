#include "engine/prepare/peak_plan.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "platform/text.h"

namespace engine {

Peak PlanPeak(const PeakNames& names, std::int32_t average_bps,
              std::optional<std::int32_t> peak_rate_bps, std::int32_t peak_buffer_ms) {
    constexpr std::int32_t kMostBufferMs = 600'000;
    const std::int32_t buffer = InRange(names.buffer, peak_buffer_ms, 0, kMostBufferMs);
    Peak peak{0, buffer != 0 ? buffer : names.usual_buffer_ms};
    if (!peak_rate_bps) {
        const double higher = platform::RoundHalfToEven(1.5 * average_bps);
        peak.rate_bps = static_cast<std::int32_t>(std::min<double>(higher, kNoUpperLimit));
        return peak;
    }
    peak.rate_bps = InRange(names.rate, *peak_rate_bps, 1, kNoUpperLimit);
    if (peak.rate_bps < average_bps)
        RefuseArgument(
            fmt::format("The {} peak bit rate {} is below the average bit rate {}: raise {} "
                        "or lower the bit rate",
                        names.medium, peak.rate_bps, average_bps, names.option));
    return peak;
}

}  // namespace engine
