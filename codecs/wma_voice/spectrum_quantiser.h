// Quantises the spectra of a superframe together.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_voice/codebook.h"
#include "codecs/wma_voice/line_spectrum.h"

namespace codecs::wma_voice {

using Spectra = std::array<LineSpectrum, kFramesTogether>;

/// One object a stream: spectra are predicted from the last superframe's.
class SpectrumQuantiser {
  public:
    explicit SpectrumQuantiser(const StreamFormat& format);

    /// Of a superframe.
    int Bits() const { return bits_; }
    /// Writes Bits() and gives what a decoder has then.
    Spectra Quantise(const Spectra& spectra, BitWriter& bits);

  private:
    struct Chosen {
        int prediction = 0;
        std::vector<CodebookChoice> residuals;
        float error = 0;
    };
    Chosen ChooseResiduals(const Spectra& spectra, const Spectra& weights,
                           const LineSpectrum& last_less_mean) const;
    std::span<const float> Row(int row) const;

    int order_;
    SpectrumTables tables_;
    std::vector<Codebook> spectrum_, residuals_;
    int bits_;
    LineSpectrum before_;  // the last superframe's last spectrum
};

}  // namespace codecs::wma_voice
