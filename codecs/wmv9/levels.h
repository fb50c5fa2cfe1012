// Chooses the levels of a transform by their bits and their error.
#pragma once

#include <cstdint>

#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/quantiser.h"
#include "codecs/wmv9/scan.h"

namespace codecs::wmv9 {

/// What the levels of a transform come to.
struct LevelCost {
    int bits = 0;
    std::int64_t change = 0;  // of the error, in squared eighths, beside nothing transmitted
    bool any = false;         // is transmitted

    std::int64_t RdCost(std::int64_t lambda) const { return change + lambda * bits; }
};

/// One transform of a block; `scan` leaves out what is not coded as a level.
struct TransformBlock {
    const std::int16_t* coefficients = nullptr;  // eighths, rows of 8
    std::int16_t* levels = nullptr;              // quantised, rows of 8
    const Scan& scan;
    std::uint64_t changed = 0;                // places of the scan; levels are not as predicted
    const std::int16_t* predicted = nullptr;  // levels, rows of 8; null = none
};

/// How the levels that ChooseLevels begins with are rounded, as a part of a step: what is further
/// below a level never pays for its bits. Chosen by hand on the clips of bench/quality.
constexpr double kChoiceRounding = 0.36;

/// Lowers the levels, by one or to nothing, to the least error + lambda * bits, by dynamic
/// programming over what is the last level before each one. Leaves none where that costs no more.
LevelCost ChooseLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes);

/// Bits and error of the levels as they are.
LevelCost CostOfLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes);

}  // namespace codecs::wmv9
