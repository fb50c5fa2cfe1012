// What an encoder and a decoder both derive from a stream's header.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codecs/wma_standard/code_tables.h"

namespace codecs::wma_standard {

/// Coefficients `begin` to `end` - 1.
struct Band {
    int begin = 0;
    int end = 0;
    int Size() const { return end - begin; }
};

/// What holds for blocks of one size.
struct BlockFormat {
    int size = 0;                     // samples, and coefficients
    int coded = 0;                    // coefficients from this one on are never coded
    std::vector<Band> bands;          // each has an exponent; they cover the whole block
    std::vector<Band> high_bands;     // may be noise; empty where the stream has no noise filling
    std::vector<int> high_exponents;  // place among `bands` of each of them
};

/// Throughout: N = samples of a frame, R = samples per second.
struct StreamFormat {
    /// Any number of bytes per second; 1 or 2 channels; up to 50000 samples per second.
    /// @param frames_per_packet  about as many as a packet shall hold
    StreamFormat(int sampling_rate, int channels, int bytes_per_second, int frames_per_packet);

    int sampling_rate;
    int channels;
    int bytes_per_second;
    int frame_samples;
    int packet_bytes;
    int samples_per_packet;
    int size_bits;        // of a block's size in a frame
    int completion_bits;  // of the count of bits that complete a frame in the next packet
    bool noise_filling;
    CoefficientTables coefficient_tables;
    std::vector<BlockFormat> blocks;  // from the largest size to the smallest, halved each

    /// What stands after the WAVEFORMATEX in the stream's header.
    std::array<std::uint8_t, 10> ExtraData() const;
    double FrameBits() const { return 8.0 * bytes_per_second * frame_samples / sampling_rate; }
};

}  // namespace codecs::wma_standard
