// What holds for all pictures of a stream (SMPTE ST 421, Annex J: STRUCT_C).
#pragma once

#include <array>
#include <cstdint>

#include "codecs/wmv9/encoder.h"

namespace codecs::wmv9 {

/// The tools that are chosen once; what is not here is fixed: VSTRANSFORM on, QUANTIZER uniform for
/// all pictures, MULTIRES, RANGERED, SYNCMARKER and FINTERPFLAG off.
struct SequenceHeader {
    Profile profile = Profile::Main;    // PROFILE
    bool loop_filter = true;            // LOOPFILTER; Main only
    bool short_chroma_vectors = false;  // FASTUVMC; always in Simple, never otherwise
    bool extended_vectors = false;      // EXTENDED_MV; Main only
    bool varying_quantiser = false;     // DQUANT; Main only
    bool overlap = false;               // OVERLAP
    int most_b_pictures = 0;            // MAXBFRAMES: consecutive ones; 0 in Simple
    int rate_hint = 7;                  // FRMRTQ_POSTPROC, 0 to 7
    int bits_hint = 31;                 // BITRTQ_POSTPROC, 0 to 31

    std::array<std::uint8_t, 4> Bytes() const;
};

}  // namespace codecs::wmv9
