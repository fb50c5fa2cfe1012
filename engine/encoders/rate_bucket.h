// The buffer of a receiver at a constant rate: fills with coded bytes, drains with time.
#pragma once

#include <algorithm>
#include <cstdint>

#include "engine/ticks.h"

namespace engine {

class RateBucket {
  public:
    RateBucket() = default;
    RateBucket(std::int64_t rate_bps, std::int64_t buffer_ms)
        : rate_bps_(static_cast<double>(rate_bps)),
          capacity_bits_(rate_bps_ * static_cast<double>(buffer_ms) / 1000.0) {}

    /// Whether the buffer holds more than its size at `now`. Times do not decrease.
    bool Overflows(Ticks now) {
        level_bits_ = std::max(0.0, level_bits_ - (now - last_).Seconds() * rate_bps_);
        last_ = now;
        return level_bits_ > capacity_bits_;
    }
    void Add(std::int64_t bytes) { level_bits_ += static_cast<double>(bytes) * 8; }

  private:
    double rate_bps_ = 0;
    double capacity_bits_ = 0;
    double level_bits_ = 0;
    Ticks last_;
};

}  // namespace engine
