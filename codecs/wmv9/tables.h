// Code words and number tables of the format (SMPTE ST 421, Simple and Main profile).
#pragma once

#include <array>
#include <cstdint>

#include "codecs/common/bit_writer.h"

namespace codecs::wmv9 {

constexpr int kTransformClasses = 3;

/// DCStepSize, by quantiser.
extern const std::array<std::uint8_t, 32> kDcStep;
/// DQScale: 2^18 by a divisor, at its place less one: scales predictors from one quantiser to
/// another.
extern const std::array<std::int32_t, 63> kPredictorScale;

/// DATABITS of bit planes: two bits, the first one the lower; six bits, the first one the lowest.
extern const std::array<Code, 4> kPairs;
extern const std::array<Code, 64> kTiles;

/// CBPCY: which of a macroblock's blocks are coded, the first one in the highest bit; in I
/// pictures, and in others by CBPTAB.
extern const std::array<Code, 64> kIPattern;
extern const std::array<std::array<Code, 64>, 4> kPattern;
/// MVDATA by MVTAB: the symbol of a vector difference less one.
extern const std::array<std::array<Code, 73>, 4> kVector;

/// DCCOEF by TRANSDCTAB.
constexpr int kDcEscape = 119;
extern const std::array<std::array<Code, 120>, 2> kLumaDc;
extern const std::array<std::array<Code, 120>, 2> kChromaDc;

/// TTMB by class, then the type, with 8 more where it holds for the whole macroblock.
extern const std::array<std::array<Code, 16>, kTransformClasses> kMacroblockType;
/// TTBLK by class, then the symbol.
extern const std::array<std::array<Code, 8>, kTransformClasses> kBlockType;
extern const std::array<std::array<std::uint8_t, 8>, kTransformClasses> kBlockTypeSymbol;
/// SUBBLKPAT by class, then the mask of 4x4 blocks less one.
extern const std::array<std::array<Code, 15>, kTransformClasses> kSubBlocks;

/// Places of a block in coding order, rows of 8.
extern const std::array<std::uint8_t, 64> kScan8x8;
extern const std::array<std::uint8_t, 64> kScanI;
extern const std::array<std::uint8_t, 64> kScanIAbove;
extern const std::array<std::uint8_t, 64> kScanILeft;
extern const std::array<std::uint8_t, 32> kScan8x4;
extern const std::array<std::uint8_t, 32> kScan4x8;
extern const std::array<std::uint8_t, 16> kScan4x4;

}  // namespace codecs::wmv9
