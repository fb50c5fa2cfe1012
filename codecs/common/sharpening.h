// What a recording makes of pictures that show what the one before them showed.
#pragma once

#include <algorithm>

#include "codecs/common/picture_bits.h"

namespace codecs {

/// A screen that has come to rest can be coded again at finer quantisers until it is as fine as
/// wanted: what the next picture is predicted from is then the sharper one. What that takes is what
/// the picture's coefficients take at the finer quantiser less what they took at the coarser one.
class Sharpening {
  public:
    /// Whether a picture shows so little that is new: a cursor, a few letters.
    static bool Rests(double step_cost, double intra_cost) {
        return step_cost <= kNew * intra_cost;
    }

    /// A picture that shows something new was coded at that quantiser.
    /// @param texture  that of an I picture
    void Showed(double quantiser, double texture) {
        quantiser_ = quantiser;
        texture_ = texture;
    }
    /// A picture that showed nothing new took so much at a quantiser.
    void Took(double bits, double quantiser) {
        const double step = Fineness(quantiser) - Fineness(quantiser_);
        if (step > 0) texture_ = bits / step;
    }
    void Sharpened(double quantiser) { quantiser_ = std::min(quantiser_, quantiser); }

    /// The finest quantiser that takes no more than `bits`; not coarser than what is there already.
    double Quantiser(double bits) const {
        const double fineness =
            Fineness(quantiser_) + std::max(0.0, bits) / std::max(1.0, texture_);
        return std::min(quantiser_, 1 / fineness - PictureBits::kOffset);
    }

  private:
    static constexpr double kNew = 0.002;

    static double Fineness(double quantiser) { return 1 / (quantiser + PictureBits::kOffset); }

    double quantiser_ = 31;  // of the coarsest parts
    double texture_ = 0;     // bits for a step of the fineness, of all that rests
};

}  // namespace codecs
