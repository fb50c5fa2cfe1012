// What an encoder and a decoder both derive from a stream's header.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace codecs::wma_pro {

constexpr int kMostChannels = 8;

/// What holds for blocks of one size.
struct BlockFormat {
    int size = 0;                // samples, and coefficients
    std::vector<int> band_ends;  // the coefficient behind each band; they cover the whole block
    int low_frequency_end = 0;   // a channel of low frequencies has coefficients below this one
};

/// Of a frame, for each channel.
int FrameSamples(int sampling_rate);

struct StreamFormat {
    /// @param sampling_rate    Hz, up to 192000
    /// @param channels         1 to 8, in the usual order of speakers
    /// @param bits_per_sample  16, 20 or 24
    /// @param packet_bytes     256 to 32767
    StreamFormat(int sampling_rate, int channels, int bits_per_sample, int packet_bytes);

    int sampling_rate;
    int channels;
    int bits_per_sample;
    int packet_bytes;
    int frame_samples;
    std::vector<BlockFormat> blocks;        // from the largest size to the smallest, halved each
    int low_frequency_channel;              // -1 = none
    std::vector<std::array<int, 2>> pairs;  // channels of the left and right of the same place

    int TrimBits() const;  // of a number of samples that are left out of a frame
    /// The quantiser step that the header stands for, in dB.
    int UsualStepDb() const { return 90 * bits_per_sample / 16; }
    /// Bits of the largest frame: one ends in the packet behind that in which it begins.
    int MostFrameBits() const;
    /// What stands after the sound's format in the stream's header.
    std::array<std::uint8_t, 18> ExtraData() const;
};

}  // namespace codecs::wma_pro
