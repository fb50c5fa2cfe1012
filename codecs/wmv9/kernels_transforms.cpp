#include "codecs/wmv9/kernels.h"
#include "codecs/wmv9/transform_bases.h"
#include "codecs/wmv9/transform_pairs.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_transforms.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

using Word = hn::Vec<Words>;
using Word8 = hn::Vec<Words8>;
using Sums = hn::RepartitionToWide<Words>;

// As many rows of a block as one vector takes.
#if HWY_CAP_GE256
constexpr int kRowsAtOnce = 2;
HWY_INLINE Word JoinRows(const Word8* rows) { return hn::Combine(Words(), rows[1], rows[0]); }
#else
constexpr int kRowsAtOnce = 1;
HWY_INLINE Word JoinRows(const Word8* rows) { return rows[0]; }
#endif

// ---- Forward, first down the columns of a row of eight each: these sums fit sixteen bits.

HWY_INLINE Word8 Times(Word8 values, int factor) {
    return hn::Mul(values, hn::Set(Words8(), static_cast<std::int16_t>(factor)));
}

HWY_INLINE Word8 LoadRow(const std::int16_t* block, int row) {
    return hn::Load(Words8(), block + 8 * row);
}

HWY_INLINE void ForwardDown4(const std::int16_t* block, Word8* out) {
    const Word8 sum03 = hn::Add(LoadRow(block, 0), LoadRow(block, 3));
    const Word8 sum12 = hn::Add(LoadRow(block, 1), LoadRow(block, 2));
    const Word8 difference03 = hn::Sub(LoadRow(block, 0), LoadRow(block, 3));
    const Word8 difference12 = hn::Sub(LoadRow(block, 1), LoadRow(block, 2));
    out[0] = Times(hn::Add(sum03, sum12), 17);
    out[1] = hn::Add(Times(difference03, 22), Times(difference12, 10));
    out[2] = Times(hn::Sub(sum03, sum12), 17);
    out[3] = hn::Sub(Times(difference03, 10), Times(difference12, 22));
}

// Row `kRow` of the odd basis functions, times the differences of the column's ends.
template <int kRow>
HWY_INLINE Word8 OddSum(const Word8* differences) {
    return hn::Add(
        hn::Add(Times(differences[0], kBasis8[kRow][0]), Times(differences[1], kBasis8[kRow][1])),
        hn::Add(Times(differences[2], kBasis8[kRow][2]), Times(differences[3], kBasis8[kRow][3])));
}

HWY_INLINE void ForwardDown8(const std::int16_t* block, Word8* out) {
    const Word8 sum07 = hn::Add(LoadRow(block, 0), LoadRow(block, 7));
    const Word8 sum16 = hn::Add(LoadRow(block, 1), LoadRow(block, 6));
    const Word8 sum25 = hn::Add(LoadRow(block, 2), LoadRow(block, 5));
    const Word8 sum34 = hn::Add(LoadRow(block, 3), LoadRow(block, 4));
    const Word8 differences[4] = {hn::Sub(LoadRow(block, 0), LoadRow(block, 7)),
                                  hn::Sub(LoadRow(block, 1), LoadRow(block, 6)),
                                  hn::Sub(LoadRow(block, 2), LoadRow(block, 5)),
                                  hn::Sub(LoadRow(block, 3), LoadRow(block, 4))};
    const Word8 outer = hn::Add(sum07, sum34);
    const Word8 inner = hn::Add(sum16, sum25);
    const Word8 outer_difference = hn::Sub(sum07, sum34);
    const Word8 inner_difference = hn::Sub(sum16, sum25);
    out[0] = Times(hn::Add(outer, inner), 12);
    out[1] = OddSum<1>(differences);
    out[2] = hn::Add(Times(outer_difference, 16), Times(inner_difference, 6));
    out[3] = OddSum<3>(differences);
    out[4] = Times(hn::Sub(outer, inner), 12);
    out[5] = OddSum<5>(differences);
    out[6] = hn::Sub(Times(outer_difference, 6), Times(inner_difference, 16));
    out[7] = OddSum<7>(differences);
}

// Two neighbours of each row, four times; by the row of `pairs`.
template <int kPair>
HWY_INLINE hn::Vec<Sums> Products(Word rows, const FactorPairs& factors, int row) {
    const Word pair = hn::BitCast(Words(), hn::Broadcast<kPair>(hn::BitCast(Sums(), rows)));
    return MulPairs(Words(), pair, hn::Load(Words(), factors.rows[row]));
}

