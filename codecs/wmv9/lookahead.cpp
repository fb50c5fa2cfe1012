#include "codecs/wmv9/lookahead.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBlock = 8;
constexpr int kMargin = 16;
constexpr int kAtOnce = 4;  // blocks of a row

// Chosen by hand on the clips of bench/quality.
constexpr std::uint32_t kMoveCost = 4;  // of a vector, in differences
// Of a block that stands still: a level for each sample. No move is looked for.
constexpr std::uint32_t kNearEnough = kBlock * kBlock;
constexpr std::uint32_t kOwnCost = 24;  // of a block coded by itself
// What a B picture costs beside a P picture, being coded more coarsely.
constexpr double kBCostPart = 0.5;
// A scene changes where prediction saves less than this part.
constexpr double kScenePart = 0.3;

int BlocksIn(int samples) { return (samples / 2 + kBlock - 1) / kBlock; }

}  // namespace

const std::uint8_t* Lookahead::Small::At(int x, int y, std::ptrdiff_t stride) const {
    return memory.data() + (y + kMargin) * stride + x + kMargin;
}

Lookahead::Lookahead(int width, int height, int rounds, TaskTeam& team)
    : kernels_(BestKernels()),
      width_(width),
      height_(height),
      columns_(BlocksIn(width)),
      rows_(BlocksIn(height)),
      stride_(kBlock * columns_ + 2 * kMargin),
      rounds_(rounds),
      to_later_(Index(columns_) * Index(rows_)),
      b_costs_(to_later_.size()),
      team_(team),
      wavefront_(team) {
    for (std::vector<Move>& moves : to_earlier_) moves.resize(to_later_.size());
}

double Lookahead::Add(const PictureView& picture) {
    Small small;
    if (!spare_.empty()) {
        small = std::move(spare_.back());
        spare_.pop_back();
    }
    small.memory.resize(static_cast<std::size_t>(stride_) * Index(kBlock * rows_ + 2 * kMargin));
    small.own.resize(to_later_.size());
    small.moves.resize(to_later_.size());
    small.saved.assign(to_later_.size(), 0);
    small.moving.clear();
    const Small* const before = pictures_.empty() ? nullptr : &pictures_.back();
    team_.Run(rows_, [&](int row) {
        LoadRow(picture, small, row);
        for (int column = 0; column < columns_; ++column)
            small.own[Place(column, row)] = OwnBlockCost(small, column, row);
    });
    if (before != nullptr) {
        const std::span<const Displacement> likely = global_motion_.Find(
            columns_, small.own,
            [&](int column, int row, Displacement move) {
                return Holds(move, column, row)
                           ? MoveCost(small, *before, {move.x, move.y}, column, row)
                           : std::numeric_limits<std::uint32_t>::max();
            },
            team_);
        ForBlocks([&](int column, int row) {
            small.moves[Place(column, row)] =
                FindMove(small, *before, column, row, small.moves, [&] { return likely; });
        });
    }
    const auto own = std::accumulate(small.own.begin(), small.own.end(), std::int64_t{0});
    const std::int64_t moved = before == nullptr ? own : MovedCost(small, small.moves);
    if (before != nullptr) FindSavings(small);
    small.part_new = static_cast<double>(moved) / static_cast<double>(own);
    pictures_.push_back(std::move(small));
    return pictures_.back().part_new;
}

void Lookahead::FindSavings(Small& small) {
    for (std::size_t i = 0; i < small.own.size(); ++i) {
        const Move& move = small.moves[i];
        if (move.cost >= small.own[i]) continue;
        const float part = 1 - static_cast<float>(move.cost) / static_cast<float>(small.own[i]);
        if (move.x == 0 && move.y == 0)
            small.saved[i] = part;
        else
            small.moving.push_back({static_cast<int>(i), part});
    }
}

void Lookahead::TakeBack() {
    if (pictures_.size() > 1) global_motion_.TakeBack();
    spare_.push_back(std::move(pictures_.back()));
    pictures_.pop_back();
}

void Lookahead::DropBefore(int number) {
    for (; first_ < number && !pictures_.empty(); ++first_) {
        spare_.push_back(std::move(pictures_.front()));
        pictures_.pop_front();
    }
}

const Lookahead::Small& Lookahead::At(int number) const {
    return pictures_[Index(number - first_)];
}

std::size_t Lookahead::Place(int column, int row) const {
    return Index(row) * Index(columns_) + Index(column);
}

template <typename Visit>
void Lookahead::ForBlocks(Visit&& visit) {
    const int steps = (columns_ + kAtOnce - 1) / kAtOnce;
    wavefront_.Run(steps, rows_, [&](int step, int row) {
        const int end = std::min(kAtOnce * (step + 1), columns_);
        for (int column = kAtOnce * step; column < end; ++column) visit(column, row);
    });
}

