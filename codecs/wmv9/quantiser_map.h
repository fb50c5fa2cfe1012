// How coarsely each macroblock of a picture is coded.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/kernels.h"

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
    QuantiserMap(int width, int height) : width_(width), height_(height) {
        quantisers_.resize(Index(width) * Index(height));
    }

    /// @param number  of the picture that quantisers are to be chosen for, -1 = unknown: what is
    ///                seen of the last few is kept
    void Look(const Kernels& kernels, const Frame& source, int number);
    /// After Look, as often as is wanted.
    /// @param quantiser  asked for, 1 to 31
    /// @param worth      of macroblocks in raster order; empty = all alike
    /// @param power      see QuantiserPart
    void Choose(double quantiser, std::span<const float> worth, double power);
    int At(int x, int y) const { return quantisers_[Index(y) * Index(width_) + Index(x)]; }
    /// The picture's own, beside which the macroblocks' take the fewest bits.
    int OfPicture() const { return of_picture_; }
    double Mean() const { return mean_; }

  private:
    // Of a picture's macroblocks: logarithms of their variances, beside the mean of those.
    struct Activity {
        int number = -1;
        std::vector<double> values;
    };

    void Measure(const Kernels& kernels, const Frame& source, std::vector<double>& activity) const;
    void Summarise(std::span<const int> counts);

    int width_;
    int height_;
    int of_picture_ = 1;
    double mean_ = 1;
    std::vector<std::uint8_t> quantisers_;
    std::vector<double> log_parts_;  // see QuantiserPart
    // Trials code the next pictures again and again.
    std::array<Activity, 10> activities_;
    std::size_t current_ = 0;
};

}  // namespace codecs::wmv9
