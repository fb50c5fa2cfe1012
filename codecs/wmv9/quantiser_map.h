// How coarsely each macroblock is coded where the eye sees different detail.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

/// Busy macroblocks hide more than flat ones: quantisers follow the logarithm of their variance,
/// beside the picture's mean.
class QuantiserMap {
  public:
    /// In macroblocks.
    QuantiserMap(int width, int height) : width_(width), height_(height) {
        more_.resize(Index(width) * Index(height));
    }

    void Measure(const Kernels& kernels, const Frame& source);
    /// What is added to the picture's quantiser: 0 to 6, kMean on average.
    int More(int x, int y) const { return more_[Index(y) * Index(width_) + Index(x)]; }

    static constexpr int kMean = 1;

  private:
    int width_;
    int height_;
    std::vector<std::uint8_t> more_;
    std::vector<double> activity_;
};

}  // namespace codecs::wmv9
