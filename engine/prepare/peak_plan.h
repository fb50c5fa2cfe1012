// The peak of a stream in the peak mode.
#pragma once

#include <cstdint>
#include <optional>

namespace engine {

/// What a stream's own names stand for in errors, and its buffer where none is asked for.
struct PeakNames {
    const char* medium;
    const char* rate;    // the property
    const char* buffer;  // the same
    const char* option;
    std::int32_t usual_buffer_ms;
};

struct Peak {
    std::int32_t rate_bps;
    std::int32_t buffer_ms;
};

/// A peak that was not given is half as much again as the average, a buffer of 0 the usual one.
/// Throws Error (invalid argument) for values out of range and for a peak below the average.
Peak PlanPeak(const PeakNames& names, std::int32_t average_bps,
              std::optional<std::int32_t> peak_rate_bps, std::int32_t peak_buffer_ms);

}  // namespace engine
