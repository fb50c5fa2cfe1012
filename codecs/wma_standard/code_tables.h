// The variable-length codes of the bitstream.
#pragma once

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

/// 0 to 5.
const CoefficientTable& CoefficientTableOf(int number);

}  // namespace codecs::wma_standard
