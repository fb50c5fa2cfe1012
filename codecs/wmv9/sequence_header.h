// What holds for all pictures of a stream (SMPTE ST 421, Annex J: STRUCT_C).
#pragma once

#include <array>
#include <cstdint>

#include "codecs/wmv9/encoder.h"

namespace codecs::wmv9 {

/// The tools that are chosen once; what is not here is fixed: variable transform sizes on, explicit
/// uniform quantiser, no pictures of other sizes or ranges, no markers.
struct SequenceHeader {
    Profile profile = Profile::Main;
    bool loop_filter = true;            // Main only
    bool short_chroma_vectors = false;  // half-pel; always in Simple, never otherwise
    bool extended_vectors = false;      // Main only
    bool varying_quantiser = false;     // Main only
    bool overlap = false;
    int most_b_pictures = 0;  // consecutive ones; 0 in Simple
    int rate_hint = 7;        // 0 to 7
    int bits_hint = 31;       // 0 to 31

    std::array<std::uint8_t, 4> Bytes() const;
};

}  // namespace codecs::wmv9
