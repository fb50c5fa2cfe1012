#include "codecs/wmv9/quantiser_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {
namespace {

// Chosen by hand on 17 clips, see docs/video9.md.
constexpr double kMasked = 0.2;         // quantisers by a doubling of the variance ...
constexpr double kMaskedPart = 0.07;    // ... and parts of the quantiser
constexpr double kMostBelow = 2;        // doublings below the mean that count
constexpr double kMostAbove = 1;        // of the quantiser: sharp text on paper is far above
constexpr float kUsualWorth = 1.96F;    // of what has the quantiser that is asked for
constexpr float kWithinPicture = 0.4F;  // of the differences in worth, as far as they are trusted

constexpr int kShortDifference = 6;  // of a macroblock's quantiser, in three bits in place of eight

float LogPart(float worth, double power) {
    return static_cast<float>(power) * std::log(kUsualWorth / worth);
}

// The picture's own, beside which most macroblocks' differ by little.
int Cheapest(std::span<const int> counts) {
    int cheapest = 1;
    int most = -1;
    for (int first = 1; first <= kCoarsest; ++first) {
        int within = 0;
        for (int q = first; q <= std::min(first + kShortDifference, kCoarsest); ++q)
            within += counts[Index(q)];
        if (within < most) continue;
        most = within;
        cheapest = first;
    }
    return cheapest;
}

}  // namespace

double QuantiserPart(std::span<const float> worth, double power) {
    double sum = 0;
    for (const float one : worth) sum += LogPart(one, power);
    return std::exp(sum / static_cast<double>(worth.size()));
}

void QuantiserMap::Choose(double quantiser, std::span<const double> activity,
                          std::span<const float> worth, double power) {
    log_parts_.clear();
    for (const float one : worth) log_parts_.push_back(LogPart(one, power));
    const float mean = std::accumulate(log_parts_.begin(), log_parts_.end(), 0.0F) /
                       std::max(1.0F, static_cast<float>(worth.size()));
    std::array<int, kCoarsest + 1> counts{};
    double sum = 0;
    for (std::size_t i = 0; i < quantisers_.size(); ++i) {
        float part = 1;
        if (!worth.empty()) part = std::exp(mean + kWithinPicture * (log_parts_[i] - mean));
        const double due = quantiser * part;
        const double step = kMasked + kMaskedPart * due;
        const double wanted =
            due + std::min(step * std::max(activity[i], -kMostBelow), kMostAbove * due);
        const int whole = std::clamp(static_cast<int>(std::lround(wanted)), 1, kCoarsestAsked);
        quantisers_[i] = static_cast<std::uint8_t>(whole);
        ++counts[Index(std::min(whole, kCoarsest))];
        sum += whole;
    }
    mean_ = sum / static_cast<double>(quantisers_.size());
    of_picture_ = Cheapest(counts);
}

}  // namespace codecs::wmv9
