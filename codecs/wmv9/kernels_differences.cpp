#include "codecs/wmv9/kernels.h"

// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels_differences.cpp"
#include <hwy/foreach_target.h>
#include "codecs/wmv9/simd_inl.h"
// clang-format on

#if CODECS_WMV9_SIMD
HWY_BEFORE_NAMESPACE();
namespace codecs::wmv9::HWY_NAMESPACE {
namespace {

using Sums = hn::Repartition<std::uint64_t, Samples16>;

// Sixteen samples: a row of sixteen, or two of eight.
template <int kWidth>
HWY_INLINE hn::Vec<Samples16> LoadRows(const std::uint8_t* from, std::ptrdiff_t stride) {
    if constexpr (kWidth == 16) {
        (void)stride;
        return hn::LoadU(Samples16(), from);
    } else {
        return hn::Combine(Samples16(), hn::LoadU(Samples8(), from + stride),
                           hn::LoadU(Samples8(), from));
    }
}

// Of each eight samples.
HWY_INLINE hn::Vec<Sums> SumsOfDifferences(hn::Vec<Samples16> a, hn::Vec<Samples16> b) {
#if HWY_ARCH_X86
    return hn::Vec<Sums>{_mm_sad_epu8(a.raw, b.raw)};
#else
    return hn::SumsOf8(hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a)));
#endif
}

// Wider vectors bring nothing: the time goes into loading rows of sixteen.
template <int kWidth, int kHeight>
HWY_INLINE std::uint32_t SadOfSize(const std::uint8_t* a, std::ptrdiff_t a_stride,
                                   const std::uint8_t* b, std::ptrdiff_t b_stride) {
    constexpr int kRows = 16 / kWidth;
    auto sum = hn::Zero(Sums());
    for (int y = 0; y < kHeight; y += kRows, a += kRows * a_stride, b += kRows * b_stride)
        sum = hn::Add(
            sum, SumsOfDifferences(LoadRows<kWidth>(a, a_stride), LoadRows<kWidth>(b, b_stride)));
    return Sum(Sums(), sum);
}

std::uint32_t Sad(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                  std::ptrdiff_t b_stride, int width, int height) {
    if (width == 16)
        return height == 16 ? SadOfSize<16, 16>(a, a_stride, b, b_stride)
                            : SadOfSize<16, 8>(a, a_stride, b, b_stride);
    return height == 16 ? SadOfSize<8, 16>(a, a_stride, b, b_stride)
                        : SadOfSize<8, 8>(a, a_stride, b, b_stride);
}

void SadOfFour(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* const b[4],
               std::ptrdiff_t b_stride, std::uint32_t sums[4]) {
    const Samples16 row;
    auto sum0 = hn::Zero(Sums());
    auto sum1 = sum0;
    auto sum2 = sum0;
    auto sum3 = sum0;
    for (std::ptrdiff_t y = 0; y < 16; ++y) {
        const auto here = hn::LoadU(row, a + y * a_stride);
        const std::ptrdiff_t there = y * b_stride;
        sum0 = hn::Add(sum0, SumsOfDifferences(here, hn::LoadU(row, b[0] + there)));
        sum1 = hn::Add(sum1, SumsOfDifferences(here, hn::LoadU(row, b[1] + there)));
        sum2 = hn::Add(sum2, SumsOfDifferences(here, hn::LoadU(row, b[2] + there)));
        sum3 = hn::Add(sum3, SumsOfDifferences(here, hn::LoadU(row, b[3] + there)));
    }
    sums[0] = Sum(Sums(), sum0);
    sums[1] = Sum(Sums(), sum1);
    sums[2] = Sum(Sums(), sum2);
    sums[3] = Sum(Sums(), sum3);
}

// In strips of as many columns as `words` has lanes.
template <class D>
HWY_INLINE std::uint32_t SquaredInStrips(D words, const std::uint8_t* a, std::ptrdiff_t a_stride,
                                         const std::uint8_t* b, std::ptrdiff_t b_stride, int width,
                                         int height) {
    const hn::RepartitionToWide<D> sums;
    auto sum = hn::Zero(sums);
    for (int y = 0; y < height; ++y, a += a_stride, b += b_stride)
        for (std::ptrdiff_t x = 0; x < width; x += kLanes<D>) {
            const auto difference = hn::Sub(LoadWords(words, a + x), LoadWords(words, b + x));
            sum = hn::Add(sum, MulPairs(words, difference, difference));
        }
    return Sum(sums, sum);
}

std::uint32_t Squared(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                      std::ptrdiff_t b_stride, int width, int height) {
    return width == 16 ? SquaredInStrips(Words(), a, a_stride, b, b_stride, 16, height)
                       : SquaredInStrips(Words8(), a, a_stride, b, b_stride, 8, height);
}

