#include "codecs/wmv9/temporal_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "codecs/common/index.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLuma = 16;  // samples of a macroblock
constexpr int kChroma = 8;

// Chosen by hand on the clips of bench/quality.
constexpr std::array<double, 3> kPartsAfter = {1.2, 1, 0.8};  // by distance, of the strength
constexpr double kPartBefore = 1.2;
constexpr double kReach = 2.9;  // quantisers
constexpr double kMostReach = 128;
constexpr double kFullStrength = 512;  // as kernels have it
// Of a block's variance: what its predictions may differ by though nothing but noise does.
constexpr double kDetailPart = 0.02;
constexpr double kLeastSquared = 5;
constexpr double kLeastSteady = 0.1;  // least squared difference beside the most
// Interpolation smooths noise, which is no reason to move.
constexpr double kFractionPart = 0.95;
// Mean difference of a block that stands still, of the quantiser.
constexpr double kNearEnough = kLuma * kLuma * 1.0 / 16;
// One macroblock of so many along each axis tells what filtering would change, and the least mean
// square of that, of the quantiser's, that is worth the time.
constexpr int kProbedRows = 4;
constexpr int kProbedColumns = 8;
constexpr double kLeastChange = 0.002;
// What interpolation reads around a block.
constexpr int kBefore = 3;
constexpr int kBehind = 4;
constexpr double kScenePart = 0.7;  // of a picture is new: nothing before it is beside it

bool IsWhole(Displacement quarters) { return ((quarters.x | quarters.y) & 3) == 0; }

// The sample that a block begins with, in whole samples of its plane.
const std::uint8_t* BlockAt(const PictureView& view, std::size_t plane, int column, int row,
                            Displacement quarters) {
    const std::ptrdiff_t size = plane == 0 ? kLuma : kChroma;
    return view.planes[plane] + (size * row + (quarters.y >> 2)) * view.strides[plane] +
           size * column + (quarters.x >> 2);
}

// Where three differences, a sample apart, the second the least of them, lead to the least one: the
// bottom of the V through them. -2 to 2.
int QuartersBetween(std::uint32_t before, std::uint32_t here, std::uint32_t behind) {
    const double most = std::max(before, behind) - here;
    if (most == 0) return 0;
    const double leans = static_cast<double>(before) - static_cast<double>(behind);
    return static_cast<int>(std::lround(2 * leans / most));
}

}  // namespace

TemporalFilter::TemporalFilter(int width, int height, const Lookahead& lookahead, TaskTeam& team)
    : kernels_(BestKernels()),
      width_(width / kLuma),
      height_(height / kLuma),
      picture_width_(width),
      picture_height_(height),
      lookahead_(lookahead),
      team_(team) {}

void TemporalFilter::Apply(Frame& source, int number, std::span<const PictureView> beside,
                           int first, double quantiser, double strength) {
    number_ = number;
    FindReferences(beside, first);
    if (count_ < 2 || width_ == 0 || height_ == 0) return;
    reach_ = static_cast<int>(std::lround(65536 / std::min(kReach * quantiser, kMostReach)));
    strength_ = strength;
    near_enough_ = static_cast<std::uint32_t>(kNearEnough * quantiser);
    if (ChangeOfSome(source) < kLeastChange * quantiser * quantiser) return;
    team_.Run(height_, [&](int row) {
        Found found;
        for (int column = 0; column < width_; ++column)
            if (Find(source[0], column, row, found)) Blend(source, column, row, found);
    });
}

