#include "codecs/wmv9/trial_decision.h"

#include <cstring>

namespace codecs::wmv9 {
namespace {

// The second and third eighth of the rows, and the sixth and seventh.
bool IsTried(int y, int height) { return (8 * y / height + 1) / 2 % 2 != 0; }

}  // namespace

void TrialDecision::Choose(const Picture& picture, const Estimates& estimates, int x, int y,
                           Candidate& out) const {
    if (IsTried(y, picture.Height())) return decision_.Choose(picture, estimates, x, y, out);
    out.macroblock = {};
    out.macroblock.skipped = true;
    out.macroblock.direction = Direction::Direct;
    out.macroblock.quantiser = static_cast<std::uint8_t>(picture.header.quantiser);
    for (int n = 0; n < kBlocks; ++n) {
        const BlockPlace& place = kBlockPlaces[Index(n)];
        const std::uint8_t* from = SourceBlock(picture.source, x, y, n);
        std::uint8_t* to = out.samples.Block(n);
        for (int row = 0; row < 8; ++row, to += place.stride)
            std::memcpy(to, from + row * picture.source[place.plane].stride, 8);
    }
}

}  // namespace codecs::wmv9
