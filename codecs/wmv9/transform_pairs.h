// The factors of the SIMD transforms, which take products in pairs.
#pragma once

#include <cstdint>

#include "codecs/wmv9/transform_bases.h"

namespace codecs::wmv9 {

/// Each row has two factors for each of four sums, and the same again for a second row of a block.
struct FactorPairs {
    std::int16_t rows[8][16];
};

/// To samples 0..3 of a line of eight, from coefficients 0 and 4, 2 and 6, 1 and 3, 5 and 7.
constexpr FactorPairs InversePairs8() {
    constexpr int kFrequencies[4][2] = {{0, 4}, {2, 6}, {1, 3}, {5, 7}};
    FactorPairs pairs = {};
    for (int row = 0; row < 4; ++row)
        for (int i = 0; i < 16; ++i)
            pairs.rows[row][i] = kBasis8[kFrequencies[row][i % 2]][i / 2 % 4];
    return pairs;
}

/// To the samples of a line of four, from coefficients 0 and 1, 2 and 3.
constexpr FactorPairs InversePairs4() {
    FactorPairs pairs = {};
    for (int row = 0; row < 2; ++row)
        for (int i = 0; i < 16; ++i) pairs.rows[row][i] = kBasis4[2 * row + i % 2][i / 2 % 4];
    return pairs;
}

/// To coefficients 0..3 of a line of eight, from samples 0 and 1, 2 and 3, 4 and 5, 6 and 7, and
/// then to coefficients 4..7.
constexpr FactorPairs ForwardPairs8() {
    FactorPairs pairs = {};
    for (int row = 0; row < 8; ++row)
        for (int i = 0; i < 16; ++i)
            pairs.rows[row][i] = kBasis8[row / 4 * 4 + i / 2 % 4][2 * (row % 4) + i % 2];
    return pairs;
}

/// To the coefficients of a line of four, from samples 0 and 1, 2 and 3.
constexpr FactorPairs ForwardPairs4() {
    FactorPairs pairs = {};
    for (int row = 0; row < 2; ++row)
        for (int i = 0; i < 16; ++i) pairs.rows[row][i] = kBasis4[i / 2 % 4][2 * row + i % 2];
    return pairs;
}

alignas(32) inline constexpr FactorPairs kInversePairs8 = InversePairs8();
alignas(32) inline constexpr FactorPairs kInversePairs4 = InversePairs4();
alignas(32) inline constexpr FactorPairs kForwardPairs8 = ForwardPairs8();
alignas(32) inline constexpr FactorPairs kForwardPairs4 = ForwardPairs4();

}  // namespace codecs::wmv9
