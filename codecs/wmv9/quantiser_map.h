// How coarsely each macroblock of a picture is coded.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/index.h"

namespace codecs::wmv9 {

/// The quantiser of a whole picture whose macroblocks are worth so much to later ones (see
/// MacroblockTree), as a part of the quantiser asked for.
/// @param power  of what worth makes finer: a half where squared errors count in proportion
double QuantiserPart(std::span<const float> worth, double power);

/// Busy macroblocks hide more than flat ones: quantisers follow the logarithm of their variance,
/// beside the picture's mean. Those that later pictures refer to are finer.
class QuantiserMap {
  public:
    /// In macroblocks.
    QuantiserMap(int width, int height) : width_(width) {
        quantisers_.resize(Index(width) * Index(height));
    }

    /// @param quantiser  asked for, 1 to kCoarsestAsked
    /// @param activity   of macroblocks in raster order; see Activity
    /// @param worth      of macroblocks in raster order; empty = all alike
    /// @param power      see QuantiserPart
    void Choose(double quantiser, std::span<const double> activity, std::span<const float> worth,
                double power);
    /// Up to kCoarsestAsked.
    int At(int x, int y) const { return quantisers_[Index(y) * Index(width_) + Index(x)]; }
    /// The picture's own, beside which the macroblocks' take the fewest bits.
    int OfPicture() const { return of_picture_; }
    double Mean() const { return mean_; }

  private:
    int width_;
    int of_picture_ = 1;
    double mean_ = 1;
    std::vector<std::uint8_t> quantisers_;
    std::vector<float> log_parts_;  // see QuantiserPart
};

}  // namespace codecs::wmv9
