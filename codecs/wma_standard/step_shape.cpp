#include "codecs/wma_standard/step_shape.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wma_standard/code_tables.h"

namespace codecs::wma_standard {
namespace {

// How far from the wanted exponent is looked for a cheaper one.
constexpr int kReach = 4;
constexpr int kChoices = 2 * kReach + 1;
constexpr int kMostBands = 32;
constexpr int kLeastExponent = -kMostExponentDifference;

float Bits(int difference) {
    static const auto all = [] {
        std::array<float, 2 * kMostExponentDifference + 1> made{};
        for (int i = 0; i < static_cast<int>(made.size()); ++i)
            made[Index(i)] = ExponentDifferenceCode(i - kMostExponentDifference).length;
        return made;
    }();
    return all[Index(difference + kMostExponentDifference)];
}

float Loss(float wanted, float weight, int exponent) {
    const float beside = static_cast<float>(exponent) - wanted;
    return weight * beside * beside;
}

// Decoders measure exponents by the channel's largest one. Returns what it costs that one is 0.
double RaiseOne(std::span<const float> wanted, std::span<const float> weights,
                std::span<int> shape) {
    if (std::ranges::find(shape, 0) != shape.end()) return 0;
    float least = std::numeric_limits<float>::max();
    std::size_t best = 0;
    for (std::size_t b = 0; b < shape.size(); ++b) {
        float cost = Loss(wanted[b], weights[b], 0) - Loss(wanted[b], weights[b], shape[b]);
        const auto count = [&](int before, int after) { cost += Bits(after) - Bits(before); };
        // The first one is written as no difference at all.
        if (b > 0) count(shape[b] - shape[b - 1], -shape[b - 1]);
        if (b + 1 < shape.size()) count(shape[b + 1] - shape[b], shape[b + 1]);
        if (cost >= least) continue;
        least = cost;
        best = b;
    }
    shape[best] = 0;
    return least;
}

}  // namespace

double ChooseShape(std::span<const float> wanted, std::span<const float> weights,
                   std::span<int> shape) {
    const std::size_t bands = wanted.size();
    assert(bands > 0 && bands <= kMostBands);
    // The cheapest way to each choice of a band, and from which choice of the band before.
    std::array<float, kChoices> costs{};
    std::array<std::array<std::uint8_t, kChoices>, kMostBands> from{};
    std::array<std::array<int, kChoices>, kMostBands> exponents;
    for (std::size_t b = 0; b < bands; ++b) {
        const int nearest = static_cast<int>(std::lround(wanted[b]));
        for (int choice = 0; choice < kChoices; ++choice)
            exponents[b][Index(choice)] = std::clamp(nearest - kReach + choice, kLeastExponent, 0);
        std::array<float, kChoices> next{};
        for (int to = 0; to < kChoices; ++to) {
            float least = b == 0 ? 0 : std::numeric_limits<float>::max();
            for (int choice = 0; b > 0 && choice < kChoices; ++choice) {
                const int difference = exponents[b][Index(to)] - exponents[b - 1][Index(choice)];
                const float cost = costs[Index(choice)] + Bits(difference);
                if (cost >= least) continue;
                least = cost;
                from[b][Index(to)] = static_cast<std::uint8_t>(choice);
            }
            next[Index(to)] = least + Loss(wanted[b], weights[b], exponents[b][Index(to)]);
        }
        costs = next;
    }
    const auto best = std::min_element(costs.begin(), costs.end());
    int choice = static_cast<int>(best - costs.begin());
    for (std::size_t b = bands; b-- > 0;) {
        shape[b] = exponents[b][Index(choice)];
        choice = from[b][Index(choice)];
    }
    return *best + RaiseOne(wanted, weights, shape);
}

double ShapeLoss(std::span<const float> wanted, std::span<const float> weights,
                 std::span<const int> shape) {
    double loss = 0;
    for (std::size_t b = 0; b < shape.size(); ++b) loss += Loss(wanted[b], weights[b], shape[b]);
    return loss;
}

}  // namespace codecs::wma_standard
