// Code words of runs and levels (SMPTE ST 421, 11.8).
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

/// The code of a level after a run of zeros; its sign follows.
struct AcEntry {
    std::uint8_t last;  // 1 = nothing follows in the block
    std::uint8_t run;
    std::uint8_t level;
    std::uint32_t bits;
    std::uint8_t length;
};

struct AcTable {
    Code escape;
    std::span<const AcEntry> entries;
};

/// In pairs, for luma of intra blocks and for all other blocks: high rate, low motion, high motion,
/// mid rate.
constexpr int kAcTableCount = 8;
extern const std::array<AcTable, kAcTableCount> kAcTables;

}  // namespace codecs::wmv9
