#include "codecs/wmv9/likely_motion.h"

namespace codecs::wmv9 {

LikelyMotion::LikelyMotion(const Lookahead& lookahead, PictureKind kind, int number,
                           const CodingState& state)
    : lookahead_(lookahead) {
    if (kind == PictureKind::kP) to_past_ = Known(number, state.later_number);
    if (kind != PictureKind::kB) return;
    to_past_ = Known(number, state.earlier_number);
    from_future_ = Known(state.later_number, number);
}

std::optional<LikelyMotion::Way> LikelyMotion::Known(int number, int earlier) const {
    if (earlier < 0 || earlier >= number) return {};
    if (!lookahead_.Has(earlier + 1) || !lookahead_.Has(number)) return {};
    return Way{number, earlier};
}

std::optional<Displacement> LikelyMotion::Along(const std::optional<Way>& way, int column,
                                                int row) const {
    if (!way) return {};
    return lookahead_.Trace(way->number, way->earlier, column, row);
}

std::optional<Displacement> LikelyMotion::InPast(int column, int row) const {
    return Along(to_past_, column, row);
}

std::optional<Displacement> LikelyMotion::FromFuture(int column, int row) const {
    return Along(from_future_, column, row);
}

}  // namespace codecs::wmv9
