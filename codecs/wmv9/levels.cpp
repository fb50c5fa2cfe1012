#include "codecs/wmv9/levels.h"

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

// A level that may be the last one chosen so far.
struct Node {
    std::int64_t cost;    // of all up to here, beside nothing transmitted
    std::int16_t place;   // in the scan; -1 = before it
    std::int16_t level;   // as it is reconstructed
    std::int16_t before;  // node
    std::int16_t bits;
};

class LevelSearch {
  public:
    LevelSearch(const TransformBlock& block, const Quantiser& quantiser, const AcCodes& codes)
        : block_(block),
          step_(quantiser.step * kEighths),
          lambda_(quantiser.lambda),
          codes_(codes) {
        nodes_[0] = {0, -1, 0, 0, 0};
        survivors_[0] = 0;
    }

    LevelCost Run() {
        const int count = static_cast<int>(block_.scan.size());
        for (int i = 0; i < count; ++i) {
            const int at = block_.scan[Index(i)];
            const int level = block_.levels[at];
            const int expected = Expected(block_, at);
            if (level == expected) continue;
            Visit(i, block_.coefficients[at], level, expected);
            block_.levels[at] = static_cast<std::int16_t>(expected);
        }
        if (node_count_ == 1) return {};
        for (const Node* node = &end_; node->place >= 0; node = &nodes_[Index(node->before)])
            block_.levels[block_.scan[Index(node->place)]] = node->level;
        return {end_.bits, end_.cost - lambda_ * end_.bits, true};
    }

  private:
    void Visit(int place, int coefficient, int nearest, int expected) {
        const std::int64_t nothing = Square(coefficient - expected * step_);
        const int towards = nearest > expected ? nearest - 1 : nearest + 1;
        Node best = kNone;
        for (const int level : {nearest, towards}) {
            if (level == expected) break;
            const int size = std::abs(level - expected);
            const std::int64_t change = Square(coefficient - level * step_) - nothing;
            for (int s = 0; s < survivor_count_; ++s) {
                const int index = survivors_[Index(s)];
                const Node& before = nodes_[Index(index)];
                const int run = place - before.place - 1;
                const std::int64_t so_far = before.cost + change;
                const auto consider = [&](Node& least, bool last) {
                    const int length = codes_.Length(last, run, size);
                    const std::int64_t cost = so_far + lambda_ * length;
                    if (cost >= least.cost) return;
                    least = {cost, static_cast<std::int16_t>(place),
                             static_cast<std::int16_t>(level), static_cast<std::int16_t>(index),
                             static_cast<std::int16_t>(before.bits + length)};
                };
                consider(best, false);
                consider(end_, true);
            }
        }
        // One that is further away and no cheaper does not come back into play.
        while (survivor_count_ > 0 &&
               nodes_[Index(survivors_[Index(survivor_count_ - 1)])].cost >= best.cost)
            --survivor_count_;
        nodes_[Index(node_count_)] = best;
        survivors_[Index(survivor_count_++)] = node_count_++;
    }

    const TransformBlock& block_;
    const int step_;
    const std::int64_t lambda_;
    const AcCodes& codes_;
    static constexpr Node kNone{std::numeric_limits<std::int64_t>::max(), -1, 0, 0, 0};

    // Set as far as they are counted.
    std::array<Node, kMost + 1> nodes_;
    std::array<int, kMost + 1> survivors_;
    int node_count_ = 1;
    int survivor_count_ = 1;
    Node end_ = kNone;
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
    int run = 0;
    int held_run = 0;
    int held = 0;  // the level whose place is not known to be the last
    for (const std::uint8_t at : block.scan) {
        const int level = block.levels[at];
        const int expected = Expected(block, at);
        if (level == expected) {
            ++run;
            continue;
        }
        cost.change += Square(block.coefficients[at] - level * step) -
                       Square(block.coefficients[at] - expected * step);
        if (held != 0) cost.bits += codes.Length(false, held_run, held);
        held = std::abs(level - expected);
        held_run = run;
        run = 0;
    }
    if (held != 0) cost.bits += codes.Length(true, held_run, held);
    cost.any = held != 0;
    return cost;
}

std::int64_t SilentError(const TransformBlock& block, const Quantiser& quantiser) {
    const int step = quantiser.step * kEighths;
    std::int64_t error = 0;
    for (const std::uint8_t at : block.scan)
        error += Square(block.coefficients[at] - Expected(block, at) * step);
    return error;
}

}  // namespace codecs::wmv9
