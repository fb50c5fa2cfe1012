// How soon a frame is given again while nothing changes.
#pragma once

#include <algorithm>

#include "engine/base/ticks.h"

namespace engine {

/// What has just come to rest is given again soon, for encoders make it sharper then; what rests
/// for longer each second, so that a recording is seen to go on.
class RestRepeats {
  public:
    void Changed() { repeats_ = 0; }
    void Repeated() { repeats_ = std::min(repeats_ + 1, kSoonRepeats); }
    /// After the last frame.
    Ticks Interval() const { return repeats_ < kSoonRepeats ? kSoon : kAlive; }

  private:
    static constexpr int kSoonRepeats = 2;
    static constexpr Ticks kSoon = Ticks::FromMilliseconds(280);
    static constexpr Ticks kAlive = Ticks::FromMilliseconds(1000);

    int repeats_ = 0;
};

}  // namespace engine
