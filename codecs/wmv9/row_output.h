// What the macroblocks of a row have come to: their levels in coding order, and what they would
// take with each table.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/candidate.h"
#include "codecs/wmv9/motion_vector_codes.h"
#include "codecs/wmv9/picture.h"
#include "codecs/wmv9/scan.h"

namespace codecs::wmv9 {

constexpr int kAcChoices = 3;

/// Counts that the choice of a picture's tables follows from.
struct TableCounts {
    std::array<std::int64_t, kAcChoices> luma_levels{};   // bits, of intra luma
    std::array<std::int64_t, kAcChoices> other_levels{};  // bits, of all other blocks
    std::array<std::uint32_t, kVectorSymbols> vectors{};
    std::array<std::uint32_t, 64> patterns{};
    std::array<std::uint32_t, 120> luma_dc{};
    std::array<std::uint32_t, 120> chroma_dc{};
    int largest_level = 0;

    TableCounts& operator+=(const TableCounts& other);
};

class RowOutput {
  public:
    void Clear();
    /// In order; `levels` as they are written.
    void Add(const Picture& picture, const Macroblock& macroblock, const Blocks& levels);

    const std::vector<Symbol>& Symbols() const { return symbols_; }
    const TableCounts& Counts() const { return counts_; }

  private:
    // `present`: places of the scan.
    void AddLevels(const std::int16_t* levels, const Scan& scan, std::uint64_t present,
                   bool intra_luma, bool high_rate);
    void AddVectors(const Picture& picture, const Macroblock& macroblock);

    std::vector<Symbol> symbols_;
    TableCounts counts_;
};

/// The pattern of coded blocks (CBPCY) as it is written in P and B pictures: with 4MV, a bit of
/// luma says that the block has a vector difference or is coded.
int WrittenPattern(const Macroblock& macroblock);

}  // namespace codecs::wmv9
