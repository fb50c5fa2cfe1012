// The basis functions of the transforms, and what undoes their lengths (SMPTE ST 421, annex A).
#pragma once

#include <cstdint>

namespace codecs::wmv9 {

// clang-format off
// A row is a basis function.
inline constexpr std::int16_t kBasis8[8][8] = {
    {12,  12,  12,  12,  12,  12,  12,  12},
    {16,  15,   9,   4,  -4,  -9, -15, -16},
    {16,   6,  -6, -16, -16,  -6,   6,  16},
    {15,  -4, -16,  -9,   9,  16,   4, -15},
    {12, -12, -12,  12,  12, -12, -12,  12},
    { 9, -16,   4,  15, -15,  -4,  16,  -9},
    { 6, -16,  16,  -6,  -6,  16, -16,   6},
    { 4,  -9,  15, -16,  16, -15,   9,  -4},
};
inline constexpr std::int16_t kBasis4[4][4] = {
    {17,  17,  17,  17},
    {22,  10, -10, -22},
    {17, -17, -17,  17},
    {10, -22,  22, -10},
};
// Sums of their squares.
inline constexpr int kEnergy8[8] = {1152, 1156, 1168, 1156, 1152, 1156, 1168, 1156};
inline constexpr int kEnergy4[4] = {1156, 1168, 1156, 1168};
// clang-format on

/// For each place of a block, what turns the products of samples and basis functions, divided by
/// 128, into eighths of coefficients: 1024 * 8 * 128 / (energy * energy), times 32768.
struct ForwardScale {
    std::int16_t wide_tall[2][2][64];  ///< [width is 4][height is 4]

    constexpr ForwardScale() : wide_tall() {
        for (int narrow = 0; narrow < 2; ++narrow)
            for (int low = 0; low < 2; ++low)
                for (int place = 0; place < 64; ++place) {
                    const int across = narrow != 0 ? kEnergy4[place % 4] : kEnergy8[place % 8];
                    const int down = low != 0 ? kEnergy4[place / 8 % 4] : kEnergy8[place / 8];
                    const std::int64_t energy = std::int64_t{across} * down;
                    wide_tall[narrow][low][place] =
                        static_cast<std::int16_t>(((std::int64_t{1} << 35) + energy / 2) / energy);
                }
    }
};
alignas(32) inline constexpr ForwardScale kForwardScale;

}  // namespace codecs::wmv9