template <bool kNarrow>
HWY_INLINE Word ForwardAcross(Word rows, const std::int16_t* scale) {
    const auto half = hn::Set(Sums(), 64);
    auto lower = half;
    auto upper = half;
    if constexpr (kNarrow) {
        lower = hn::Add(hn::Add(Products<0>(rows, kForwardPairs4, 0), half),
                        Products<1>(rows, kForwardPairs4, 1));
        upper = hn::Add(hn::Add(Products<2>(rows, kForwardPairs4, 0), half),
                        Products<3>(rows, kForwardPairs4, 1));
    } else {
        lower = hn::Add(
            hn::Add(hn::Add(Products<0>(rows, kForwardPairs8, 0), half),
                    Products<1>(rows, kForwardPairs8, 1)),
            hn::Add(Products<2>(rows, kForwardPairs8, 2), Products<3>(rows, kForwardPairs8, 3)));
        upper = hn::Add(
            hn::Add(hn::Add(Products<0>(rows, kForwardPairs8, 4), half),
                    Products<1>(rows, kForwardPairs8, 5)),
            hn::Add(Products<2>(rows, kForwardPairs8, 6), Products<3>(rows, kForwardPairs8, 7)));
    }
    const Word sums =
        hn::ReorderDemote2To(Words(), hn::ShiftRight<7>(lower), hn::ShiftRight<7>(upper));
    return hn::MulFixedPoint15(sums, hn::Load(Words(), scale));
}

template <bool kNarrow, bool kLow>
HWY_INLINE void ForwardOf(std::int16_t* coefficients, const std::int16_t* residual) {
    Word8 rows[8];
    if constexpr (kLow) {
        ForwardDown4(residual, rows);
        ForwardDown4(residual + 32, rows + 4);
    } else {
        ForwardDown8(residual, rows);
    }
    const std::int16_t* scale = kForwardScale.wide_tall[kNarrow ? 1 : 0][kLow ? 1 : 0];
    for (int y = 0; y < 8; y += kRowsAtOnce)
        hn::Store(ForwardAcross<kNarrow>(JoinRows(rows + y), scale + 8 * y), Words(),
                  coefficients + 8 * y);
}

void Forward(Shape shape, std::int16_t* coefficients, const std::int16_t* residual) {
    switch (shape) {
        case Shape::Whole8x8:
            return ForwardOf<false, false>(coefficients, residual);
        case Shape::Wide8x4:
            return ForwardOf<false, true>(coefficients, residual);
        case Shape::Tall4x8:
            return ForwardOf<true, false>(coefficients, residual);
        case Shape::Small4x4:
            return ForwardOf<true, true>(coefficients, residual);
    }
}

// ---- Inverse, first across the rows

template <bool kNarrow>
HWY_INLINE Word InverseAcross(Word rows) {
    const auto half = hn::Set(Sums(), 4);
    if constexpr (kNarrow) {
        const auto lower = hn::Add(hn::Add(Products<0>(rows, kInversePairs4, 0), half),
                                   Products<1>(rows, kInversePairs4, 1));
        const auto upper = hn::Add(hn::Add(Products<2>(rows, kInversePairs4, 0), half),
                                   Products<3>(rows, kInversePairs4, 1));
        return hn::ReorderDemote2To(Words(), hn::ShiftRight<3>(lower), hn::ShiftRight<3>(upper));
    } else {
        // Even frequencies are the same at both ends of a row, odd ones the negative.
        alignas(16) static constexpr std::uint8_t kEvenBeforeOdd[16] = {0, 1, 8, 9, 4,  5,  12, 13,
                                                                        2, 3, 6, 7, 10, 11, 14, 15};
        const hn::Repartition<std::uint8_t, Words> bytes;
        const Word sorted = hn::BitCast(
            Words(),
            hn::TableLookupBytes(hn::BitCast(bytes, rows), hn::LoadDup128(bytes, kEvenBeforeOdd)));
        const auto even = hn::Add(hn::Add(Products<0>(sorted, kInversePairs8, 0), half),
                                  Products<1>(sorted, kInversePairs8, 1));
        const auto odd =
            hn::Add(Products<2>(sorted, kInversePairs8, 2), Products<3>(sorted, kInversePairs8, 3));
        const auto lower = hn::ShiftRight<3>(hn::Add(even, odd));
        const auto upper = hn::ShiftRight<3>(hn::Sub(even, odd));
        return hn::ReorderDemote2To(Words(), lower, hn::Shuffle0123(upper));
    }
}

