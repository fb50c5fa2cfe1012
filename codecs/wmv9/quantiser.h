// What a macroblock's quantiser stands for.
#pragma once

#include <cstdint>

namespace codecs::wmv9 {

/// Coefficients are counted in eighths, errors in their squares. Of the transforms' rows all have
/// nearly the same energy, so that one squared eighth is worth the same everywhere.
constexpr int kEighths = 8;
constexpr double kErrorOfSquaredSample = kEighths * kEighths / 1.28;

/// Where levels are chosen by bits and error. Chosen by hand on the clips of bench/quality, see
/// docs/video9.md.
constexpr double kBitWorth = 0.2;

constexpr int kCoarsest = 31;

struct Quantiser {
    int number = 1;  // 1 to 31
    int step = 2;    // between reconstructed levels
    int dc_step = 2;
    std::uint32_t reciprocal = 0;     // for Kernels::quantise
    std::int64_t lambda = 0;          // what a bit is worth, in squared eighths
    std::int64_t level_lambda = 0;    // the same where levels are chosen
    std::uint32_t search_lambda = 0;  // in absolute differences, in sixteenths

    /// @param bit_worth  what a bit is worth, in squared steps
    static Quantiser Make(int number, int step, double bit_worth = kBitWorth);
    /// The coarsest one, with bits worth what they are at a coarser one of that number.
    static Quantiser Beyond(int number, double bit_worth);
};

}  // namespace codecs::wmv9
