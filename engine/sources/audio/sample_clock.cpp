#include "engine/sources/audio/sample_clock.h"

#include <cmath>

namespace engine {
namespace {

// Seconds, squared: what an observation of a busy machine is off by.
constexpr double kJitterVariance = 5e-3 * 5e-3;
// By how much the variance of the drift grows in a second. Clocks warm up, and the system's own is
// steered towards the time of the network.
constexpr double kWander = 1e-11;

constexpr double kJump = 0.1;      // seconds
constexpr int kStraysOfAJump = 2;  // in a row

}  // namespace

double SampleClock::NominalSince(std::int64_t position) const {
    return static_cast<double>(position - position_) / sampling_rate_;
}

void SampleClock::Observe(std::int64_t position, Ticks heard) {
    const double elapsed = NominalSince(position);
    const double predicted = time_ + elapsed * (1 + drift_);
    const double error = (heard - base_).Seconds() - predicted;
    const bool strays = is_set_ && std::abs(error) > kJump;
    strays_ = strays ? strays_ + 1 : 0;
    if (strays && strays_ < kStraysOfAJump) return;

    position_ = position;
    if (!is_set_ || strays) {
        is_set_ = true;
        strays_ = 0;
        base_ = heard;
        time_ = 0;
        time_variance_ = kJitterVariance;
        covariance_ = 0;
        return;
    }

    time_variance_ += elapsed * (2 * covariance_ + elapsed * drift_variance_);
    covariance_ += elapsed * drift_variance_;
    drift_variance_ += elapsed * kWander;

    const double time_gain = time_variance_ / (time_variance_ + kJitterVariance);
    const double drift_gain = covariance_ / (time_variance_ + kJitterVariance);
    time_ = predicted + time_gain * error;
    drift_ += drift_gain * error;
    drift_variance_ -= drift_gain * covariance_;
    covariance_ -= time_gain * covariance_;
    time_variance_ -= time_gain * time_variance_;
}

Ticks SampleClock::TimeOf(std::int64_t position) const {
    const double seconds = time_ + NominalSince(position) * (1 + drift_);
    return base_ + Ticks{std::llround(seconds * Ticks::kPerSecond)};
}

}  // namespace engine
