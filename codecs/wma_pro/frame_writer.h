// Writes frames.
#pragma once

#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_pro/coefficient_codes.h"
#include "codecs/wma_pro/frame.h"
#include "codecs/wma_pro/stream_format.h"

namespace codecs::wma_pro {

/// What a frame has beside its blocks.
struct FrameExtras {
    int trimmed = 0;    // samples that decoders leave out at its end
    int fill_bits = 0;  // at least kLeastFill, or none
};
constexpr int kLeastFill = 7;
constexpr int kMostFill = 32789;

/// The format outlives it. One thread.
class FrameWriter {
  public:
    /// @param scale_step_db  of a scale factor
    FrameWriter(const StreamFormat& format, int scale_step_db);

    /// What lies between a frame's length and its last bit.
    void Write(const Frame& frame, const FrameExtras& extras, BitWriter& writer) const;
    /// The whole frame's, without extras, when all its plans are made.
    int Bits(const Frame& frame);

  private:
    void WriteHead(const Frame& frame, const FrameExtras& extras, BitWriter& writer) const;
    void WriteLayout(const Frame& frame, BitWriter& writer) const;
    // All but the coefficients themselves.
    void WriteBlockHead(const Block& block, bool first, int fill_bits, BitWriter& writer) const;
    void WriteGroups(const Block& block, BitWriter& writer) const;
    void WriteSteps(const Block& block, BitWriter& writer) const;
    void WriteScaleFactors(const Block& block, bool first, BitWriter& writer) const;

    const StreamFormat& format_;
    int scale_step_db_;
    std::vector<CoefficientCodes> codes_;
    BitWriter scratch_;
};

}  // namespace codecs::wma_pro
