#include "engine/filters/rgb_rows.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rgb_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>

HWY_BEFORE_NAMESPACE();
namespace engine::HWY_NAMESPACE {
namespace {

// Emulated vectors are slower than none.
#if HWY_TARGET < HWY_EMU128 && !HWY_HAVE_SCALABLE
namespace hn = hwy::HWY_NAMESPACE;

// A vector of bytes is taken as words of two neighbours each.
using Bytes = hn::CappedTag<std::uint8_t, 32>;
using Pairs = hn::Repartition<std::uint16_t, Bytes>;
using Words = hn::RebindToSigned<Pairs>;
using HalfBytes = hn::Rebind<std::uint8_t, Words>;

// Products are rounded with seven bits behind the point, and sums of them fit sixteen bits.
constexpr int kFraction = 7;
constexpr std::int16_t kHalf = 1 << (kFraction - 1);
constexpr std::int16_t kBlack = (16 << kFraction) + kHalf;
constexpr std::int16_t kNoColour = (128 << kFraction) + kHalf;

struct Neighbours {
    hn::Vec<Pairs> left, right;
};

HWY_INLINE Neighbours Parted(hn::Vec<Bytes> bytes) {
    const auto pairs = hn::BitCast(Pairs(), bytes);
    return {hn::And(pairs, hn::Set(Pairs(), 0xFF)), hn::ShiftRight<8>(pairs)};
}

struct Pixels {
    Neighbours first, second, third;
};

HWY_INLINE Pixels LoadPixels(const std::uint8_t* pixels, bool blank_first) {
    hn::Vec<Bytes> v0, v1, v2, v3;
    hn::LoadInterleaved4(Bytes(), pixels, v0, v1, v2, v3);
    if (blank_first) return {Parted(v1), Parted(v2), Parted(v3)};
    return {Parted(v0), Parted(v1), Parted(v2)};
}

// Of values that come with seven bits behind the point.
HWY_INLINE hn::Vec<Words> Weighted(hn::Vec<Pairs> first, hn::Vec<Pairs> second,
                                   hn::Vec<Pairs> third, const RgbWeights::Three& weights,
                                   std::int16_t offset) {
    const Words words;
    const auto part = [&](hn::Vec<Pairs> value, std::int16_t weight) {
        return hn::MulFixedPoint15(hn::BitCast(words, value), hn::Set(words, weight));
    };
    const auto sum = hn::Add(hn::Add(part(first, weights[0]), part(second, weights[1])),
                             hn::Add(part(third, weights[2]), hn::Set(words, offset)));
    return hn::ShiftRight<kFraction>(sum);
}

HWY_INLINE void StoreLuma(const Pixels& pixels, const RgbWeights::Three& weights,
                          std::uint8_t* to) {
    const auto luma = [&](hn::Vec<Pairs> Neighbours::*side) {
        return hn::BitCast(Pairs(),
                           Weighted(hn::ShiftLeft<kFraction>(pixels.first.*side),
                                    hn::ShiftLeft<kFraction>(pixels.second.*side),
                                    hn::ShiftLeft<kFraction>(pixels.third.*side), weights, kBlack));
    };
    const auto both = hn::Or(luma(&Neighbours::left), hn::ShiftLeft<8>(luma(&Neighbours::right)));
    hn::StoreU(hn::BitCast(Bytes(), both), Bytes(), to);
}

// Returns how many pixels are done.
int SimdRows(const std::uint8_t* above, const std::uint8_t* below, int width, bool blank_first,
             const RgbWeights& weights, const YuvRows& rows) {
    const int step = static_cast<int>(hn::Lanes(Bytes()));
    const auto mean = [](const Neighbours& upper, const Neighbours& lower) {
        const auto sum =
            hn::Add(hn::Add(upper.left, upper.right), hn::Add(lower.left, lower.right));
        return hn::ShiftLeft<kFraction - 2>(sum);
    };
    int x = 0;
    for (; x + step <= width; x += step) {
        const std::ptrdiff_t place = std::ptrdiff_t{x} * kRgbPixelBytes;
        const Pixels upper = LoadPixels(above + place, blank_first);
        const Pixels lower = LoadPixels(below + place, blank_first);
        StoreLuma(upper, weights.luma, rows.above + x);
        StoreLuma(lower, weights.luma, rows.below + x);
        const auto first = mean(upper.first, lower.first);
        const auto second = mean(upper.second, lower.second);
        const auto third = mean(upper.third, lower.third);
        const auto store = [&](const RgbWeights::Three& chroma, std::uint8_t* to) {
            hn::StoreU(hn::DemoteTo(HalfBytes(), Weighted(first, second, third, chroma, kNoColour)),
                       HalfBytes(), to + x / 2);
        };
        store(weights.blue, rows.blue);
        store(weights.red, rows.red);
    }
    return x;
}
#else
int SimdRows(const std::uint8_t* /*above*/, const std::uint8_t* /*below*/, int /*width*/,
             bool /*blank_first*/, const RgbWeights& /*weights*/, const YuvRows& /*rows*/) {
    return 0;
}
#endif

}  // namespace
}  // namespace engine::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace engine {
namespace {

HWY_EXPORT(SimdRows);

constexpr int kOne = 1 << 15;

// For what is left of a row when no vector fits any more.
// @param quarters  sums of four bytes
std::uint8_t Weighted(const std::array<int, 3>& quarters, const RgbWeights::Three& weights,
                      int offset) {
    int sum = 4 * kOne * offset + 2 * kOne;
    for (std::size_t i = 0; i < quarters.size(); ++i) sum += quarters[i] * weights[i];
    return static_cast<std::uint8_t>(sum / (4 * kOne));
}

std::array<int, 3> Quarters(std::initializer_list<const std::uint8_t*> pixels, bool blank_first) {
    std::array<int, 3> sums{};
    for (const std::uint8_t* pixel : pixels)
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += pixel[i + (blank_first ? 1 : 0)];
    return sums;
}

std::int16_t Part(double weight) { return static_cast<std::int16_t>(std::lround(weight * kOne)); }

}  // namespace