double TemporalFilter::ChangeOfSome(const Frame& source) {
    const int first_row = number_ % std::min(kProbedRows, height_);
    const int rows = (height_ - first_row + kProbedRows - 1) / kProbedRows;
    probes_.assign(Index(rows), {});
    team_.Run(rows, [&](int i) {
        const int row = first_row + kProbedRows * i;
        Probe& probe = probes_[Index(i)];
        Found found;
        for (int column = (number_ + i) % std::min(kProbedColumns, width_); column < width_;
             column += kProbedColumns) {
            ++probe.count;
            if (!Find(source[0], column, row, found)) continue;
            alignas(64) std::uint8_t room[kLuma * kLuma];
            const std::uint8_t* const here = source[0].At(kLuma * column, kLuma * row);
            const std::ptrdiff_t stride = source[0].stride;
            kernels_.bicubic(room, kLuma, here, stride, kLuma, kLuma, 0, 0, 0);
            Blend(room, kLuma, kLuma, found);
            probe.change += kernels_.squared(room, kLuma, here, stride, kLuma, kLuma);
        }
    });
    Probe all;
    for (const Probe& probe : probes_) {
        all.count += probe.count;
        all.change += probe.change;
    }
    return all.change / (kLuma * kLuma * all.count);
}

void TemporalFilter::FindReferences(std::span<const PictureView> beside, int first) {
    count_ = 0;
    const auto known = [&](int n) {
        return n >= first && n < first + static_cast<int>(beside.size()) && lookahead_.Has(n);
    };
    const auto add = [&](int n, double part) {
        references_[Index(count_++)] = {beside[Index(n - first)], n, part};
    };
    for (std::size_t i = 0; i < kPartsAfter.size(); ++i) {
        const int after = number_ + 1 + static_cast<int>(i);
        if (!known(after) || lookahead_.PartNew(after) > kScenePart) break;
        add(after, kPartsAfter[i]);
    }
    const int before = number_ - 1;
    if (known(before) && lookahead_.PartNew(number_) <= kScenePart) add(before, kPartBefore);
}

bool TemporalFilter::Holds(Displacement quarters, int column, int row) const {
    const int x = kLuma * column + (quarters.x >> 2);
    const int y = kLuma * row + (quarters.y >> 2);
    return x >= kBefore && x + 2 * kLuma <= picture_width_ && y >= kBefore &&
           y + kLuma + kBehind <= picture_height_;
}

Displacement TemporalFilter::LikelyMove(const Reference& reference, int column, int row) const {
    if (reference.number < number_) return lookahead_.Trace(number_, reference.number, column, row);
    const Displacement from_later = lookahead_.Trace(reference.number, number_, column, row);
    return {-from_later.x, -from_later.y};
}

Displacement TemporalFilter::FindMove(const Reference& reference, const Plane& source, int column,
                                      int row, std::uint32_t at_rest, Displacement left) const {
    const std::uint8_t* const here = source.At(kLuma * column, kLuma * row);
    const auto at = [&](Displacement move) {
        return BlockAt(reference.view, 0, column, row, move);
    };
    const std::ptrdiff_t stride = reference.view.strides[0];
    Displacement best;
    std::uint32_t least = at_rest;
    if (least <= near_enough_) return best;
    const auto consider = [&](Displacement move) {
        if (move == best || !Holds(move, column, row)) return;
        const std::uint32_t sad = kernels_.sad(here, source.stride, at(move), stride, kLuma, kLuma);
        if (sad >= least) return;
        least = sad;
        best = move;
    };
    const Displacement likely = LikelyMove(reference, column, row);
    consider({4 * likely.x, 4 * likely.y});
    consider({left.x & ~3, left.y & ~3});
    // Noise that stands still looks alike everywhere.
    if (best == Displacement{}) return best;

    const std::array<Displacement, 4> around = {Displacement{best.x - 4, best.y},
                                                {best.x + 4, best.y},
                                                {best.x, best.y - 4},
                                                {best.x, best.y + 4}};
    const auto holds = [&](Displacement move) { return Holds(move, column, row); };
    if (!std::all_of(around.begin(), around.end(), holds)) return best;
    const std::array<const std::uint8_t*, 4> places = {at(around[0]), at(around[1]), at(around[2]),
                                                       at(around[3])};
    std::array<std::uint32_t, 4> sads{};
    kernels_.sad_of_four(here, source.stride, places.data(), stride, sads.data());
    const auto nearest = std::min_element(sads.begin(), sads.end());
    if (*nearest < least) return around[static_cast<std::size_t>(nearest - sads.begin())];
    const Displacement between = {best.x + QuartersBetween(sads[0], least, sads[1]),
                                  best.y + QuartersBetween(sads[2], least, sads[3])};
    if (between == best) return best;
    alignas(64) std::uint8_t room[kLuma * kLuma];
    kernels_.bicubic(room, kLuma, at(between), stride, kLuma, kLuma, between.x & 3, between.y & 3,
                     0);
    const std::uint32_t sad = kernels_.sad(here, source.stride, room, kLuma, kLuma, kLuma);
    return sad < kFractionPart * least ? between : best;
}

