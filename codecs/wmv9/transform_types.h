// How the transforms of a macroblock's blocks are named (SMPTE ST 421, 8.3.6.2): TTMB, TTBLK and
// SUBBLKPAT.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/common/bit_writer.h"
#include "codecs/common/index.h"
#include "codecs/wmv9/kernels.h"
#include "codecs/wmv9/macroblock.h"
#include "codecs/wmv9/scan.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {

/// One of 8: the whole block, which halves of it, or quarters.
constexpr int TransformType(Shape shape, int parts) {
    switch (shape) {
        case Shape::Whole8x8:
            break;
        case Shape::Wide8x4:
            return parts;
        case Shape::Tall4x8:
            return 3 + parts;
        case Shape::Small4x4:
            return 7;
    }
    return 0;
}

/// TTMB: of the first coded block of a macroblock.
inline Code FirstTypeCode(int transform_class, Shape shape, int parts, bool for_macroblock) {
    const int symbol = TransformType(shape, parts) + (for_macroblock ? 8 : 0);
    return kMacroblockType[Index(transform_class)][Index(symbol)];
}

/// TTBLK: of a later block that names its own.
inline Code LaterTypeCode(int transform_class, Shape shape, int parts) {
    const auto row = Index(transform_class);
    return kBlockType[row][kBlockTypeSymbol[row][Index(TransformType(shape, parts))]];
}

/// SUBBLKPAT: which halves or quarters are coded, where the type does not tell.
inline Code PartsCode(int transform_class, Shape shape, int parts) {
    if (shape == Shape::Whole8x8) return {};
    if (shape == Shape::Small4x4) return kSubBlocks[Index(transform_class)][Index(parts - 1)];
    if (parts == 3) return {0, 1};
    return {parts == 1 ? std::uint32_t{2} : std::uint32_t{3}, 2};
}

/// Names of the transforms of a macroblock, one coded block after the other.
class TypeNames {
  public:
    /// @param shape  of the whole picture, if it has one
    TypeNames(int transform_class, bool one_for_picture, bool block_types)
        : class_(transform_class), one_for_picture_(one_for_picture), block_types_(block_types) {}

    /// The code of the macroblock's type; empty where the picture has one. Before the blocks.
    Code Macroblock(Shape shape, int parts) const {
        return one_for_picture_ ? Code() : FirstTypeCode(class_, shape, parts, !block_types_);
    }
    struct Names {
        Code type;
        Code parts;
    };
    /// What stands before the levels of the next coded block.
    Names Next(Shape shape, int parts) {
        const bool first = first_;
        first_ = false;
        if (one_for_picture_) return {{}, PartsCode(class_, shape, parts)};
        const bool named = first || block_types_;  // with its halves
        Names names;
        if (!first && block_types_) names.type = LaterTypeCode(class_, shape, parts);
        if (!named || shape == Shape::Small4x4) names.parts = PartsCode(class_, shape, parts);
        return names;
    }

  private:
    int class_;
    bool one_for_picture_;
    bool block_types_;
    bool first_ = true;
};

/// Where a part of a block begins, in the block's rows of 8.
constexpr int PartPlace(Shape shape, int part) {
    switch (shape) {
        case Shape::Whole8x8:
            break;
        case Shape::Wide8x4:
            return 32 * part;
        case Shape::Tall4x8:
            return 4 * part;
        case Shape::Small4x4:
            return 32 * (part >> 1) + 4 * (part & 1);
    }
    return 0;
}

inline const Scan& PartScan(Shape shape) { return kPartScans[static_cast<std::size_t>(shape)]; }

/// Whether a part is coded; the first one has the highest bit.
constexpr bool HasPart(Shape shape, int parts, int part) {
    return (parts >> (PartCount(shape) - 1 - part) & 1) != 0;
}

/// The 4x4 quarters of a block that a coded transform touches: 8 top left, 4 top right, 2 bottom
/// left, 1 bottom right.
constexpr int CodedQuarters(Shape shape, int parts) {
    switch (shape) {
        case Shape::Whole8x8:
            return parts != 0 ? 15 : 0;
        case Shape::Wide8x4:
            return ((parts & 2) != 0 ? 12 : 0) | ((parts & 1) != 0 ? 3 : 0);
        case Shape::Tall4x8:
            return ((parts & 2) != 0 ? 10 : 0) | ((parts & 1) != 0 ? 5 : 0);
        case Shape::Small4x4:
            break;
    }
    return parts;
}

}  // namespace codecs::wmv9
