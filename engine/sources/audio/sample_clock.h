// When the samples of an audio device were heard, out of observations that jitter.
#pragma once

#include <cstdint>

#include "engine/base/ticks.h"

namespace engine {

/// Follows a device's time and rate by a Kalman filter of two states, so that the times it gives
/// advance by the samples' true length and jitter of the observations hardly shows. One thread.
class SampleClock {
  public:
    /// @param sampling_rate  the device's nominal rate, above 0; the true one may differ by some
    ///                       hundred parts in a million
    explicit SampleClock(int sampling_rate) : sampling_rate_(sampling_rate) {}

    /// The sample at `position`, counted from the stream's start, was heard at `heard`. Positions
    /// never decrease. One observation that is far off is taken for a fault; a second shows that
    /// the time has really jumped, and is then taken as it is.
    void Observe(std::int64_t position, Ticks heard);

    /// Says that the time jumps: the next observation is taken as it is. What is known of the rate
    /// is kept.
    void Restart() { is_set_ = false; }

    /// False until there is an observation to go by.
    bool IsSet() const { return is_set_; }

    /// The position may be before or after those observed. Only when IsSet.
    Ticks TimeOf(std::int64_t position) const;

  private:
    double NominalSince(std::int64_t position) const;

    int sampling_rate_;
    bool is_set_ = false;
    int strays_ = 0;

    // The state: at `position_` it was `base_` and `time_` more, in seconds, and `drift_` is what
    // a nominal second really takes above or below one.
    std::int64_t position_ = 0;
    Ticks base_;
    double time_ = 0;
    double drift_ = 0;

    // Their covariances.
    double time_variance_ = 0;
    double covariance_ = 0;
    double drift_variance_ = kDriftVariance;

    static constexpr double kDriftVariance = 150e-6 * 150e-6;
};

}  // namespace engine
