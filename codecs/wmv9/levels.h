// Chooses the levels of a transform by their bits and their error.
#pragma once

#include <cstdint>
#include <span>

#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/quantiser.h"

namespace codecs::wmv9 {

/// What the levels of a transform come to.
struct LevelCost {
    int bits = 0;
    std::int64_t error = 0;   // squared eighths
    std::int64_t silent = 0;  // what it would be if nothing were transmitted
    bool any = false;         // is transmitted

    std::int64_t Joint(std::int64_t lambda) const { return error + lambda * bits; }
};

/// One transform of a block; `scan` leaves out what is not coded as a level.
struct TransformBlock {
    const std::int16_t* coefficients = nullptr;  // eighths, rows of 8
    std::int16_t* levels = nullptr;              // rows of 8
    std::span<const std::uint8_t> scan;
    const std::int16_t* predicted = nullptr;  // levels, rows of 8; null = none
};

/// The levels with the least error + lambda * bits, by dynamic programming over what is the last
/// level before each one. They are never further from the coefficient than the nearest level, and
/// never nothing at all: that is the caller's to compare with.
LevelCost ChooseLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes);

/// Bits and error of given levels.
LevelCost CostOfLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes);

}  // namespace codecs::wmv9
