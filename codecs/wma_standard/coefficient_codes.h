// Sequences of quantised coefficients as pairs of a run of zeros and a magnitude.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/wma_standard/code_tables.h"

namespace codecs::wma_standard {

/// Magnitudes above this one cannot be coded in a block with that gain.
int MostMagnitude(int gain);

/// One table of codes in the stream of a frame size.
class CoefficientCodes {
  public:
    CoefficientCodes(const CoefficientTable& table, int frame_samples);

    /// Of a block's whole sequence. No magnitude is above what the gain allows.
    int Bits(std::span<const std::int16_t> levels, int gain) const;
    void Write(std::span<const std::int16_t> levels, int gain, BitWriter& writer) const;

  private:
    struct Magnitude {
        int symbol = 0;  // without zeros before it
        int runs = 0;
    };
    static constexpr int kMagnitudes = 512;

    // The symbol, or the escape's.
    int SymbolFor(int run, int magnitude) const {
        if (magnitude >= kMagnitudes) return kEscapeSymbol;
        const Magnitude& row = magnitudes_[static_cast<std::size_t>(magnitude)];
        return run < row.runs ? row.symbol + run : kEscapeSymbol;
    }

    CoefficientTable table_;
    int run_bits_;  // of a run behind an escape
    std::array<Magnitude, kMagnitudes> magnitudes_{};
    std::vector<std::uint8_t> lengths_;  // of the codes, with the sign's bit
};

}  // namespace codecs::wma_standard
