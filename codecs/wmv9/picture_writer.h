// Puts a picture into bits once its macroblocks are known (SMPTE ST 421, 7 and 8).
#pragma once

#include <cstddef>
#include <span>

#include "codecs/common/bit_writer.h"
#include "codecs/common/task_team.h"
#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/picture.h"
#include "codecs/wmv9/row_output.h"

namespace codecs::wmv9 {

/// Bits of a macroblock each.
struct PicturePlanes {
    PicturePlanes(int width, int height)
        : four_mv(width, height), skipped(width, height), direct(width, height) {}
    void TakeRow(const MacroblockGrid& grid, int y);

    BitPlane four_mv;  // MVTYPEMB
    BitPlane skipped;  // SKIPMB
    BitPlane direct;   // DIRECTMB
};

/// The tables and plane codings that take the fewest bits.
void ChooseTables(PictureHeader& header, const TableCounts& counts, const PicturePlanes& planes);

/// Some rows of a picture, one after the other.
struct WrittenRows {
    BitWriter bits;
    AcWriter::Sizes sizes;       // that the picture has once
    std::size_t level_bits = 0;  // among the bits
};

/// Writes whole bytes. Returns the bits of the levels among them.
/// @param parts  room for rows that the team writes side by side; at least one, changes no output
std::size_t WritePicture(BitWriter& out, const Picture& picture, const PicturePlanes& planes,
                         std::span<const RowOutput> rows, std::span<WrittenRows> parts,
                         TaskTeam& team);

}  // namespace codecs::wmv9
