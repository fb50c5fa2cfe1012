#include "codecs/wmv9/eight_taps.h"
#include "codecs/wmv9/kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_temporal.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

// Of the upper or lower half of the lanes, to the nearest, halves to even.
template <class D>
HWY_INLINE hn::Vec<hn::Half<D>> Quotients(hn::Half<D> words, hn::Vec<hn::Half<D>> dividend,
                                          hn::Vec<hn::Half<D>> divisor) {
    const hn::RepartitionToWide<D> wide;
    const hn::Repartition<float, decltype(wide)> reals;
    const auto quotient = hn::Div(hn::ConvertTo(reals, hn::PromoteTo(wide, dividend)),
                                  hn::ConvertTo(reals, hn::PromoteTo(wide, divisor)));
    return hn::DemoteTo(words, hn::NearestInt(quotient));
}

template <class D>
HWY_INLINE void BlendStrip(D words, std::uint8_t* samples, std::ptrdiff_t stride,
                           const std::uint8_t* others, std::ptrdiff_t other_size,
                           const std::int16_t* strengths, int count, int reach, int size) {
    const hn::Half<D> half;
    const auto scale = hn::Set(words, static_cast<std::int16_t>(reach));
    const auto farthest = hn::Set(words, std::int16_t{128});
    const auto one = hn::Set(words, std::int16_t{16383});
    for (int y = 0; y < size; ++y, samples += stride, others += size) {
        const auto own = LoadWords(words, samples);
        auto moved = hn::Zero(words);
        auto weights = hn::Set(words, std::int16_t{128});
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const auto difference = hn::Sub(LoadWords(words, others + i * other_size), own);
            const auto part =
                hn::Min(hn::MulHigh(hn::ShiftLeft<7>(hn::Abs(difference)), scale), farthest);
            const auto root = hn::Max(hn::Sub(one, hn::Mul(part, part)), hn::Zero(words));
            const auto doubled = hn::Add(root, root);
            const auto weight =
                hn::MulHigh(hn::MulHigh(doubled, doubled), hn::Set(words, strengths[i]));
            moved = hn::Add(moved, hn::Mul(weight, difference));
            weights = hn::Add(weights, weight);
        }
        const auto change = hn::Combine(
            words, Quotients<D>(half, hn::UpperHalf(half, moved), hn::UpperHalf(half, weights)),
            Quotients<D>(half, hn::LowerHalf(moved), hn::LowerHalf(weights)));
        StoreSamples(words, hn::Add(own, change), samples);
    }
}

void Blend(std::uint8_t* samples, std::ptrdiff_t stride, const std::uint8_t* others,
           std::ptrdiff_t other_size, const std::int16_t* strengths, int count, int reach,
           int size) {
    if (size == 8)
        return BlendStrip(Words8(), samples, stride, others, other_size, strengths, count, reach,
                          8);
    for (std::ptrdiff_t x = 0; x < size; x += kLanes<Words>)
        BlendStrip(Words(), samples + x, stride, others + x, other_size, strengths, count, reach,
                   16);
}

// `at(i)` are the values that the eight factors belong to.
template <class D, typename At>
HWY_INLINE hn::Vec<D> EightTap(D words, const std::int16_t* factors, const At& at) {
    auto sum = hn::Set(words, std::int16_t{32});
    for (std::ptrdiff_t i = 0; i < 8; ++i)
        sum = hn::Add(sum, hn::Mul(at(i), hn::Set(words, factors[i])));
    return hn::ShiftRight<6>(sum);
}

template <class D>
HWY_INLINE void EightTapStrip(D words, std::uint8_t* out, std::ptrdiff_t out_stride,
                              const std::uint8_t* source, std::ptrdiff_t stride, int x, int y) {
    hn::Vec<D> between[23];
    source -= 3 * stride + 3;
    for (std::ptrdiff_t row = 0; row < 23; ++row)
        between[row] = EightTap(words, kEightTaps[x], [&](std::ptrdiff_t i) {
            return LoadWords(words, source + row * stride + i);
        });
    for (std::ptrdiff_t row = 0; row < 16; ++row)
        StoreSamples(
            words,
            EightTap(words, kEightTaps[y], [&](std::ptrdiff_t i) { return between[row + i]; }),
            out + row * out_stride);
}

void EightTapBlock(std::uint8_t* out, std::ptrdiff_t out_stride, const std::uint8_t* source,
                   std::ptrdiff_t stride, int x, int y) {
    for (std::ptrdiff_t column = 0; column < 16; column += kLanes<Words>)
        EightTapStrip(Words(), out + column, out_stride, source + column, stride, x, y);
}

}  // namespace

void SetTemporal(Kernels& kernels) {
    kernels.eight_tap = EightTapBlock;
    kernels.blend = Blend;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
