// The variable-length codes of the bitstream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"

namespace codecs::wma_pro {

constexpr int kMostScaleFactorDifference = 60;

/// -60 to 60.
Code ScaleFactorDifferenceCode(int difference);

/// Codes of pairs of a run (of zeros, of bands without a change) and the level behind it.
class RunLevelCodes {
  public:
    /// @param codes  of the escape, of the end, then of each level from 1 on with each run
    /// @param runs   how many runs, from none on, each level has
    RunLevelCodes(std::span<const std::uint32_t> codes, std::span<const std::uint16_t> runs);

    static constexpr int kEscapeSymbol = 0;
    static constexpr int kEndSymbol = 1;

    /// The escape's where the pair has none. `level` is above 0.
    int SymbolFor(int run, int level) const {
        const auto row = static_cast<std::size_t>(level) - 1;
        return row < runs_.size() && run < runs_[row] ? first_symbols_[row] + run : kEscapeSymbol;
    }
    Code CodeAt(int symbol) const { return codes_[static_cast<std::size_t>(symbol)]; }

  private:
    static constexpr int kFirstSymbol = 2;

    std::span<const std::uint16_t> runs_;
    std::vector<int> first_symbols_;
    std::vector<Code> codes_;
};

const RunLevelCodes& ScaleFactorChangeCodes();

constexpr int kCoefficientTables = 2;
/// 0 or 1.
const RunLevelCodes& CoefficientRunLevelCodes(int table);

/// Of magnitudes together, in lexicographic order: four of up to 5 in sum, two of up to 15, one of
/// up to 99. The symbol behind them is the escape.
constexpr int kMostFourSum = 5;
constexpr int kMostTwoSum = 15;
constexpr int kMostOne = 99;
constexpr int kFourEscape = 126;
constexpr int kTwoEscape = 136;
constexpr int kOneEscape = 100;
Code FourCode(int symbol);
Code TwoCode(int symbol);
Code OneCode(int symbol);

}  // namespace codecs::wma_pro
