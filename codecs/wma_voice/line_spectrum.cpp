#include "codecs/wma_voice/line_spectrum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "codecs/common/index.h"

namespace codecs::wma_voice {
namespace {

using std::numbers::pi;

constexpr double kLeastFrequency = 0.0015 * pi;
constexpr double kLeastDistance = 0.0125 * pi;
constexpr double kMostFrequency = 0.9985 * pi;

constexpr double kLagWindowHz = 60;
constexpr double kNoiseFloor = 1e-4;  // of the power

constexpr int kHalfOrder = kMostOrder / 2;
using HalfPolynomial = std::array<double, kHalfOrder + 1>;

// Coefficients 0 to `half` of the product of 1 - 2 cos(w) z^-1 + z^-2 over every other frequency,
// which is symmetric.
HalfPolynomial Product(std::span<const float> spectrum, std::size_t first) {
    std::array<double, kMostOrder + 3> all{};
    all[0] = 1;
    std::size_t degree = 0;
    for (std::size_t i = first; i < spectrum.size(); i += 2) {
        const double middle = -2 * std::cos(static_cast<double>(spectrum[i]));
        degree += 2;
        for (std::size_t k = degree; k >= 2; --k) all[k] += middle * all[k - 1] + all[k - 2];
        all[1] += middle;
    }
    HalfPolynomial half{};
    std::copy_n(all.begin(), spectrum.size() / 2 + 1, half.begin());
    return half;
}

// A symmetric polynomial on the unit circle, with its linear phase taken off.
double OnCircle(const HalfPolynomial& symmetric, int half, double cosine) {
    // Clenshaw's recurrence over Chebyshev polynomials.
    double next = 0;
    double after = 0;
    for (int k = half; k >= 1; --k) {
        const double value = 2 * cosine * next - after + 2 * symmetric[Index(half - k)];
        after = next;
        next = value;
    }
    return cosine * next - after + symmetric[Index(half)];
}

// Their roots lie between each other, the sum's first.
bool FindRoots(const HalfPolynomial& sum, const HalfPolynomial& difference, int order,
               LineSpectrum& found) {
    constexpr int kSteps = 256;
    constexpr int kHalvings = 12;
    static const auto grid = [] {
        std::array<double, kSteps + 1> cosines;
        for (int step = 0; step <= kSteps; ++step)
            cosines[Index(step)] = std::cos(pi * step / kSteps);
        return cosines;
    }();
    const int half = order / 2;
    int count = 0;
    const HalfPolynomial* polynomial = &sum;
    double last = OnCircle(*polynomial, half, 1);
    for (int step = 1; step <= kSteps && count < order; ++step) {
        double above = grid[Index(step - 1)];
        double value = OnCircle(*polynomial, half, grid[Index(step)]);
        while (last * value <= 0 && count < order) {
            double below = grid[Index(step)];
            for (int k = 0; k < kHalvings; ++k) {
                const double middle = (above + below) / 2;
                const double there = OnCircle(*polynomial, half, middle);
                (there * last > 0 ? above : below) = middle;
            }
            found[Index(count++)] = static_cast<float>(std::acos((above + below) / 2));
            polynomial = count % 2 == 0 ? &sum : &difference;
            last = OnCircle(*polynomial, half, above);
            value = OnCircle(*polynomial, half, grid[Index(step)]);
        }
        last = value;
    }
    return count == order;
}

}  // namespace

LineSpectrum FirstSpectrum(int order) {
    LineSpectrum spectrum{};
    for (int n = 0; n < order; ++n)
        spectrum[Index(n)] = static_cast<float>(pi * (n + 1) / (order + 1));
    return spectrum;
}

void Stabilise(std::span<float> spectrum) {
    spectrum.front() = std::max(spectrum.front(), static_cast<float>(kLeastFrequency));
    for (std::size_t n = 1; n < spectrum.size(); ++n)
        spectrum[n] = std::max(spectrum[n], spectrum[n - 1] + static_cast<float>(kLeastDistance));
    spectrum.back() = std::min(spectrum.back(), static_cast<float>(kMostFrequency));
    std::ranges::sort(spectrum);
}

Prediction ToPrediction(std::span<const float> spectrum) {
    const HalfPolynomial sum = Product(spectrum, 0);
    const HalfPolynomial difference = Product(spectrum, 1);
    Prediction prediction{};
    const std::size_t half = spectrum.size() / 2;
    for (std::size_t i = 1; i <= half; ++i) {
        const double even = sum[i] + sum[i - 1];
        const double odd = difference[i] - difference[i - 1];
        prediction[i - 1] = static_cast<float>((even + odd) / 2);
        prediction[spectrum.size() - i] = static_cast<float>((even - odd) / 2);
    }
    return prediction;
}

SpectrumAnalysis::SpectrumAnalysis(const StreamFormat& format)
    : order_(format.Order()), lag_window_{}, last_(FirstSpectrum(format.Order())) {
    const double seconds = format.SamplingRate() >= 16000 ? 0.025 : 0.030;
    const int length = 2 * static_cast<int>(seconds * format.SamplingRate() / 2);
    for (int n = 0; n < length; ++n)
        window_.push_back(static_cast<float>(0.54 - 0.46 * std::cos(2 * pi * (n + 0.5) / length)));
    for (int k = 0; k <= order_; ++k)
        lag_window_[Index(k)] =
            std::exp(-0.5 * std::pow(2 * pi * kLagWindowHz * k / format.SamplingRate(), 2));
    lag_window_[0] = 1 + kNoiseFloor;
}

LineSpectrum SpectrumAnalysis::Analyse(std::span<const float> samples) {
    std::vector<float> windowed(window_.size());
    std::transform(window_.begin(), window_.end(), samples.begin(), windowed.begin(),
                   std::multiplies<>());
    std::array<double, kMostOrder + 1> correlation{};
    for (int k = 0; k <= order_; ++k) {
        // In lanes that compilers put side by side.
        std::array<double, 4> sums{};
        std::size_t n = Index(k);
        for (; n + 4 <= windowed.size(); n += 4)
            for (std::size_t lane = 0; lane < 4; ++lane)
                sums[lane] += static_cast<double>(windowed[n + lane]) *
                              static_cast<double>(windowed[n + lane - Index(k)]);
        for (; n < windowed.size(); ++n)
            sums[0] +=
                static_cast<double>(windowed[n]) * static_cast<double>(windowed[n - Index(k)]);
        correlation[Index(k)] = (sums[0] + sums[1] + sums[2] + sums[3]) * lag_window_[Index(k)];
    }
    // Far below a sample's last bit: what silence is taken for.
    correlation[0] += 1e-9;

    // Levinson and Durbin's recursion.
    std::array<double, kMostOrder + 1> a{};
    a[0] = 1;
    double error = correlation[0];
    for (int i = 1; i <= order_; ++i) {
        double sum = 0;
        for (int k = 0; k < i; ++k) sum += a[Index(k)] * correlation[Index(i - k)];
        const double reflection = -sum / error;
        const auto before = a;
        for (int k = 1; k <= i; ++k) a[Index(k)] += reflection * before[Index(i - k)];
        error *= 1 - reflection * reflection;
    }
    const int half = order_ / 2;
    HalfPolynomial sum{};
    HalfPolynomial difference{};
    sum[0] = difference[0] = 1;
    for (int i = 1; i <= half; ++i) {
        sum[Index(i)] = a[Index(i)] + a[Index(order_ + 1 - i)] - sum[Index(i - 1)];
        difference[Index(i)] = a[Index(i)] - a[Index(order_ + 1 - i)] + difference[Index(i - 1)];
    }
    LineSpectrum found{};
    if (FindRoots(sum, difference, order_, found)) last_ = found;
    return last_;
}

}  // namespace codecs::wma_voice
