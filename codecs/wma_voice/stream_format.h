// What an encoder and a decoder both derive from a stream's header.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_voice/frame_type.h"

namespace codecs::wma_voice {

constexpr int kMostOrder = 16;
constexpr int kMostLag = 416;  // samples, at 22.05 kHz and below

/// Throughout: R = samples per second.
class StreamFormat {
  public:
    /// @param sampling_rate  8000 to 22050
    /// @param low_delay  packets are small
    StreamFormat(int sampling_rate, int bit_rate, bool low_delay);

    /// What stands after the WAVEFORMATEX in the stream's header.
    std::array<std::uint8_t, 46> ExtraData() const;

    int SamplingRate() const { return sampling_rate_; }
    int BitRate() const { return bit_rate_; }
    int Order() const { return order_; }  // of linear prediction: 10 or 16
    int PacketBytes() const { return packet_bytes_; }
    int SpillBits() const;  // of the count of bits that complete a superframe in the next packet
    double SuperframeBits() const;  // that the rate gives one

    /// Pitches have indices; a frame's first block may have any, the others one of those around
    /// the block's before: from `Centre(last)` - PitchReach() to `Centre(last)` + PitchReach() - 1.
    int PitchCount() const { return pitch_count_; }
    int PitchBits() const { return pitch_bits_; }
    int PitchDeltaBits() const { return pitch_delta_bits_; }
    int PitchReach() const { return reach_; }
    int Centre(int last_index) const;
    int Quarters(int pitch_index) const;  // lag in quarters of a sample
    /// The first index with a lag of at least so many quarters.
    int PitchIndex(int quarters) const;

    Code TypeCode(int type) const;
    /// Of a frame of pulses, with its type.
    int Bits(const PulseType& type) const;
    /// Likewise for the two kinds of noise.
    int NoiseBits(int type) const;

  private:
    int sampling_rate_;
    int bit_rate_;
    int order_;
    int packet_bytes_;
    std::array<int, 4> bounds_;  // lags, in samples: 1/4, 1/2 and whole samples lie between them
    int reach_;
    int pitch_count_;
    int pitch_bits_;
    int pitch_delta_bits_;
};

}  // namespace codecs::wma_voice