// Two rows' values of the same columns stand side by side, in as many vectors as a row of sums
// takes.
constexpr int kParts = 2 / kRowsAtOnce;

#if HWY_CAP_GE256
// Turns 64-bit quarters 0 1 2 3 to 0 2 1 3.
HWY_INLINE Word SwapMiddle(Word values) {
    alignas(32) static constexpr std::int32_t kOrder[8] = {0, 1, 4, 5, 2, 3, 6, 7};
    return hn::BitCast(Words(), hn::TableLookupLanes(hn::BitCast(Sums(), values),
                                                     hn::SetTableIndices(Sums(), kOrder)));
}

template <bool kNarrow>
HWY_INLINE void AcrossPair(Word8 a, Word8 b, Word* parts) {
    alignas(16) static constexpr std::uint8_t kZip[16] = {0, 1, 8,  9,  2, 3, 10, 11,
                                                          4, 5, 12, 13, 6, 7, 14, 15};
    const hn::Repartition<std::uint8_t, Words> bytes;
    const Word both = SwapMiddle(InverseAcross<kNarrow>(hn::Combine(Words(), b, a)));
    const auto zipped = hn::TableLookupBytes(hn::BitCast(bytes, both), hn::LoadDup128(bytes, kZip));
    parts[0] = hn::BitCast(Words(), zipped);
}

HWY_INLINE void StoreRows(const hn::Vec<Sums> (*parts)[8], std::int16_t* out) {
    for (int y = 0; y < 8; y += 2) {
        const Word rows = hn::ReorderDemote2To(Words(), parts[0][y], parts[0][y + 1]);
        hn::Store(SwapMiddle(rows), Words(), out + 8 * y);
    }
}
#else
template <bool kNarrow>
HWY_INLINE void AcrossPair(Word8 a, Word8 b, Word* parts) {
    const Word a_across = InverseAcross<kNarrow>(a);
    const Word b_across = InverseAcross<kNarrow>(b);
    parts[0] = hn::InterleaveLower(a_across, b_across);
    parts[1] = hn::InterleaveUpper(Words(), a_across, b_across);
}

HWY_INLINE void StoreRows(const hn::Vec<Sums> (*parts)[8], std::int16_t* out) {
    for (int y = 0; y < 8; ++y)
        hn::Store(hn::ReorderDemote2To(Words(), parts[0][y], parts[1][y]), Words(), out + 8 * y);
}
#endif

HWY_INLINE hn::Vec<Sums> Products(Word pairs, int even, int odd) {
    return MulPairs(Words(), pairs, Pairs(Words(), even, odd));
}

HWY_INLINE void InverseDown4(Word rows02, Word rows13, hn::Vec<Sums>* out) {
    const auto half = hn::Set(Sums(), 64);
    const auto even0 = hn::Add(Products(rows02, 17, 17), half);
    const auto even1 = hn::Add(Products(rows02, 17, -17), half);
    const auto odd0 = Products(rows13, 22, 10);
    const auto odd1 = Products(rows13, 10, -22);
    out[0] = hn::ShiftRight<7>(hn::Add(even0, odd0));
    out[1] = hn::ShiftRight<7>(hn::Add(even1, odd1));
    out[2] = hn::ShiftRight<7>(hn::Sub(even1, odd1));
    out[3] = hn::ShiftRight<7>(hn::Sub(even0, odd0));
}

template <int kRow>
HWY_INLINE void InverseEnds(hn::Vec<Sums> even, Word rows13, Word rows57, hn::Vec<Sums>* out) {
    const auto odd = hn::Add(Products(rows13, kBasis8[1][kRow], kBasis8[3][kRow]),
                             Products(rows57, kBasis8[5][kRow], kBasis8[7][kRow]));
    out[kRow] = hn::ShiftRight<7>(hn::Add(even, odd));
    // The lower half is rounded up: by 65 instead of 64.
    out[7 - kRow] = hn::ShiftRight<7>(hn::Add(hn::Sub(even, odd), hn::Set(Sums(), 1)));
}

