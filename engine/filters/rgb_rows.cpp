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

// Products are rounded with seven bits behind the point, and sums of them fit sixteen bits.
HWY_BEFORE_NAMESPACE();
namespace engine::HWY_NAMESPACE {
namespace {

// Emulated vectors are slower than none.
#if HWY_TARGET < HWY_EMU128 && !HWY_HAVE_SCALABLE
namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::CappedTag<std::int16_t, 16>;
using UnsignedWords = hn::RebindToUnsigned<Words>;
using HalfBytes = hn::Rebind<std::uint8_t, Words>;   // one for each word
using Bytes = hn::Repartition<std::uint8_t, Words>;  // two for each word

constexpr int kFraction = 7;
constexpr std::int16_t kHalf = 1 << (kFraction - 1);
constexpr std::int16_t kBlack = (16 << kFraction) + kHalf;
constexpr std::int16_t kNoColour = (128 << kFraction) + kHalf;

template <class Vector>
struct Three {
    Vector first, second, third;
};

template <class D>
HWY_INLINE Three<hn::Vec<D>> LoadThree(D bytes, const std::uint8_t* pixels, bool blank_first) {
    hn::Vec<D> v0, v1, v2, v3;
    hn::LoadInterleaved4(bytes, pixels, v0, v1, v2, v3);
    if (blank_first) return {v1, v2, v3};
    return {v0, v1, v2};
}

HWY_INLINE hn::Vec<HalfBytes> Weighted(const Three<hn::Vec<Words>>& scaled,
                                       const RgbWeights::Three& weights, std::int16_t offset) {
    const Words words;
    const auto part = [&](hn::Vec<Words> value, std::int16_t weight) {
        return hn::MulFixedPoint15(value, hn::Set(words, weight));
    };
    const auto sum =
        hn::Add(hn::Add(part(scaled.first, weights[0]), part(scaled.second, weights[1])),
                hn::Add(part(scaled.third, weights[2]), hn::Set(words, offset)));
    return hn::DemoteTo(HalfBytes(), hn::ShiftRight<kFraction>(sum));
}

int LumaRow(const std::uint8_t* pixels, int width, bool blank_first,
            const RgbWeights::Three& weights, std::uint8_t* luma) {
    const Words words;
    const HalfBytes bytes;
    const int lanes = static_cast<int>(hn::Lanes(words));
    const auto scaled = [&](hn::Vec<HalfBytes> value) {
        return hn::ShiftLeft<kFraction>(hn::PromoteTo(words, value));
    };
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto rgb = LoadThree(bytes, pixels + std::ptrdiff_t{x} * kRgbPixelBytes, blank_first);
        hn::StoreU(
            Weighted({scaled(rgb.first), scaled(rgb.second), scaled(rgb.third)}, weights, kBlack),
            bytes, luma + x);
    }
    return x;
}

// Of two neighbours each.
HWY_INLINE hn::Vec<UnsignedWords> PairSums(hn::Vec<Bytes> bytes) {
    const UnsignedWords words;
    const auto pairs = hn::BitCast(words, bytes);
    return hn::Add(hn::And(pairs, hn::Set(words, 0xFF)), hn::ShiftRight<8>(pairs));
}

int ChromaRow(const std::uint8_t* above, const std::uint8_t* below, int width, bool blank_first,
              const RgbWeights& weights, std::uint8_t* blue, std::uint8_t* red) {
    const Bytes bytes;
    const int pixels = static_cast<int>(hn::Lanes(bytes));
    const auto scaled = [](hn::Vec<Bytes> upper, hn::Vec<Bytes> lower) {
        const auto sum = hn::Add(PairSums(upper), PairSums(lower));  // of four
        return hn::BitCast(Words(), hn::ShiftLeft<kFraction - 2>(sum));
    };
    int x = 0;
    for (; x + pixels <= width; x += pixels) {
        const std::ptrdiff_t place = std::ptrdiff_t{x} * kRgbPixelBytes;
        const auto upper = LoadThree(bytes, above + place, blank_first);
        const auto lower = LoadThree(bytes, below + place, blank_first);
        const Three<hn::Vec<Words>> sums = {scaled(upper.first, lower.first),
                                            scaled(upper.second, lower.second),
                                            scaled(upper.third, lower.third)};
        hn::StoreU(Weighted(sums, weights.blue, kNoColour), HalfBytes(), blue + x / 2);
        hn::StoreU(Weighted(sums, weights.red, kNoColour), HalfBytes(), red + x / 2);
    }
    return x;
}
#else
int LumaRow(const std::uint8_t*, int, bool, const RgbWeights::Three&, std::uint8_t*) { return 0; }
int ChromaRow(const std::uint8_t*, const std::uint8_t*, int, bool, const RgbWeights&, std::uint8_t*,
              std::uint8_t*) {
    return 0;
}
#endif

}  // namespace
}  // namespace engine::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace engine {
namespace {

HWY_EXPORT(LumaRow);
HWY_EXPORT(ChromaRow);

constexpr int kOne = 1 << 15;

// For what is left of a row when no vector fits any more.
// @param quarters  sums of four bytes
std::uint8_t Weighted(const std::array<int, 3>& quarters, const RgbWeights::Three& weights,
                      int offset) {
    int sum = 4 * kOne * offset + 2 * kOne;
    for (std::size_t i = 0; i < quarters.size(); ++i) sum += quarters[i] * weights[i];
    return static_cast<std::uint8_t>(sum >> 17);
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

void ConvertLuma(const std::uint8_t* pixels, int width, const RgbLayout& layout,
                 const RgbWeights& weights, std::uint8_t* luma) {
    int x = HWY_DYNAMIC_DISPATCH(LumaRow)(pixels, width, layout.blank_first, weights.luma, luma);
    for (; x < width; ++x) {
        const std::uint8_t* pixel = pixels + std::ptrdiff_t{x} * kRgbPixelBytes;
        luma[x] =
            Weighted(Quarters({pixel, pixel, pixel, pixel}, layout.blank_first), weights.luma, 16);
    }
}

void ConvertChroma(const std::uint8_t* above, const std::uint8_t* below, int width,
                   const RgbLayout& layout, const RgbWeights& weights, std::uint8_t* blue,
                   std::uint8_t* red) {
    int x = HWY_DYNAMIC_DISPATCH(ChromaRow)(above, below, width, layout.blank_first, weights, blue,
                                            red);
    for (; x < width; x += 2) {
        const std::ptrdiff_t left = std::ptrdiff_t{x} * kRgbPixelBytes;
        const std::ptrdiff_t right = std::ptrdiff_t{std::min(x + 1, width - 1)} * kRgbPixelBytes;
        const auto quarters = Quarters({above + left, above + right, below + left, below + right},
                                       layout.blank_first);
        blue[x / 2] = Weighted(quarters, weights.blue, 128);
        red[x / 2] = Weighted(quarters, weights.red, 128);
    }
}

}  // namespace engine
#endif
