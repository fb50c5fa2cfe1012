#include "codecs/wmv9/quantiser_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace codecs::wmv9 {
namespace {

// Chosen by hand on 17 clips, see docs/video9.md.
constexpr double kMasked = 0.2;         // quantisers by a doubling of the variance ...
constexpr double kMaskedPart = 0.07;    // ... and parts of the quantiser
constexpr double kMostBelow = 2;        // doublings below the mean that count
constexpr double kMostAbove = 1;        // of the quantiser: sharp text on paper is far above
constexpr double kUsualWorth = 1.96;    // of what has the quantiser that is asked for
constexpr double kWithinPicture = 0.4;  // of the differences in worth, as far as they are trusted

constexpr int kCoarsest = 31;
constexpr int kShortDifference = 6;  // of a macroblock's quantiser, in three bits in place of eight
constexpr double kSamples = 256;

double LogPart(double worth, double power) { return power * std::log(kUsualWorth / worth); }

}  // namespace

double QuantiserPart(std::span<const float> worth, double power) {
    double sum = 0;
    for (const float one : worth) sum += LogPart(one, power);
    return std::exp(sum / static_cast<double>(worth.size()));
}

void QuantiserMap::Measure(const Kernels& kernels, const Frame& source,
                           std::vector<double>& activity) const {
    activity.clear();
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            std::uint32_t sum = 0;
            std::uint32_t squares = 0;
            kernels.moments(source[0].At(16 * x, 16 * y), source[0].stride, sum, squares);
            const double mean = sum / kSamples;
            activity.push_back(std::log2(1 + std::max(0.0, squares / kSamples - mean * mean)));
        }
    }
    const double mean = std::accumulate(activity.begin(), activity.end(), 0.0) /
                        static_cast<double>(activity.size());
    for (double& one : activity) one -= mean;
}

void QuantiserMap::Look(const Kernels& kernels, const Frame& source, int number) {
    current_ = Index(std::max(number, 0)) % activities_.size();
    Activity& activity = activities_[current_];
    if (number < 0 || activity.number != number) Measure(kernels, source, activity.values);
    activity.number = number;
}

void QuantiserMap::Choose(double quantiser, std::span<const float> worth, double power) {
    const std::vector<double>& activity = activities_[current_].values;
    log_parts_.clear();
    for (const float one : worth) log_parts_.push_back(LogPart(one, power));
    const double mean = std::accumulate(log_parts_.begin(), log_parts_.end(), 0.0) /
                        std::max(1.0, static_cast<double>(worth.size()));
    std::array<int, kCoarsest + 1> counts{};
    for (std::size_t i = 0; i < quantisers_.size(); ++i) {
        double part = 1;
        if (!worth.empty()) part = std::exp(mean + kWithinPicture * (log_parts_[i] - mean));
        const double due = quantiser * part;
        const double step = kMasked + kMaskedPart * due;
        const double wanted =
            due + std::min(step * std::max(activity[i], -kMostBelow), kMostAbove * due);
        const int whole = std::clamp(static_cast<int>(std::lround(wanted)), 1, kCoarsest);
        quantisers_[i] = static_cast<std::uint8_t>(whole);
        ++counts[Index(whole)];
    }
    Summarise(counts);
}

void QuantiserMap::Summarise(std::span<const int> counts) {
    double sum = 0;
    int most = -1;
    for (int first = 1; first <= kCoarsest; ++first) {
        sum += first * counts[Index(first)];
        int within = 0;
        for (int q = first; q <= std::min(first + kShortDifference, kCoarsest); ++q)
            within += counts[Index(q)];
        if (within < most) continue;
        most = within;
        of_picture_ = first;
    }
    mean_ = sum / static_cast<double>(quantisers_.size());
}

}  // namespace codecs::wmv9
