// The kinds of frames that are written.
#pragma once

#include <array>
#include <cstdint>

namespace codecs::wma_voice {

constexpr int kFrameSamples = 160;
constexpr int kFramesTogether = 3;
constexpr int kSuperframeSamples = kFrameSamples * kFramesTogether;

constexpr int kSilenceType = 0;  // noise of one gain
constexpr int kNoiseType = 1;    // noise of two gains

constexpr int kTracks = 5;  // pulse n of a block stands at n, n + 5, n + 10 ...

/// A frame of pulses upon what the pitch repeats, by its number in the stream.
struct PulseType {
    int number;
    int blocks;   // each with pitch and gains of its own
    int doubled;  // tracks with two pulses; the others have one

    constexpr int BlockSamples() const { return kFrameSamples / blocks; }
    /// Of a place in a track.
    constexpr int PlaceBits() const { return blocks == 2 ? 4 : blocks == 4 ? 3 : 2; }
};

// Those that are worth their bits: there are six more.
// clang-format off
constexpr std::array<PulseType, 3> kPulseTypes = {{
    // number blocks doubled
    { 8,      2,     0},
    {10,      2,     5},
    {13,      4,     5},
}};
// clang-format on

}  // namespace codecs::wma_voice
