// What things are expected to take in the picture in hand, before its tables are chosen.
#pragma once

#include "codecs/common/index.h"
#include "codecs/wmv9/ac_codes.h"
#include "codecs/wmv9/motion_vector_codes.h"
#include "codecs/wmv9/picture.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {

/// By the tables that the header names so far: those of the last picture of its kind.
struct Estimates {
    explicit Estimates(const PictureHeader& header)
        : vectors(header),
          pattern(header.IsI() ? kIPattern : kPattern[Index(header.pattern_table)]),
          intra_luma(AcCodes::All()[Index(AcTablePlace(
              header.IsI() ? header.luma_ac_table : header.ac_table, header.HighRate(), true))]),
          other(AcCodes::All()[Index(AcTablePlace(header.ac_table, header.HighRate(), false))]),
          luma_dc(kLumaDc[Index(header.dc_table)]),
          chroma_dc(kChromaDc[Index(header.dc_table)]) {}

    const AcCodes& Levels(bool intra, int block) const {
        return intra && block < 4 ? intra_luma : other;
    }

    VectorCosts vectors;
    const std::array<Code, 64>& pattern;
    const AcCodes& intra_luma;
    const AcCodes& other;
    const std::array<Code, 120>& luma_dc;
    const std::array<Code, 120>& chroma_dc;
};

}  // namespace codecs::wmv9
