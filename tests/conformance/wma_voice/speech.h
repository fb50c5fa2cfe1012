// Generated sounds that try an encoder of speech.
#pragma once

#include <vector>

namespace voice_conformance {

using Sound = std::vector<float>;  // full scale +-1.0

/// Vowels of a gliding voice, hisses and pauses.
Sound Speech(int sampling_rate, double seconds);
Sound WhiteNoise(int sampling_rate, double seconds);
/// Of nearly full scale.
Sound Sine(int sampling_rate, double hz, double seconds);
/// Three notes at a time, each with harmonics, without a pause.
Sound Chords(int sampling_rate, double seconds);
Sound Silence(int sampling_rate, double seconds);
Sound Louder(Sound sound, float gain);
Sound Joined(Sound first, const Sound& second);

}  // namespace voice_conformance
