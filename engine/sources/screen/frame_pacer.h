// Which frames a desktop that sends them at its own times gives to a recording, and when.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "engine/base/ticks.h"
#include "engine/sources/screen/rest_repeats.h"

namespace engine {

/// No more frames than the rate has room for, the newest of those that came meanwhile; while
/// nothing comes, the last one again.
class FramePacer {
  public:
    explicit FramePacer(std::int32_t rate_thousandths)  // above 0
        : period_{Ticks::kPerSecond * 1000 / rate_thousandths} {}

    /// A frame came, which takes the place of one that waits.
    void Came(Ticks seen) {
        seen_ = waiting_ ? std::max(seen, seen_) : seen;
        waiting_ = true;
    }
    /// The frame that waits is there no more.
    void Withdraw() { waiting_ = false; }
    bool IsWaiting() const { return waiting_; }

    /// When the next frame is to be delivered; none before the first has come.
    std::optional<Ticks> Due() const {
        if (waiting_) return seen_ < allowed_ - early_ ? allowed_ : seen_;
        if (delivered_) return last_ + std::max(period_, repeats_.Interval());
        return std::nullopt;
    }

    /// The time of the frame that is delivered now, when it is due: the one that waits or, where
    /// there is none, the last one again. Times lie an interval of the rate apart at least; one
    /// that is early is told a little later than it was seen.
    Ticks Deliver(Ticks now) {
        last_ = std::max(waiting_ ? seen_ : now, allowed_);
        allowed_ = last_ + period_;
        if (waiting_)
            repeats_.Changed();
        else
            repeats_.Repeated();
        waiting_ = false;
        delivered_ = true;
        return last_;
    }

  private:
    Ticks period_;
    // What comes regularly but not exactly so is given all of it.
    Ticks early_{period_.count / 4};
    Ticks allowed_;  // when the rate has room again
    bool waiting_ = false;
    Ticks seen_;  // of the frame that waits
    bool delivered_ = false;
    Ticks last_;  // when a frame was delivered
    RestRepeats repeats_;
};

/// When a frame was seen, by the time that its sender has put on it, if any: nanoseconds of the
/// capture clock. One that cannot be is not believed.
inline Ticks TimeSeen(std::optional<std::int64_t> stamp_ns, Ticks now) {
    constexpr Ticks kOldest = Ticks::FromMilliseconds(1000);
    if (!stamp_ns) return now;
    const Ticks stamp{*stamp_ns / 100};
    return stamp > now || stamp < now - kOldest ? now : stamp;
}

}  // namespace engine
