// A frame as one of its types tells it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_voice/block_coder.h"

namespace codecs::wma_voice {

/// What is to be coded.
struct FrameInput {
    LineSpectrum before{};    // as decoders have it, at the frame's begin ...
    LineSpectrum spectrum{};  // ... and at its end
    std::span<const float> samples;
    std::int64_t number = 0;  // in the stream
};

struct CodedFrame {
    int type = kSilenceType;
    int bits = 0;
    float error = 0;  // squares, as it is heard
    std::array<BlockChoice, 4> blocks;
    std::array<NoiseChoice, 2> noises;
    CoderState state;  // after it; the excitation's past is not moved on yet
    std::array<float, kFrameSamples> decoded{};
};

/// One thread.
class FrameCoder {
  public:
    explicit FrameCoder(const StreamFormat& format);

    /// The frame that the calls below are about, until the next one.
    void Begin(const FrameInput& input, const CoderState& state);
    CodedFrame Silence();
    CodedFrame Noise();
    CodedFrame WithPulses(const PulseType& type);
    /// Power of the frame as it is heard, about.
    float HeardPower();

    void Write(const CodedFrame& frame, BitWriter& bits) const;

  private:
    std::vector<BlockFilter>& Filters(int blocks);
    PitchSpan Span(const CodedFrame& frame, int block) const;

    const StreamFormat& format_;
    BlockCoder coder_;
    FrameInput input_;
    CoderState state_;
    std::array<std::vector<BlockFilter>, 3> filters_;  // for 1, 2 and 4 blocks
};

}  // namespace codecs::wma_voice
