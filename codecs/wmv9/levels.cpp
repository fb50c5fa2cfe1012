#include "codecs/wmv9/levels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kMost = 64;

std::int64_t Square(std::int64_t value) { return value * value; }

int Expected(const TransformBlock& block, int at) {
    return block.predicted == nullptr ? 0 : block.predicted[at];
}

constexpr std::int64_t kNoCost = std::numeric_limits<std::int64_t>::max();

// What a place of the scan may hold.
struct Choice {
    int place;
    int coefficient;
    int nearest;  // level
    int expected;
};

// A level that may be the last one chosen so far.
struct Node {
    std::int16_t place;   // in the scan; -1 = before it
    std::int16_t level;   // as it is reconstructed
    std::int16_t before;  // node
    std::int16_t size;    // of what is transmitted
};

class LevelSearch {
  public:
    LevelSearch(const TransformBlock& block, const Quantiser& quantiser, const AcCodes& codes)
        : block_(block),
          step_(quantiser.step * kEighths),
          lambda_(quantiser.level_lambda),
          codes_(codes) {
        nodes_[0] = {-1, 0, 0, 0};
        costs_[0] = 0;
        next_[0] = 0;
        node_of_[0] = 0;
    }

    LevelCost Run() {
        if (!Take()) return {};
        for (int i = 0; i < count_; ++i) Visit(choices_[i]);
        return end_cost_ < 0 ? Chosen() : LevelCost();
    }

  private:
    // Leaves nothing in the block. False where the levels save less of the error than the shortest
    // codes are worth.
    bool Take() {
        const std::int64_t other = lambda_ * codes_.Shortest().other;
        std::int64_t gain = other - lambda_ * codes_.Shortest().last;
        ForEachBit(block_.changed, [&](int place) {
            const int at = block_.scan[place];
            const Choice choice{place, block_.coefficients[at], block_.levels[at],
                                Expected(block_, at)};
            block_.levels[at] = static_cast<std::int16_t>(choice.expected);
            choices_[count_++] = choice;
            const std::int64_t one = Square(choice.coefficient - choice.expected * step_) -
                                     Square(choice.coefficient - choice.nearest * step_);
            gain += std::max<std::int64_t>(0, one - other);
        });
        return gain > 0;
    }

    // Costs stand above what they are the costs of, so that both are compared at once: which
    // survivor a level follows, and whether it is the nearest or the one towards nothing.
    static constexpr int kTagBits = 8;
    static constexpr std::int64_t kTagged = std::int64_t{1} << kTagBits;

    void Visit(const Choice& choice) {
        const int place = choice.place;
        const int coefficient = choice.coefficient;
        const int nearest = choice.nearest;
        const int expected = choice.expected;
        const int size = std::abs(nearest - expected);
        const std::int64_t nothing = Square(coefficient - expected * step_);
        const std::int64_t lambda = kTagged * lambda_;
        std::int64_t best = kNoCost;
        std::int64_t end = kNoCost;
        const auto consider = [&](int level, const AcCodes::Lengths* lengths, int tag) {
            const std::int64_t change =
                kTagged * (Square(coefficient - level * step_) - nothing) + tag;
            for (int s = 0; s < survivors_; ++s) {
                const AcCodes::Lengths length = lengths[place - next_[s]];
                const std::int64_t so_far = costs_[s] + change + 2 * std::int64_t{s};
                best = std::min(best, so_far + lambda * length.other);
                end = std::min(end, so_far + lambda * length.last);
            }
        };
        consider(nearest, codes_.OfLevel(size).data(), 0);
        const int towards = nearest > expected ? nearest - 1 : nearest + 1;
        if (size > 1) consider(towards, codes_.OfLevel(size - 1).data(), 1);
        const auto node = [&](std::int64_t tagged) {
            const bool lower = (tagged & 1) != 0;
            const auto survivor = static_cast<std::size_t>((tagged & (kTagged - 1)) >> 1);
            return Node{static_cast<std::int16_t>(place),
                        static_cast<std::int16_t>(lower ? towards : nearest), node_of_[survivor],
                        static_cast<std::int16_t>(size - (lower ? 1 : 0))};
        };
        if ((end & -kTagged) < end_cost_) {
            end_cost_ = end & -kTagged;
            end_ = node(end);
        }
        const std::int64_t cost = best & -kTagged;
        nodes_[node_count_] = node(best);
        // One that is further away and no cheaper does not come back into play.
        while (survivors_ > 0 && costs_[survivors_ - 1] >= cost) --survivors_;
        costs_[survivors_] = cost;
        next_[survivors_] = place + 1;
        node_of_[survivors_++] = static_cast<std::int16_t>(node_count_++);
    }

    LevelCost Chosen() const {
        int bits = 0;
        bool last = true;
        for (const Node* node = &end_; node->place >= 0; last = false) {
            const Node* const before = &nodes_[node->before];
            block_.levels[block_.scan[node->place]] = node->level;
            bits += codes_.Length(last, node->place - before->place - 1, node->size);
            node = before;
        }
        return {bits, (end_cost_ >> kTagBits) - lambda_ * bits, true};
    }

    const TransformBlock& block_;
    const int step_;
    const std::int64_t lambda_;
    const AcCodes& codes_;

    // Set as far as they are counted.
    Choice choices_[kMost];
    int count_ = 0;
    // The first stands before the scan.
    Node nodes_[kMost + 1];
    int node_count_ = 1;
    // Nodes that others may follow, by their place.
    std::int64_t costs_[kMost + 1];
    int next_[kMost + 1];  // place after it
    std::int16_t node_of_[kMost + 1];
    int survivors_ = 1;
    Node end_{};
    std::int64_t end_cost_ = kNoCost;
};

}  // namespace

LevelCost ChooseLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes) {
    return LevelSearch(block, quantiser, codes).Run();
}

LevelCost CostOfLevels(const TransformBlock& block, const Quantiser& quantiser,
                       const AcCodes& codes) {
    const int step = quantiser.step * kEighths;
    LevelCost cost;
    int next = 0;  // place after the last one
    int held_run = 0;
    int held = 0;  // the level whose place is not known to be the last
    ForEachBit(block.changed, [&](int place) {
        const int at = block.scan[place];
        const int level = block.levels[at];
        const int expected = Expected(block, at);
        cost.change += Square(block.coefficients[at] - level * step) -
                       Square(block.coefficients[at] - expected * step);
        if (held != 0) cost.bits += codes.Length(false, held_run, held);
        held = std::abs(level - expected);
        held_run = place - next;
        next = place + 1;
    });
    if (held != 0) cost.bits += codes.Length(true, held_run, held);
    cost.any = held != 0;
    return cost;
}

}  // namespace codecs::wmv9