void Lookahead::LoadRow(const PictureView& picture, Small& small, int row) const {
    const int width = width_ / 2;
    const int height = height_ / 2;
    const auto row_at = [&](int y) { return small.memory.data() + (y + kMargin) * stride_; };
    const std::ptrdiff_t stride = picture.strides[0];
    const int end = std::min(kBlock * (row + 1), height);
    for (int y = kBlock * row; y < end; ++y) {
        std::uint8_t* const out = row_at(y);
        const std::uint8_t* const a = picture.planes[0] + std::ptrdiff_t{2} * y * stride;
        kernels_.halve(out + kMargin, a, a + stride, width);
        std::memset(out, out[kMargin], kMargin);
        std::memset(out + kMargin + width, out[kMargin + width - 1],
                    static_cast<std::size_t>(stride_) - Index(kMargin + width));
    }
    const auto copy = [&](int to, int from) {
        std::memcpy(row_at(to), row_at(from), static_cast<std::size_t>(stride_));
    };
    if (row == 0)
        for (int y = -kMargin; y < 0; ++y) copy(y, 0);
    if (row + 1 == rows_)
        for (int y = height; y < kBlock * rows_ + kMargin; ++y) copy(y, height - 1);
}

std::uint32_t Lookahead::OwnBlockCost(const Small& picture, int column, int row) const {
    const std::uint8_t* const block = picture.At(kBlock * column, kBlock * row, stride_);
    std::uint8_t mean[kBlock] = {};
    const std::uint32_t sum = kernels_.sad(block, stride_, mean, 0, kBlock, kBlock);
    std::fill(std::begin(mean), std::end(mean), static_cast<std::uint8_t>((sum + 32) >> 6));
    return kernels_.sad(block, stride_, mean, 0, kBlock, kBlock) + kOwnCost;
}

const std::uint8_t* Lookahead::Predict(const Small& reference, const Move& move, int column,
                                       int row, std::uint8_t* room, std::ptrdiff_t& stride) const {
    const std::uint8_t* const whole =
        reference.At(kBlock * column + (move.x >> 1), kBlock * row + (move.y >> 1), stride_);
    stride = stride_;
    if ((move.x & 1) == 0 && (move.y & 1) == 0) return whole;
    kernels_.bilinear(room, kBlock, whole, stride_, kBlock, kBlock, 2 * (move.x & 1),
                      2 * (move.y & 1), 0);
    stride = kBlock;
    return room;
}

std::uint32_t Lookahead::MoveCost(const Small& picture, const Small& reference, const Move& move,
                                  int column, int row) const {
    alignas(64) std::uint8_t room[kBlock * kBlock];
    std::ptrdiff_t stride = 0;
    const std::uint8_t* const predicted = Predict(reference, move, column, row, room, stride);
    const bool moves = move.x != 0 || move.y != 0;
    return kernels_.sad(picture.At(kBlock * column, kBlock * row, stride_), stride_, predicted,
                        stride, kBlock, kBlock) +
           (moves ? kMoveCost : 0);
}

bool Lookahead::Holds(Displacement move, int column, int row) const {
    const int left = kBlock * column + (move.x >> 1);
    const int top = kBlock * row + (move.y >> 1);
    return left > -kMargin && left < kBlock * columns_ + kMargin - kBlock - 1 && top > -kMargin &&
           top < kBlock * rows_ + kMargin - kBlock - 1;
}

template <typename Likely>
Lookahead::Move Lookahead::FindMove(const Small& picture, const Small& reference, int column,
                                    int row, const std::vector<Move>& found,
                                    const Likely& likely) const {
    Move best;
    best.cost = MoveCost(picture, reference, best, column, row);
    const auto consider = [&](int x, int y) {
        if (!Holds({x, y}, column, row) || (x == best.x && y == best.y)) return false;
        const std::uint32_t cost = MoveCost(picture, reference, {x, y}, column, row);
        if (cost >= best.cost) return false;
        best = {x, y, cost};
        return true;
    };
    if (rounds_ == 0) return best;
    const auto consider_whole = [&](const Move& move) { consider(move.x & ~1, move.y & ~1); };
    if (column > 0) consider_whole(found[Place(column - 1, row)]);
    if (row > 0) consider_whole(found[Place(column, row - 1)]);
    if (row > 0 && column + 1 < columns_) consider_whole(found[Place(column + 1, row - 1)]);
    if (best.x == 0 && best.y == 0 && best.cost <= kNearEnough) return best;
    for (const Displacement& move : likely()) consider(move.x & ~1, move.y & ~1);
    const auto around = [&](int step) {
        const Move c = best;
        bool better = consider(c.x - step, c.y);
        better = consider(c.x + step, c.y) || better;
        better = consider(c.x, c.y - step) || better;
        return consider(c.x, c.y + step) || better;
    };
    for (int round = 0; round < rounds_; ++round)
        if (!around(2)) break;
    around(1);
    return best;
}

