// Quantised coefficients as bits: the first four at a time, the others as runs and levels.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "codecs/common/bit_writer.h"
#include "codecs/wma_pro/frame.h"

namespace codecs::wma_pro {

/// For blocks of one size. One thread.
class CoefficientCodes {
  public:
    explicit CoefficientCodes(int block_size);

    /// Of how many bits of a count of coefficients that go four at a time.
    int CountBits() const { return count_bits_; }

    /// The way that takes the fewest bits. What lies behind `levels` is zero; one of them is not.
    CoefficientPlan Plan(std::span<const int> levels);
    void Write(std::span<const int> levels, const CoefficientPlan& plan, BitWriter& writer) const;

  private:
    int EscapeBits(int table, int run, int magnitude) const;
    int RunLevelBits(int table, int run, int magnitude) const;
    void WriteRunLevel(int table, int run, int level, BitWriter& writer) const;

    int block_size_;
    int count_bits_;
    int long_run_bits_;
    std::vector<int> prefix_bits_;  // of the first coefficients four at a time, by groups
};

}  // namespace codecs::wma_pro
