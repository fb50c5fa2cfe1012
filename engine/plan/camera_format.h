// How a camera gives its frames, and what is asked of it.
#pragma once

#include <cmath>
#include <cstdint>

namespace engine {

/// Seconds from frame to frame; 0 = unknown.
struct CameraInterval {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 1;
    bool operator==(const CameraInterval&) const = default;
};

/// Frames in 1000 seconds; 0 = unknown.
inline std::int32_t RateOf(const CameraInterval& interval) {
    if (interval.numerator == 0) return 0;
    const double seconds = static_cast<double>(interval.numerator) / interval.denominator;
    return static_cast<std::int32_t>(std::lround(1000 / seconds));
}

struct CameraFormat {
    std::uint32_t pixels = 0;  // V4L2_PIX_FMT_*
    std::int32_t width = 0;
    std::int32_t height = 0;
    CameraInterval interval;
    bool operator==(const CameraFormat&) const = default;
};

/// What a recording is best made from.
struct CameraRequest {
    std::int32_t width = 0;  // 0 = as suits the other side; of both 0, a usual size
    std::int32_t height = 0;
    std::int32_t rate = 0;  // frames in 1000 seconds, above 0
    bool operator==(const CameraRequest&) const = default;
};

}  // namespace engine