// Half the sums of the absolute transforms of 4x4 blocks beside each other, spread over all lanes.
template <class D>
HWY_INLINE hn::Vec<D> HadamardOfRows(D words, const std::uint8_t* a, std::ptrdiff_t a_stride,
                                     const std::uint8_t* b, std::ptrdiff_t b_stride) {
    const hn::Repartition<std::int32_t, D> doubles;
    const hn::Repartition<std::int64_t, D> quads;
    const auto row0 = hn::Sub(LoadWords(words, a), LoadWords(words, b));
    const auto row1 = hn::Sub(LoadWords(words, a + a_stride), LoadWords(words, b + b_stride));
    const auto row2 =
        hn::Sub(LoadWords(words, a + 2 * a_stride), LoadWords(words, b + 2 * b_stride));
    const auto row3 =
        hn::Sub(LoadWords(words, a + 3 * a_stride), LoadWords(words, b + 3 * b_stride));
    const auto sum01 = hn::Add(row0, row1);
    const auto difference01 = hn::Sub(row0, row1);
    const auto sum23 = hn::Add(row2, row3);
    const auto difference23 = hn::Sub(row2, row3);
    const auto down0 = hn::Add(sum01, sum23);
    const auto down1 = hn::Add(difference01, difference23);
    const auto down2 = hn::Sub(sum01, sum23);
    const auto down3 = hn::Sub(difference01, difference23);
    // Turned, so that each vector has two columns of all blocks.
    const auto lower01 = hn::BitCast(doubles, hn::InterleaveLower(down0, down1));
    const auto upper01 = hn::BitCast(doubles, hn::InterleaveUpper(words, down0, down1));
    const auto lower23 = hn::BitCast(doubles, hn::InterleaveLower(down2, down3));
    const auto upper23 = hn::BitCast(doubles, hn::InterleaveUpper(words, down2, down3));
    const auto left01 = hn::BitCast(words, hn::InterleaveLower(lower01, upper01));
    const auto right01 = hn::BitCast(words, hn::InterleaveUpper(doubles, lower01, upper01));
    const auto left23 = hn::BitCast(words, hn::InterleaveLower(lower23, upper23));
    const auto right23 = hn::BitCast(words, hn::InterleaveUpper(doubles, lower23, upper23));
    const auto near01 = hn::BitCast(quads, hn::Add(left01, right01));
    const auto far01 = hn::BitCast(quads, hn::Sub(left01, right01));
    const auto near23 = hn::BitCast(quads, hn::Add(left23, right23));
    const auto far23 = hn::BitCast(quads, hn::Sub(left23, right23));
    // The last step needs no transform: |a + b| + |a - b| = 2 * max(|a|, |b|).
    const auto near_even = hn::Abs(hn::BitCast(words, hn::InterleaveLower(near01, near23)));
    const auto near_odd = hn::Abs(hn::BitCast(words, hn::InterleaveUpper(quads, near01, near23)));
    const auto far_even = hn::Abs(hn::BitCast(words, hn::InterleaveLower(far01, far23)));
    const auto far_odd = hn::Abs(hn::BitCast(words, hn::InterleaveUpper(quads, far01, far23)));
    return hn::Add(hn::Max(near_even, near_odd), hn::Max(far_even, far_odd));
}

template <class D>
HWY_INLINE std::uint32_t HadamardInStrips(D words, const std::uint8_t* a, std::ptrdiff_t a_stride,
                                          const std::uint8_t* b, std::ptrdiff_t b_stride, int width,
                                          int height) {
    const hn::RepartitionToWide<D> sums;
    auto sum = hn::Zero(sums);
    for (int y = 0; y < height; y += 4, a += 4 * a_stride, b += 4 * b_stride)
        for (std::ptrdiff_t x = 0; x < width; x += kLanes<D>)
            sum = hn::Add(sum,
                          MulPairs(words, HadamardOfRows(words, a + x, a_stride, b + x, b_stride),
                                   hn::Set(words, 1)));
    return Sum(sums, sum);
}

std::uint32_t Hadamard(const std::uint8_t* a, std::ptrdiff_t a_stride, const std::uint8_t* b,
                       std::ptrdiff_t b_stride, int width, int height) {
    return width == 16 ? HadamardInStrips(Words(), a, a_stride, b, b_stride, 16, height)
                       : HadamardInStrips(Words8(), a, a_stride, b, b_stride, 8, height);
}

void Moments(const std::uint8_t* a, std::ptrdiff_t stride, std::uint32_t& sum,
             std::uint32_t& squares) {
    const Words words;
    const hn::RepartitionToWide<Words> wide;
    auto sums = hn::Zero(Sums());
    auto sums_of_squares = hn::Zero(wide);
    for (int y = 0; y < 16; ++y, a += stride) {
        sums = hn::Add(sums, hn::SumsOf8(hn::LoadU(Samples16(), a)));
        for (std::ptrdiff_t x = 0; x < 16; x += kLanes<Words>) {
            const auto values = LoadWords(words, a + x);
            sums_of_squares = hn::Add(sums_of_squares, MulPairs(words, values, values));
        }
    }
    sum = Sum(Sums(), sums);
    squares = Sum(wide, sums_of_squares);
}

// The last ones of a row are worked out with those before them once more.
void Halve(std::uint8_t* out, const std::uint8_t* upper, const std::uint8_t* lower, int count) {
    const Words8 words;
    const hn::Rebind<std::uint8_t, Words8> halves;
    const auto ones = hn::Set(hn::Repartition<std::int8_t, Words8>(), 1);
    constexpr auto kStep = static_cast<int>(kLanes<Words8>);
    const auto some = [&](int i) {
        const auto sum =
            hn::Add(MulSamplePairs(words, hn::LoadU(Samples16(), upper + 2 * i), ones),
                    MulSamplePairs(words, hn::LoadU(Samples16(), lower + 2 * i), ones));
        const auto mean = hn::ShiftRight<2>(hn::Add(sum, hn::Set(words, 2)));
        hn::StoreU(hn::DemoteTo(halves, mean), halves, out + i);
    };
    if (count < kStep) {
        for (int i = 0; i < count; ++i)
            out[i] = static_cast<std::uint8_t>(
                (upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1] + 2) >> 2);
        return;
    }
    for (int i = 0; i + kStep <= count; i += kStep) some(i);
    some(count - kStep);
}

}  // namespace

void SetDifferences(Kernels& kernels) {
    kernels.sad = Sad;
    kernels.sad_of_four = SadOfFour;
    kernels.squared = Squared;
    kernels.hadamard = Hadamard;
    kernels.halve = Halve;
    kernels.moments = Moments;
}

}  // namespace codecs::wmv9::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
