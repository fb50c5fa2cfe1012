// Quantises frames.
#pragma once

#include <array>
#include <vector>

#include "codecs/wma_standard/frame.h"
#include "codecs/wma_standard/frame_writer.h"
#include "codecs/wma_standard/stream_format.h"

namespace codecs::wma_standard {

/// The format outlives it. One thread.
class FrameCoder {
  public:
    explicit FrameCoder(const StreamFormat& format);

    /// Codes all blocks with steps that lie `offset_db` above the wanted ones; how many bits
    /// FrameWriter makes of them.
    int Code(Frame& frame, double offset_db);

    FrameWriter& Writer() { return writer_; }

  private:
    bool HaveSameExponents(const Block& block, const Block& last) const;
    void ChooseExponents(Block& block, double offset_db);
    bool LimitMagnitudes(Block& block) const;
    bool Quantise(Block& block, int channel) const;
    void ChooseNoise(Block& block, int channel) const;
    void SettleNoiseLevels(const BlockFormat& sizes, BlockChannel& channel) const;

    const StreamFormat& format_;
    FrameWriter writer_;
};

}  // namespace codecs::wma_standard