bool TemporalFilter::Find(const Plane& source, int column, int row, Found& found) const {
    const std::uint8_t* const here = source.At(kLuma * column, kLuma * row);
    std::array<std::uint32_t, kMost> at_rest{};
    for (std::size_t i = 0; i < Index(count_); ++i) {
        const PictureView& view = references_[i].view;
        at_rest[i] = kernels_.sad(here, source.stride, BlockAt(view, 0, column, row, {}),
                                  view.strides[0], kLuma, kLuma);
    }
    if (*std::max_element(at_rest.begin(), at_rest.end()) <= near_enough_) return false;
    std::uint32_t sum = 0;
    std::uint32_t squares = 0;
    kernels_.moments(here, source.stride, sum, squares);
    const double variance = squares - static_cast<double>(sum) * sum / (kLuma * kLuma);
    const double allowed = kLeastSquared + kDetailPart * variance;
    double least = std::numeric_limits<double>::max();
    double most = 0;
    double steady = 1;
    for (std::size_t i = 0; i < Index(count_); ++i) {
        Displacement& move = found.moves[i];
        move = FindMove(references_[i], source, column, row, at_rest[i], move);
        const PictureView& view = references_[i].view;
        const std::uint8_t* const at = BlockAt(view, 0, column, row, move);
        std::uint8_t* const out = found.samples[i];
        const int x = move.x & 3;
        const int y = move.y & 3;
        if (IsWhole(move))
            kernels_.bicubic(out, kLuma, at, view.strides[0], kLuma, kLuma, x, y, 0);
        else
            kernels_.eight_tap(out, kLuma, at, view.strides[0], x, y);
        const double squared = kernels_.squared(here, source.stride, out, kLuma, kLuma, kLuma);
        least = std::min(least, squared);
        most = std::max(most, squared);
        steady = (least + allowed) / (most + allowed);
        if (steady < kLeastSteady) return false;
    }
    for (std::size_t i = 0; i < Index(count_); ++i)
        found.strengths[i] = static_cast<std::int16_t>(
            std::lround(kFullStrength * strength_ * references_[i].part * steady));
    return true;
}

void TemporalFilter::Blend(std::uint8_t* samples, std::ptrdiff_t stride, int size,
                           const Found& found) const {
    kernels_.blend(samples, stride, found.samples[0], std::ptrdiff_t{kLuma} * kLuma,
                   found.strengths.data(), count_, reach_, size);
}

void TemporalFilter::Blend(Frame& source, int column, int row, Found& found) const {
    Blend(source[0].At(kLuma * column, kLuma * row), source[0].stride, kLuma, found);
    for (std::size_t plane = 1; plane < 3; ++plane) {
        for (std::size_t i = 0; i < Index(count_); ++i) {
            const PictureView& view = references_[i].view;
            const Displacement move{found.moves[i].x / 2, found.moves[i].y / 2};
            kernels_.chroma(found.samples[i], kChroma, BlockAt(view, plane, column, row, move),
                            view.strides[plane], move.x & 3, move.y & 3, 0);
        }
        const Plane& chroma = source[static_cast<int>(plane)];
        Blend(chroma.At(kChroma * column, kChroma * row), chroma.stride, kChroma, found);
    }
}

}  // namespace codecs::wmv9
