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
    bool of_few_bits;
    bool of_many_bits;

    constexpr int BlockSamples() const { return kFrameSamples / blocks; }
    /// Of a place in a track.
    constexpr int PlaceBits() const { return blocks == 2 ? 4 : blocks == 4 ? 3 : 2; }
};

// Those that are worth their bits, where a frame has few of them and where it has many. Tuned for
// STOI and segmental signal to noise on prompts of asterisk-core-sounds-en and sentences of
// espeak-ng.
// clang-format off
constexpr std::array<PulseType, 6> kPulseTypes = {{
    // number blocks doubled few    many
    { 8,      2,     0,      true,  false},
    { 9,      2,     2,      true,  false},
    {10,      2,     5,      true,  true},
    {12,      4,     2,      false, true},
    {13,      4,     5,      true,  true},
    {14,      8,     0,      false, true},
}};
// clang-format on
constexpr int kMostBlocks = 8;  // of a frame

}  // namespace codecs::wma_voice
