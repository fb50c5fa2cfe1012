#include "codecs/wmv9/quantiser_map.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace codecs::wmv9 {
namespace {

// Quantisers by a doubling of the variance. Chosen by hand on the clips of bench/quality.
constexpr double kStrength = 0.5;
constexpr int kLeast = 0;
constexpr int kMost = 6;
constexpr double kSamples = 256;

}  // namespace

void QuantiserMap::Measure(const Kernels& kernels, const Frame& source) {
    activity_.clear();
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            std::uint32_t sum = 0;
            std::uint32_t squares = 0;
            kernels.moments(source[0].At(16 * x, 16 * y), source[0].stride, sum, squares);
            const double mean = sum / kSamples;
            activity_.push_back(std::log2(1 + std::max(0.0, squares / kSamples - mean * mean)));
        }
    }
    const double mean = std::accumulate(activity_.begin(), activity_.end(), 0.0) /
                        static_cast<double>(activity_.size());
    for (std::size_t i = 0; i < more_.size(); ++i) {
        const auto more = static_cast<int>(std::lround(kMean + kStrength * (activity_[i] - mean)));
        more_[i] = static_cast<std::uint8_t>(std::clamp(more, kLeast, kMost));
    }
}

}  // namespace codecs::wmv9
