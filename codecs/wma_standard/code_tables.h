// The variable-length codes of the bitstream.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "codecs/common/bit_writer.h"

namespace codecs::wma_standard {

constexpr int kMostExponentDifference = 60;
constexpr int kMostNoiseDifference = 18;

/// -60 to 60.
Code ExponentDifferenceCode(int difference);
/// -18 to 18.
Code NoiseDifferenceCode(int difference);

/// Codes of coefficients: of the escape, of the end of a block, then of each magnitude from 1 on
/// with each number of zeros before it, from none on.
struct CoefficientTable {
    std::span<const std::uint32_t> codes;
    std::span<const std::uint16_t> runs;  // how many numbers of zeros each magnitude has

    Code CodeAt(int symbol) const;
};
constexpr int kEscapeSymbol = 0;
constexpr int kEndSymbol = 1;
constexpr int kFirstSymbol = 2;

/// For all but the difference of two channels, and for that.
using CoefficientTables = std::array<CoefficientTable, 2>;
/// By how many bits a stream has for a coefficient.
const CoefficientTables& LowRateTables();
const CoefficientTables& MiddleRateTables();
const CoefficientTables& HighRateTables();

}  // namespace codecs::wma_standard
