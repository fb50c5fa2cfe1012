#include "codecs/wma/lapped_transform.h"

#include <cmath>
#include <numbers>
#include <random>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

constexpr double kPi = std::numbers::pi;

// The window as its definition says, for sample `n` of 2 L.
double Window(int n, int size, int rising, int falling) {
    const int up = n - (size - rising) / 2;
    const int down = n - (3 * size - falling) / 2;
    if (up < 0 || down >= falling) return 0;
    const double risen = up < rising ? std::sin(kPi * (up + 0.5) / (2 * rising)) : 1;
    return risen * (down >= 0 ? std::cos(kPi * (down + 0.5) / (2 * falling)) : 1);
}

struct TransformCase {
    int size;
    int rising;
    int falling;
};

TEST(LappedTransform, IsTheSumOfItsDefinition) {
    constexpr TransformCase kCases[] = {
        {4, 4, 4}, {8, 2, 8}, {128, 128, 128}, {256, 128, 256}, {512, 512, 128}, {2048, 1024, 2048},
    };
    std::minstd_rand random(1);
    for (const auto& [size, rising, falling] : kCases) {
        std::vector<float> samples(Index(2 * size));
        for (float& sample : samples) sample = static_cast<float>(random() % 65536) - 32768;
        std::vector<float> coefficients(Index(size));
        LappedTransform(size).Forward(samples, rising, falling, coefficients);
        double error = 0;
        double energy = 0;
        for (int k = 0; k < size; ++k) {
            double sum = 0;
            for (int n = 0; n < 2 * size; ++n)
                sum -= Window(n, size, rising, falling) * samples[Index(n)] *
                       std::cos(kPi / size * (n + 0.5 + size / 2.0) * (k + 0.5));
            energy += sum * sum;
            error += (sum - coefficients[Index(k)]) * (sum - coefficients[Index(k)]);
        }
        EXPECT_LT(error, 1e-12 * energy) << size << " " << rising << " " << falling;
    }
}

}  // namespace
}  // namespace codecs::wma
