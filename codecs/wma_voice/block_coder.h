// Analysis through synthesis: how a block is best told by pitch, pulses and gains, or by noise.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "codecs/wma_voice/block_filter.h"

namespace codecs::wma_voice {

struct BlockChoice {
    int pitch = 0;  // index
    Pulses pulses;
    int gain = 0;
    float error = 0;  // squares, as it is heard
};

struct NoiseChoice {
    int place = 0;  // in kNoise
    int gain = 0;
    float error = 0;
};

/// A span of pitch indices, the last one not included.
struct PitchSpan {
    int first = 0;
    int end = 0;
};

/// One thread.
class BlockCoder {
  public:
    /// The format outlives it.
    explicit BlockCoder(const StreamFormat& format);

    /// @param at  where the block begins in the frame
    BlockChoice Choose(const BlockFilter& filter, const CoderState& state, int at,
                       const PulseType& type, PitchSpan pitches) const;
    /// The choice's excitation, and what follows from it.
    void Apply(const BlockFilter& filter, const BlockChoice& choice, const PulseType& type, int at,
               CoderState& state, std::span<float> decoded) const;

    /// @param gains   kSilenceGains or kNoiseGains
    /// @param places  of noise, from `first_place` on
    NoiseChoice ChooseNoise(const BlockFilter& filter, const CoderState& state,
                            std::span<const float> gains, int first_place, int places) const;
    void ApplyNoise(const BlockFilter& filter, const NoiseChoice& choice,
                    std::span<const float> gains, int at, CoderState& state,
                    std::span<float> decoded) const;

  private:
    int ChoosePitch(const BlockFilter& filter, const CoderState& state, int at, PitchSpan pitches,
                    std::span<const float> target, std::span<const float> correlation) const;
    std::vector<int> LikelyLags(const BlockFilter& filter, const float* now, PitchSpan pitches,
                                std::span<const float> correlation) const;

    const StreamFormat& format_;
    std::array<float, kGainCount> pulse_gains_;
};

}  // namespace codecs::wma_voice