void Lookahead::FindMoves(int number, int earlier, std::vector<Move>& moves) {
    ForBlocks([&](int column, int row) {
        moves[Place(column, row)] = FindMove(At(number), At(earlier), column, row, moves, [&] {
            return std::array{Trace(number, earlier, column, row)};
        });
    });
}

Displacement Lookahead::Trace(int number, int earlier, int column, int row) const {
    constexpr int kSamples = 2 * kBlock;
    const auto there = [](int block, int moved, int count) {
        return std::clamp((kSamples * block + moved + kBlock) / kSamples, 0, count - 1);
    };
    Displacement sum;
    for (int n = number; n > earlier; --n) {
        const Move& move =
            At(n).moves[Place(there(column, sum.x, columns_), there(row, sum.y, rows_))];
        sum.x += move.x;
        sum.y += move.y;
    }
    return sum;
}

std::int64_t Lookahead::MovedCost(const Small& picture, const std::vector<Move>& moves) {
    std::int64_t cost = 0;
    for (std::size_t n = 0; n < moves.size(); ++n) cost += std::min(moves[n].cost, picture.own[n]);
    return cost;
}

std::int64_t Lookahead::BCost(int number, int earlier, const std::vector<Move>& to_earlier,
                              int later) {
    const Small& picture = At(number);
    ForBlocks([&](int column, int row) {
        const std::size_t place = Place(column, row);
        const Move& e = to_earlier[place];
        const Move& l = to_later_[place] =
            FindMove(picture, At(later), column, row, to_later_, [&] {
                const Displacement from_later = Trace(later, number, column, row);
                return std::array{Displacement{-from_later.x, -from_later.y}};
            });
        alignas(64) std::uint8_t one[kBlock * kBlock];
        alignas(64) std::uint8_t other[kBlock * kBlock];
        std::ptrdiff_t one_stride = 0;
        std::ptrdiff_t other_stride = 0;
        const std::uint8_t* const a = Predict(At(earlier), e, column, row, one, one_stride);
        const std::uint8_t* const b = Predict(At(later), l, column, row, other, other_stride);
        kernels_.average(one, kBlock, a, one_stride, b, other_stride, kBlock, kBlock);
        const std::uint32_t both = kernels_.sad(picture.At(kBlock * column, kBlock * row, stride_),
                                                stride_, one, kBlock, kBlock, kBlock) +
                                   kMoveCost;
        b_costs_[place] = std::min({e.cost, l.cost, both, picture.own[place]});
    });
    return std::accumulate(b_costs_.begin(), b_costs_.end(), std::int64_t{0});
}

int Lookahead::Choose(int before, int first, int count) {
    // No B picture refers to two scenes.
    int most = std::clamp(count - 1, 0, kMostBPictures);
    std::int64_t first_cost = 0;
    for (int i = 0; i <= most; ++i) {
        const Small& picture = At(first + i);
        // What was dropped leaves gaps.
        const bool follows = i > 0 || before == first - 1;
        if (!follows) FindMoves(first + i, before, to_earlier_[Index(i)]);
        if (follows && i == 0) to_earlier_[0] = picture.moves;
        const auto own = std::accumulate(picture.own.begin(), picture.own.end(), std::int64_t{0});
        const std::int64_t moved =
            MovedCost(picture, follows ? picture.moves : to_earlier_[Index(i)]);
        if (i == 0) first_cost = moved;
        if (static_cast<double>(moved) > (1 - kScenePart) * static_cast<double>(own))
            most = std::max(0, i - 1);
    }
    // As many as cost the least a picture.
    int best = 0;
    auto least = static_cast<double>(first_cost);
    for (int b_pictures = 1; b_pictures <= most; ++b_pictures) {
        const int anchor = first + b_pictures;
        FindMoves(anchor, before, to_earlier_[Index(b_pictures)]);
        auto cost = static_cast<double>(MovedCost(At(anchor), to_earlier_[Index(b_pictures)]));
        for (int i = 0; i < b_pictures; ++i)
            cost += kBCostPart *
                    static_cast<double>(BCost(first + i, before, to_earlier_[Index(i)], anchor));
        cost /= b_pictures + 1;
        if (cost >= least) continue;
        least = cost;
        best = b_pictures;
    }
    return best;
}

}  // namespace codecs::wmv9
