#include "codecs/wmv9/levels.h"

#include <array>
#include <cstdlib>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kMost = 64;
constexpr int kLargestLevel = 2047;

std::int64_t Square(std::int64_t value) { return value * value; }

// A level that may be the last one chosen so far.
struct Node {
    int place = -1;   // in the scan; -1 = before it
    int level = 0;    // as it is reconstructed
    int before = -1;  // node
    int bits = 0;
    std::int64_t cost = 0;  // of all up to here, less the error of nothing transmitted up to here
};

class LevelSearch {
  public:
    LevelSearch(const TransformBlock& block, const Quantiser& quantiser, const AcCodes& codes)
        : block_(block),
          step_(quantiser.step * kEighths),
          lambda_(quantiser.lambda),
          codes_(codes) {
        nodes_[0] = {};
        survivors_[0] = 0;
    }

    LevelCost Run() {
        std::int64_t silent = 0;  // the error of nothing transmitted
        for (std::size_t i = 0; i < block_.scan.size(); ++i) {
            const int at = block_.scan[i];
            const int coefficient = block_.coefficients[at];
            const int expected = block_.predicted == nullptr ? 0 : block_.predicted[at];
            const std::int64_t nothing = Square(coefficient - expected * step_);
            silent += nothing;
            const int nearest = Nearest(coefficient);
            if (nearest != expected) Visit(static_cast<int>(i), coefficient, expected, nothing);
        }
        return Finish(silent);
    }

  private:
    int Nearest(int coefficient) const {
        const int size = std::min((std::abs(coefficient) + step_ / 2) / step_, kLargestLevel);
        return coefficient < 0 ? -size : size;
    }

    void Visit(int place, int coefficient, int expected, std::int64_t nothing) {
        const int nearest = Nearest(coefficient);
        const int towards = nearest > expected ? nearest - 1 : nearest + 1;
        Node best;
        best.cost = std::numeric_limits<std::int64_t>::max();
        for (const int level : {nearest, towards}) {
            if (level == expected) continue;
            const int size = std::abs(level - expected);
            const std::int64_t change = Square(coefficient - level * step_) - nothing;
            for (int s = 0; s < survivor_count_; ++s) {
                const int index = survivors_[Index(s)];
                const Node& before = nodes_[Index(index)];
                const int run = place - before.place - 1;
                const int length = codes_.Length(false, run, size);
                const std::int64_t cost = before.cost + change + lambda_ * length;
                if (cost < best.cost) best = {place, level, index, before.bits + length, cost};
                const int last_length = codes_.Length(true, run, size);
                const std::int64_t last_cost = before.cost + change + lambda_ * last_length;
                if (last_cost < end_.cost)
                    end_ = {place, level, index, before.bits + last_length, last_cost};
            }
        }
        // One that is further away and no cheaper does not come back into play.
        while (survivor_count_ > 0 &&
               nodes_[Index(survivors_[Index(survivor_count_ - 1)])].cost >= best.cost)
            --survivor_count_;
        nodes_[Index(node_count_)] = best;
        survivors_[Index(survivor_count_++)] = node_count_++;
    }

    LevelCost Finish(std::int64_t silent) const {
        for (const std::uint8_t at : block_.scan)
            block_.levels[at] =
                block_.predicted == nullptr ? std::int16_t{0} : block_.predicted[at];
        if (node_count_ == 1) return {0, silent, silent, false};
        for (const Node* node = &end_; node->place >= 0; node = &nodes_[Index(node->before)])
            block_.levels[block_.scan[Index(node->place)]] = static_cast<std::int16_t>(node->level);
        return {end_.bits, silent + end_.cost - lambda_ * end_.bits, silent, true};
    }

    const TransformBlock& block_;
    const int step_;
    const std::int64_t lambda_;
    const AcCodes& codes_;
    std::array<Node, kMost + 1> nodes_;
    std::array<int, kMost + 1> survivors_;
    int node_count_ = 1;
    int survivor_count_ = 1;
    Node end_{-1, 0, -1, 0, std::numeric_limits<std::int64_t>::max()};
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
        const int expected = block.predicted == nullptr ? 0 : block.predicted[at];
        cost.error += Square(block.coefficients[at] - level * step);
        cost.silent += Square(block.coefficients[at] - expected * step);
        const int size = std::abs(level - expected);
        if (size == 0) {
            ++run;
            continue;
        }
        if (held != 0) cost.bits += codes.Length(false, held_run, held);
        held = size;
        held_run = run;
        run = 0;
    }
    if (held != 0) cost.bits += codes.Length(true, held_run, held);
    cost.any = held != 0;
    return cost;
}

}  // namespace codecs::wmv9
