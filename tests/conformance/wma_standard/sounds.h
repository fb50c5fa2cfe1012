// Generated sounds that try an encoder.
#pragma once

#include <vector>

namespace wma_conformance {

using Sound = std::vector<std::vector<float>>;  // by channel, full scale +-1.0

/// Chords of a few harmonics that fade, with a little noise; both channels have it, one of them
/// later and with another mixture.
Sound Chords(int sampling_rate, int channels, double seconds);
/// `quiet` seconds of silence, then bursts of noise.
Sound Bursts(int sampling_rate, int channels, double quiet, double seconds);
Sound WhiteNoise(int sampling_rate, int channels, double seconds);
/// A sine, nearly of full scale.
Sound LoudSine(int sampling_rate, int channels, double hz, double seconds);
Sound Silence(int sampling_rate, int channels, double seconds);

/// The second channel as the first one times `gain`.
Sound WithSecond(Sound sound, float gain);

}  // namespace wma_conformance
