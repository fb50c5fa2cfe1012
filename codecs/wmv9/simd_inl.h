// What the SIMD kernels share, compiled anew for each instruction set that includes it.

// Highway's guard, which opens once for each instruction set.
#if defined(CODECS_WMV9_SIMD_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CODECS_WMV9_SIMD_INL_H
#undef CODECS_WMV9_SIMD_INL_H
#else
#define CODECS_WMV9_SIMD_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

// Not for emulated vectors, than which the plain kernels are better, nor for those of a length that
// only the machine knows.
#undef CODECS_WMV9_SIMD
#define CODECS_WMV9_SIMD (HWY_TARGET < HWY_EMU128 && !HWY_HAVE_SCALABLE)

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Eight bits, as many as a row of a block has at most.
using Samples16 = hn::FixedTag<std::uint8_t, 16>;
using Samples8 = hn::FixedTag<std::uint8_t, 8>;
/// Sixteen bits, eight of them and, where the machine has wider vectors, twice as many.
using Words8 = hn::FixedTag<std::int16_t, 8>;
using Words = hn::CappedTag<std::int16_t, 16>;

template <class D>
inline constexpr auto kLanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(D()));

/// Samples as sixteen bits.
template <class D>
HWY_INLINE hn::Vec<D> LoadWords(D words, const std::uint8_t* from) {
    return hn::PromoteTo(words, hn::LoadU(hn::Rebind<std::uint8_t, D>(), from));
}

/// Clips.
template <class D>
HWY_INLINE void StoreSamples(D, hn::Vec<D> values, std::uint8_t* to) {
    const hn::Rebind<std::uint8_t, D> samples;
    hn::StoreU(hn::DemoteTo(samples, values), samples, to);
}

/// Clips two rows of as many samples as `words` has lanes.
template <class D>
HWY_INLINE void StoreTwoRows([[maybe_unused]] D words, hn::Vec<D> upper, hn::Vec<D> lower,
                             std::uint8_t* to, std::ptrdiff_t stride) {
#if HWY_ARCH_X86
    const hn::Repartition<std::uint8_t, D> samples;
    const hn::Half<decltype(samples)> row;
    hn::Vec<decltype(samples)> both;
    if constexpr (kLanes<D> == 16)  // packed within the vectors' halves
        both.raw = _mm256_permute4x64_epi64(_mm256_packus_epi16(upper.raw, lower.raw), 0xD8);
    else
        both.raw = _mm_packus_epi16(upper.raw, lower.raw);
    hn::StoreU(hn::LowerHalf(row, both), row, to);
    hn::StoreU(hn::UpperHalf(row, both), row, to + stride);
#else
    StoreSamples(words, upper, to);
    StoreSamples(words, lower, to + stride);
#endif
}

/// samples[2 * i] * factors[2 * i] + samples[2 * i + 1] * factors[2 * i + 1], without signs and
/// with; no sum may pass sixteen bits.
template <class D>
HWY_INLINE hn::Vec<D> MulSamplePairs([[maybe_unused]] D words,
                                     hn::Vec<hn::Repartition<std::uint8_t, D>> samples,
                                     hn::Vec<hn::Repartition<std::int8_t, D>> factors) {
#if HWY_ARCH_X86
    if constexpr (kLanes<D> == 16)
        return hn::Vec<D>{_mm256_maddubs_epi16(samples.raw, factors.raw)};
    else
        return hn::Vec<D>{_mm_maddubs_epi16(samples.raw, factors.raw)};
#else
    const auto sample_pairs = hn::BitCast(words, samples);
    const auto factor_pairs = hn::BitCast(words, factors);
    const auto even = hn::Mul(hn::And(sample_pairs, hn::Set(words, 0xFF)),
                              hn::ShiftRight<8>(hn::ShiftLeft<8>(factor_pairs)));
    const auto odd = hn::Mul(hn::And(hn::ShiftRight<8>(sample_pairs), hn::Set(words, 0xFF)),
                             hn::ShiftRight<8>(factor_pairs));
    return hn::Add(even, odd);
#endif
}

/// a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1].
template <class D>
HWY_INLINE hn::Vec<hn::RepartitionToWide<D>> MulPairs([[maybe_unused]] D words, hn::Vec<D> a,
                                                      hn::Vec<D> b) {
    const hn::RepartitionToWide<D> sums;
#if HWY_ARCH_X86
    hn::Vec<decltype(sums)> unused = hn::Zero(sums);
    return hn::ReorderWidenMulAccumulate(sums, a, b, hn::Zero(sums), unused);
#else
    const auto a_odd = hn::ShiftRight<16>(hn::BitCast(sums, a));
    const auto b_odd = hn::ShiftRight<16>(hn::BitCast(sums, b));
    const auto a_even = hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(sums, a)));
    const auto b_even = hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(sums, b)));
    return hn::Add(hn::Mul(a_even, b_even), hn::Mul(a_odd, b_odd));
#endif
}

/// The same two factors for all pairs.
template <class D>
HWY_INLINE hn::Vec<D> Pairs(D words, int even, int odd) {
    const hn::RepartitionToWide<D> wide;
    return hn::BitCast(words, hn::Set(wide, (odd << 16) | (even & 0xFFFF)));
}

template <class D>
HWY_INLINE std::uint32_t Sum(D lanes, hn::Vec<D> values) {
    return static_cast<std::uint32_t>(hn::GetLane(hn::SumOfLanes(lanes, values)));
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#endif
