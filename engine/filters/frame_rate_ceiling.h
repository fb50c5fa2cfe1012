// Drops the frames above a frame rate, evenly by time; what is kept keeps its time.
#pragma once

#include <cstdint>

#include "engine/base/ticks.h"

namespace engine {

class FrameRateCeiling {
  public:
    /// @param rate_thousandths  0 = no ceiling
    explicit FrameRateCeiling(std::int32_t rate_thousandths) {
        if (rate_thousandths > 0)
            interval_ = {
                static_cast<std::int64_t>(Ticks::kPerSecond * 1000.0 / kSlack / rate_thousandths)};
    }

    Ticks Interval() const { return interval_; }

    /// Whether the frame is kept. Times increase.
    bool Keep(Ticks time) {
        // A quarter of an interval of jitter is none: timestamps of a container that counts
        // milliseconds differ by one.
        const Ticks early{interval_.count / 4};
        if (started_ && time + early < due_) return false;
        due_ = started_ ? due_ + interval_ : time + interval_;
        if (due_ <= time) due_ = time + interval_;
        started_ = true;
        return true;
    }

  private:
    // 29.97 thousandths-rounded and 30000/1001 are the same rate.
    static constexpr double kSlack = 1.0002;

    Ticks interval_;
    Ticks due_;
    bool started_ = false;
};

}  // namespace engine
