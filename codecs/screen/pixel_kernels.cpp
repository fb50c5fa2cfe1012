#include "codecs/screen/pixel_kernels.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/screen/colour_matrix.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace codecs::screen::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::uint32_t kColourBits = 0xFFFFFF;

void CompareCellsWith(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                      std::ptrdiff_t b_stride, int width, int rows, std::uint8_t* changed) {
    const hn::CappedTag<std::uint32_t, kCell> pixels;
    const auto lanes = static_cast<int>(hn::Lanes(pixels));
    const auto colour = hn::Set(pixels, kColourBits);
    int x = 0;
    for (; x + kCell <= width; x += kCell) {
        auto differing = hn::Zero(pixels);
        for (int y = 0; y < rows; ++y)
            for (int i = 0; i < kCell; i += lanes)
                differing = hn::Or(differing, hn::Xor(hn::LoadU(pixels, a + y * a_stride + x + i),
                                                      hn::LoadU(pixels, b + y * b_stride + x + i)));
        const bool same = hn::AllTrue(pixels, hn::Eq(hn::And(differing, colour), hn::Zero(pixels)));
        *changed++ = same ? 0 : 1;
    }
    if (x == width) return;
    std::uint32_t differing = 0;
    for (int y = 0; y < rows; ++y)
        for (int i = x; i < width; ++i) differing |= a[y * a_stride + i] ^ b[y * b_stride + i];
    *changed = (differing & kColourBits) != 0 ? 1 : 0;
}

constexpr std::ptrdiff_t kMacroblockSide = 16;
constexpr std::ptrdiff_t kBlockSide = 8;
constexpr std::ptrdiff_t kBlockSamples = kBlockSide * kBlockSide;

// Of a row and column of luma in the blocks.
std::ptrdiff_t LumaPlace(std::ptrdiff_t y, std::ptrdiff_t x) {
    return (2 * (y / kBlockSide) + x / kBlockSide) * kBlockSamples + y % kBlockSide * kBlockSide +
           x % kBlockSide;
}

void AddChange(std::uint32_t a, std::uint32_t b, int slight, PixelChanges& changes) {
    const int most = std::max(
        {std::abs(Red(a) - Red(b)), std::abs(Green(a) - Green(b)), std::abs(Blue(a) - Blue(b))});
    changes.all += most > 0 ? 1 : 0;
    changes.slight += most > 0 && most <= slight ? 1 : 0;
}

#if HWY_TARGET == HWY_SCALAR

PixelChanges CountChangesWith(const std::uint32_t* a, std::ptrdiff_t a_stride,
                              const std::uint32_t* b, std::ptrdiff_t b_stride, int width, int rows,
                              int slight) {
    PixelChanges changes;
    for (int y = 0; y < rows; ++y, a += a_stride, b += b_stride)
        for (int x = 0; x < width; ++x) AddChange(a[x], b[x], slight, changes);
    return changes;
}

void ConvertMacroblockWith(const std::uint32_t* pixels, std::ptrdiff_t stride,
                           std::int16_t* samples) {
    for (std::ptrdiff_t y = 0; y < kMacroblockSide; ++y)
        for (std::ptrdiff_t x = 0; x < kMacroblockSide; ++x)
            samples[LumaPlace(y, x)] = Luma(pixels[y * stride + x]);
    std::int16_t* out = samples + 4 * kBlockSamples;
    for (std::ptrdiff_t y = 0; y < kMacroblockSide; y += 2)
        for (std::ptrdiff_t x = 0; x < kMacroblockSide; x += 2, ++out) {
            const std::uint32_t* const upper = pixels + y * stride + x;
            ChannelSums sums;
            for (const std::ptrdiff_t at :
                 {std::ptrdiff_t{0}, std::ptrdiff_t{1}, stride, stride + 1})
                sums.Add(upper[at]);
            *out = sums.BlueDifference();
            out[kBlockSamples] = sums.RedDifference();
        }
}

#else

PixelChanges CountChangesWith(const std::uint32_t* a, std::ptrdiff_t a_stride,
                              const std::uint32_t* b, std::ptrdiff_t b_stride, int width, int rows,
                              int slight) {
    const hn::CappedTag<std::uint32_t, kCell> pixels;
    const hn::Repartition<std::uint8_t, decltype(pixels)> channels;
    const auto lanes = static_cast<int>(hn::Lanes(pixels));
    const auto colour = hn::Set(pixels, kColourBits);
    const auto none = hn::Zero(pixels);
    const auto limit = hn::Set(channels, static_cast<std::uint8_t>(slight));
    PixelChanges changes;
    const auto count = [&](auto one, auto other) {
        const auto x = hn::BitCast(channels, hn::And(one, colour));
        const auto y = hn::BitCast(channels, hn::And(other, colour));
        const auto difference = hn::Or(hn::SaturatedSub(x, y), hn::SaturatedSub(y, x));
        const auto same = hn::Eq(hn::BitCast(pixels, difference), none);
        const auto near = hn::Eq(hn::BitCast(pixels, hn::SaturatedSub(difference, limit)), none);
        const auto alike = static_cast<int>(hn::CountTrue(pixels, same));
        changes.all += lanes - alike;
        changes.slight += static_cast<int>(hn::CountTrue(pixels, near)) - alike;
    };
    for (int y = 0; y < rows; ++y, a += a_stride, b += b_stride) {
        int x = 0;
        for (; x + lanes <= width; x += lanes)
            count(hn::LoadU(pixels, a + x), hn::LoadU(pixels, b + x));
        for (; x < width; ++x) AddChange(a[x], b[x], slight, changes);
    }
    return changes;
}

