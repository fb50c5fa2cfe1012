#include "engine/prepare/peak_plan.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/plan/value_checks.h"
#include "platform/text.h"

namespace engine {

std::int32_t PeakFor(const char* medium, const char* option, std::int32_t average,
                     std::int32_t peak) {
    if (peak == 0) {
        const double higher = platform::RoundHalfToEven(1.5 * average);
        return static_cast<std::int32_t>(std::min<double>(higher, kNoUpperLimit));
    }
    if (peak >= average) return peak;
    RefuseArgument(
        fmt::format("The {} peak bit rate {} is below the average bit rate {}: raise {} "
                    "or lower the bit rate",
                    medium, peak, average, option));
}

}  // namespace engine
