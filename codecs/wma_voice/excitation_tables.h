// What excitations are made of: noise, gains and the filter of pitches between samples.
#pragma once

#include <array>

namespace codecs::wma_voice {

constexpr int kNoiseLength = 1000;
constexpr int kSilenceGainCount = 256;
constexpr int kNoiseGainCount = 64;
constexpr int kGainCount = 128;

extern const std::array<float, kNoiseLength> kNoise;
extern const std::array<float, kSilenceGainCount> kSilenceGains;  // of a silent frame
extern const std::array<float, kNoiseGainCount> kNoiseGains;      // of a block of noise
// Of a block of pulses, one index for both.
extern const std::array<float, kGainCount> kPitchGains;
extern const std::array<float, kGainCount> kPulseGainLogs;  // beside what was predicted
/// Four phases a sample, eight samples to each side.
extern const std::array<float, 32> kPitchInterpolation;

}  // namespace codecs::wma_voice
