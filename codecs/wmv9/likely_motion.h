// Where the macroblocks of a picture are likely to be found in its references.
#pragma once

#include <optional>

#include "codecs/wmv9/coding_state.h"
#include "codecs/wmv9/encoder.h"
#include "codecs/wmv9/lookahead.h"

namespace codecs::wmv9 {

/// By the moves of the look-ahead, from picture to picture; nothing where it does not know them.
class LikelyMotion {
  public:
    /// Of picture `number` of the look-ahead, -1 = not there, coded after `state`.
    LikelyMotion(const Lookahead& lookahead, PictureKind kind, int number,
                 const CodingState& state);

    /// Where a macroblock was in the reference before the picture.
    std::optional<Displacement> InPast(int column, int row) const;
    /// Of a B picture: where the macroblock there of its later reference was in it.
    std::optional<Displacement> FromFuture(int column, int row) const;

  private:
    struct Way {
        int number = 0;
        int earlier = 0;
    };
    std::optional<Way> Known(int number, int earlier) const;
    std::optional<Displacement> Along(const std::optional<Way>& way, int column, int row) const;

    const Lookahead& lookahead_;
    std::optional<Way> to_past_;
    std::optional<Way> from_future_;
};

}  // namespace codecs::wmv9
