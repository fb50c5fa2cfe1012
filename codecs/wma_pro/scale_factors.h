// Scale factors as bits.
#pragma once

#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"

namespace codecs::wma_pro {

/// Decibels of a scale factor.
constexpr int kLeastScaleStep = 1;
constexpr int kMostScaleStep = 4;

/// All factors, each by its difference to the one before. Only their differences matter.
/// @param step_db  of each, 1 to 4
void WriteWholeFactors(std::span<const int> factors, int step_db, BitWriter& writer);

/// Those that differ from `before`, which has as many.
void WriteFactorChanges(std::span<const int> before, std::span<const int> factors,
                        BitWriter& writer);

/// Factors of a block's bands for one of another size, or of the same.
/// @param from_ends  where bands end, for blocks of `from_size` coefficients
std::vector<int> ResampleFactors(std::span<const int> factors, std::span<const int> from_ends,
                                 int from_size, std::span<const int> to_ends, int to_size);

}  // namespace codecs::wma_pro