// A mean of four is rounded towards nothing.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V DifferenceOf(D words, V scaled_by_four) {
    const auto up = hn::And(hn::BroadcastSignBit(scaled_by_four), hn::Set(words, 3));
    const auto mean = hn::ShiftRight<2>(hn::Add(scaled_by_four, up));
    const auto rounded = hn::ShiftRight<16>(hn::Add(mean, hn::Set(words, kHalf + kMiddle)));
    return hn::Min(rounded, hn::Set(words, 255));
}

void ConvertMacroblockWith(const std::uint32_t* pixels, std::ptrdiff_t stride,
                           std::int16_t* samples) {
    const hn::CappedTag<std::int32_t, kBlockSide> words;
    const hn::RepartitionToWide<decltype(words)> pairs;
    const hn::Rebind<std::int16_t, decltype(words)> halves;
    const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(words));
    const auto byte = hn::Set(words, 0xFF);
    const auto two_bytes = hn::Set(words, 0xFFFF);
    const auto red_and_blue = hn::Set(words, 0xFF00FF);
    const auto load = [&](std::ptrdiff_t x, std::ptrdiff_t y) {
        return hn::BitCast(
            words, hn::LoadU(hn::RebindToUnsigned<decltype(words)>(), pixels + y * stride + x));
    };
    const auto times = [&](auto value, int factor) {
        return hn::Mul(value, hn::Set(words, factor));
    };
    for (std::ptrdiff_t y = 0; y < kMacroblockSide; ++y)
        for (std::ptrdiff_t x = 0; x < kMacroblockSide; x += lanes) {
            const auto pixel = load(x, y);
            const auto red = hn::And(hn::ShiftRight<16>(pixel), byte);
            const auto green = hn::And(hn::ShiftRight<8>(pixel), byte);
            const auto blue = hn::And(pixel, byte);
            const auto scaled = hn::Add(hn::Add(times(red, kLumaOfRed), times(green, kLumaOfGreen)),
                                        hn::Add(times(blue, kLumaOfBlue), hn::Set(words, kHalf)));
            hn::StoreU(hn::DemoteTo(halves, hn::ShiftRight<16>(scaled)), halves,
                       samples + LumaPlace(y, x));
        }
    // Of two rows, and then of each two pixels: in every other lane.
    const auto sums = [&](std::ptrdiff_t x, std::ptrdiff_t y, auto&& channels) {
        const auto rows =
            hn::BitCast(pairs, hn::Add(channels(load(x, y)), channels(load(x, y + 1))));
        return hn::BitCast(words, hn::Add(rows, hn::ShiftRight<32>(rows)));
    };
    for (std::ptrdiff_t y = 0; y < kMacroblockSide; y += 2)
        for (std::ptrdiff_t x = 0; x < kMacroblockSide; x += 2 * lanes) {
            const auto both = [&](auto&& channels) {
                return hn::ConcatEven(words, sums(x + lanes, y, channels), sums(x, y, channels));
            };
            const auto two = both([&](auto pixel) { return hn::And(pixel, red_and_blue); });
            const auto green =
                both([&](auto pixel) { return hn::And(hn::ShiftRight<8>(pixel), byte); });
            const auto red = hn::And(hn::ShiftRight<16>(two), two_bytes);
            const auto blue = hn::And(two, two_bytes);
            const auto of_blue =
                hn::Add(hn::Add(times(red, kBlueOfRed), times(green, kBlueOfGreen)),
                        times(blue, kBlueOfBlue));
            const auto of_red = hn::Add(hn::Add(times(red, kRedOfRed), times(green, kRedOfGreen)),
                                        times(blue, kRedOfBlue));
            std::int16_t* const out = samples + 4 * kBlockSamples + y / 2 * kBlockSide + x / 2;
            hn::StoreU(hn::DemoteTo(halves, DifferenceOf(words, of_blue)), halves, out);
            hn::StoreU(hn::DemoteTo(halves, DifferenceOf(words, of_red)), halves,
                       out + kBlockSamples);
        }
}

#endif

}  // namespace
}  // namespace codecs::screen::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace codecs::screen {
namespace {

HWY_EXPORT(CompareCellsWith);
HWY_EXPORT(CountChangesWith);
HWY_EXPORT(ConvertMacroblockWith);

}  // namespace

void CompareCells(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                  std::ptrdiff_t b_stride, int width, int rows, std::uint8_t* changed) {
    HWY_DYNAMIC_DISPATCH(CompareCellsWith)(a, a_stride, b, b_stride, width, rows, changed);
}

PixelChanges CountChanges(const std::uint32_t* a, std::ptrdiff_t a_stride, const std::uint32_t* b,
                          std::ptrdiff_t b_stride, int width, int rows, int slight) {
    return HWY_DYNAMIC_DISPATCH(CountChangesWith)(a, a_stride, b, b_stride, width, rows, slight);
}

void ConvertMacroblock(const std::uint32_t* pixels, std::ptrdiff_t stride, std::int16_t* samples) {
    HWY_DYNAMIC_DISPATCH(ConvertMacroblockWith)(pixels, stride, samples);
}

}  // namespace codecs::screen
#endif
