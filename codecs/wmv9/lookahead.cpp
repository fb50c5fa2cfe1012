#include "codecs/wmv9/lookahead.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "codecs/common/index.h"
#include "codecs/wmv9/b_fractions.h"

namespace codecs::wmv9 {
namespace {

constexpr int kBlock = 8;
constexpr int kMargin = 16;

// Chosen by hand on the clips of bench/quality.
constexpr std::uint32_t kMoveCost = 4;  // of a vector, in differences
constexpr std::uint32_t kOwnCost = 24;  // of a block coded by itself
// What a B picture costs beside a P picture, being coded more coarsely.
constexpr double kBCostPart = 0.5;
// A scene changes where prediction saves less than this part.
constexpr double kScenePart = 0.3;

// Of two samples in a row and the two below.
std::uint8_t Mean(const std::uint8_t* upper, const std::uint8_t* lower) {
    return static_cast<std::uint8_t>((upper[0] + upper[1] + lower[0] + lower[1] + 2) >> 2);
}

int BlocksIn(int samples) { return (samples / 2 + kBlock - 1) / kBlock; }

}  // namespace

const std::uint8_t* Lookahead::Small::At(int x, int y, std::ptrdiff_t stride) const {
    return memory.data() + (y + kMargin) * stride + x + kMargin;
}

Lookahead::Lookahead(int width, int height, int rounds)
    : kernels_(BestKernels()),
      width_(width),
      height_(height),
      columns_(BlocksIn(width)),
      rows_(BlocksIn(height)),
      stride_(kBlock * columns_ + 2 * kMargin),
      rounds_(rounds),
      pictures_(kMostBPictures + 2),
      to_earlier_(Index(columns_) * Index(rows_)),
      to_later_(to_earlier_.size()) {
    for (Small& small : pictures_)
        small.memory.resize(static_cast<std::size_t>(stride_) *
                            Index(kBlock * rows_ + 2 * kMargin));
}

std::size_t Lookahead::Place(int column, int row) const {
    return Index(row) * Index(columns_) + Index(column);
}

void Lookahead::Load(const PictureView& picture, Small& small) const {
    const int width = width_ / 2;
    const int height = height_ / 2;
    const auto row_at = [&](int y) { return small.memory.data() + (y + kMargin) * stride_; };
    const std::ptrdiff_t stride = picture.strides[0];
    const std::uint8_t* a = picture.planes[0];
    for (int y = 0; y < height; ++y, a += 2 * stride) {
        const std::uint8_t* const b = a + stride;
        std::uint8_t* const out = row_at(y);
        for (int x = 0; x < width; ++x) out[x + kMargin] = Mean(a + x + x, b + x + x);
        std::memset(out, out[kMargin], kMargin);
        std::memset(out + kMargin + width, out[kMargin + width - 1],
                    static_cast<std::size_t>(stride_) - Index(kMargin + width));
    }
    const auto copy = [&](int to, int from) {
        std::memcpy(row_at(to), row_at(from), static_cast<std::size_t>(stride_));
    };
    for (int y = height; y < kBlock * rows_ + kMargin; ++y) copy(y, height - 1);
    for (int y = -kMargin; y < 0; ++y) copy(y, 0);
}

std::uint32_t Lookahead::OwnBlockCost(const Small& picture, int column, int row) const {
    const std::uint8_t* const block = picture.At(kBlock * column, kBlock * row, stride_);
    int sum = 0;
    for (int y = 0; y < kBlock; ++y)
        for (int x = 0; x < kBlock; ++x) sum += block[y * stride_ + x];
    std::uint8_t mean[kBlock];
    std::fill(std::begin(mean), std::end(mean), static_cast<std::uint8_t>((sum + 32) >> 6));
    return kernels_.sad(block, stride_, mean, 0, kBlock, kBlock) + kOwnCost;
}

std::int64_t Lookahead::OwnCost(const Small& picture) const {
    std::int64_t cost = 0;
    for (int row = 0; row < rows_; ++row)
        for (int column = 0; column < columns_; ++column)
            cost += OwnBlockCost(picture, column, row);
    return cost;
}

Lookahead::Move Lookahead::FindMove(const Small& picture, const Small& reference, int column,
                                    int row, const std::vector<Move>& found) const {
    const int left = kBlock * column;
    const int top = kBlock * row;
    const std::uint8_t* const block = picture.At(left, top, stride_);
    Move best;
    best.cost =
        kernels_.sad(block, stride_, reference.At(left, top, stride_), stride_, kBlock, kBlock);
    const auto consider = [&](int x, int y) {
        const bool inside = left + x > -kMargin &&
                            left + x < kBlock * columns_ + kMargin - kBlock && top + y > -kMargin &&
                            top + y < kBlock * rows_ + kMargin - kBlock;
        if (!inside || (x == best.x && y == best.y)) return false;
        const std::uint32_t cost =
            kernels_.sad(block, stride_, reference.At(left + x, top + y, stride_), stride_, kBlock,
                         kBlock) +
            kMoveCost;
        if (cost >= best.cost) return false;
        best = {x, y, cost};
        return true;
    };
    if (rounds_ == 0) return best;
    if (column > 0) consider(found[Place(column - 1, row)].x, found[Place(column - 1, row)].y);
    if (row > 0) consider(found[Place(column, row - 1)].x, found[Place(column, row - 1)].y);
    for (int round = 0; round < rounds_; ++round) {
        const Move c = best;
        bool better = consider(c.x - 1, c.y);
        better = consider(c.x + 1, c.y) || better;
        better = consider(c.x, c.y - 1) || better;
        better = consider(c.x, c.y + 1) || better;
        if (!better) break;
    }
    return best;
}

std::int64_t Lookahead::MovedCost(const Small& picture, const Small& reference,
                                  std::vector<Move>& moves) const {
    std::int64_t cost = 0;
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            const Move move = FindMove(picture, reference, column, row, moves);
            moves[Place(column, row)] = move;
            cost += std::min(move.cost, OwnBlockCost(picture, column, row));
        }
    }
    return cost;
}

