// A frame as one of its types tells it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
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
    bool mixed = false;       // music may be in it
};

struct CodedFrame {
    int type = kSilenceType;
    int bits = 0;
    float error = 0;  // squares, as it is heard
    std::array<BlockChoice, kMostBlocks> blocks;
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
    struct Blocks {
        std::vector<BlockFilter> filters;
        std::optional<int> first_pitch;  // what was chosen, which is the same for all types
    };
    Blocks& Cut(int blocks);
    PitchSpan Span(const CodedFrame& frame, int block) const;

    const StreamFormat& format_;
    BlockCoder coder_;
    FrameInput input_;
    CoderState state_;
    std::array<Blocks, 4> blocks_;  // for 1, 2, 4 and 8
};

}  // namespace codecs::wma_voice
