// How much noise the ear lets pass beside a block of sound.
#pragma once

#include <span>
#include <vector>

namespace codecs::wma {

/// Works on the coefficients of LappedTransform, samples being 16-bit numbers. Allocates on
/// construction only. One object a thread.
class MaskingModel {
  public:
    /// @param band_ends  the coefficient behind each band; bands follow each other from 0 on
    /// @param tonality   how much less noise tones mask than noise does: 1 = by 9 dB, and 1 more
    ///                   for each Bark
    MaskingModel(int sampling_rate, int block_size, std::span<const int> band_ends,
                 double tonality = 1);

    /// The noise that is not heard in each band, as the mean square of a coefficient's error.
    /// @param coefficients  as many as the block has, or fewer: the rest is silent
    void AllowedNoise(std::span<const float> coefficients, std::span<float> allowed);

  private:
    struct Band {
        int begin;
        int end;
        float quiet;            // what is allowed without any sound
        float noise_offset_db;  // below the masking level, for noise ...
        float tone_offset_db;   // ... and for tones
    };

    std::vector<Band> bands_;
    std::vector<float> spreading_;  // of each band into each other
    std::vector<float> powers_, energies_, offsets_;
};

}  // namespace codecs::wma
