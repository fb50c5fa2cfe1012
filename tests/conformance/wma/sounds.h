// Generated sounds that try an encoder.
#pragma once

#include <cstddef>
#include <vector>

namespace wma_conformance {

using Sound = std::vector<std::vector<float>>;  // by channel, full scale +-1.0

/// Chords of a few harmonics that fade, with a little noise; all channels have it, one after
/// the other and with other mixtures.
Sound Chords(int sampling_rate, int channels, double seconds);
/// `quiet` seconds of silence, then bursts of noise.
Sound Bursts(int sampling_rate, int channels, double quiet, double seconds);
Sound WhiteNoise(int sampling_rate, int channels, double seconds);
/// A sine, nearly of full scale.
Sound LoudSine(int sampling_rate, int channels, double hz, double seconds);
/// 24 seconds of two channels: chords, loud noise from one second to another, then chords again.
Sound Uneven(int sampling_rate, std::size_t from = 10, std::size_t to = 14);
Sound Silence(int sampling_rate, int channels, double seconds);

/// The second channel as the first one times `gain`.
Sound WithSecond(Sound sound, float gain);

}  // namespace wma_conformance
