// Generated sound for lossless streams.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codecs/wma_lossless/stream_format.h"

namespace lossless_conformance {

enum class Kind : std::uint8_t {
    Music,   // decaying tones with a little noise
    Speech,  // bursts between pauses
    Noise,   // white, full scale
    Square,  // full scale
    Silence,
    Same,            // all channels play the music
    OneSilent,       // but the last one
    LowZeros,        // music whose lowest bits are empty, and from its middle on are not
    SilentThenLoud,  // full-scale noise bursts out of nothing
    Impulses,
    Drifts,  // a tone of full scale that bends, so that filters are lost
    Count
};

struct Piece {
    int sampling_rate;
    int channels;
    int bits;
    Kind kind;
    std::int64_t samples;  // for each channel
    std::uint32_t seed = 1;

    std::string Name() const;
    codecs::wma_lossless::StreamFormat Format() const { return {sampling_rate, channels, bits}; }
};

/// Interleaved.
std::vector<std::int32_t> Generate(const Piece& piece);

}  // namespace lossless_conformance
