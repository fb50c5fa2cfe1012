// Which pulses, beside what the pitch repeats, come nearest to a block.
#pragma once

#include <array>
#include <span>

#include "codecs/wma_voice/frame_type.h"

namespace codecs::wma_voice {

constexpr int kMostBlock = 80;  // samples

/// Of one track, by places in it.
struct TrackPulses {
    int first = 0;
    int second = -1;         // -1 = none
    bool first_plus = true;  // signs
    bool second_plus = true;
};
using Pulses = std::array<TrackPulses, kTracks>;

/// Adds unit pulses to a block.
void AddPulses(const Pulses& pulses, std::span<float> block);

/// What all searches of a block share: how pulses sound through its filter. Samples are in the
/// order of tracks, and within them of places.
struct PulseCorrelations {
    std::array<std::array<float, kMostBlock>, kMostBlock> products;

    /// @param response  the filter's to a pulse, as long as the block
    void Compute(std::span<const float> response);
    /// Of what is heard of the pulses of a block.
    float Power(const Pulses& pulses, int block_samples) const;
};

/// Spans are as long as the block, in the order of time.
/// @param target  correlation of what is aimed at with a pulse at each sample
/// @param pitch   that of the pitch's part, divided by its norm: pulses are sought for what it
///                cannot give
Pulses SearchPulses(const PulseCorrelations& correlations, std::span<const float> target,
                    std::span<const float> pitch, const PulseType& type);

}  // namespace codecs::wma_voice
