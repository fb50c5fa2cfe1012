// Holds sound to what can be coded.
#pragma once

#include <cmath>

namespace codecs::wma {

/// What no sound exceeds, in full scales: far beyond what is mixed too loud, and far below what
/// transforms and energies have no room for.
constexpr float kLoudest = 16;

template <typename Sample>
constexpr bool IsInRange(Sample sample) {
    return sample >= -kLoudest && sample <= kLoudest;
}

/// What is no number, or infinite, is silence.
template <typename Sample>
Sample InRange(Sample sample) {
    if (IsInRange(sample)) return sample;
    return std::isfinite(sample) ? std::copysign(Sample{kLoudest}, sample) : Sample{0};
}

}  // namespace codecs::wma
