// Sums over short vectors, in lanes that compilers put side by side.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace codecs::wma_voice {

/// Of equally many values, a multiple of four.
inline float Product(const float* a, const float* b, std::size_t count) {
    std::array<float, 4> sums{};
    for (std::size_t i = 0; i < count; i += 4)
        for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += a[i + lane] * b[i + lane];
    return (sums[0] + sums[2]) + (sums[1] + sums[3]);
}
inline float Product(std::span<const float> a, std::span<const float> b) {
    return Product(a.data(), b.data(), a.size());
}
inline float Power(std::span<const float> a) { return Product(a, a); }

}  // namespace codecs::wma_voice
