// Where the macroblocks of a picture are likely to be found in its references.
#pragma once

#include <vector>

#include "codecs/wmv9/coding_state.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/lookahead.h"

namespace codecs::wmv9 {

/// By the moves of the look-ahead, from picture to picture; empty where it does not know them.
struct LikelyMotion {
    std::vector<Displacement> in_past;  // of macroblocks, row by row
    std::vector<Displacement>
        from_future;  // of a B picture: of those of its later reference, in it

    /// Of picture `number` of the look-ahead, -1 = not there, coded after `state`.
    void Find(const Lookahead& lookahead, PictureKind kind, int number, const CodingState& state);
};

}  // namespace codecs::wmv9