RgbWeights WeightsOf(double red, double blue, const RgbLayout& layout) {
    const std::array<double, 3> shares = {red, 1 - red - blue, blue};
    const double luma = 219.0 / 255;
    const double chroma = 224.0 / 255 / 2;
    RgbWeights weights{};
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const std::size_t place = layout.red_first ? i : 2 - i;
        weights.luma[place] = Part(luma * shares[i]);
        weights.blue[place] = Part(chroma * ((i == 2 ? 1 : 0) - shares[i]) / (1 - blue));
        weights.red[place] = Part(chroma * ((i == 0 ? 1 : 0) - shares[i]) / (1 - red));
    }
    return weights;
}

void ConvertRows(const std::uint8_t* above, const std::uint8_t* below, int width,
                 const RgbLayout& layout, const RgbWeights& weights, const YuvRows& rows) {
    const bool blank_first = layout.blank_first;
    const int done =
        HWY_DYNAMIC_DISPATCH(SimdRows)(above, below, width, blank_first, weights, rows);
    const auto luma = [&](const std::uint8_t* pixel) {
        return Weighted(Quarters({pixel, pixel, pixel, pixel}, blank_first), weights.luma, 16);
    };
    for (int x = done; x < width; ++x) {
        const std::ptrdiff_t place = std::ptrdiff_t{x} * kRgbPixelBytes;
        rows.above[x] = luma(above + place);
        rows.below[x] = luma(below + place);
    }
    for (int x = done; x < width; x += 2) {
        const std::ptrdiff_t left = std::ptrdiff_t{x} * kRgbPixelBytes;
        const std::ptrdiff_t right = std::ptrdiff_t{std::min(x + 1, width - 1)} * kRgbPixelBytes;
        const auto quarters =
            Quarters({above + left, above + right, below + left, below + right}, blank_first);
        rows.blue[x / 2] = Weighted(quarters, weights.blue, 128);
        rows.red[x / 2] = Weighted(quarters, weights.red, 128);
    }
}

}  // namespace engine
#endif
