// A decoder's half: from indices to excitation, and from that to sound. An encoder that decodes
// what it writes knows what the next frame is predicted from.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "codecs/wma_voice/excitation_tables.h"
#include "codecs/wma_voice/line_spectrum.h"

namespace codecs::wma_voice {

constexpr int kExcitationPast = kMostLag + 8;
constexpr int kMostPulseGains = 6;

/// What a decoder keeps from frame to frame.
struct DecoderState {
    /// What was before the frame, then the frame's own.
    std::array<float, kExcitationPast + kFrameSamples> excitation{};
    std::array<float, kMostOrder> output{};  // the last
    std::array<float, kMostPulseGains> pulse_gain_logs{};

    float* Frame() { return excitation.data() + kExcitationPast; }
    const float* Frame() const { return excitation.data() + kExcitationPast; }
    /// Makes place for the next frame.
    void NextFrame();
};

/// Fills `samples` values with what was a lag ago.
/// @param excitation  a block's first sample, behind kExcitationPast others
void RepeatPitch(float* excitation, int samples, int quarters);

/// The gain of pulses without the table's part, as a logarithm.
float PredictedGainLog(const DecoderState& state);
/// After a block of pulses. @param blocks  of its frame
void NotePulseGain(DecoderState& state, int gain_index, int blocks);
/// After a frame of noise.
void ForgetPulseGains(DecoderState& state);

/// Where in kNoise the noise of a silent frame begins.
/// @param frame  its number in the stream
int SilentNoisePlace(std::int64_t frame);

/// A prediction from kMostOrder values, the oldest first.
using Weights = std::array<float, kMostOrder>;
Weights OldestFirst(const Prediction& prediction);

/// Adds what is predicted to each value of an excitation, in place.
/// @param values  behind kMostOrder that came before
void Synthesise(const Weights& weights, std::span<float> values);

/// That of a frame's block.
Prediction BlockPrediction(const LineSpectrum& before, const LineSpectrum& spectrum, int order,
                           int block, int blocks);

}  // namespace codecs::wma_voice
