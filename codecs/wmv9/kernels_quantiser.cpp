#include "codecs/wmv9/kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_quantiser.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

std::uint32_t Quantise(std::int16_t* levels, const std::int16_t* coefficients,
                       std::uint32_t reciprocal, int rounding) {
    const Words words;
    const hn::RebindToUnsigned<Words> sizes;
    const hn::RepartitionToWide<Words> sums;
    const auto factor = hn::Set(sizes, static_cast<std::uint16_t>(reciprocal));
    const auto addend = hn::Set(words, static_cast<std::int16_t>(rounding));
    const auto one = hn::Set(words, 1);
    auto sum = hn::Zero(sums);
    for (std::ptrdiff_t i = 0; i < 64; i += kLanes<Words>) {
        const auto values = hn::Load(words, coefficients + i);
        const auto size = hn::BitCast(sizes, hn::Add(hn::Abs(values), addend));
        const auto level = hn::BitCast(words, hn::MulHigh(size, factor));
        const auto sign = hn::BroadcastSignBit(values);
        sum = hn::Add(sum, MulPairs(words, level, one));
        hn::Store(hn::Sub(hn::Xor(level, sign), sign), words, levels + i);
    }
    return Sum(sums, sum);
}

std::uint64_t Differing(const std::int16_t* a, const std::int16_t* b) {
    const Words words;
    std::uint64_t places = 0;
    for (std::ptrdiff_t i = 0; i < 64; i += kLanes<Words>) {
        std::uint8_t bits[8] = {};
        hn::StoreMaskBits(words, hn::Ne(hn::Load(words, a + i), hn::Load(words, b + i)), bits);
        for (std::ptrdiff_t byte = 0; byte < kLanes<Words> / 8; ++byte)
            places |= std::uint64_t{bits[byte]} << (i + 8 * byte);
    }
    return places;
}

void Restore(std::int16_t* coefficients, const std::int16_t* levels, int step, int extra) {
    const Words words;
    const auto factor = hn::Set(words, static_cast<std::int16_t>(step));
    const auto outward = hn::Set(words, static_cast<std::int16_t>(extra));
    for (std::ptrdiff_t i = 0; i < 64; i += kLanes<Words>) {
        const auto level = hn::Load(words, levels + i);
        const auto sign = hn::BroadcastSignBit(level);
        const auto away = hn::IfThenZeroElse(hn::Eq(level, hn::Zero(words)),
                                             hn::Sub(hn::Xor(outward, sign), sign));
        hn::Store(hn::Add(hn::Mul(level, factor), away), words, coefficients + i);
    }
}

}  // namespace

void SetQuantiser(Kernels& kernels) {
    kernels.quantise = Quantise;
    kernels.differing = Differing;
    kernels.restore = Restore;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
