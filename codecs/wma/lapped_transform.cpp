#include "codecs/wma/lapped_transform.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <functional>
#include <numbers>

#include "codecs/common/index.h"
#include "codecs/wma/floor_log2.h"

namespace codecs::wma {

LappedTransform::LappedTransform(int block_size)
    : size_(block_size),
      fft_(block_size / 2),
      cosines_(Index(block_size / 2)),
      sines_(Index(block_size / 2)),
      windowed_(Index(2 * block_size)),
      folded_(Index(block_size)),
      real_(Index(block_size / 2)),
      imaginary_(Index(block_size / 2)) {
    assert(block_size >= 4);
    for (int n = 0; n < size_ / 2; ++n) {
        const double angle = std::numbers::pi * (8 * n + 1) / (8 * size_);
        cosines_[Index(n)] = static_cast<float>(std::cos(angle));
        sines_[Index(n)] = static_cast<float>(std::sin(angle));
    }
    for (int length = 1; length <= size_; length *= 2) {
        std::vector<float>& slope = slopes_.emplace_back(Index(length));
        for (int n = 0; n < length; ++n)
            slope[Index(n)] =
                static_cast<float>(std::sin(std::numbers::pi * (n + 0.5) / (2 * length)));
    }
}

void LappedTransform::Forward(std::span<const float> samples, int rising, int falling,
                              std::span<float> coefficients) {
    const int half = size_ / 2;
    const auto slope_of = [&](int length) -> const std::vector<float>& {
        return slopes_[Index(FloorLog2(length))];
    };
    const int rise = half - rising / 2;
    const int fall = 3 * half - falling / 2;
    std::fill_n(windowed_.begin(), rise, 0.0F);
    std::transform(slope_of(rising).begin(), slope_of(rising).end(), samples.begin() + rise,
                   windowed_.begin() + rise, std::multiplies<>());
    std::copy(samples.begin() + rise + rising, samples.begin() + fall,
              windowed_.begin() + rise + rising);
    std::transform(slope_of(falling).rbegin(), slope_of(falling).rend(), samples.begin() + fall,
                   windowed_.begin() + fall, std::multiplies<>());
    std::fill(windowed_.begin() + fall + falling, windowed_.end(), 0.0F);

    // What overlaps is folded, which leaves a cosine transform of type IV ...
    const float* x = windowed_.data();
    for (int n = 0; n < half; ++n) {
        folded_[Index(n)] = x[3 * half - 1 - n] + x[3 * half + n];
        folded_[Index(half + n)] = x[2 * half - 1 - n] - x[n];
    }
    // ... of which even samples and the odd ones from the end make complex numbers.
    for (int n = 0; n < half; ++n) {
        const float even = folded_[Index(2 * n)];
        const float odd = folded_[Index(size_ - 1 - 2 * n)];
        const float c = cosines_[Index(n)];
        const float s = sines_[Index(n)];
        real_[Index(n)] = even * c + odd * s;
        imaginary_[Index(n)] = odd * c - even * s;
    }
    fft_.Forward(real_, imaginary_);
    for (int k = 0; k < half; ++k) {
        const float c = cosines_[Index(k)];
        const float s = sines_[Index(k)];
        coefficients[Index(2 * k)] = real_[Index(k)] * c + imaginary_[Index(k)] * s;
        coefficients[Index(size_ - 1 - 2 * k)] = real_[Index(k)] * s - imaginary_[Index(k)] * c;
    }
}

}  // namespace codecs::wma
