// The shape of a lossless stream: what follows from rate, channels and depth.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/wma/packetiser.h"

namespace codecs::wma_lossless {

constexpr int kMostChannels = 8;

class StreamFormat {
  public:
    /// @param sampling_rate    Hz, 1 to 192000
    /// @param channels         1 to 8
    /// @param bits_per_sample  16 or 24
    StreamFormat(int sampling_rate, int channels, int bits_per_sample);

    int SamplingRate() const { return sampling_rate_; }
    int Channels() const { return channels_; }
    int Bits() const { return bits_; }
    /// Of a frame, for each channel.
    int FrameSamples() const { return frame_samples_; }
    int PacketBytes() const { return 1 << packet_bits_; }
    /// Bits of a frame's length.
    int LengthBits() const { return wma::FrameLengthBits(PacketBytes()); }
    /// Bits of a number of samples that are left out of a frame.
    int TrimBits() const;

    /// What stands after the sound's format in the stream's header.
    std::vector<std::uint8_t> ExtraData() const;

  private:
    int sampling_rate_;
    int channels_;
    int bits_;
    int frame_samples_;
    int packet_bits_ = 0;
    std::uint16_t flags_;
};

}  // namespace codecs::wma_lossless
