// Complex Fourier transform of 2^n points.
#pragma once

#include <span>
#include <vector>

namespace codecs::wma {

/// Allocates on construction only. One object a thread.
class Fft {
  public:
    explicit Fft(int points);  // power of two, asserted

    /// In place: X[k] = sum over n of x[n] * exp(-2 pi i n k / points). Both spans hold `points`.
    void Forward(std::span<float> real, std::span<float> imaginary);

  private:
    int points_;
    std::vector<float> cosines_, sines_;  // of 2 pi n / points
    std::vector<float> other_real_, other_imaginary_;
};

}  // namespace codecs::wma
