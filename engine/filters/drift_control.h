// How much faster or slower audio is played so that a device's clock keeps up with the session's.
#pragma once

#include <algorithm>

namespace engine {

/// A proportional and integral control with critical damping: a clock that goes wrong steadily is
/// followed without a lasting error, and jitter of single timestamps is smoothed. Speeds stay below
/// what is heard as a change of pitch.
class DriftControl {
  public:
    static constexpr double kMostCorrection = 0.004;  // of the speed

    /// @param late_s     by how much the audio comes later than its place in the session: seconds,
    ///                   below 0 = earlier
    /// @param elapsed_s  seconds since the last call
    /// The part by which the audio is to be lengthened, below 0 = shortened.
    double Update(double late_s, double elapsed_s) {
        const double lasting = lasting_ + kRate * kRate * late_s * elapsed_s;
        const double correction = 2 * kRate * late_s + lasting;
        // At its limit the control does not store up what it cannot do.
        if (correction > -kMostCorrection && correction < kMostCorrection) lasting_ = lasting;
        return std::clamp(correction, -kMostCorrection, kMostCorrection);
    }

  private:
    static constexpr double kRate =
        0.1;  // of a second: an error is gone after some tens of seconds

    double lasting_ = 0;
};

}  // namespace engine
