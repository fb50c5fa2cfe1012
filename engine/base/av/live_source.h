// What delivers frames or audio by itself, at its own pace: a screen, a camera, an audio device.
#pragma once

#include <chrono>
#include <cstdint>

#include "engine/base/av/av_ptr.h"
#include "engine/base/ticks.h"

namespace engine {

/// Now, on the clock that all captures are timed by: the machine's steady one (CLOCK_MONOTONIC).
inline Ticks CaptureNow() {
    using TickCount = std::chrono::duration<std::int64_t, std::ratio<1, Ticks::kPerSecond>>;
    return {
        std::chrono::duration_cast<TickCount>(std::chrono::steady_clock::now().time_since_epoch())
            .count()};
}

/// Opened by its maker, which throws platform::Error with the device named. Read belongs to one
/// thread.
class LiveSource {
  public:
    virtual ~LiveSource() = default;

    /// Waits for what comes next: a frame, or some samples (packed, `nb_samples` above 0). Its
    /// pts is when the frame was seen or the first sample was heard, on the capture clock; pts
    /// never decrease. What the frame refers to is its own and stays as it is for as long as it is
    /// held. Size and formats may change from frame to frame. False once woken.
    /// Throws platform::Error when the device fails or is gone; what came before is good.
    virtual bool Read(FrameHandle& frame) = 0;

    /// Ends a Read that waits, and every later one. Any thread.
    virtual void Wake() = 0;

    /// Frames that were due and could not be had in time, since the last call. Any thread.
    virtual std::int64_t TakeMissed() { return 0; }
};

}  // namespace engine
