#include "codecs/wmv9/picture_coder.h"

#include <algorithm>
#include <cstring>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

// Of the rows, when they are written: some hold far more than others.
constexpr int kPartsOfThread = 3;
// Rows below it whose smoothing and filtering a row takes part in.
constexpr int kFinishedBelow = 2;

// A macroblock's part of a plane, of so many samples across and down.
template <int kSize>
void Put(const Plane& plane, int x, int y, const std::uint8_t* from) {
    std::uint8_t* to = plane.At(kSize * x, kSize * y);
    for (int row = 0; row < kSize; ++row, to += plane.stride, from += kSize)
        std::memcpy(to, from, kSize);
}

}  // namespace

PictureCoder::PictureCoder(int width, int height, TaskTeam& team)
    : rows_(Index(height)),
      planes_(width, height),
      filter_(width, height),
      overlap_(width, height),
      team_(team),
      wavefront_(team),
      decided_(Index(height)),
      parts_(Index(std::min(team.Threads() == 1 ? 1 : kPartsOfThread * team.Threads(), height))) {}

void PictureCoder::Analyse(Picture& picture, const ModeDecision& mode_decision) {
    const Estimates estimates(picture.header);
    for (RowOutput& row : rows_) row.Clear();
    Divide(picture, mode_decision);
    // The last place of a row stands for what is left to do when all its macroblocks are there.
    wavefront_.Run(picture.Width() + 1, ranges_, [&](int x, int y) {
        if (x == picture.Width()) return FinishRow(picture, y);
        if (decided_[Index(y)] == 0) return;
        Candidate candidate;
        mode_decision.Choose(picture, estimates, x, y, candidate);
        Commit(picture, candidate, x, y);
    });
}

void PictureCoder::Divide(Picture& picture, const ModeDecision& mode_decision) {
    const int height = picture.Height();
    ranges_.clear();
    for (int y = 0; y < height; ++y) {
        decided_[Index(y)] = mode_decision.Decides(picture, y) ? 1 : 0;
        if (decided_[Index(y)] == 0) continue;
        if (ranges_.empty() || ranges_.back().end < y) ranges_.push_back({y, y});
        ranges_.back().end = std::min(y + 1 + kFinishedBelow, height);
    }
    if (std::all_of(decided_.begin(), decided_.end(), [](std::uint8_t one) { return one != 0; }))
        return;
    team_.Run(height, [&](int y) {
        if (decided_[Index(y)] == 0) Leave(picture, y);
    });
}

void PictureCoder::FilterB(const Picture& picture) {
    if (!picture.sequence.loop_filter) return;
    for (int y = 0; y < picture.Height(); ++y) filter_.FilterRow(picture, y);
}

void PictureCoder::Commit(Picture& picture, const Candidate& candidate, int x, int y) {
    picture.grid.At(x, y) = candidate.macroblock;
    if (candidate.macroblock.intra) {
        picture.grid.Edges(x, y) = candidate.edges;
        if (picture.Overlaps()) overlap_.Take(x, y, candidate.residual);
    }
    Put<16>(picture.result[0], x, y, candidate.samples.Block(0));
    Put<8>(picture.result[1], x, y, candidate.samples.Block(4));
    Put<8>(picture.result[2], x, y, candidate.samples.Block(5));
    rows_[Index(y)].Add(picture, candidate.macroblock, candidate.levels);
}

void PictureCoder::Leave(Picture& picture, int y) {
    Macroblock left;
    left.skipped = true;
    left.direction = Direction::Direct;
    left.quantiser = static_cast<std::uint8_t>(picture.header.quantiser);
    for (int x = 0; x < picture.Width(); ++x) picture.grid.At(x, y) = left;
    planes_.TakeRow(picture.grid, y);
    filter_.LeaveRow(y);
}

void PictureCoder::FinishRow(const Picture& picture, int y) {
    if (decided_[Index(y)] != 0) planes_.TakeRow(picture.grid, y);
    if (picture.header.IsB()) return;
    const bool smooths = picture.Overlaps();
    if (smooths) overlap_.SmoothRow(picture, y);
    if (!picture.sequence.loop_filter) return;
    // Smoothing leaves a row open until the next one is there.
    if (smooths && y > 0) filter_.FilterRow(picture, y - 1);
    if (!smooths || y + 1 == picture.Height()) filter_.FilterRow(picture, y);
}

TableCounts PictureCoder::Counts() const {
    TableCounts counts;
    for (const RowOutput& row : rows_) counts += row.Counts();
    return counts;
}

std::size_t PictureCoder::Write(const Picture& picture) {
    out_.Clear();
    return WritePicture(out_, picture, planes_, rows_, parts_, team_);
}

}  // namespace codecs::wmv9
