// The lapped transform (MDCT) of the Windows Media Audio family and its windows.
#pragma once

#include <span>
#include <vector>

#include "codecs/wma/fft.h"

namespace codecs::wma {

/// Allocates on construction only. One object a thread.
class LappedTransform {
  public:
    explicit LappedTransform(int block_size);  // power of two from 4 on, asserted

    int BlockSize() const { return size_; }

    /// X[k] = - sum over n of w[n] x[n] cos(pi / L (n + 1/2 + L/2) (k + 1/2)), L the block's size.
    /// The window w rises by a sine slope that is centred on the block's first sample and falls by
    /// one that is centred on its end.
    /// @param samples  2 L, from L/2 before the block on
    /// @param rising   length of the first slope: a power of two up to L; likewise
    /// @param falling  that of the second
    void Forward(std::span<const float> samples, int rising, int falling,
                 std::span<float> coefficients);

  private:
    int size_;
    Fft fft_;
    std::vector<float> cosines_, sines_;      // of pi (8 n + 1) / (8 L)
    std::vector<std::vector<float>> slopes_;  // of 1, 2, 4 ... L samples
    std::vector<float> windowed_, folded_, real_, imaginary_;
};

}  // namespace codecs::wma
