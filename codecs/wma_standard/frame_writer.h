// Writes frames, and tells how many bits they take.
#pragma once

#include "codecs/common/bit_writer.h"
#include "codecs/wma_standard/coefficient_codes.h"
#include "codecs/wma_standard/frame.h"
#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

/// The format outlives it. One thread.
class FrameWriter {
  public:
    explicit FrameWriter(const StreamFormat& format);

    /// Without the sizes that stand before the first frame which begins in a packet.
    void Write(const Frame& frame, BitWriter& writer);
    /// Of a block as Write would write it.
    int Bits(const Block& block);
    int CoefficientBits(const Block& block, int channel);

  private:
    std::span<const std::int16_t> Sequence(const Block& block, int channel);
    const CoefficientCodes& CodesFor(const Block& block, int channel) const;
    void WriteBlock(const Block& block, int next_index, BitWriter& writer);
    void WriteNoise(const Block& block, BitWriter& writer) const;

    const StreamFormat& format_;
    std::array<CoefficientCodes, 2> codes_;
    std::vector<std::int16_t> sequence_;
};

/// Bits of a channel's exponents.
int ExponentBits(std::span<const int> exponents);

}  // namespace codecs::wma_standard