HWY_INLINE void InverseDown8(Word rows04, Word rows26, Word rows13, Word rows57,
                             hn::Vec<Sums>* out) {
    const auto half = hn::Set(Sums(), 64);
    const auto outer = hn::Add(Products(rows04, 12, 12), half);
    const auto inner = hn::Add(Products(rows04, 12, -12), half);
    const auto outer_slope = Products(rows26, 16, 6);
    const auto inner_slope = Products(rows26, 6, -16);
    InverseEnds<0>(hn::Add(outer, outer_slope), rows13, rows57, out);
    InverseEnds<1>(hn::Add(inner, inner_slope), rows13, rows57, out);
    InverseEnds<2>(hn::Sub(inner, inner_slope), rows13, rows57, out);
    InverseEnds<3>(hn::Sub(outer, outer_slope), rows13, rows57, out);
}

template <bool kNarrow, bool kLow>
HWY_INLINE void InverseOf(std::int16_t* residual, const std::int16_t* coefficients) {
    // In the pairs that the columns' transform takes.
    static constexpr int kPairs[2][4][2] = {{{0, 4}, {2, 6}, {1, 3}, {5, 7}},
                                            {{0, 2}, {1, 3}, {4, 6}, {5, 7}}};
    Word pairs[4][kParts];
    for (int i = 0; i < 4; ++i) {
        const int* of = kPairs[kLow ? 1 : 0][i];
        AcrossPair<kNarrow>(LoadRow(coefficients, of[0]), LoadRow(coefficients, of[1]), pairs[i]);
    }
    hn::Vec<Sums> sums[kParts][8];
    for (int part = 0; part < kParts; ++part) {
        if constexpr (kLow) {
            InverseDown4(pairs[0][part], pairs[1][part], sums[part]);
            InverseDown4(pairs[2][part], pairs[3][part], sums[part] + 4);
        } else {
            InverseDown8(pairs[0][part], pairs[1][part], pairs[2][part], pairs[3][part],
                         sums[part]);
        }
    }
    StoreRows(sums, residual);
}

void Inverse(Shape shape, std::int16_t* residual, const std::int16_t* coefficients) {
    switch (shape) {
        case Shape::Whole8x8:
            return InverseOf<false, false>(residual, coefficients);
        case Shape::Wide8x4:
            return InverseOf<false, true>(residual, coefficients);
        case Shape::Tall4x8:
            return InverseOf<true, false>(residual, coefficients);
        case Shape::Small4x4:
            return InverseOf<true, true>(residual, coefficients);
    }
}

// ---- Between samples and residuals

BlockDifference Subtract(std::int16_t* out, const std::uint8_t* a, std::ptrdiff_t a_stride,
                         const std::uint8_t* b, std::ptrdiff_t b_stride) {
    const Words8 words;
    const hn::RepartitionToWide<Words8> sums;
    auto absolute = hn::Zero(words);
    auto squared = hn::Zero(sums);
    for (int y = 0; y < 8; ++y, a += a_stride, b += b_stride, out += 8) {
        const auto difference = hn::Sub(LoadWords(words, a), LoadWords(words, b));
        absolute = hn::Add(absolute, hn::Abs(difference));
        squared = hn::Add(squared, MulPairs(words, difference, difference));
        hn::Store(difference, words, out);
    }
    return {Sum(sums, MulPairs(words, absolute, hn::Set(words, 1))), Sum(sums, squared)};
}

void Add(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual) {
    const Words8 words;
    for (int y = 0; y < 8; ++y, samples += stride, residual += 8)
        StoreSamples(words, hn::SaturatedAdd(LoadWords(words, samples), hn::Load(words, residual)),
                     samples);
}

void Put(std::uint8_t* samples, std::ptrdiff_t stride, const std::int16_t* residual, int bias) {
    const Words8 words;
    const auto all = hn::Set(words, static_cast<std::int16_t>(bias));
    for (int y = 0; y < 8; ++y, samples += stride, residual += 8)
        StoreSamples(words, hn::SaturatedAdd(hn::Load(words, residual), all), samples);
}

}  // namespace

void SetTransforms(Kernels& kernels) {
    kernels.subtract = Subtract;
    kernels.forward = Forward;
    kernels.inverse = Inverse;
    kernels.add = Add;
    kernels.put = Put;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