std::int64_t Lookahead::BCost(const Small& picture, const Small& earlier, const Small& later) {
    MovedCost(picture, earlier, to_earlier_);
    MovedCost(picture, later, to_later_);
    std::int64_t cost = 0;
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            const Move& e = to_earlier_[Place(column, row)];
            const Move& l = to_later_[Place(column, row)];
            const int left = kBlock * column;
            const int top = kBlock * row;
            std::uint8_t mean[kBlock * kBlock];
            kernels_.average(mean, kBlock, earlier.At(left + e.x, top + e.y, stride_), stride_,
                             later.At(left + l.x, top + l.y, stride_), stride_, kBlock, kBlock);
            const std::uint32_t both = kernels_.sad(picture.At(left, top, stride_), stride_, mean,
                                                    kBlock, kBlock, kBlock) +
                                       kMoveCost;
            cost += std::min({e.cost, l.cost, both, OwnBlockCost(picture, column, row)});
        }
    }
    return cost;
}

int Lookahead::Choose(const PictureView& before, std::span<const PictureView> next) {
    const int count = std::min(static_cast<int>(next.size()), kMostBPictures + 1);
    if (count < 2) return 0;
    Load(before, pictures_[0]);
    for (int i = 0; i < count; ++i) Load(next[Index(i)], pictures_[Index(i) + 1]);
    // No B picture refers to two scenes.
    int most = count - 1;
    std::int64_t first_cost = 0;
    for (int i = 0; i <= most; ++i) {
        const std::int64_t moved =
            MovedCost(pictures_[Index(i) + 1], pictures_[Index(i)], to_earlier_);
        if (i == 0) first_cost = moved;
        const auto own = static_cast<double>(OwnCost(pictures_[Index(i) + 1]));
        if (static_cast<double>(moved) > (1 - kScenePart) * own) most = std::max(0, i - 1);
    }
    // As many as cost the least a picture.
    int best = 0;
    auto least = static_cast<double>(first_cost);
    for (int b_pictures = 1; b_pictures <= most; ++b_pictures) {
        const Small& anchor = pictures_[Index(b_pictures) + 1];
        auto cost = static_cast<double>(MovedCost(anchor, pictures_[0], to_earlier_));
        for (int i = 0; i < b_pictures; ++i)
            cost += kBCostPart *
                    static_cast<double>(BCost(pictures_[Index(i) + 1], pictures_[0], anchor));
        cost /= b_pictures + 1;
        if (cost >= least) continue;
        least = cost;
        best = b_pictures;
    }
    return best;
}

}  // namespace codecs::wmv9
