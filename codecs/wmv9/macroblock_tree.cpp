#include "codecs/wmv9/macroblock_tree.h"

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBlock = 8;

}  // namespace

// To the picture before it.
void MacroblockTree::Propagate(const Lookahead& lookahead, int number) {
    const std::vector<float>& carried = carried_[Index(end_ - 1 - number)];
    std::vector<float>& to = carried_[Index(end_ - number)];
    const int columns = lookahead.Columns();
    const int rows = lookahead.Rows();
    const std::vector<Lookahead::Move>& moves = lookahead.Moves(number);
    const std::vector<std::uint32_t>& own = lookahead.OwnCosts(number);
    const std::vector<float>& still = lookahead.SavedByStill(number);
    const auto cost = [&](std::size_t place) {
        return carried[place] + static_cast<float>(static_cast<std::int32_t>(own[place]));
    };
    to.resize(own.size());
    for (std::size_t place = 0; place < own.size(); ++place) to[place] = still[place] * cost(place);
    const auto add = [&](int column, int row, float amount) {
        if (column < 0 || row < 0 || column >= columns || row >= rows) return;
        to[Index(row) * Index(columns) + Index(column)] += amount;
    };
    for (const auto& [place, part] : lookahead.SavedByMoving(number)) {
        // The block that predicts it lies over up to four.
        const Lookahead::Move& move = moves[Index(place)];
        const int left = kBlock * (place % columns) + (move.x >> 1);
        const int top = kBlock * (place / columns) + (move.y >> 1);
        const int x = left & (kBlock - 1);
        const int y = top & (kBlock - 1);
        const int c = (left - x) / kBlock;
        const int r = (top - y) / kBlock;
        const float unit = part * cost(Index(place)) / (kBlock * kBlock);
        add(c, r, unit * static_cast<float>((kBlock - x) * (kBlock - y)));
        if (x != 0) add(c + 1, r, unit * static_cast<float>(x * (kBlock - y)));
        if (y != 0) add(c, r + 1, unit * static_cast<float>((kBlock - x) * y));
        if (x != 0 && y != 0) add(c + 1, r + 1, unit * static_cast<float>(x * y));
    }
}

std::span<const float> MacroblockTree::Worth(const Lookahead& lookahead, int number) {
    const std::vector<std::uint32_t>& own = lookahead.OwnCosts(number);
    if (end_ != lookahead.End()) {
        end_ = lookahead.End();
        known_ = 1;
        if (carried_.empty()) carried_.emplace_back(own.size());
    }
    const int needed = end_ - number;
    if (Index(needed) > carried_.size()) carried_.resize(Index(needed));
    for (; known_ < needed; ++known_) Propagate(lookahead, end_ - known_);
    const std::vector<float>& carried = carried_[Index(needed - 1)];
    worth_.resize(own.size());
    for (std::size_t i = 0; i < own.size(); ++i)
        worth_[i] = 1 + carried[i] / static_cast<float>(own[i]);
    return worth_;
}

}  // namespace codecs::wmv9
