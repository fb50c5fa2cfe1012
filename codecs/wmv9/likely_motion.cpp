#include "codecs/wmv9/likely_motion.h"

namespace codecs::wmv9 {

void LikelyMotion::Find(const Lookahead& lookahead, PictureKind kind, int number,
                        const CodingState& state) {
    const auto trace = [&](int from, int to, std::vector<Displacement>& out) {
        out.clear();
        if (to >= 0 && to < from && lookahead.Has(to + 1) && lookahead.Has(from))
            lookahead.Trace(from, to, out);
    };
    const bool is_b = kind == PictureKind::kB;
    trace(kind == PictureKind::kI ? -1 : number, is_b ? state.earlier_number : state.later_number,
          in_past);
    trace(is_b ? state.later_number : -1, number, from_future);
}

}  // namespace codecs::wmv9
