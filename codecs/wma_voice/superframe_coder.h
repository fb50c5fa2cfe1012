// From sound to superframes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_voice/frame_coder.h"
#include "codecs/wma_voice/spectrum_quantiser.h"

namespace codecs::wma_voice {

/// What a superframe may take.
struct Allowance {
    double db_per_bit = 0;  // that a bit more has to improve a frame
    int most_bits = 0;      // in all; more than LeastBits()
    bool mixed = false;     // music may be in it
};

/// One thread.
class SuperframeCoder {
  public:
    /// The format outlives it.
    explicit SuperframeCoder(const StreamFormat& format);

    /// Samples before and behind a superframe that its spectra depend on.
    int Before() const { return before_; }
    int Behind() const { return behind_; }

    /// @param samples  Before(), the superframe, Behind()
    /// @param length   of the valid ones, below kSuperframeSamples for the last superframe
    /// @param fill     bits that it shall take at the least, as far as it can
    void Code(std::span<const float> samples, int length, const Allowance& allowance, int fill,
              BitWriter& bits);
    /// What decoders give for the last one.
    std::span<const float> Decoded() const { return decoded_; }
    /// A superframe of no samples, for the end of a stream.
    BitWriter Dummy() const;

  private:
    CodedFrame CodeFrame(const FrameInput& input, const Allowance& allowance);
    int FixedBits(int length) const;

    const StreamFormat& format_;
    SpectrumAnalysis analysis_;
    SpectrumQuantiser quantiser_;
    FrameCoder frames_;
    CoderState state_;
    LineSpectrum spectrum_;  // the last, as decoders have it
    bool few_bits_;          // for a frame, at the rate
    std::int64_t frame_ = 0;
    float loudness_ = 0;  // power of a frame that is heard well
    int before_ = 0;
    int behind_ = 0;
    std::array<float, kSuperframeSamples> decoded_{};
};

}  // namespace codecs::wma_voice
