#include "codecs/wmv9/macroblock_tree.h"

#include <algorithm>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBlock = 8;

}  // namespace

// To the picture before it.
void MacroblockTree::Propagate(const Lookahead& lookahead, int number) {
    const int columns = lookahead.Columns();
    const int rows = lookahead.Rows();
    const std::vector<Lookahead::Move>& moves = lookahead.Moves(number);
    const std::vector<std::uint32_t>& own = lookahead.OwnCosts(number);
    const std::vector<float>& saved = lookahead.SavedParts(number);
    to_.assign(own.size(), 0);
    const auto add = [&](int column, int row, float amount) {
        if (column < 0 || row < 0 || column >= columns || row >= rows) return;
        to_[Index(row) * Index(columns) + Index(column)] += amount;
    };
    std::size_t place = 0;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column, ++place) {
            const float amount = saved[place] * (carried_[place] + static_cast<float>(own[place]));
            const Lookahead::Move& move = moves[place];
            if (move.x == 0 && move.y == 0) {
                to_[place] += amount;
                continue;
            }
            // The block that predicts it lies over up to four.
            const int left = kBlock * column + (move.x >> 1);
            const int top = kBlock * row + (move.y >> 1);
            const int x = left & (kBlock - 1);
            const int y = top & (kBlock - 1);
            const int c = (left - x) / kBlock;
            const int r = (top - y) / kBlock;
            const float unit = amount / (kBlock * kBlock);
            add(c, r, unit * static_cast<float>((kBlock - x) * (kBlock - y)));
            if (x != 0) add(c + 1, r, unit * static_cast<float>(x * (kBlock - y)));
            if (y != 0) add(c, r + 1, unit * static_cast<float>((kBlock - x) * y));
            if (x != 0 && y != 0) add(c + 1, r + 1, unit * static_cast<float>(x * y));
        }
    }
    std::swap(carried_, to_);
}

std::span<const float> MacroblockTree::Worth(const Lookahead& lookahead, int number) {
    const std::vector<std::uint32_t>& own = lookahead.OwnCosts(number);
    carried_.assign(own.size(), 0);
    for (int later = lookahead.End() - 1; later > number; --later) Propagate(lookahead, later);
    worth_.resize(own.size());
    for (std::size_t i = 0; i < own.size(); ++i)
        worth_[i] = 1 + carried_[i] / static_cast<float>(own[i]);
    return worth_;
}

}  // namespace codecs::wmv9
