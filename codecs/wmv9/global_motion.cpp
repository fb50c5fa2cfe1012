#include "codecs/wmv9/global_motion.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

// Chosen by hand on the clips of bench/quality.
constexpr int kFarthest = 16;          // blocks, where looking for them does not help
constexpr int kRange = 48;             // samples
constexpr std::uint32_t kPlain = 200;  // own cost of a block that fits everywhere
constexpr std::uint32_t kStill = 4;    // of its own cost, where a block need not have moved ...
constexpr std::uint32_t kPoor = 2;     // ... and where it was not found

}  // namespace

GlobalMotion::Found GlobalMotion::Search(
    std::uint32_t own, const std::function<std::uint32_t(Displacement)>& cost) const {
    Displacement best;
    std::uint32_t least = cost(best);
    if (least < own / kStill) return {};
    const auto consider = [&](int x, int y) {
        const std::uint32_t found = cost({x, y});
        if (found >= least) return false;
        least = found;
        best = {x, y};
        return true;
    };
    const auto descend = [&] {
        for (bool better = true; better;) {
            const Displacement c = best;
            better = consider(c.x - 2, c.y);
            better = consider(c.x + 2, c.y) || better;
            better = consider(c.x, c.y - 2) || better;
            better = consider(c.x, c.y + 2) || better;
        }
    };
    for (const Displacement& move : state_.moves) consider(move.x, move.y);
    descend();
    const bool wide = least > own / kPoor;
    if (wide) {
        // What scrolls or is panned moves along one axis, and by any number of rows.
        for (int d = -kRange; d <= kRange; d += 2) {
            consider(d, 0);
            consider(0, d);
        }
        for (int y = -kRange; y <= kRange; y += 4)
            for (int x = -kRange; x <= kRange; x += 4) consider(x, y);
        descend();
    }
    const bool found = least <= own / kPoor && !(best == Displacement());
    return {best, found ? own - least : 0, wide};
}

std::span<const Displacement> GlobalMotion::Find(int columns, std::span<const std::uint32_t> own,
                                                 const CostOf& cost, TaskTeam& team) {
    before_ = state_;
    const int distance = state_.distance;
    const int first = distance / 2;
    const auto count = [&](int blocks) {
        return std::max(0, (blocks - first + distance - 1) / distance);
    };
    const int across = count(columns);
    const int down = count(static_cast<int>(own.size()) / columns);
    searched_.assign(Index(across) * Index(down), {});
    team.Run(down, [&](int y) {
        const int row = first + distance * y;
        for (int x = 0; x < across; ++x) {
            const int column = first + distance * x;
            const std::uint32_t alone = own[Index(row) * Index(columns) + Index(column)];
            if (alone < kPlain) continue;
            searched_[Index(y) * Index(across) + Index(x)] =
                Search(alone, [&](Displacement move) { return cost(column, row, move); });
        }
    });
    CountVotes();
    return state_.moves;
}

void GlobalMotion::CountVotes() {
    votes_.clear();
    bool looked = false;
    bool helped = false;
    for (const Found& one : searched_) {
        looked = looked || one.wide;
        if (one.saved == 0) continue;
        helped = helped || one.wide;
        const auto same = std::find_if(votes_.begin(), votes_.end(), [&](const Vote& vote) {
            return std::abs(vote.move.x - one.move.x) <= 1 &&
                   std::abs(vote.move.y - one.move.y) <= 1;
        });
        if (same == votes_.end())
            votes_.push_back({one.move, one.saved});
        else
            same->saved += one.saved;
    }
    state_.distance = looked && !helped ? std::min(2 * state_.distance, kFarthest) : kNearest;
    std::stable_sort(votes_.begin(), votes_.end(),
                     [](const Vote& a, const Vote& b) { return a.saved > b.saved; });
    state_.moves.clear();
    for (const Vote& vote : votes_)
        if (state_.moves.size() < kMostMoves) state_.moves.push_back(vote.move);
}

}  // namespace codecs::wmv9
